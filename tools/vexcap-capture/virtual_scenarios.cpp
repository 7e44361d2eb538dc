// Builds with the virtual platform: the built-in camera systems --scenario picks from. This is
// the one file of the tool that reaches past the public header.
#include <functional>

#include "options.h"
#include "platform/virtual/virtual_camera.h"
#include "scenario_choice.h"

namespace vexcap::tool {
namespace {

namespace vc = vexcap::virtual_camera;

vc::FormatModel grey16(std::uint32_t width, std::uint32_t height, std::uint32_t fps) {
  vc::FormatModel format;
  format.subtype = L"L16";
  format.width = width;
  format.height = height;
  format.frame_rate_numerator = fps;
  return format;
}

struct BuiltIn {
  ScenarioInfo info;
  std::function<vc::Scenario()> build;
};

const std::vector<BuiltIn>& scenarios() {
  static const std::vector<BuiltIn> all{
      {{"default", "one USB face-authentication camera: infrared Gray8 640x480, colour NV12 up to 1920x1080"},
       [] { return vc::default_scenario(); }},
      {{"gray16", "the default camera with a 16-bit infrared sensor (L16 640x480 @30, 320x240 @60)"},
       [] {
         vc::Scenario s = vc::default_scenario();
         vc::SourceModel& infrared = s.groups.at(0).sources.at(0);
         infrared.formats = {grey16(640, 480, 30), grey16(320, 240, 60)};
         infrared.current_format = 0;
         return s;
       }},
      {{"infrared-only", "the default camera without its colour sensor"},
       [] {
         vc::Scenario s = vc::default_scenario();
         s.groups.at(0).sources.resize(1);
         return s;
       }},
      {{"undecodable", "the default camera whose infrared sensor sends MJPG, which no bitmap decodes"},
       [] {
         vc::Scenario s = vc::default_scenario();
         vc::SourceModel& infrared = s.groups.at(0).sources.at(0);
         infrared.formats = {infrared.formats.at(0)};
         infrared.formats[0].subtype = L"MJPG";
         return s;
       }},
      {{"no-camera", "a system without cameras"}, [] { return vc::Scenario{}; }},
  };
  return all;
}

}  // namespace

std::vector<ScenarioInfo> built_in_scenarios() {
  std::vector<ScenarioInfo> infos;
  for (const BuiltIn& scenario : scenarios()) infos.push_back(scenario.info);
  return infos;
}

void choose_scenario(const std::optional<std::string>& name) {
  const std::string wanted = name.value_or("default");
  for (const BuiltIn& scenario : scenarios()) {
    if (scenario.info.name == wanted) {
      vc::use_scenario(scenario.build());
      return;
    }
  }
  throw UsageError("--scenario: no built-in scenario named " + wanted + " (see --help)");
}

}  // namespace vexcap::tool
