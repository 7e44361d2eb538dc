#include "platform/windows/source_controller.h"

#include "platform/windows/async_wait.h"
#include "platform/windows/boxing.h"
#include "platform/windows/typed_controls.h"
#include "platform/windows/winrt/abi.h"

namespace vexcap::windows {

namespace {

static_assert(int(abi::MediaFrameSourceGetPropertyStatus::MaxPropertyValueSizeRequired) ==
              int(platform::GetPropertyStatus::MaxPropertyValueSizeRequired));
static_assert(int(abi::MediaFrameSourceSetPropertyStatus::NotInControl) == int(platform::SetPropertyStatus::NotInControl));

// The platform takes the byte arrays as input only.
BYTE* input_bytes(const std::vector<std::uint8_t>& bytes) { return const_cast<BYTE*>(bytes.data()); }

}  // namespace

platform::GetPropertyResult WinrtSourceController::get_property_by_extended_id(
    const std::vector<std::uint8_t>& id, std::optional<std::uint32_t> max_size) {
  auto controller = query<abi::IMediaFrameSourceController2>(controller_);
  ComPtr<abi::IReference<UINT32>> boxed_size;
  if (max_size) boxed_size = box_uint32(*max_size);
  ComPtr<abi::IAsyncOperation<abi::MediaFrameSourceGetPropertyResult>> operation;
  check(controller->GetPropertyByExtendedIdAsync(static_cast<UINT32>(id.size()), input_bytes(id),
                                                 boxed_size.get(), operation.put()));
  auto reply = wait_for(operation);
  check_present(reply);
  platform::GetPropertyResult result;
  abi::MediaFrameSourceGetPropertyStatus status = abi::MediaFrameSourceGetPropertyStatus::UnknownFailure;
  check(reply->get_Status(&status));
  result.status = static_cast<platform::GetPropertyStatus>(status);
  ComPtr<IInspectable> value;
  check(reply->get_Value(value.put()));
  if (value) result.value = unbox_property_value(value);
  return result;
}

platform::SetPropertyStatus WinrtSourceController::set_property_by_extended_id(
    const std::vector<std::uint8_t>& id, const std::vector<std::uint8_t>& value) {
  auto controller = query<abi::IMediaFrameSourceController2>(controller_);
  ComPtr<abi::IAsyncOperation<abi::MediaFrameSourceSetPropertyStatus>> operation;
  check(controller->SetPropertyByExtendedIdAsync(static_cast<UINT32>(id.size()), input_bytes(id),
                                                 static_cast<UINT32>(value.size()), input_bytes(value),
                                                 operation.put()));
  return static_cast<platform::SetPropertyStatus>(wait_for(operation));
}

ComPtr<abi::IVideoDeviceController> WinrtSourceController::video_device_controller() const {
  ComPtr<abi::IVideoDeviceController> controller;
  check(controller_->get_VideoDeviceController(controller.put()));
  return controller;
}

std::shared_ptr<platform::ExposureControl> WinrtSourceController::exposure_control() {
  return exposure_control_of(video_device_controller());
}

std::shared_ptr<platform::IsoSpeedControl> WinrtSourceController::iso_speed_control() {
  return iso_speed_control_of(video_device_controller());
}

std::shared_ptr<platform::TorchControl> WinrtSourceController::torch_control() {
  return torch_control_of(video_device_controller());
}

std::shared_ptr<platform::InfraredTorchControl> WinrtSourceController::infrared_torch_control() {
  return infrared_torch_control_of(video_device_controller());
}

}  // namespace vexcap::windows
