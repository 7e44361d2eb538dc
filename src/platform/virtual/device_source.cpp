// Attribute stores, device enumeration and the device source with its IKsControl and topology.
#include <atomic>

#include "platform/virtual/kernel_streaming.h"
#include "platform/virtual/known_ids.h"

namespace vexcap::virtual_camera {

using platform::Guid;

hresult VirtualAttributes::set_guid(const Guid& key, const Guid& value) {
  std::lock_guard lock(mutex_);
  for (auto& [k, v] : guids_)
    if (k == key) return v = value, HR_OK;
  guids_.emplace_back(key, value);
  return HR_OK;
}

hresult VirtualAttributes::set_string(const Guid& key, const std::wstring& value) {
  std::lock_guard lock(mutex_);
  for (auto& [k, v] : strings_)
    if (k == key) return v = value, HR_OK;
  strings_.emplace_back(key, value);
  return HR_OK;
}

std::optional<Guid> VirtualAttributes::guid(const Guid& key) const {
  std::lock_guard lock(mutex_);
  for (auto& [k, v] : guids_)
    if (k == key) return v;
  return std::nullopt;
}

std::optional<std::wstring> VirtualAttributes::string(const Guid& key) const {
  std::lock_guard lock(mutex_);
  for (auto& [k, v] : strings_)
    if (k == key) return v;
  return std::nullopt;
}

namespace {

class VirtualActivate : public platform::DeviceActivate {
 public:
  explicit VirtualActivate(std::wstring link) : link_(std::move(link)) {}
  hresult symbolic_link(std::wstring& link) override {
    link = link_;
    return HR_OK;
  }

 private:
  std::wstring link_;
};

class VirtualKsControl : public platform::KsControl {
 public:
  VirtualKsControl(std::shared_ptr<World> world, std::shared_ptr<GroupState> group, std::wstring link,
                   std::shared_ptr<std::atomic<bool>> shut_down)
      : world_(std::move(world)), group_(std::move(group)), link_(std::move(link)), shut_down_(std::move(shut_down)) {}
  hresult property(const std::uint8_t* request, std::uint32_t request_size, std::uint8_t* data,
                   std::uint32_t data_size, std::uint32_t* bytes_returned) override {
    if (*shut_down_) return ids::kShutdown;
    return ks_property(*world_, *group_, link_, request, request_size, data, data_size, bytes_returned);
  }

 private:
  std::shared_ptr<World> world_;
  std::shared_ptr<GroupState> group_;
  std::wstring link_;
  std::shared_ptr<std::atomic<bool>> shut_down_;
};

class VirtualTopology : public platform::KsTopology {
 public:
  VirtualTopology(std::shared_ptr<World> world, std::shared_ptr<GroupState> group,
                  std::shared_ptr<std::atomic<bool>> shut_down)
      : world_(std::move(world)), group_(std::move(group)), shut_down_(std::move(shut_down)) {}
  hresult node_count(std::uint32_t* count) override {
    if (!count) return HR_POINTER;
    if (*shut_down_) return ids::kShutdown;
    std::lock_guard lock(world_->mutex());
    *count = std::uint32_t(group_->model.ks.nodes.size());
    return HR_OK;
  }
  hresult node_type(std::uint32_t index, Guid* type) override {
    if (!type) return HR_POINTER;
    if (*shut_down_) return ids::kShutdown;
    std::lock_guard lock(world_->mutex());
    if (index >= group_->model.ks.nodes.size()) return HR_INVALIDARG;
    *type = group_->model.ks.nodes[index].type;
    return HR_OK;
  }

 private:
  std::shared_ptr<World> world_;
  std::shared_ptr<GroupState> group_;
  std::shared_ptr<std::atomic<bool>> shut_down_;
};

class VirtualDeviceSource : public platform::DeviceSource {
 public:
  VirtualDeviceSource(std::shared_ptr<World> world, std::shared_ptr<GroupState> group, std::wstring link)
      : world_(std::move(world)), group_(std::move(group)), link_(std::move(link)) {}
  hresult shutdown() override {
    *shut_down_ = true;
    return HR_OK;
  }
  hresult query_ks_control(std::shared_ptr<platform::KsControl>& control) override {
    hresult result;
    {
      std::lock_guard lock(world_->mutex());
      result = group_->model.ks.ks_control_result;
    }
    if (*shut_down_) result = ids::kShutdown;
    if (failed(result)) return result;
    control = std::make_shared<VirtualKsControl>(world_, group_, link_, shut_down_);
    return HR_OK;
  }
  hresult query_topology(std::shared_ptr<platform::KsTopology>& topology) override {
    hresult result;
    {
      std::lock_guard lock(world_->mutex());
      result = group_->model.ks.topology_result;
    }
    if (*shut_down_) result = ids::kShutdown;
    if (failed(result)) return result;
    topology = std::make_shared<VirtualTopology>(world_, group_, shut_down_);
    return HR_OK;
  }

 private:
  std::shared_ptr<World> world_;
  std::shared_ptr<GroupState> group_;
  std::wstring link_;
  // Shared with the control and topology handed out: a shut-down source takes them down too.
  std::shared_ptr<std::atomic<bool>> shut_down_ = std::make_shared<std::atomic<bool>>(false);
};

bool is_video_capture(const VirtualAttributes& attributes) {
  auto type = attributes.guid(ids::kSourceType);
  return type && *type == ids::kSourceTypeVidcap;
}

}  // namespace

hresult enum_device_sources(World& world, platform::Attributes& attributes,
                            std::vector<std::shared_ptr<platform::DeviceActivate>>& activates) {
  if (hresult result = world.enter_call(PlatformCall::EnumDeviceSources); failed(result)) return result;
  auto* virtual_attributes = dynamic_cast<VirtualAttributes*>(&attributes);
  if (!virtual_attributes || !is_video_capture(*virtual_attributes)) return HR_INVALIDARG;
  auto category = virtual_attributes->guid(ids::kVidcapCategory).value_or(ids::kCategoryVideoCamera);
  activates.clear();
  for (auto& group : world.groups()) {
    std::lock_guard lock(world.mutex());
    if (!group->model.enabled) continue;
    for (auto& interface : group->model.ks.interfaces)
      if (interface.category == category) activates.push_back(std::make_shared<VirtualActivate>(interface.symbolic_link));
  }
  return HR_OK;
}

hresult create_device_source(const std::shared_ptr<World>& world, platform::Attributes& attributes,
                             std::shared_ptr<platform::DeviceSource>& source) {
  if (hresult result = world->enter_call(PlatformCall::CreateDeviceSource); failed(result)) return result;
  auto* virtual_attributes = dynamic_cast<VirtualAttributes*>(&attributes);
  if (!virtual_attributes || !is_video_capture(*virtual_attributes)) return HR_INVALIDARG;
  auto link = virtual_attributes->string(ids::kVidcapSymbolicLink);
  if (!link) return HR_INVALIDARG;
  for (auto& group : world->groups()) {
    std::lock_guard lock(world->mutex());
    if (!group->model.enabled) continue;
    for (auto& interface : group->model.ks.interfaces)
      if (interface.symbolic_link == *link) {
        source = std::make_shared<VirtualDeviceSource>(world, group, *link);
        return HR_OK;
      }
  }
  return ids::kFileNotFound;
}

}  // namespace vexcap::virtual_camera
