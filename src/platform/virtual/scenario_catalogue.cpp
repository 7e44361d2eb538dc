#include "platform/virtual/scenario_catalogue.h"

#include <functional>

namespace vexcap::virtual_camera {

namespace {

FormatModel grey16(std::uint32_t width, std::uint32_t height, std::uint32_t fps) {
  FormatModel format;
  format.subtype = L"L16";
  format.width = width;
  format.height = height;
  format.frame_rate_numerator = fps;
  return format;
}

struct BuiltIn {
  CatalogueEntry entry;
  std::function<Scenario()> build;
};

const std::vector<BuiltIn>& built_ins() {
  static const std::vector<BuiltIn> all{
      {{"default", "one USB face-authentication camera: infrared Gray8 640x480, colour NV12 up to 1920x1080"},
       [] { return default_scenario(); }},
      {{"gray16", "the default camera with a 16-bit infrared sensor (L16 640x480 @30, 320x240 @60)"},
       [] {
         Scenario s = default_scenario();
         SourceModel& infrared = s.groups.at(0).sources.at(0);
         infrared.formats = {grey16(640, 480, 30), grey16(320, 240, 60)};
         infrared.current_format = 0;
         return s;
       }},
      {{"infrared-only", "the default camera without its colour sensor"},
       [] {
         Scenario s = default_scenario();
         s.groups.at(0).sources.resize(1);
         return s;
       }},
      {{"undecodable", "the default camera whose infrared sensor sends MJPG, which no bitmap decodes"},
       [] {
         Scenario s = default_scenario();
         SourceModel& infrared = s.groups.at(0).sources.at(0);
         infrared.formats = {infrared.formats.at(0)};
         infrared.formats[0].subtype = L"MJPG";
         return s;
       }},
      {{"no-camera", "a system without cameras"}, [] { return Scenario{}; }},
  };
  return all;
}

}  // namespace

std::vector<CatalogueEntry> scenario_catalogue() {
  std::vector<CatalogueEntry> entries;
  for (const BuiltIn& built_in : built_ins()) entries.push_back(built_in.entry);
  return entries;
}

std::optional<Scenario> named_scenario(const std::string& name) {
  for (const BuiltIn& built_in : built_ins())
    if (built_in.entry.name == name) return built_in.build();
  return std::nullopt;
}

}  // namespace vexcap::virtual_camera
