// Device ids and VID/PID texts of any content through the discovery exports, on the default
// virtual camera. Texts are spliced from pieces of the camera's real ids (in any case) and
// random characters, so both matches and near misses come up. The answers are checked against
// the scenario's ids.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstdlib>
#include <cwctype>
#include <string>
#include <vector>

#include "fuzz_log.h"
#include "platform/virtual/virtual_camera.h"
#include "vexcap/vexcap.h"

namespace vc = vexcap::virtual_camera;

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

struct Camera {
  std::wstring group_id;
  std::vector<std::wstring> source_ids;  // what VID/PID texts are looked for in
  std::vector<std::wstring> device_ids;  // what location texts are looked for in
  std::vector<std::wstring> pieces;
};

const Camera& camera() {
  static const Camera known = [] {
    Camera c;
    const vc::Scenario scenario = vc::default_scenario();
    const vc::GroupModel& group = scenario.groups.at(0);
    c.group_id = *group.id;
    for (const vc::SourceModel& source : group.sources) {
      c.source_ids.push_back(source.id.value_or(L""));
      if (source.device_information && source.device_information->id)
        c.device_ids.push_back(*source.device_information->id);
    }
    c.pieces = {c.group_id, L"VID_F00D", L"PID_CAFE", L"USB#", L"SWD#", L"MI_00", L"\\\\?\\"};
    c.pieces.insert(c.pieces.end(), c.source_ids.begin(), c.source_ids.end());
    return c;
  }();
  return known;
}

std::wstring text(FuzzedDataProvider& input) {
  std::wstring out;
  const int parts = input.ConsumeIntegralInRange<int>(0, 4);
  for (int i = 0; i < parts; ++i) {
    switch (input.ConsumeIntegralInRange<int>(0, 3)) {
      case 0: {
        out += input.PickValueInArray<std::wstring>({L"", L"%s", L"%n", L"\u00e9", L"\U0001F4F7"});
        out.push_back(static_cast<wchar_t>(input.ConsumeIntegral<std::uint16_t>()));
        break;
      }
      default: {
        const std::wstring& piece = camera().pieces[input.ConsumeIntegralInRange<std::size_t>(
            0, camera().pieces.size() - 1)];
        const std::size_t from = input.ConsumeIntegralInRange<std::size_t>(0, piece.size());
        std::wstring part = piece.substr(from, input.ConsumeIntegralInRange<std::size_t>(0, piece.size()));
        if (input.ConsumeBool())
          for (wchar_t& c : part) c = static_cast<wchar_t>(std::towlower(c));
        out += part;
      }
    }
  }
  return out;
}

bool contains(const std::wstring& haystack, const std::wstring& needle) {
  return haystack.find(needle) != std::wstring::npos;
}

std::wstring folded(std::wstring s) {
  for (wchar_t& c : s) c = static_cast<wchar_t>(std::towlower(c));
  return s;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const bool started = [] {
    vexcap::fuzzing::log_into_nothing();
    return vexcap_init() == VEXCAP_OK;
  }();
  require(started);

  FuzzedDataProvider input(data, size);
  const std::wstring first = text(input);
  const std::wstring second = text(input);
  const std::wstring third = text(input);
  const Camera& cam = camera();
  auto has_vid_pid = [&](const std::wstring& vid, const std::wstring& pid) {
    for (const auto& id : cam.source_ids)
      if (contains(id, vid) && contains(id, pid)) return true;
    return false;
  };

  switch (input.ConsumeIntegralInRange<int>(0, 3)) {
    case 0: {
      uint8_t capabilities[VEXCAP_CAPABILITY_COUNT] = {};
      const int result = vexcap_get_device_capabilities(first.c_str(), capabilities);
      const bool same = std::wstring(first.c_str()) == cam.group_id;  // the export reads up to the NUL
      require(result == (same ? VEXCAP_OK : VEXCAP_E_FAIL));
      require(capabilities[VEXCAP_CAPABILITY_COLOR] == same && capabilities[VEXCAP_CAPABILITY_INFRARED] == same);
      require(capabilities[VEXCAP_CAPABILITY_DEPTH] == 0 && capabilities[VEXCAP_CAPABILITY_OTHER] == 0);
      break;
    }
    case 1: {
      const int used = vexcap_is_vidpid_used_by_device(first.c_str(), second.c_str(), third.c_str());
      const bool expected = std::wstring(first.c_str()) == cam.group_id &&
                            has_vid_pid(second.c_str(), third.c_str());
      require(used == (expected ? 1 : 0));
      break;
    }
    case 2: {
      uint32_t type = 77;
      const int result = vexcap_get_source_group_type_for_vid_pid(second.c_str(), third.c_str(), &type);
      const bool expected = has_vid_pid(second.c_str(), third.c_str());
      require(result == (expected ? VEXCAP_OK : VEXCAP_E_FAIL));
      require(type == (expected ? VEXCAP_GROUP_TYPE_USB : VEXCAP_GROUP_TYPE_NONE));
      break;
    }
    default: {
      uint8_t locations[VEXCAP_PANEL_COUNT] = {};
      const int result = vexcap_get_device_locations(first.c_str(), locations);
      bool matched = false;
      for (const auto& id : cam.device_ids) matched = matched || contains(folded(id), folded(first.c_str()));
      require(result == (matched ? VEXCAP_OK : VEXCAP_E_FAIL));
      require(locations[VEXCAP_PANEL_FRONT] == matched);
      for (int panel = 0; panel < VEXCAP_PANEL_COUNT; ++panel)
        if (panel != VEXCAP_PANEL_FRONT) require(locations[panel] == 0);
      break;
    }
  }
  return 0;
}
