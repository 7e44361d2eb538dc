// DeviceWatcher over the source groups: on start it reports every present group as Added, then
// Added, Removed and Updated as the scenario changes, all on a thread of its own.
#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "platform/port.h"
#include "platform/virtual/event_thread.h"
#include "platform/virtual/world.h"

namespace vexcap::virtual_camera {

class VirtualDeviceWatcher : public platform::DeviceWatcher {
 public:
  explicit VirtualDeviceWatcher(std::shared_ptr<World> world);
  ~VirtualDeviceWatcher() override;

  platform::EventToken add_added(AddedHandler handler) override;
  platform::EventToken add_removed(UpdateHandler handler) override;
  platform::EventToken add_updated(UpdateHandler handler) override;
  void remove_added(platform::EventToken token) override;
  void remove_removed(platform::EventToken token) override;
  void remove_updated(platform::EventToken token) override;
  void start() override;  // throws E_ILLEGAL_METHOD_CALL when already started
  void stop() override;

 private:
  struct Core;
  std::shared_ptr<World> world_;
  std::shared_ptr<Core> core_;  // registered with the World while started
};

}  // namespace vexcap::virtual_camera
