// A DeviceWatcher on the MediaFrameSourceGroup device selector, behind the port.
#pragma once

#include <memory>

#include "platform/port.h"
#include "platform/windows/com_ptr.h"
#include "platform/windows/winrt/enumeration_abi.h"

namespace vexcap::windows {

class WinrtDeviceWatcher final : public platform::DeviceWatcher {
 public:
  explicit WinrtDeviceWatcher(ComPtr<abi::IDeviceWatcher> watcher) : watcher_(std::move(watcher)) {}

  platform::EventToken add_added(AddedHandler handler) override;
  platform::EventToken add_removed(UpdateHandler handler) override;
  platform::EventToken add_updated(UpdateHandler handler) override;
  void remove_added(platform::EventToken token) override;
  void remove_removed(platform::EventToken token) override;
  void remove_updated(platform::EventToken token) override;
  void start() override;
  void stop() override;

 private:
  ComPtr<abi::IDeviceWatcher> watcher_;
};

// Throws PlatformError when the selector or the watcher cannot be had.
std::unique_ptr<platform::DeviceWatcher> create_source_group_watcher();

}  // namespace vexcap::windows
