// vexcap-capture end to end on the virtual camera: the files a capture leaves, what a failing
// call and an interrupted run leave, and the compliance check. Expected pixels come from the
// virtual camera's documented pattern: L = x + 2y + 3n (mod 256) for frame n of the reader.
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <thread>

#include "png_decode.h"
#include "tool_process.h"

namespace vexcap::tool::testing {
namespace {

namespace fs = std::filesystem;

class VexcapCaptureTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const std::string name = ::testing::UnitTest::GetInstance()->current_test_info()->name();
    folder_ = fs::temp_directory_path() / ("vexcap-capture-test-" + std::to_string(getpid()) + "-" + name);
    fs::remove_all(folder_);
    fs::create_directories(folder_);
  }
  void TearDown() override { fs::remove_all(folder_); }

  fs::path out() const { return folder_ / "out"; }

  fs::path folder_;
};

std::vector<std::vector<std::string>> csv_rows(const fs::path& path) {
  std::ifstream file(path);
  std::vector<std::vector<std::string>> rows;
  for (std::string line; std::getline(file, line);) {
    std::vector<std::string> cells;
    std::stringstream cells_text(line);
    for (std::string cell; std::getline(cells_text, cell, ',');) cells.push_back(cell);
    if (!line.empty() && line.back() == ',') cells.emplace_back();
    rows.push_back(cells);
  }
  return rows;
}

std::vector<std::string> files_in(const fs::path& folder, const std::string& extension) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder))
    if (entry.path().extension() == extension) names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

// Frame number n (mod 256) of a grey image whose pixel (0, 0) is 3n: 171 is 3's inverse.
unsigned frame_number_of(unsigned corner) { return (corner * 171u) & 0xFF; }

unsigned luma(unsigned x, unsigned y, unsigned n) { return (x + 2 * y + 3 * n) & 0xFF; }

// BT.601 limited range, in floating point.
std::array<double, 3> expected_rgb(unsigned x, unsigned y, unsigned n) {
  const double c = 1.164 * (static_cast<double>(luma(x, y, n)) - 16);
  const double u = static_cast<double>((64 + x / 2 + y / 2 + n) & 0xFF) - 128;
  const double v = static_cast<double>((192 + x / 2 + 2 * (y / 2) + n) & 0xFF) - 128;
  const auto clamp = [](double value) { return std::clamp(value, 0.0, 255.0); };
  return {clamp(c + 1.596 * v), clamp(c - 0.391 * u - 0.813 * v), clamp(c + 2.018 * u)};
}

// The first pixel (in row order) that breaks the grey pattern, or -1.
long first_grey_mismatch(const DecodedPng& png, unsigned n, unsigned scale) {
  for (unsigned y = 0; y < png.height; ++y)
    for (unsigned x = 0; x < png.width; ++x)
      if (png.sample(x, y) != luma(x, y, n) * scale) return static_cast<long>(y) * png.width + x;
  return -1;
}

TEST_F(VexcapCaptureTest, InfraredCaptureWritesEveryNthFrameAsGreyPngAndEveryFrameInTheCsv) {
  const ToolRun run = run_tool({"capture", "--frames", "5", "--every", "2", "--out", out().string()}, folder_);
  ASSERT_EQ(run.exit_code, 0) << run.err;
  EXPECT_NE(run.out.find("summary: 5 frames in "), std::string::npos) << run.out;
  EXPECT_NE(run.out.find(" fps, 0 dropped, "), std::string::npos) << run.out;

  ASSERT_EQ(files_in(out(), ".png"), (std::vector<std::string>{"frame-000000.png", "frame-000002.png", "frame-000004.png"}));
  EXPECT_TRUE(files_in(out(), ".part").empty());
  std::vector<unsigned> numbers;
  for (const std::string& name : files_in(out(), ".png")) {
    const std::optional<DecodedPng> png = decode_png(out() / name);
    ASSERT_TRUE(png) << name;
    EXPECT_EQ(png->width, 640u);
    EXPECT_EQ(png->height, 480u);
    EXPECT_EQ(png->channels, 1);
    EXPECT_EQ(png->bit_depth, 8);
    numbers.push_back(frame_number_of(png->sample(0, 0)));
    EXPECT_EQ(first_grey_mismatch(*png, numbers.back(), 1), -1) << name;
  }
  EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));

  const auto rows = csv_rows(out() / "frames.csv");
  ASSERT_EQ(rows.size(), 6u);
  EXPECT_EQ(rows[0], (std::vector<std::string>{"index", "timestamp_us", "width", "height", "stride", "pixel_format",
                                               "exposure_100ns", "iso_speed", "led_power", "illumination", "png"}));
  for (std::size_t i = 1; i < rows.size(); ++i) {
    ASSERT_EQ(rows[i].size(), 11u);
    EXPECT_EQ(rows[i][0], std::to_string(i - 1));
    EXPECT_EQ(rows[i][2] + "x" + rows[i][3] + " " + rows[i][4] + " " + rows[i][5], "640x480 640 Gray8");
    EXPECT_EQ(rows[i][10], (i - 1) % 2 == 0 ? "frame-00000" + std::to_string(i - 1) + ".png" : "");
    if (i > 1) {
      EXPECT_GT(std::stoll(rows[i][1]), std::stoll(rows[i - 1][1])) << "row " << i;
    }
  }
}

