#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "log/log.h"
#include "support/log_capture.h"

namespace vexcap {
namespace {

using testing::LogCapture;

struct Collected {
  std::vector<std::string> lines;
  static void sink(char level, const char* message, void* context) {
    static_cast<Collected*>(context)->lines.push_back(std::string(1, level) + ": " + message);
  }
};

TEST(DiagnosticLog, SilentBeforeAnyCaptureClientExists) {
  Collected collected;
  log::set_sink_for_testing(&Collected::sink, &collected);
  log::client_destroyed();
  VXLOG('E', "nobody hears this");
  log::set_output_from_property(0x501);  // ignored while not ready
  VXLOG('E', "nor this");
  log::set_sink_for_testing(nullptr, nullptr);
  EXPECT_TRUE(collected.lines.empty());
}

TEST(DiagnosticLog, ClientConstructionSwitchesOutputOffUntilThePropertySaysOn) {
  Collected collected;
  log::set_sink_for_testing(&Collected::sink, &collected);
  log::client_constructed();
  VXLOG('I', "dropped while off");
  log::set_output_from_property(0x501);
  VXLOG('I', "printed %d", 1);
  log::set_output_from_property(0x500);
  VXLOG('I', "dropped again");
  log::set_output_from_property(0x501);
  log::client_constructed();  // every construction switches output off again
  VXLOG('I', "dropped after a new client");
  log::client_destroyed();
  log::set_sink_for_testing(nullptr, nullptr);
  EXPECT_EQ(collected.lines, std::vector<std::string>{"I: printed 1"});
}

TEST(DiagnosticLog, LevelLetterIsPrintedAsGiven) {
  LogCapture log;
  VXLOG('W', "E: UnregisterClass failed");
  VXLOG('D', "debug");
  EXPECT_EQ(log.lines(), (std::vector<std::string>{"W: E: UnregisterClass failed", "D: debug"}));
}

TEST(DiagnosticLog, LongMessagesAreCutTo511Characters) {
  LogCapture log;
  const std::string long_text(600, 'x');
  VXLOG('E', "%s", long_text.c_str());
  VXLOG('E', "%s", std::string(511, 'y').c_str());
  const auto lines = log.lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], "E: " + std::string(511, 'x'));
  EXPECT_EQ(lines[1], "E: " + std::string(511, 'y'));
}

TEST(DiagnosticLog, NullFormatPrintsNothing) {
  LogCapture log;
  log::write(0, __LINE__, 'E', nullptr);
  EXPECT_TRUE(log.lines().empty());
}

TEST(DiagnosticLog, WindowsConversionsPrintTheSameOnEveryRuntime) {
  LogCapture log;
  VXLOG('D', "SourceGroup ID= %ws", L"\\\\?\\USB#VID_F00D");
  VXLOG('D', "Illumination: %I64u", static_cast<std::uint64_t>(18446744073709551615ull));
  VXLOG('W', "Failed closing thread: %lu!", static_cast<unsigned>(4000000000u));
  VXLOG('E', "KsPropertyGET 0x%x. bytes returned= %lu \n", 0x80070490u, 48u);
  VXLOG('E', "Failed initializing Media Foundation: %08x", 0x80004005u);
  VXLOG('D', "Framerate: %lf", 29.5);
  VXLOG('D', "Exposure: %llu, Timestamp: %lld, %%", 10000ull, -5ll);
  VXLOG('I', "Got symbolic link: '%ls'", L"link");
  EXPECT_EQ(log.lines(), (std::vector<std::string>{
                             "D: SourceGroup ID= \\\\?\\USB#VID_F00D",
                             "D: Illumination: 18446744073709551615",
                             "W: Failed closing thread: 4000000000!",
                             "E: KsPropertyGET 0x80070490. bytes returned= 48 \n",
                             "E: Failed initializing Media Foundation: 80004005",
                             "D: Framerate: 29.500000",
                             "D: Exposure: 10000, Timestamp: -5, %",
                             "I: Got symbolic link: 'link'",
                         }));
}

TEST(DiagnosticLog, LinesGoToStandardOutput) {
  log::client_constructed();
  log::set_output_from_property(0x501);
  ::testing::internal::CaptureStdout();
  VXLOG('W', "to stdout %d", 7);
  const std::string printed = ::testing::internal::GetCapturedStdout();
  log::client_destroyed();
  EXPECT_EQ(printed, "W: to stdout 7\n");
}

}  // namespace
}  // namespace vexcap
