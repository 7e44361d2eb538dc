// The command line: what a person types becomes the request they meant, or a usage error.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "options.h"
#include "vexcap/vexcap.h"

namespace vexcap::tool {
namespace {

Options parse(const std::vector<const char*>& words) {
  std::vector<std::string> texts{"vexcap-capture"};
  texts.insert(texts.end(), words.begin(), words.end());
  std::vector<char*> argv;
  for (std::string& text : texts) argv.push_back(text.data());
  return parse_options(static_cast<int>(argv.size()), argv.data());
}

TEST(OptionsTest, CaptureOptionsBecomeOpenParametersPropertiesAndControls) {
  const Options o = parse({"capture", "--reader", "color", "--stream=exclusive", "--size", "1280x720",
                           "--format-apply", "0x13", "--face-auth", "background-subtraction", "--llc", "off",
                           "--exposure", "-5", "--every", "0", "--seconds", "2.5"});
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
}

TEST(OptionsTest, ACaptureWithoutALimitTakesThirtyFramesOfTheInfraredReader) {
  const Options o = parse({"capture"});
  EXPECT_EQ(o.frames, 30u);
  EXPECT_EQ(o.reader, 1u);
  EXPECT_EQ(o.selector, 0u);
  EXPECT_EQ(o.format_property, VEXCAP_PROP_STREAM_TYPE);
  EXPECT_EQ(parse({"--help"}).command, Command::Help);
}

TEST(OptionsTest, WhatCannotBeRunIsAUsageError) {
  for (const auto& words : std::vector<std::vector<const char*>>{
           {},
           {"record"},
           {"capture", "--frames", "0"},
           {"capture", "--frames", "3", "--seconds", "1"},
           {"capture", "--size", "640"},
           {"capture", "--size", "640x70000"},
           {"capture", "--reader", "ultraviolet"},
           {"capture", "--iso"},
           {"capture", "--seconds", "-1"},
           {"list", "--verbose"},
           {"list", "extra"}}) {
    EXPECT_THROW(parse(words), UsageError) << (words.empty() ? "(nothing)" : words.back());
  }
}

}  // namespace
}  // namespace vexcap::tool
