#include "platform/virtual/device_watcher.h"

#include "platform/virtual/known_ids.h"

namespace vexcap::virtual_camera {

struct VirtualDeviceWatcher::Core : WatcherSink, std::enable_shared_from_this<Core> {
  std::mutex mutex;  // guards the handler maps, next_token and started
  std::map<platform::EventToken, AddedHandler> added;
  std::map<platform::EventToken, UpdateHandler> removed;
  std::map<platform::EventToken, UpdateHandler> updated;
  platform::EventToken next_token = 1;
  bool started = false;
  EventThread events;  // declared last: joined first, while the maps still exist

  template <typename Handler, typename Arg>
  void post(std::map<platform::EventToken, Handler> Core::*handlers, Arg arg) {
    events.post([weak = weak_from_this(), handlers, arg] {
      auto self = weak.lock();
      if (!self) return;
      std::vector<Handler> to_call;
      {
        std::lock_guard lock(self->mutex);
        if (!self->started) return;
        for (auto& [token, handler] : (*self).*handlers) to_call.push_back(handler);
      }
      for (auto& handler : to_call) handler(arg);
    });
  }
  void post_added(const platform::DeviceInformation& info) override { post(&Core::added, info); }
  void post_removed(const std::wstring& id) override { post(&Core::removed, platform::DeviceInformationUpdate{id}); }
  void post_updated(const std::wstring& id) override { post(&Core::updated, platform::DeviceInformationUpdate{id}); }
};

VirtualDeviceWatcher::VirtualDeviceWatcher(std::shared_ptr<World> world)
    : world_(std::move(world)), core_(std::make_shared<Core>()) {}

VirtualDeviceWatcher::~VirtualDeviceWatcher() { world_->stop_watcher(core_.get()); }

platform::EventToken VirtualDeviceWatcher::add_added(AddedHandler handler) {
  std::lock_guard lock(core_->mutex);
  core_->added.emplace(core_->next_token, std::move(handler));
  return core_->next_token++;
}

platform::EventToken VirtualDeviceWatcher::add_removed(UpdateHandler handler) {
  std::lock_guard lock(core_->mutex);
  core_->removed.emplace(core_->next_token, std::move(handler));
  return core_->next_token++;
}

platform::EventToken VirtualDeviceWatcher::add_updated(UpdateHandler handler) {
  std::lock_guard lock(core_->mutex);
  core_->updated.emplace(core_->next_token, std::move(handler));
  return core_->next_token++;
}

void VirtualDeviceWatcher::remove_added(platform::EventToken token) {
  std::lock_guard lock(core_->mutex);
  core_->added.erase(token);
}

void VirtualDeviceWatcher::remove_removed(platform::EventToken token) {
  std::lock_guard lock(core_->mutex);
  core_->removed.erase(token);
}

void VirtualDeviceWatcher::remove_updated(platform::EventToken token) {
  std::lock_guard lock(core_->mutex);
  core_->updated.erase(token);
}

void VirtualDeviceWatcher::start() {
  world_->enter_call_or_throw(PlatformCall::StartWatcher);
  {
    std::lock_guard lock(core_->mutex);
    if (core_->started) throw platform::PlatformError(ids::kIllegalMethodCall, L"The watcher is already started.");
    core_->started = true;
  }
  world_->start_watcher(core_);
}

void VirtualDeviceWatcher::stop() {
  world_->stop_watcher(core_.get());
  std::lock_guard lock(core_->mutex);
  core_->started = false;
}

}  // namespace vexcap::virtual_camera
