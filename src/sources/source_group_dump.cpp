#include "sources/source_group_dump.h"

#include "log/log.h"
#include "sources/platform_names.h"

namespace vexcap::sources {

namespace {

void dump_device_information(const platform::SourceInfo& info, std::uint32_t source, std::uint32_t group) {
  const auto& device = info.device_information;
  if (!device) {
    VXLOG('W', "null dev info at source %u group %u", source, group);
    return;
  }
  if (device->id) {
    VXLOG('D', "\t\tid= %ws", device->id->c_str());
  } else {
    VXLOG('W', "null dev info id at source %u group %u", source, group);
  }
  VXLOG('D', "\t\tisDefault= %ws", name_of(device->is_default));
  VXLOG('D', "\t\tisEnabled= %ws", name_of(device->is_enabled));
  VXLOG('D', "\t\tkind= %ws", name_of(device->kind));
  if (device->name) {
    VXLOG('D', "\t\tname= %ws", device->name->c_str());
  } else {
    VXLOG('W', "null dev info name at source %u group %u", source, group);
  }
  if (device->pairing) {
    VXLOG('D', "\t\tisPaired= %ws", name_of(device->pairing->is_paired));
    VXLOG('D', "\t\tcanPair= %ws", name_of(device->pairing->can_pair));
  } else {
    VXLOG('W', "null dev info pair at source %u group %u", source, group);
  }
}

}  // namespace

void dump_source_group(const platform::SourceGroup* group, std::uint32_t index) {
  if (group == nullptr) {
    VXLOG('E', "null group at %u", index);
    return;
  }
  VXLOG('D', "ID: %u", index);
  if (const auto name = group->display_name()) {
    VXLOG('D', "name= %ws", name->c_str());
  } else {
    VXLOG('W', "null display name at group %u", index);
  }
  if (const auto id = group->id()) {
    VXLOG('D', "id= %ws", id->c_str());
  } else {
    VXLOG('W', "null id at group %u", index);
  }
  const auto infos = group->source_infos();
  if (!infos) {
    VXLOG('W', "null source info list at group %u", index);
  } else {
    VXLOG('D', "num of sources= %u", static_cast<std::uint32_t>(infos->size()));
    for (std::uint32_t j = 0; j < infos->size(); ++j) {
      const platform::SourceInfo& info = (*infos)[j];
      VXLOG('D', "\tsourceid= %u", j);
      if (info.id) {
        VXLOG('D', "\tid= %ws", info.id->c_str());
      } else {
        VXLOG('W', "null id at source %u group %u", j, index);
      }
      VXLOG('D', "\tsourcekind= %ws", name_of(info.kind));
      VXLOG('D', "\tPinType= %ws", name_of(info.stream_type));
      dump_device_information(info, j, index);
    }
  }
  VXLOG('D', "------------------------------------\n");
}

}  // namespace vexcap::sources
