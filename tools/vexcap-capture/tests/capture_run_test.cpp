// `vexcap-capture capture` end to end on the virtual camera: the files a capture leaves, what a
// failing call, a refused folder, a failing write and an interrupted run leave. Expected pixels
// come from the virtual camera's documented pattern: L = x + 2y + 3n (mod 256) for frame n of
// the reader; PNG files are read back with a decoder written from the PNG specification.
#include <signal.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <thread>

#include "png_decode.h"
#include "tool_run.h"

namespace vexcap::tool::testing {
namespace {

namespace fs = std::filesystem;

using CaptureRunTest = ToolTest;

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

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

TEST_F(CaptureRunTest, InfraredCaptureWritesEveryNthFrameAsGreyPngAndEveryFrameInTheCsv) {
  const ToolRun run = this->run({"capture", "--frames", "5", "--every", "2", "--out", out().string()});
  ASSERT_EQ(run.exit_code, 0) << run.err;
  EXPECT_TRUE(contains(run.out, "summary: 5 frames in ")) << run.out;
  EXPECT_TRUE(contains(run.out, " fps, 0 dropped, ")) << run.out;

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

TEST_F(CaptureRunTest, ColourNv12FramesBecomeRgbPngs) {
  const ToolRun run = this->run({"capture", "--reader", "color", "--frames", "2", "--out", out().string()});
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

TEST_F(CaptureRunTest, Gray16FramesBecomeSixteenBitGreyPngs) {
  const ToolRun run = this->run({"capture", "--scenario", "gray16", "--frames", "1", "--out", out().string()});
  ASSERT_EQ(run.exit_code, 0) << run.err;
  const std::optional<DecodedPng> png = decode_png(out() / "frame-000000.png");
  ASSERT_TRUE(png);
  EXPECT_EQ(png->bit_depth, 16);
  EXPECT_EQ(png->channels, 1);
  EXPECT_EQ(png->width, 640u);
  const unsigned n = frame_number_of(png->sample(0, 0) / 257);
  EXPECT_EQ(first_grey_mismatch(*png, n, 257), -1);
}

TEST_F(CaptureRunTest, TheCameraIsChosenByItsNumberInTheList) {
  const ToolRun first = this->run({"capture", "--camera", "1", "--frames", "1", "--out", out().string()});
  EXPECT_EQ(first.exit_code, 0) << first.err;
  EXPECT_TRUE(contains(first.out, "capturing from Virtual Face Camera")) << first.out;

  const ToolRun second = this->run({"capture", "--camera", "2", "--frames", "1", "--out", (folder_ / "two").string()});
  EXPECT_EQ(second.exit_code, 1);
  EXPECT_TRUE(contains(second.err, "--camera 2: 1 camera present; `vexcap-capture list` numbers them")) << second.err;
}

TEST_F(CaptureRunTest, AFailedCaptureExitsNonZeroSayingWhyAndWritesNothing) {
  const ToolRun run = this->run({"capture", "--camera", "no-such-camera", "--out", out().string()});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_TRUE(contains(run.err, "vexcap_get_device_capabilities failed: -1 VEXCAP_E_FAIL")) << run.err;
  EXPECT_TRUE(fs::is_empty(out()));

  const ToolRun undecodable = this->run({"capture", "--scenario", "undecodable", "--out", out().string()});
  EXPECT_EQ(undecodable.exit_code, 1);
  EXPECT_TRUE(contains(undecodable.err, "(unsupported-format event)")) << undecodable.err;
  EXPECT_TRUE(fs::is_empty(out()));

  const ToolRun usage = this->run({"capture", "--frames", "many"});
  EXPECT_EQ(usage.exit_code, 2);
  EXPECT_TRUE(contains(usage.err, "--frames: not a whole number in range: many")) << usage.err;

  const ToolRun other_command = this->run({"capture", "--watch", "5"});
  EXPECT_EQ(other_command.exit_code, 2);
  EXPECT_TRUE(contains(other_command.err, "capture has no option --watch (an option of list)")) << other_command.err;
}

TEST_F(CaptureRunTest, TheOutputFolderIsCheckedBeforeTheCameraOpens) {
  // The system has no camera: a refusal about the folder shows the folder came first.
  fs::create_directories(out());
  std::ofstream(out() / "frame-000003.png") << "an earlier capture";
  const ToolRun earlier = this->run({"capture", "--scenario", "no-camera", "--out", out().string()});
  EXPECT_EQ(earlier.exit_code, 1);
  EXPECT_TRUE(contains(earlier.err, "holds an earlier capture (1 file such as frame-000003.png) that the new "
                                    "frames.csv would not list"))
      << earlier.err;

  const ToolRun overwritten = this->run({"capture", "--frames", "2", "--out", out().string(), "--overwrite"});
  EXPECT_EQ(overwritten.exit_code, 0) << overwritten.err;
  EXPECT_EQ(files_in(out(), ".png"), (std::vector<std::string>{"frame-000000.png", "frame-000001.png"}));
  EXPECT_EQ(csv_rows(out() / "frames.csv").size(), 3u);

  std::ofstream(folder_ / "a-file") << "not a folder";
  const ToolRun file = this->run({"capture", "--scenario", "no-camera", "--out", (folder_ / "a-file").string()});
  EXPECT_EQ(file.exit_code, 1);
  EXPECT_TRUE(contains(file.err, "a-file is a file")) << file.err;
}

TEST_F(CaptureRunTest, AWriteThatFailsNamesTheSystemsReason) {
  if (!platform_sends_signals()) GTEST_SKIP() << "no file-size limit for a child here";
  // Every file may hold 4 KB: the first PNG (about 6.5 KB of the camera's gradient) is larger,
  // the CSV is not.
  ToolProcess tool({"capture", "--frames", "3", "--out", out().string()}, folder_, {4096});
  const ToolRun run = tool.wait();
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_TRUE(contains(run.err, "cannot write " + (out() / "frame-000000.png").string() + ": File too large"))
      << run.err;
  EXPECT_TRUE(files_in(out(), ".part").empty());
  EXPECT_TRUE(files_in(out(), ".png").empty());
}

// Waits until the capture has written `count` PNG files, then sends `signal_number`.
ToolRun interrupt_after_frames(ToolProcess& tool, const fs::path& out, int count, int signal_number) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!fs::exists(out / ("frame-00000" + std::to_string(count - 1) + ".png")) &&
         std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  tool.signal(signal_number);
  return tool.wait();
}

TEST_F(CaptureRunTest, AnInterruptedCaptureLeavesOnlyCompleteFilesAndTellsTheSignal) {
  if (!platform_sends_signals()) GTEST_SKIP() << "signals to other processes are POSIX";
  for (const auto& [signal_number, code] : {std::pair{SIGINT, 130}, std::pair{SIGTERM, 143}}) {
    const fs::path folder = out() / std::to_string(signal_number);
    ToolProcess tool({"capture", "--seconds", "60", "--out", folder.string()}, folder_);
    const ToolRun run = interrupt_after_frames(tool, folder, 4, signal_number);
    EXPECT_EQ(run.exit_code, code) << run.err;
    EXPECT_TRUE(contains(run.out, "summary: "));
    EXPECT_TRUE(contains(run.out, "interrupted: the files above are complete"));

    EXPECT_TRUE(files_in(folder, ".part").empty());
    const std::vector<std::string> pngs = files_in(folder, ".png");
    ASSERT_GE(pngs.size(), 4u);
    for (const std::string& name : pngs) EXPECT_TRUE(decode_png(folder / name)) << name;
    EXPECT_EQ(csv_rows(folder / "frames.csv").size(), pngs.size() + 1);
  }
}

TEST_F(CaptureRunTest, TheLibrarysLogStartsOnceTheCameraIsOpen) {
  const ToolRun run = this->run({"capture", "--log", "--frames", "2", "--every", "0", "--out", out().string()});
  ASSERT_EQ(run.exit_code, 0) << run.err;
  EXPECT_TRUE(contains(run.err, "--log: the library's log starts here, once the camera is open")) << run.err;
  // Lines of the frame path, as the library prints them, before the tool's own first line.
  const std::size_t first_frame_line = run.out.find("D: Frame Format: 62 (Gray8)\n");
  EXPECT_NE(first_frame_line, std::string::npos) << run.out;
  EXPECT_LT(run.out.find("\nD: Timestamp: "), run.out.find("summary: ")) << run.out;

  const ToolRun quiet = this->run({"capture", "--frames", "2", "--every", "0", "--out", out().string(), "--overwrite"});
  EXPECT_FALSE(contains(quiet.out, "D: ")) << quiet.out;
}

}  // namespace
}  // namespace vexcap::tool::testing
