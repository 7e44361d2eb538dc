// MediaFrameSourceController behind the port: extended-id properties and the controls of its
// VideoDeviceController.
#pragma once

#include "platform/port.h"
#include "platform/windows/com_ptr.h"
#include "platform/windows/winrt/frames_abi.h"

namespace vexcap::windows {

class WinrtSourceController final : public platform::SourceController {
 public:
  explicit WinrtSourceController(ComPtr<abi::IMediaFrameSourceController> controller)
      : controller_(std::move(controller)) {}

  platform::GetPropertyResult get_property_by_extended_id(const std::vector<std::uint8_t>& id,
                                                          std::optional<std::uint32_t> max_size) override;
  platform::SetPropertyStatus set_property_by_extended_id(const std::vector<std::uint8_t>& id,
                                                          const std::vector<std::uint8_t>& value) override;
  std::shared_ptr<platform::ExposureControl> exposure_control() override;
  std::shared_ptr<platform::IsoSpeedControl> iso_speed_control() override;
  std::shared_ptr<platform::TorchControl> torch_control() override;
  std::shared_ptr<platform::InfraredTorchControl> infrared_torch_control() override;

 private:
  ComPtr<abi::IVideoDeviceController> video_device_controller() const;
  ComPtr<abi::IMediaFrameSourceController> controller_;
};

}  // namespace vexcap::windows
