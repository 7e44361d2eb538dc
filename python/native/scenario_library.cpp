// The library with one more export that sets up its virtual camera: the Python package's
// scenario tests and its frame-path benchmark load this build, since the shipped library runs
// only the default camera. Everything else is the shipped library, unchanged.
#include <cstdint>
#include <string>

#include "platform/virtual/virtual_camera.h"

namespace vc = vexcap::virtual_camera;

// The default camera with one source (0 infrared, 1 colour) offering only this format, rows
// padded by `padding` bytes. Call before vexcap_init or with no device open. 0 on success,
// -5 for a source the camera lacks.
extern "C" __attribute__((visibility("default"))) int vexcap_scenario_use_format(
    std::uint32_t source, const wchar_t* subtype, std::uint32_t width, std::uint32_t height,
    std::uint32_t fps, std::uint32_t padding) {
  vc::Scenario scenario = vc::default_scenario();
  if (subtype == nullptr || source >= scenario.groups.at(0).sources.size()) return -5;
  vc::FormatModel format;
  format.subtype = subtype;
  format.width = width;
  format.height = height;
  format.frame_rate_numerator = fps;
  vc::SourceModel& chosen = scenario.groups.at(0).sources.at(source);
  chosen.formats = {format};
  chosen.current_format = 0;
  chosen.stride_padding = padding;
  vc::use_scenario(scenario);
  return 0;
}
