#include "device/device_slots.h"

namespace vexcap::device {

void DeviceSlots::put(std::uint32_t stream_mode, std::shared_ptr<Device> device) {
  const std::size_t index = OpenDevices::slot_of(stream_mode);
  if (slots_[index]) unreachable_.push_back(std::move(slots_[index]));
  slots_[index] = std::move(device);
  mirror_->set(index, slots_[index]);
}

std::shared_ptr<Device> DeviceSlots::take(const vexcap_device& handle) {
  const std::size_t index = OpenDevices::slot_of(handle.stream_mode);
  std::shared_ptr<Device> device = std::move(slots_[index]);  // a second close finds the slot empty
  slots_[index].reset();
  mirror_->set(index, nullptr);
  return device;
}

std::vector<std::shared_ptr<Device>> DeviceSlots::take_all() {
  std::vector<std::shared_ptr<Device>> all = std::move(unreachable_);
  unreachable_.clear();
  for (std::size_t index = 0; index < 2; ++index) {
    if (slots_[index]) all.push_back(std::move(slots_[index]));
    slots_[index].reset();
    mirror_->set(index, nullptr);
  }
  return all;
}

}  // namespace vexcap::device
