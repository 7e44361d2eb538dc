#include "sources/discovery.h"

#include <cwctype>
#include <vector>

#include "log/log.h"
#include "platform/port.h"
#include "vexcap/vexcap.h"

namespace vexcap::sources {

namespace {

using platform::SourceKind;

bool contains(const std::optional<std::wstring>& text, const std::wstring& part) {
  return text && text->find(part) != std::wstring::npos;
}

std::wstring lower(std::wstring text) {
  for (wchar_t& c : text) c = static_cast<wchar_t>(std::towlower(c));
  return text;
}

int capability_index(SourceKind kind) {
  switch (kind) {
    case SourceKind::Color:
      return VEXCAP_CAPABILITY_COLOR;
    case SourceKind::Infrared:
      return VEXCAP_CAPABILITY_INFRARED;
    case SourceKind::Depth:
      return VEXCAP_CAPABILITY_DEPTH;
    default:
      return VEXCAP_CAPABILITY_OTHER;
  }
}

std::vector<platform::SourceInfo> sources_of(const platform::SourceGroup& group) {
  auto infos = group.source_infos();
  return infos ? std::move(*infos) : std::vector<platform::SourceInfo>{};
}

bool source_has_vid_pid(const platform::SourceInfo& info, const std::wstring& vid, const std::wstring& pid) {
  return contains(info.id, vid) && contains(info.id, pid);
}

// Runs one query over a fresh enumeration; a platform failure anywhere answers E_ABORT.
template <typename Walk>
hresult walk_groups(platform::Platform& platform, Walk&& walk) {
  try {
    const auto groups = platform.find_all_source_groups();
    return walk(groups);
  } catch (const platform::PlatformError& error) {
    VXLOG('E', "exception: %ws", error.message().c_str());
    return HR_ABORT;
  }
}

// Classifies a group id: 1 "SWD#", 2 "USB#", 0 neither.
std::uint32_t bus_type(const std::optional<std::wstring>& id) {
  if (contains(id, L"SWD#")) return VEXCAP_GROUP_TYPE_SOFTWARE;
  if (contains(id, L"USB#")) return VEXCAP_GROUP_TYPE_USB;
  return VEXCAP_GROUP_TYPE_NONE;
}

}  // namespace

hresult query_device_capabilities(platform::Platform& platform, const std::wstring& group_id,
                                  std::uint8_t* capabilities) {
  return walk_groups(platform, [&](const auto& groups) {
    bool found = false;
    for (const auto& group : groups) {
      if (!group || group->id() != group_id) continue;  // exact, case-sensitive
      found = true;
      for (const auto& info : sources_of(*group)) capabilities[capability_index(info.kind)] = 1;
    }
    return found ? HR_OK : HR_NOT_FOUND_ENUM;
  });
}

hresult query_source_group_type(platform::Platform& platform, std::uint32_t* type) {
  return walk_groups(platform, [&](const auto& groups) {
    std::uint32_t answer = VEXCAP_GROUP_TYPE_OTHER;
    bool found = false;
    for (const auto& group : groups) {
      if (!group) continue;
      for (const auto& info : sources_of(*group))
        if (info.kind == SourceKind::Color || info.kind == SourceKind::Infrared) found = true;
      const std::uint32_t bus = bus_type(group->id());
      if (bus == VEXCAP_GROUP_TYPE_NONE) continue;
      found = true;
      answer = bus;
      if (bus == VEXCAP_GROUP_TYPE_SOFTWARE) break;  // a software device decides at once
    }
    *type = found ? answer : VEXCAP_GROUP_TYPE_NONE;
    return found ? HR_OK : HR_DEVICE_NOT_AVAILABLE;
  });
}

hresult query_source_group_type_for_vid_pid(platform::Platform& platform, const std::wstring& vid,
                                            const std::wstring& pid, std::uint32_t* type) {
  return walk_groups(platform, [&](const auto& groups) {
    std::uint32_t answer = VEXCAP_GROUP_TYPE_OTHER;
    bool found = false;
    for (const auto& group : groups) {
      if (!group) continue;
      bool qualifies = false;
      for (const auto& info : sources_of(*group)) qualifies = qualifies || source_has_vid_pid(info, vid, pid);
      if (!qualifies) continue;
      const std::uint32_t bus = bus_type(group->id());
      if (bus == VEXCAP_GROUP_TYPE_NONE) continue;  // unlike the plain query, never 3
      found = true;
      answer = bus;
      if (bus == VEXCAP_GROUP_TYPE_SOFTWARE) break;
    }
    *type = found ? answer : VEXCAP_GROUP_TYPE_NONE;
    return found ? HR_OK : HR_DEVICE_NOT_AVAILABLE;
  });
}

hresult query_vid_pid_used(platform::Platform& platform, const std::wstring& group_id,
                           const std::wstring& vid, const std::wstring& pid, bool* used) {
  return walk_groups(platform, [&](const auto& groups) {
    for (const auto& group : groups) {
      if (!group || group->id() != group_id) continue;
      for (const auto& info : sources_of(*group)) {
        if (source_has_vid_pid(info, vid, pid)) {
          *used = true;
          return HR_OK;
        }
      }
    }
    return HR_OK;
  });
}

hresult query_device_locations(platform::Platform& platform, const std::wstring& id_text,
                               std::uint8_t* locations) {
  const std::wstring wanted = lower(id_text);
  return walk_groups(platform, [&](const auto& groups) {
    bool matched = false;
    for (const auto& group : groups) {
      if (!group) continue;
      for (const auto& info : sources_of(*group)) {
        const auto& device = info.device_information;
        if (!device || !device->id || lower(*device->id).find(wanted) == std::wstring::npos) continue;
        const auto panel = static_cast<int>(device->enclosure_panel.value_or(platform::Panel::Unknown));
        if (panel < 0 || panel >= VEXCAP_PANEL_COUNT) continue;
        locations[panel] = 1;
        matched = true;
      }
    }
    return matched ? HR_OK : HR_DEVICE_NOT_AVAILABLE;
  });
}

hresult query_targeted_location(platform::Platform& platform, std::uint32_t* panel) {
  return walk_groups(platform, [&](const auto& groups) {
    for (const auto& group : groups) {
      if (!group) continue;
      for (const auto& info : sources_of(*group)) {
        if (info.kind != SourceKind::Color && info.kind != SourceKind::Infrared) continue;
        if (info.device_information && info.device_information->enclosure_panel) {
          *panel = static_cast<std::uint32_t>(*info.device_information->enclosure_panel);
          return HR_OK;
        }
      }
    }
    return HR_OK;
  });
}

}  // namespace vexcap::sources
