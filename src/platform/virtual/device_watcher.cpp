#include "platform/virtual/device_watcher.h"

#include "platform/virtual/handler_table.h"
#include "platform/virtual/known_ids.h"

namespace vexcap::virtual_camera {

struct VirtualDeviceWatcher::Core : WatcherSink, std::enable_shared_from_this<Core> {
  std::mutex mutex;  // guards the handler tables, the tokens and started
  HandlerTable<AddedHandler> added;
  HandlerTable<UpdateHandler> removed;
  HandlerTable<UpdateHandler> updated;
  TokenCounter tokens;
  bool started = false;
  EventThread events;  // declared last: joined first, while the maps still exist

  template <typename Handler, typename Arg>
  void post(HandlerTable<Handler> Core::*handlers, Arg arg) {
    events.post([weak = weak_from_this(), handlers, arg] {
      auto self = weak.lock();
      if (!self) return;
      std::vector<Handler> to_call;
      {
        std::lock_guard lock(self->mutex);
        if (!self->started) return;
        to_call = ((*self).*handlers).handlers();
      }
      for (auto& handler : to_call) handler(arg);
    });
  }
  template <typename Handler>
  platform::EventToken add(HandlerTable<Handler>& table, Handler handler) {
    std::lock_guard lock(mutex);
    return table.add(tokens, std::move(handler));
  }
  template <typename Handler>
  void remove(HandlerTable<Handler>& table, platform::EventToken token) {
    std::lock_guard lock(mutex);
    table.remove(token);
  }
  void post_added(const platform::DeviceInformation& info) override { post(&Core::added, info); }
  void post_removed(const std::wstring& id) override { post(&Core::removed, platform::DeviceInformationUpdate{id}); }
  void post_updated(const std::wstring& id) override { post(&Core::updated, platform::DeviceInformationUpdate{id}); }
};

VirtualDeviceWatcher::VirtualDeviceWatcher(std::shared_ptr<World> world)
    : world_(std::move(world)), core_(std::make_shared<Core>()) {}

VirtualDeviceWatcher::~VirtualDeviceWatcher() { world_->stop_watcher(core_.get()); }

platform::EventToken VirtualDeviceWatcher::add_added(AddedHandler handler) {
  return core_->add(core_->added, std::move(handler));
}

platform::EventToken VirtualDeviceWatcher::add_removed(UpdateHandler handler) {
  return core_->add(core_->removed, std::move(handler));
}

platform::EventToken VirtualDeviceWatcher::add_updated(UpdateHandler handler) {
  return core_->add(core_->updated, std::move(handler));
}

void VirtualDeviceWatcher::remove_added(platform::EventToken token) { core_->remove(core_->added, token); }

void VirtualDeviceWatcher::remove_removed(platform::EventToken token) {
  core_->remove(core_->removed, token);
}

void VirtualDeviceWatcher::remove_updated(platform::EventToken token) {
  core_->remove(core_->updated, token);
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
