// `list`, `info` and `check` end to end on the virtual camera: as text, as JSON, as JUnit, with
// the library's log, and interrupted.
#include <signal.h>

#include <thread>

#include "support/json.h"
#include "vexcap/vexcap.h"
#include "tool_run.h"

namespace vexcap::tool::testing {
namespace {

namespace fs = std::filesystem;
using vexcap::testing::Json;

using CommandsRunTest = ToolTest;

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

// Waits until the child's standard output holds `text`, then sends `signal_number`.
ToolRun signal_when_printed(ToolProcess& tool, const fs::path& folder, const std::string& text, int signal_number) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!contains(read_text(folder / "tool-stdout.txt"), text) && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  tool.signal(signal_number);
  return tool.wait();
}

TEST_F(CommandsRunTest, ListDescribesTheCamerasAsTextAndAsJson) {
  const ToolRun list = run({"list", "--vid", "VID_F00D", "--pid", "PID_CAFE"});
  EXPECT_EQ(list.exit_code, 0) << list.err;
  for (const char* line : {"1 camera\n[1] Virtual Face Camera\n", "    sources     infrared, colour\n",
                           "    group type  USB (VID_F00D, PID_CAFE)\n", "    locations   front\n",
                           "    VID_F00D/PID_CAFE  in use by this camera\n",
                           "system: source group type USB; targeted location front\n"})
    EXPECT_TRUE(contains(list.out, line)) << line << " in\n" << list.out;

  const ToolRun json = run({"list", "--json", "--vid", "VID_F00D", "--pid", "PID_0000"});
  ASSERT_EQ(json.exit_code, 0) << json.err;
  const Json document = Json::parse(json.out);  // the whole of standard output is one document
  ASSERT_EQ(document["cameras"].items().size(), 1u);
  const Json& camera = document["cameras"].items()[0];
  EXPECT_EQ(camera["number"].number(), 1);
  EXPECT_EQ(camera["name"].string(), "Virtual Face Camera");
  EXPECT_EQ(camera["id"].string().rfind("\\\\?\\USB#VID_F00D&PID_CAFE&MI_00#", 0), 0u);
  ASSERT_EQ(camera["sources"].items().size(), 2u);
  EXPECT_EQ(camera["sources"].items()[0].string(), "infrared");
  EXPECT_EQ(camera["group_type"].string(), "USB");
  EXPECT_EQ(camera["locations"].items().at(0).string(), "front");
  EXPECT_FALSE(camera["uses_vid_pid"].boolean());
  EXPECT_EQ(document["system"]["targeted_location"].string(), "front");
  EXPECT_FALSE(document.has("events"));

  const ToolRun none = run({"list", "--json", "--scenario", "no-camera"});
  EXPECT_EQ(none.exit_code, 0) << none.err;
  EXPECT_TRUE(Json::parse(none.out)["cameras"].items().empty());
}

TEST_F(CommandsRunTest, ListWithLogOpensTheCameraSoThatTheLibraryLogs) {
  const ToolRun list = run({"list", "--log"});
  ASSERT_EQ(list.exit_code, 0) << list.err;
  EXPECT_TRUE(contains(list.err, "--log: opened Virtual Face Camera so that the library logs")) << list.err;
  EXPECT_TRUE(contains(list.out, "1 camera\n[1] Virtual Face Camera\n")) << list.out;

  const ToolRun none = run({"list", "--log", "--scenario", "no-camera"});
  EXPECT_EQ(none.exit_code, 0);
  EXPECT_TRUE(contains(none.err, "--log: no camera to open, so the library's log stays off")) << none.err;
}

TEST_F(CommandsRunTest, AListThatWatchesEndsOnASignalWithItsCode) {
  if (!platform_sends_signals()) GTEST_SKIP() << "signals to other processes are POSIX";
  ToolProcess text({"list", "--watch", "60"}, folder_);
  const ToolRun interrupted = signal_when_printed(text, folder_, "watching for 60 s", SIGINT);
  EXPECT_EQ(interrupted.exit_code, 130) << interrupted.err;

  ToolProcess json({"list", "--json", "--watch", "60"}, folder_);
  std::this_thread::sleep_for(std::chrono::seconds(3));  // past the listing, into the watch
  json.signal(SIGTERM);
  const ToolRun terminated = json.wait();
  EXPECT_EQ(terminated.exit_code, 143) << terminated.err;
  const Json document = Json::parse(terminated.out);
  EXPECT_TRUE(document["interrupted"].boolean());
  EXPECT_TRUE(document["events"].items().empty());
}

// The line of `text` that starts with `start`, or "".
std::string line_starting(const std::string& text, const std::string& start) {
  const std::size_t at = ("\n" + text).find("\n" + start);
  return at == std::string::npos ? "" : text.substr(at, text.find('\n', at) - at);
}

TEST_F(CommandsRunTest, InfoShowsValuesRangesPropertiesAndFormats) {
  const ToolRun info = run({"info", "--reader", "color", "--camera", "1"});
  ASSERT_EQ(info.exit_code, 0) << info.err;
  const std::string kIndent(31, ' ');
  for (const std::string& line :
       {std::string("  exposure                     10000 (100 ns units, 1000 us)\n") + kIndent +
            "range 100 .. 330000 (the library clamps to it); step not reported by the library\n",
        std::string("  ISO speed                    64\n") + kIndent + "range unknown: the library reports no range for it\n",
        std::string("  22 high-res sensor type      21: none\n"),
        std::string("formats (codes of device property 9 the camera takes)\n  11  colour 640x480 at 30 fps ")})
    EXPECT_TRUE(contains(info.out, line)) << line << " in\n" << info.out;
  // The colour source offers RGB24, which the library converts and prefers: one format.
  EXPECT_TRUE(contains(line_starting(info.out, "  11  "), " 640x480 NV12, 30.0 fps, ")) << info.out;
  EXPECT_EQ(line_starting(info.out, "  12  "), "");

  const ToolRun json = run({"info", "--json"});
  ASSERT_EQ(json.exit_code, 0) << json.err;
  const Json document = Json::parse(json.out);
  EXPECT_EQ(document["reader"].string(), "infrared");
  const Json& exposure = document["controls"]["exposure"];
  EXPECT_EQ(exposure["value"].number(), 10000);
  EXPECT_EQ(exposure["min"].number(), 100);
  EXPECT_EQ(exposure["max"].number(), 330000);
  EXPECT_TRUE(exposure["step"].is_null());
  EXPECT_TRUE(document["controls"]["LED power"]["min"].is_null());
  EXPECT_EQ(document["properties"]["22"]["value"].number(), VEXCAP_FORMAT_HIRES_NONE);
  // The infrared sensor: L8 640x480 at 30 and 15 fps, GRAY8 640x480 at 30 and 320x240 at 60.
  std::vector<double> codes;
  for (const Json& format : document["formats"].items()) {
    codes.push_back(format["code"].number());
    EXPECT_EQ(format["frames"]["pixel_format"].string(), "Gray8") << format["code"].number();
  }
  EXPECT_EQ(codes, (std::vector<double>{1, 2, 5}));
  EXPECT_EQ(document["formats"].items()[0]["frames"]["width"].number(), 320);

  // The exposure went back to where it was.
  const Json again = Json::parse(run({"info", "--json"}).out);
  EXPECT_EQ(again["controls"]["exposure"]["value"].number(), 10000);
}

TEST_F(CommandsRunTest, InfoEndsOnASignalWithItsCode) {
  if (!platform_sends_signals()) GTEST_SKIP() << "signals to other processes are POSIX";
  ToolProcess tool({"info"}, folder_);
  const ToolRun run = signal_when_printed(tool, folder_, "formats (codes", SIGTERM);
  EXPECT_EQ(run.exit_code, 143) << run.err;
  EXPECT_TRUE(contains(run.out, "controls\n")) << run.out;
}

TEST_F(CommandsRunTest, CheckPassesOnTheVirtualCameraAndReportsAsTextJsonAndJUnit) {
  const fs::path junit = folder_ / "check.xml";
  const ToolRun run = this->run({"check", "--seconds-per-format", "0.2", "--cycles", "2", "--junit", junit.string()});
  EXPECT_EQ(run.exit_code, 0) << run.out << run.err;
  EXPECT_FALSE(contains("\n" + run.out, "\nFAIL ")) << run.out;
  EXPECT_TRUE(contains(run.out, "PASS  mode 1 infrared: shared stream")) << run.out;
  EXPECT_TRUE(contains(run.out, "PASS  mode 0 colour: exclusive stream")) << run.out;
  EXPECT_TRUE(contains(run.out, " passed, 0 failed, ")) << run.out;

  const std::string xml = read_text(junit);
  EXPECT_TRUE(contains(xml, "<testsuite name=\"vexcap-capture check\" ")) << xml;
  EXPECT_TRUE(contains(xml, " failures=\"0\" ")) << xml;
  EXPECT_TRUE(contains(xml, "<testcase classname=\"mode 1 infrared\" name=\"shared stream\" ")) << xml;
  std::size_t cases = 0, lines = 0;
  for (std::size_t at = xml.find("<testcase "); at != std::string::npos; at = xml.find("<testcase ", at + 1)) ++cases;
  for (const char* label : {"\nPASS  ", "\nFAIL  ", "\nN/S   "})
    for (std::size_t at = ("\n" + run.out).find(label); at != std::string::npos;
         at = ("\n" + run.out).find(label, at + 1))
      ++lines;
  EXPECT_EQ(cases, lines);

  const ToolRun json = this->run({"check", "--json", "--seconds-per-format", "0.2", "--cycles", "1"});
  EXPECT_EQ(json.exit_code, 0) << json.err;
  const Json document = Json::parse(json.out);
  EXPECT_EQ(document["failed"].number(), 0);
  EXPECT_GT(document["passed"].number(), 10);
  EXPECT_EQ(document["checks"].items().at(0)["name"].string(), "camera present");
  EXPECT_EQ(document["checks"].items().at(0)["outcome"].string(), "pass");

  const ToolRun missing = this->run({"check", "--scenario", "no-camera", "--junit", junit.string()});
  EXPECT_EQ(missing.exit_code, 1);
  EXPECT_TRUE(contains(missing.out, "FAIL  camera present")) << missing.out;
  EXPECT_TRUE(contains(read_text(junit), "<failure message=\"no camera found")) << read_text(junit);
}

TEST_F(CommandsRunTest, AnInterruptedCheckPrintsWhatRanAndTellsTheSignal) {
  if (!platform_sends_signals()) GTEST_SKIP() << "signals to other processes are POSIX";
  ToolProcess tool({"check", "--seconds-per-format", "0.5"}, folder_);
  const ToolRun run = signal_when_printed(tool, folder_, "PASS  mode 1 infrared: shared stream", SIGINT);
  EXPECT_EQ(run.exit_code, 130) << run.err;
  EXPECT_TRUE(contains(run.out, "\ninterrupted")) << run.out;  // during a check, or between two
  EXPECT_TRUE(contains(run.out, "\ncheck: ")) << run.out;
  EXPECT_FALSE(contains(run.out, "mode 0 colour")) << run.out;

  ToolProcess json({"check", "--json", "--seconds-per-format", "0.5"}, folder_);
  std::this_thread::sleep_for(std::chrono::seconds(2));
  json.signal(SIGTERM);
  const ToolRun terminated = json.wait();
  EXPECT_EQ(terminated.exit_code, 143) << terminated.err;
  const Json document = Json::parse(terminated.out);
  EXPECT_TRUE(document["interrupted"].boolean());
  EXPECT_EQ(document["failed"].number(), 0);
}

TEST_F(CommandsRunTest, HelpAndVersionAndUsageErrors) {
  const ToolRun help = run({"info", "--help"});
  EXPECT_EQ(help.exit_code, 0);
  EXPECT_TRUE(contains(help.out, "--reader")) << help.out;
  EXPECT_FALSE(contains(help.out, "--exposure")) << help.out;

  const ToolRun version = run({"--version"});
  EXPECT_EQ(version.exit_code, 0);
  EXPECT_EQ(version.out.rfind("vexcap-capture ", 0), 0u) << version.out;

  const ToolRun wrong = run({"info", "--exposure", "5"});
  EXPECT_EQ(wrong.exit_code, 2);
  EXPECT_TRUE(contains(wrong.err, "vexcap-capture: info has no option --exposure (an option of capture)")) << wrong.err;
  EXPECT_TRUE(wrong.out.empty());
}

}  // namespace
}  // namespace vexcap::tool::testing
