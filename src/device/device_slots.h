// The request thread's table of open devices: one slot for stream mode 0 and one for every
// non-zero mode. A second open of a slot keeps the first device running, unreachable, until
// exit. Every change is mirrored, as weak references, into the OpenDevices the deferred requests
// read. Request thread only.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "device/device.h"
#include "device/open_devices.h"

namespace vexcap::device {

class DeviceSlots {
 public:
  explicit DeviceSlots(std::shared_ptr<OpenDevices> mirror) : mirror_(std::move(mirror)) {}

  // The device the handle's slot holds, or null.
  const std::shared_ptr<Device>& find(const vexcap_device& handle) const { return slot(handle.stream_mode); }
  // Puts an opened device into the slot of its stream mode.
  void put(std::uint32_t stream_mode, std::shared_ptr<Device> device);
  // Empties the handle's slot and hands its device over; null when it was empty.
  std::shared_ptr<Device> take(const vexcap_device& handle);
  // Empties every slot and hands over every device, the unreachable ones included.
  std::vector<std::shared_ptr<Device>> take_all();

 private:
  const std::shared_ptr<Device>& slot(std::uint32_t stream_mode) const {
    return slots_[OpenDevices::slot_of(stream_mode)];
  }

  const std::shared_ptr<OpenDevices> mirror_;
  std::shared_ptr<Device> slots_[2];
  // Devices replaced by a second open of their slot: unreachable, but kept running.
  std::vector<std::shared_ptr<Device>> unreachable_;
};

}  // namespace vexcap::device
