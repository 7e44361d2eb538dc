#include <gtest/gtest.h>

#include "sources/format_table.h"

namespace vexcap::sources {
namespace {

class Format final : public platform::FrameFormat {
 public:
  Format(std::wstring subtype, std::uint32_t width, std::uint32_t height, std::uint32_t fps)
      : subtype_(std::move(subtype)), width_(width), height_(height), fps_(fps) {}
  std::wstring major_type() const override { return L"Video"; }
  std::wstring subtype() const override { return subtype_; }
  std::uint32_t width() const override { return width_; }
  std::uint32_t height() const override { return height_; }
  std::uint32_t frame_rate_numerator() const override { return fps_; }
  std::uint32_t frame_rate_denominator() const override { return 7; }  // never consulted
  std::optional<std::wstring> rotation_text() const override { return std::nullopt; }

 private:
  std::wstring subtype_;
  std::uint32_t width_, height_, fps_;
};

std::vector<std::shared_ptr<platform::FrameFormat>> formats(
    std::initializer_list<std::tuple<const wchar_t*, std::uint32_t, std::uint32_t, std::uint32_t>> list) {
  std::vector<std::shared_ptr<platform::FrameFormat>> result;
  for (const auto& [subtype, width, height, fps] : list)
    result.push_back(std::make_shared<Format>(subtype, width, height, fps));
  return result;
}

struct CodeCase {
  bool colour;
  std::uint32_t width, height, fps;
  int code;  // -1: no code
};

TEST(FormatCodes, EverySizeAndRateOfTheCodeTable) {
  // clang-format off
  const CodeCase cases[] = {
      // Infrared and other sources.
      {false, 640, 480, 1, 8}, {false, 640, 480, 5, 7}, {false, 640, 480, 10, 6},
      {false, 640, 480, 15, 5}, {false, 640, 480, 20, 4}, {false, 640, 480, 25, 3},
      {false, 640, 480, 30, 2}, {false, 640, 360, 30, 2}, {false, 640, 480, 60, -1},
      {false, 320, 240, 60, 1}, {false, 320, 240, 30, 0}, {false, 424, 240, 60, 9},
      {false, 424, 240, 30, 0}, {false, 424, 240, 15, -1}, {false, 1280, 720, 30, -1},
      // Colour, open parameters 1280x720: the parameters' size comes first.
      {true, 1280, 720, 1, 17}, {true, 1280, 720, 5, 16}, {true, 1280, 720, 10, 15},
      {true, 1280, 720, 15, 14}, {true, 1280, 720, 20, 13}, {true, 1280, 720, 25, 12},
      {true, 1280, 720, 30, 11}, {true, 1280, 720, 60, -1},
      {true, 1920, 1080, 30, 18}, {true, 1920, 1440, 30, 18}, {true, 1920, 1080, 15, -1},
      {true, 3840, 2160, 30, 20}, {true, 640, 480, 30, -1}, {true, 1280, 960, 30, -1},
  };
  // clang-format on
  for (const CodeCase& c : cases) {
    const auto code = format_code(c.colour, c.width, c.height, c.fps, 1280, 720);
    EXPECT_EQ(code ? static_cast<int>(*code) : -1, c.code)
        << (c.colour ? "colour " : "ir ") << c.width << "x" << c.height << "@" << c.fps;
  }
  // 1280x720 at 30 is 19 only when the open parameters name another size.
  EXPECT_EQ(format_code(true, 1280, 720, 30, 640, 480), 19u);
  EXPECT_EQ(format_code(true, 640, 480, 5, 640, 480), 16u);
}

TEST(FormatTable, GreyInfraredFormatsKeepTheirPositions) {
  const auto table = collect_format_table(formats({{L"GRAY8", 640, 480, 15},
                                                   {L"L8", 640, 480, 15},
                                                   {L"GRAY8", 640, 480, 30},
                                                   {L"GRAY8", 320, 240, 60},
                                                   {L"gray8", 640, 480, 5}}),
                                          false, 0, 0);
  ASSERT_EQ(table.size(), 3u);
  EXPECT_EQ(table.at(5).position, 0u);  // the first of two formats with one code wins
  EXPECT_EQ(table.at(5).subtype, L"GRAY8");
  EXPECT_EQ(table.at(2).position, 2u);
  EXPECT_EQ(table.at(1).position, 3u);
  EXPECT_EQ(table.count(7), 0u);  // subtypes compare case-sensitively
}

TEST(FormatTable, TheLastPassThatFindsItsSubtypeDecides) {
  const auto nv12_only =
      collect_format_table(formats({{L"NV12", 1920, 1080, 30}, {L"NV12", 1280, 720, 30}}), true, 640, 480);
  EXPECT_EQ(nv12_only.size(), 2u);
  EXPECT_FALSE(table_has_subtype(nv12_only, L"RGB24"));

  const auto with_yuy2 =
      collect_format_table(formats({{L"NV12", 1920, 1080, 30}, {L"YUY2", 1280, 720, 30}}), true, 640, 480);
  ASSERT_EQ(with_yuy2.size(), 1u);
  EXPECT_EQ(with_yuy2.at(19).subtype, L"YUY2");
  EXPECT_EQ(with_yuy2.at(19).position, 1u);

  const auto with_rgb24 = collect_format_table(
      formats({{L"NV12", 640, 480, 30}, {L"YUY2", 1920, 1080, 30}, {L"RGB24", 640, 480, 30}}), true, 640,
      480);
  ASSERT_EQ(with_rgb24.size(), 1u);
  EXPECT_TRUE(table_has_subtype(with_rgb24, L"RGB24"));
  EXPECT_EQ(with_rgb24.at(11).position, 2u);

  // RGB24 offered only at a size without a code: the pass accepts nothing, the YUY2 table stays.
  const auto rgb24_without_code =
      collect_format_table(formats({{L"YUY2", 1920, 1080, 30}, {L"RGB24", 800, 600, 30}}), true, 640, 480);
  ASSERT_EQ(rgb24_without_code.size(), 1u);
  EXPECT_EQ(rgb24_without_code.at(18).subtype, L"YUY2");
}

TEST(FormatTable, NoAcceptedFormatGivesAnEmptyTable) {
  EXPECT_TRUE(collect_format_table(formats({{L"MJPG", 640, 480, 30}, {L"ARGB32", 640, 480, 30}}), false, 0, 0)
                  .empty());
  EXPECT_TRUE(collect_format_table({}, true, 0, 0).empty());
}

}  // namespace
}  // namespace vexcap::sources
