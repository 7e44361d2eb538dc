#include "platform/windows/typed_controls.h"

#include "platform/windows/async_wait.h"
#include "platform/windows/winrt/abi.h"

namespace vexcap::windows {

namespace {

static_assert(int(abi::InfraredTorchMode::AlternatingFrameIllumination) ==
              int(platform::InfraredTorchMode::AlternatingFrameIllumination));

// Reads one property through a getter of the control's interface.
template <class Value, class Interface, class Getter>
Value read(const ComPtr<Interface>& control, Getter getter) {
  Value value{};
  check((control.get()->*getter)(&value));
  return value;
}

bool read_flag(const ComPtr<abi::IExposureControl>& control, HRESULT (STDMETHODCALLTYPE abi::IExposureControl::*getter)(boolean*)) {
  return read<boolean>(control, getter) != 0;
}

class WinrtExposureControl final : public platform::ExposureControl {
 public:
  explicit WinrtExposureControl(ComPtr<abi::IExposureControl> control) : control_(std::move(control)) {}
  bool supported() override { return read_flag(control_, &abi::IExposureControl::get_Supported); }
  bool auto_enabled() override { return read_flag(control_, &abi::IExposureControl::get_Auto); }
  std::int64_t min() override { return read<abi::TimeSpan>(control_, &abi::IExposureControl::get_Min).Duration; }
  std::int64_t max() override { return read<abi::TimeSpan>(control_, &abi::IExposureControl::get_Max).Duration; }
  std::int64_t step() override { return read<abi::TimeSpan>(control_, &abi::IExposureControl::get_Step).Duration; }
  std::int64_t value() override { return read<abi::TimeSpan>(control_, &abi::IExposureControl::get_Value).Duration; }
  void set_value(std::int64_t value) override {
    ComPtr<abi::IAsyncAction> action;
    check(control_->SetValueAsync(abi::TimeSpan{value}, action.put()));
    wait_for(action);
  }
  void set_auto(bool enabled) override {
    ComPtr<abi::IAsyncAction> action;
    check(control_->SetAutoAsync(enabled, action.put()));
    wait_for(action);
  }

 private:
  ComPtr<abi::IExposureControl> control_;
};

class WinrtIsoSpeedControl final : public platform::IsoSpeedControl {
 public:
  explicit WinrtIsoSpeedControl(ComPtr<abi::IIsoSpeedControl> control) : control_(std::move(control)) {}
  bool supported() override { return read<boolean>(control_, &abi::IIsoSpeedControl::get_Supported) != 0; }
  std::uint32_t min() override { return read<UINT32>(ranged(), &abi::IIsoSpeedControl2::get_Min); }
  std::uint32_t max() override { return read<UINT32>(ranged(), &abi::IIsoSpeedControl2::get_Max); }
  std::uint32_t value() override { return read<UINT32>(ranged(), &abi::IIsoSpeedControl2::get_Value); }
  void set_value(std::uint32_t value) override {
    ComPtr<abi::IAsyncAction> action;
    check(ranged()->SetValueAsync(value, action.put()));
    wait_for(action);
  }

 private:
  ComPtr<abi::IIsoSpeedControl2> ranged() const { return query<abi::IIsoSpeedControl2>(control_); }
  ComPtr<abi::IIsoSpeedControl> control_;
};

class WinrtTorchControl final : public platform::TorchControl {
 public:
  explicit WinrtTorchControl(ComPtr<abi::ITorchControl> control) : control_(std::move(control)) {}
  bool supported() override { return read<boolean>(control_, &abi::ITorchControl::get_Supported) != 0; }
  bool power_supported() override { return read<boolean>(control_, &abi::ITorchControl::get_PowerSupported) != 0; }
  bool enabled() override { return read<boolean>(control_, &abi::ITorchControl::get_Enabled) != 0; }
  void set_enabled(bool enabled) override { check(control_->put_Enabled(enabled)); }
  float power_percent() override { return read<FLOAT>(control_, &abi::ITorchControl::get_PowerPercent); }
  void set_power_percent(float percent) override { check(control_->put_PowerPercent(percent)); }

 private:
  ComPtr<abi::ITorchControl> control_;
};

class WinrtInfraredTorchControl final : public platform::InfraredTorchControl {
 public:
  explicit WinrtInfraredTorchControl(ComPtr<abi::IInfraredTorchControl> control) : control_(std::move(control)) {}
  bool is_supported() override { return read<boolean>(control_, &abi::IInfraredTorchControl::get_IsSupported) != 0; }
  platform::InfraredTorchMode current_mode() override {
    return static_cast<platform::InfraredTorchMode>(
        read<abi::InfraredTorchMode>(control_, &abi::IInfraredTorchControl::get_CurrentMode));
  }
  void set_current_mode(platform::InfraredTorchMode mode) override {
    check(control_->put_CurrentMode(static_cast<abi::InfraredTorchMode>(mode)));
  }
  std::int32_t min_power() override { return read<INT32>(control_, &abi::IInfraredTorchControl::get_MinPower); }
  std::int32_t max_power() override { return read<INT32>(control_, &abi::IInfraredTorchControl::get_MaxPower); }
  std::int32_t power_step() override { return read<INT32>(control_, &abi::IInfraredTorchControl::get_PowerStep); }
  std::int32_t power() override { return read<INT32>(control_, &abi::IInfraredTorchControl::get_Power); }
  void set_power(std::int32_t power) override { check(control_->put_Power(power)); }

 private:
  ComPtr<abi::IInfraredTorchControl> control_;
};

// The control a getter of an advanced controller interface yields; null when the controller
// lacks the interface or the control.
template <class Advanced, class Control>
ComPtr<Control> control_of(const ComPtr<abi::IVideoDeviceController>& controller,
                           HRESULT (STDMETHODCALLTYPE Advanced::*getter)(Control**)) {
  auto advanced = controller.try_as<Advanced>();
  if (!advanced) return nullptr;
  ComPtr<Control> control;
  check((advanced.get()->*getter)(control.put()));
  return control;
}

template <class Wrapper, class Control>
std::shared_ptr<Wrapper> wrap(ComPtr<Control> control) {
  if (!control) return nullptr;
  return std::make_shared<Wrapper>(std::move(control));
}

}  // namespace

std::shared_ptr<platform::ExposureControl> exposure_control_of(const ComPtr<abi::IVideoDeviceController>& controller) {
  return wrap<WinrtExposureControl>(
      control_of(controller, &abi::IAdvancedVideoCaptureDeviceController2::get_ExposureControl));
}

std::shared_ptr<platform::IsoSpeedControl> iso_speed_control_of(const ComPtr<abi::IVideoDeviceController>& controller) {
  return wrap<WinrtIsoSpeedControl>(
      control_of(controller, &abi::IAdvancedVideoCaptureDeviceController2::get_IsoSpeedControl));
}

std::shared_ptr<platform::TorchControl> torch_control_of(const ComPtr<abi::IVideoDeviceController>& controller) {
  return wrap<WinrtTorchControl>(
      control_of(controller, &abi::IAdvancedVideoCaptureDeviceController2::get_TorchControl));
}

std::shared_ptr<platform::InfraredTorchControl> infrared_torch_control_of(
    const ComPtr<abi::IVideoDeviceController>& controller) {
  return wrap<WinrtInfraredTorchControl>(
      control_of(controller, &abi::IAdvancedVideoCaptureDeviceController7::get_InfraredTorchControl));
}

}  // namespace vexcap::windows
