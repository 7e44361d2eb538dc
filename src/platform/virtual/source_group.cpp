#include "platform/virtual/source_group.h"

namespace vexcap::virtual_camera {

platform::SourceInfo source_info_of(const SourceModel& source) {
  platform::SourceInfo info;
  info.id = source.id;
  info.kind = source.kind;
  info.stream_type = source.stream_type;
  if (source.device_information) {
    const DeviceInfoModel& d = *source.device_information;
    auto device = std::make_shared<platform::DeviceInformation>();
    device->id = d.id;
    device->name = d.name;
    device->is_default = d.is_default;
    device->is_enabled = d.is_enabled;
    device->pairing = d.pairing;
    device->enclosure_panel = d.enclosure_panel;
    info.device_information = std::move(device);
  }
  return info;
}

VirtualSourceGroup::VirtualSourceGroup(std::shared_ptr<GroupState> group)
    : group_(std::move(group)), id_(group_->model.id), display_name_(group_->model.display_name) {
  if (group_->model.source_infos_missing) return;
  infos_.emplace();
  for (const auto& source : group_->model.sources) infos_->push_back(source_info_of(source));
}

}  // namespace vexcap::virtual_camera
