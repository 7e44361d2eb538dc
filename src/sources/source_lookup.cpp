#include "sources/source_lookup.h"

namespace vexcap::sources {

std::shared_ptr<platform::SourceGroup> find_group_with_kind(
    const std::vector<std::shared_ptr<platform::SourceGroup>>& groups, const std::wstring& id,
    platform::SourceKind kind) {
  for (const auto& group : groups) {
    if (!group) continue;
    const auto infos = group->source_infos();
    if (!infos) continue;
    bool has_kind = false;
    for (const auto& info : *infos) has_kind = has_kind || info.kind == kind;
    if (!has_kind) continue;
    const auto group_id = group->id();
    if (group_id && *group_id == id) return group;
  }
  return nullptr;
}

platform::StreamType default_stream_type(const std::vector<std::shared_ptr<platform::FrameSource>>& sources,
                                         platform::SourceKind kind) {
  platform::StreamType type = platform::StreamType::VideoRecord;
  for (const auto& source : sources) {
    const platform::SourceInfo info = source->info();
    if (info.kind == kind && info.stream_type == platform::StreamType::VideoPreview)
      type = platform::StreamType::VideoPreview;
  }
  return type;
}

platform::StreamType stream_type_to_read(const platform::SourceInfo& info,
                                         platform::StreamType default_type) {
  const auto& device = info.device_information;
  const bool usb = device && device->id && device->id->find(L"USB#") != std::wstring::npos;
  return usb ? platform::StreamType::VideoRecord : default_type;
}

}  // namespace vexcap::sources