TEST_F(VexcapCaptureTest, ColourNv12FramesBecomeRgbPngs) {
  const ToolRun run = run_tool({"capture", "--reader", "color", "--frames", "2", "--out", out().string()}, folder_);
  ASSERT_EQ(run.exit_code, 0) << run.err;
  const std::optional<DecodedPng> png = decode_png(out() / "frame-000001.png");
  ASSERT_TRUE(png);
  ASSERT_EQ(png->width, 640u);
  ASSERT_EQ(png->height, 480u);
  ASSERT_EQ(png->channels, 3);
  ASSERT_EQ(png->bit_depth, 8);

  const auto close_at = [&](unsigned x, unsigned y, unsigned n) {
    const std::array<double, 3> rgb = expected_rgb(x, y, n);
    for (int c = 0; c < 3; ++c)
      if (std::abs(static_cast<double>(png->sample(x, y, c)) - rgb[c]) > 2.0) return false;
    return true;
  };
  unsigned n = 0;
  while (n < 256 && !(close_at(0, 0, n) && close_at(5, 3, n) && close_at(101, 77, n))) ++n;
  ASSERT_LT(n, 256u) << "no frame number explains the first pixels";
  for (unsigned y = 0; y < png->height; ++y)
    for (unsigned x = 0; x < png->width; ++x) ASSERT_TRUE(close_at(x, y, n)) << "pixel " << x << "," << y;
  EXPECT_EQ(csv_rows(out() / "frames.csv").at(1).at(5), "NV12");
}

TEST_F(VexcapCaptureTest, Gray16FramesBecomeSixteenBitGreyPngs) {
  const ToolRun run =
      run_tool({"capture", "--scenario", "gray16", "--frames", "1", "--out", out().string()}, folder_);
  ASSERT_EQ(run.exit_code, 0) << run.err;
  const std::optional<DecodedPng> png = decode_png(out() / "frame-000000.png");
  ASSERT_TRUE(png);
  EXPECT_EQ(png->bit_depth, 16);
  EXPECT_EQ(png->channels, 1);
  EXPECT_EQ(png->width, 640u);
  const unsigned n = frame_number_of(png->sample(0, 0) / 257);
  EXPECT_EQ(first_grey_mismatch(*png, n, 257), -1);
}

TEST_F(VexcapCaptureTest, AFailedCaptureExitsNonZeroSayingWhyAndWritesNothing) {
  const ToolRun run = run_tool({"capture", "--camera", "no-such-camera", "--out", out().string()}, folder_);
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_NE(run.err.find("vexcap_get_device_capabilities failed: -1 VEXCAP_E_FAIL"), std::string::npos) << run.err;
  EXPECT_FALSE(fs::exists(out()));

  const ToolRun undecodable = run_tool({"capture", "--scenario", "undecodable", "--out", out().string()}, folder_);
  EXPECT_EQ(undecodable.exit_code, 1);
  EXPECT_NE(undecodable.err.find("(unsupported-format event)"), std::string::npos) << undecodable.err;
  EXPECT_TRUE(fs::is_empty(out()));

  const ToolRun usage = run_tool({"capture", "--frames", "many"}, folder_);
  EXPECT_EQ(usage.exit_code, 2);
  EXPECT_NE(usage.err.find("--frames"), std::string::npos) << usage.err;
}

TEST_F(VexcapCaptureTest, AnInterruptedCaptureLeavesOnlyCompleteFiles) {
  ToolProcess tool({"capture", "--seconds", "60", "--out", out().string()}, folder_);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!(fs::exists(out() / "frame-000003.png")) && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  tool.signal(SIGINT);
  const ToolRun run = tool.wait();
  EXPECT_EQ(run.exit_code, 130) << run.err;
  EXPECT_NE(run.out.find("summary: "), std::string::npos);

  EXPECT_TRUE(files_in(out(), ".part").empty());
  const std::vector<std::string> pngs = files_in(out(), ".png");
  ASSERT_GE(pngs.size(), 4u);
  for (const std::string& name : pngs) EXPECT_TRUE(decode_png(out() / name)) << name;
  EXPECT_EQ(csv_rows(out() / "frames.csv").size(), pngs.size() + 1);
}

TEST_F(VexcapCaptureTest, ListAndInfoDescribeTheCamera) {
  const ToolRun list = run_tool({"list", "--vid", "VID_F00D", "--pid", "PID_CAFE"}, folder_);
  EXPECT_EQ(list.exit_code, 0) << list.err;
  for (const char* line : {"1 camera\n[1] Virtual Face Camera\n", "    sources     infrared, colour\n",
                           "    group type  USB (VID_F00D, PID_CAFE)\n", "    VID_F00D/PID_CAFE  in use by this camera\n"})
    EXPECT_NE(list.out.find(line), std::string::npos) << line << " in\n" << list.out;

  const ToolRun info = run_tool({"info", "--reader", "color"}, folder_);
  EXPECT_EQ(info.exit_code, 0) << info.err;
  EXPECT_NE(info.out.find("  exposure                     10000 (100 ns units"), std::string::npos) << info.out;
  EXPECT_NE(info.out.find("  ISO speed                    64\n"), std::string::npos) << info.out;
}

TEST_F(VexcapCaptureTest, CheckPassesOnTheVirtualCameraAndCountsWhatItCannotTest) {
  const ToolRun run = run_tool({"check", "--seconds-per-format", "0.2", "--cycles", "2"}, folder_);
  EXPECT_EQ(run.exit_code, 0) << run.out << run.err;
  EXPECT_EQ(("\n" + run.out).find("\nFAIL "), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("PASS  mode 1 infrared: shared stream"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("PASS  mode 0 colour: exclusive stream"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find(" passed, 0 failed, "), std::string::npos) << run.out;

  const ToolRun missing = run_tool({"check", "--scenario", "no-camera"}, folder_);
  EXPECT_EQ(missing.exit_code, 1);
  EXPECT_NE(missing.out.find("FAIL  camera present"), std::string::npos) << missing.out;
}

}  // namespace
}  // namespace vexcap::tool::testing
