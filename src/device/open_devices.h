// Which device object each of the two slots holds (mode 0, any non-zero mode), as the request
// thread last left it. A request deferred from a callback is bound to the device its slot held
// when it was asked for, and runs only while the slot still holds that device.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>

#include "common/mutex.h"

namespace vexcap::device {

class Device;

class OpenDevices {
 public:
  static std::size_t slot_of(std::uint32_t stream_mode) { return stream_mode != 0 ? 1 : 0; }

  void set(std::size_t slot, const std::shared_ptr<Device>& device) {
    MutexLock lock(mutex_);
    slots_[slot] = device;
  }
  std::shared_ptr<Device> get(std::size_t slot) {
    MutexLock lock(mutex_);
    return slots_[slot].lock();
  }

 private:
  Mutex mutex_;
  std::weak_ptr<Device> slots_[2] VEXCAP_GUARDED_BY(mutex_);  // never keeps a device alive
};

}  // namespace vexcap::device
