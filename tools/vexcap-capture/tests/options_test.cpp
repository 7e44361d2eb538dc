// The command line: what a person types becomes the request they meant, or a usage error that
// says what is wrong and with which command.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "options.h"
#include "vexcap/vexcap.h"

namespace vexcap::tool {
namespace {

ParsedCommandLine parse_line(const std::vector<const char*>& words) {
  std::vector<std::string> texts{"vexcap-capture"};
  texts.insert(texts.end(), words.begin(), words.end());
  std::vector<char*> argv;
  for (std::string& text : texts) argv.push_back(text.data());
  return parse_command_line(static_cast<int>(argv.size()), argv.data());
}

Options parse(const std::vector<const char*>& words) {
  ParsedCommandLine parsed = parse_line(words);
  if (!parsed.options) throw UsageError("no options: " + parsed.text);
  return *parsed.options;
}

// The usage error's text, or "" when the words parse.
std::string refusal(const std::vector<const char*>& words) {
  try {
    parse(words);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "";
}

TEST(OptionsTest, CaptureOptionsBecomeOpenParametersPropertiesAndControls) {
  const Options o = parse({"capture", "--reader", "color", "--stream=exclusive", "--size", "1280x720",
                           "--format-apply", "0x13", "--face-auth", "background-subtraction", "--llc", "off",
                           "--exposure", "-5", "--every", "0", "--seconds", "2.5", "--camera", "2", "--overwrite"});
  EXPECT_EQ(o.command, Command::Capture);
  EXPECT_EQ(o.reader, 0u);
  EXPECT_EQ(o.selector, VEXCAP_STREAM_SELECT_EXCLUSIVE);
  EXPECT_EQ(o.width, 1280);
  EXPECT_EQ(o.height, 720);
  EXPECT_EQ(o.format, 19u);
  EXPECT_EQ(o.format_property, VEXCAP_PROP_STREAM_TYPE_APPLY);
  EXPECT_EQ(o.face_auth, 260u);
  EXPECT_EQ(o.llc, 4866u);
  EXPECT_EQ(o.exposure, -5);
  EXPECT_EQ(o.png_every, 0u);
  EXPECT_EQ(o.seconds, 2.5);
  EXPECT_FALSE(o.frames);
  EXPECT_EQ(o.camera.number, 2u);
  EXPECT_FALSE(o.camera.id);
  EXPECT_TRUE(o.overwrite);
}

TEST(OptionsTest, DefaultsAndTheCameraById) {
  const Options capture = parse({"capture"});
  EXPECT_EQ(capture.frames, 30u);
  EXPECT_EQ(capture.reader, 1u);
  EXPECT_EQ(capture.selector, 0u);
  EXPECT_EQ(capture.format_property, VEXCAP_PROP_STREAM_TYPE);
  EXPECT_FALSE(capture.camera.id || capture.camera.number);

  const Options check = parse({"check", "--camera", "USB#VID_F00D", "--cycles", "3", "--junit", "out.xml"});
  EXPECT_EQ(check.camera.id, "USB#VID_F00D");
  EXPECT_EQ(check.start_stop_cycles, 3u);
  EXPECT_EQ(check.junit, "out.xml");
  EXPECT_FALSE(check.frames);

  const Options list = parse({"list", "--json", "--vid", "VID_F00D", "--pid", "PID_CAFE"});
  EXPECT_TRUE(list.json);
  EXPECT_EQ(list.vid, "VID_F00D");
}

TEST(OptionsTest, HelpIsPerCommandAndVersionNamesTheLibrary) {
  const ParsedCommandLine capture_help = parse_line({"capture", "--help"});
  ASSERT_FALSE(capture_help.options);
  EXPECT_EQ(capture_help.exit_code, 0);
  for (const char* option : {"--frames", "--every", "--overwrite", "--camera", "--log"})
    EXPECT_NE(capture_help.text.find(option), std::string::npos) << option;
  for (const char* option : {"--seconds-per-format", "--junit", "--watch", "--json"})
    EXPECT_EQ(capture_help.text.find(option), std::string::npos) << option;

  const ParsedCommandLine check_help = parse_line({"check", "-h"});
  EXPECT_NE(check_help.text.find("--junit"), std::string::npos);
  EXPECT_EQ(check_help.text.find("--reader"), std::string::npos);

  const ParsedCommandLine top = parse_line({"--help"});
  for (const char* command : {"list", "capture", "info", "check"})
    EXPECT_NE(top.text.find(command), std::string::npos) << command;

  const ParsedCommandLine version = parse_line({"--version"});
  EXPECT_FALSE(version.options);
  EXPECT_EQ(version.text, std::string("vexcap-capture ") + VEXCAP_VERSION_STRING + " (VexcapLib " +
                              VEXCAP_VERSION_STRING + ")\n");
}

TEST(OptionsTest, AnOptionOfAnotherCommandIsAnErrorNamingTheCommand) {
  EXPECT_EQ(refusal({"info", "--exposure", "5"}),
            "info has no option --exposure (an option of capture); `vexcap-capture info --help` lists its options");
  EXPECT_EQ(refusal({"check", "--reader=color"}),
            "check has no option --reader (an option of capture, info); `vexcap-capture check --help` lists its options");
  EXPECT_EQ(refusal({"capture", "--watch", "3"}),
            "capture has no option --watch (an option of list); `vexcap-capture capture --help` lists its options");
  EXPECT_EQ(refusal({"list", "--camera", "1"}).substr(0, 25), "list has no option --came");
  EXPECT_EQ(refusal({"capture", "--json"}).substr(0, 29), "capture has no option --json ");
  EXPECT_EQ(refusal({"list", "--verbose"}),
            "list has no option --verbose; `vexcap-capture list --help` lists its options");
  EXPECT_EQ(refusal({"list", "extra"}), "list: unexpected argument: extra");
  EXPECT_EQ(refusal({"list", "--log", "--watch", "2"}), "");
}

TEST(OptionsTest, ValuesThatCannotBeRunAreRefusedWithTheReason) {
  const std::vector<std::pair<std::vector<const char*>, std::string>> cases{
      {{}, "no command given: list, capture, info or check"},
      {{"record"}, "record"},
      {{"capture", "--frames", "0"}, "--frames: must be at least 1, not 0"},
      {{"capture", "--seconds", "0"}, "--seconds: must be more than 0 seconds"},
      {{"capture", "--seconds", "-1"}, "--seconds: not a number of seconds: -1"},
      {{"capture", "--frames", "3", "--seconds", "1"}, "--frames and --seconds: give one of them"},
      {{"capture", "--format", "2", "--format-apply", "3"}, "--format and --format-apply: give one of them"},
      {{"capture", "--size", "0x0"}, "--size: must be at least 1, not 0"},
      {{"capture", "--size", "640"}, "--size: expected WIDTHxHEIGHT, not 640"},
      {{"capture", "--size", "640x70000"}, "--size: not a whole number in range: 70000"},
      {{"capture", "--reader", "ultraviolet"}, "--reader: expected one of color, colour, depth, infrared, ir, not ultraviolet"},
      {{"capture", "--frame-timeout", "0"}, "--frame-timeout: must be more than 0 seconds"},
      {{"capture", "--out", ""}, "--out: give a folder"},
      {{"capture", "--camera", "0"}, "--camera: must be at least 1, not 0"},
      {{"check", "--cycles", "0"}, "--cycles: must be at least 1, not 0"},
      {{"check", "--seconds-per-format", "0"}, "--seconds-per-format: must be more than 0 seconds"},
      {{"list", "--watch", "0"}, "--watch: must be more than 0 seconds"},
      {{"list", "--vid", "VID_F00D"}, "--vid needs --pid: the question is whether both texts name one camera"},
      {{"list", "--pid", "PID_CAFE"}, "--pid needs --vid: the question is whether both texts name one camera"},
      {{"info", "--call-timeout", "0.5"}, "--call-timeout: at least 1 second"},
      {{"info", "--json", "--log"}, "--log and --json: the library's log lines go to standard output too; give one of them"},
  };
  for (const auto& [words, message] : cases) {
    const std::string text = refusal(words);
    EXPECT_NE(text, "") << (words.empty() ? "(nothing)" : words.back()) << " was accepted";
    EXPECT_NE(text.find(message), std::string::npos) << "\"" << text << "\" does not say \"" << message << "\"";
  }
  EXPECT_NE(refusal({"capture", "--iso"}).find("--iso"), std::string::npos);
}

}  // namespace
}  // namespace vexcap::tool
