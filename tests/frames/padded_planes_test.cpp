// NV12 frames whose platform layout puts the chroma plane past padded luma rows (1080 rows laid
// out in 1088): the record holds the luma rows, then the chroma rows at stride x height, upright
// for every declared rotation. Expected bytes come from the camera's documented pattern.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>

#include "support/library_fixture.h"

namespace vexcap {
namespace {

namespace vc = virtual_camera;
using namespace std::chrono_literals;

constexpr std::size_t kColour = 1;

// Frame 0 of the pattern: luma at (x, y), and the chroma pair of block (i, j).
int luma(int x, int y) { return (x + 2 * y) % 256; }
int u_of(int i, int j) { return (64 + i + j) % 256; }
int v_of(int i, int j) { return (192 + i + 2 * j) % 256; }

std::atomic<vexcap_frame*> g_first{nullptr};
bool keep_first(vexcap_frame* frame, void*) {
  vexcap_frame* none = nullptr;
  if (!g_first.compare_exchange_strong(none, frame)) vexcap_return_frame(frame);
  return true;
}

struct Layout {
  int width, height;  // of the source frame
  int rotation;       // degrees clockwise
};

// The source pixel a record pixel shows, for the record's (column, row) on a grid of `w` x `h`
// source units turned by `rotation` (the rotation code's coordinate maps).
void source_of(int rotation, int w, int h, int column, int row, int& x, int& y) {
  switch (rotation) {
    case 90: x = row, y = h - 1 - column; break;
    case 180: x = w - 1 - column, y = h - 1 - row; break;
    case 270: x = w - 1 - row, y = column; break;
    default: x = column, y = row; break;
  }
}

// Compares the record with the pattern of frame 0 turned by `rotation`; counts mismatches.
int mismatches(const vexcap_frame& frame, const Layout& source) {
  const bool quarter = source.rotation == 90 || source.rotation == 270;
  const int out_w = quarter ? source.height : source.width;
  const int out_h = quarter ? source.width : source.height;
  EXPECT_EQ(static_cast<int>(frame.width), out_w);
  EXPECT_EQ(static_cast<int>(frame.height), out_h);
  if (static_cast<int>(frame.width) != out_w || static_cast<int>(frame.height) != out_h) return -1;
  int bad = 0;
  for (int row = 0; row < out_h; ++row)
    for (int column = 0; column < out_w; ++column) {
      int x = 0, y = 0;
      source_of(source.rotation, source.width, source.height, column, row, x, y);
      bad += frame.data[row * frame.stride + column] != luma(x, y);
    }
  const std::uint8_t* chroma = frame.data + static_cast<std::size_t>(frame.stride) * out_h;
  for (int row = 0; row < out_h / 2; ++row)
    for (int column = 0; column < out_w / 2; ++column) {
      int i = 0, j = 0;
      source_of(source.rotation, source.width / 2, source.height / 2, column, row, i, j);
      bad += chroma[row * frame.stride + 2 * column] != u_of(i, j);
      bad += chroma[row * frame.stride + 2 * column + 1] != v_of(i, j);
    }
  return bad;
}

class PaddedPlanes : public testing::LibraryTest {
 protected:
  void TearDown() override {
    if (vexcap_frame* frame = g_first.exchange(nullptr)) vexcap_return_frame(frame);
    LibraryTest::TearDown();
  }
  // The first frame of the colour source's only format, streamed through the exports.
  static vexcap_frame* first_frame(const Layout& layout, std::uint32_t stride_padding) {
    vc::Scenario scenario = vc::default_scenario();
    vc::SourceModel& colour = scenario.groups[0].sources[kColour];
    vc::FormatModel format;
    format.subtype = L"NV12";
    format.width = static_cast<std::uint32_t>(layout.width);
    format.height = static_cast<std::uint32_t>(layout.height);
    if (layout.rotation != 0) format.rotation = layout.rotation;
    colour.formats = {format};
    colour.nv12_plane_rows_alignment = 16;
    colour.stride_padding = stride_padding;
    vexcap_device* device = open_camera(scenario, VEXCAP_STREAM_MODE_SHARED, std::uint16_t(layout.width),
                                        std::uint16_t(layout.height));
    if (device == nullptr) return nullptr;
    EXPECT_EQ(vexcap_start_streaming(device, keep_first, nullptr), 0);
    vc::advance_time(34ms);
    EXPECT_EQ(vexcap_device_close(device), 0);
    vexcap_exit();
    return g_first.exchange(nullptr);
  }
};

TEST_F(PaddedPlanes, EveryRotationReadsTheChromaPlaneWhereThePlatformPutIt) {
  for (int rotation : {0, 90, 180, 270}) {
    for (std::uint32_t padding : {0u, 8u}) {
      SCOPED_TRACE(::testing::Message() << "rotation " << rotation << ", padding " << padding);
      const Layout layout{64, 40, rotation};  // 40 rows laid out in 48
      vexcap_frame* frame = first_frame(layout, padding);
      ASSERT_NE(frame, nullptr);
      EXPECT_EQ(frame->pixel_format, VEXCAP_PIXEL_FORMAT_NV12);
      EXPECT_EQ(mismatches(*frame, layout), 0);
      if (rotation == 0 || rotation == 180) {
        EXPECT_EQ(frame->stride, 64 + static_cast<int>(padding));
      }
      vexcap_return_frame(frame);
      vc::reset();
    }
  }
}

// The default colour camera lays 1080p NV12 out in 1088 rows; opened at 1280x720 its format table
// offers 1080p (code 18), which the host selects.
TEST_F(PaddedPlanes, TheDefaultCamerasFullHdFramesComeWhole) {
  vc::Scenario scenario = vc::default_scenario();
  vexcap_device* device = open_camera(scenario, VEXCAP_STREAM_MODE_SHARED, 1280, 720);
  ASSERT_NE(device, nullptr);
  vexcap_property hires{VEXCAP_PROP_HIRES_SENSOR_TYPE, 0};
  ASSERT_EQ(vexcap_get_dev_property(device, &hires), 0);
  EXPECT_EQ(hires.value, VEXCAP_FORMAT_HIRES_1080P);
  vexcap_property stream_type{VEXCAP_PROP_STREAM_TYPE, VEXCAP_FORMAT_HIRES_1080P};
  ASSERT_EQ(vexcap_set_dev_property(device, &stream_type), 0);
  ASSERT_EQ(vexcap_start_streaming(device, keep_first, nullptr), 0);
  vc::advance_time(34ms);
  EXPECT_EQ(vexcap_device_close(device), 0);
  vexcap_frame* frame = g_first.exchange(nullptr);
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(frame->stride, 1920);
  // YUY2 converted to NV12 by the reader: luma as the pattern, chroma the two rows' average.
  EXPECT_EQ(frame->data[1079 * 1920 + 5], luma(5, 1079));
  const std::uint8_t* chroma = frame->data + 1920 * 1080;
  const int i = 7, j = 539;
  EXPECT_EQ(chroma[j * 1920 + 2 * i], ((64 + i + 2 * j) + (64 + i + 2 * j + 1) + 1) / 2 % 256);
  vexcap_return_frame(frame);
}

}  // namespace
}  // namespace vexcap
