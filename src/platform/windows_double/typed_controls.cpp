#include "platform/windows_double/typed_controls.h"

#include "platform/windows_double/async_operation.h"
#include "platform/windows_double/frame_source.h"

namespace vexcap::windows_double {

namespace {

// Reads one value of a port control; a PlatformError becomes the call's result.
template <class Out, class F>
HRESULT read(Out* out, F f) {
  if (out == nullptr) return E_POINTER;
  return port_call([&] { *out = static_cast<Out>(f()); });
}

class ExposureControl final
    : public Object<ExposureControl, Threading::Agile, abi::UnmodelledIExposureControl<ExposureControl>> {
 public:
  explicit ExposureControl(std::shared_ptr<platform::ExposureControl> control)
      : Object("Windows.Media.Devices.ExposureControl"), control_(std::move(control)) {}
  HRESULT STDMETHODCALLTYPE get_Supported(boolean* value) override {
    DOUBLE_ENTER("get_Supported");
    return read(value, [&] { return control_->supported(); });
  }
  HRESULT STDMETHODCALLTYPE get_Auto(boolean* value) override {
    DOUBLE_ENTER("get_Auto");
    return read(value, [&] { return control_->auto_enabled(); });
  }
  HRESULT STDMETHODCALLTYPE SetAutoAsync(boolean value, abi::IAsyncAction** action) override {
    DOUBLE_ENTER("SetAutoAsync");
    if (action == nullptr) return E_POINTER;
    *action = AsyncAction::start("ExposureControl::SetAutoAsync",
                                 [control = control_, value] { control->set_auto(value != 0); });
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_Min(abi::TimeSpan* value) override {
    DOUBLE_ENTER("get_Min");
    return time(value, [&] { return control_->min(); });
  }
  HRESULT STDMETHODCALLTYPE get_Max(abi::TimeSpan* value) override {
    DOUBLE_ENTER("get_Max");
    return time(value, [&] { return control_->max(); });
  }
  HRESULT STDMETHODCALLTYPE get_Step(abi::TimeSpan* value) override {
    DOUBLE_ENTER("get_Step");
    return time(value, [&] { return control_->step(); });
  }
  HRESULT STDMETHODCALLTYPE get_Value(abi::TimeSpan* value) override {
    DOUBLE_ENTER("get_Value");
    return time(value, [&] { return control_->value(); });
  }
  HRESULT STDMETHODCALLTYPE SetValueAsync(abi::TimeSpan duration, abi::IAsyncAction** action) override {
    DOUBLE_ENTER("SetValueAsync");
    if (action == nullptr) return E_POINTER;
    *action = AsyncAction::start("ExposureControl::SetValueAsync",
                                 [control = control_, duration] { control->set_value(duration.Duration); });
    return S_OK;
  }

 private:
  template <class F>
  static HRESULT time(abi::TimeSpan* value, F f) {
    if (value == nullptr) return E_POINTER;
    return port_call([&] { value->Duration = f(); });
  }
  void retire() override { control_.reset(); }
  std::shared_ptr<platform::ExposureControl> control_;
};

class IsoSpeedControl final
    : public Object<IsoSpeedControl, Threading::Agile, abi::UnmodelledIIsoSpeedControl<IsoSpeedControl>,
                    abi::UnmodelledIIsoSpeedControl2<IsoSpeedControl>> {
 public:
  explicit IsoSpeedControl(std::shared_ptr<platform::IsoSpeedControl> control)
      : Object("Windows.Media.Devices.IsoSpeedControl"), control_(std::move(control)) {}
  HRESULT STDMETHODCALLTYPE get_Supported(boolean* value) override {
    DOUBLE_ENTER("get_Supported");
    return read(value, [&] { return control_->supported(); });
  }
  HRESULT STDMETHODCALLTYPE get_Min(UINT32* value) override {
    DOUBLE_ENTER("get_Min");
    return read(value, [&] { return control_->min(); });
  }
  HRESULT STDMETHODCALLTYPE get_Max(UINT32* value) override {
    DOUBLE_ENTER("get_Max");
    return read(value, [&] { return control_->max(); });
  }
  HRESULT STDMETHODCALLTYPE get_Value(UINT32* value) override {
    DOUBLE_ENTER("get_Value");
    return read(value, [&] { return control_->value(); });
  }
  HRESULT STDMETHODCALLTYPE SetValueAsync(UINT32 value, abi::IAsyncAction** action) override {
    DOUBLE_ENTER("SetValueAsync");
    if (action == nullptr) return E_POINTER;
    *action = AsyncAction::start("IsoSpeedControl::SetValueAsync",
                                 [control = control_, value] { control->set_value(value); });
    return S_OK;
  }

 private:
  void retire() override { control_.reset(); }
  std::shared_ptr<platform::IsoSpeedControl> control_;
};

class TorchControl final : public Object<TorchControl, Threading::Agile, abi::UnmodelledITorchControl<TorchControl>> {
 public:
  explicit TorchControl(std::shared_ptr<platform::TorchControl> control)
      : Object("Windows.Media.Devices.TorchControl"), control_(std::move(control)) {}
  HRESULT STDMETHODCALLTYPE get_Supported(boolean* value) override {
    DOUBLE_ENTER("get_Supported");
    return read(value, [&] { return control_->supported(); });
  }
  HRESULT STDMETHODCALLTYPE get_PowerSupported(boolean* value) override {
    DOUBLE_ENTER("get_PowerSupported");
    return read(value, [&] { return control_->power_supported(); });
  }
  HRESULT STDMETHODCALLTYPE get_Enabled(boolean* value) override {
    DOUBLE_ENTER("get_Enabled");
    return read(value, [&] { return control_->enabled(); });
  }
  HRESULT STDMETHODCALLTYPE put_Enabled(boolean value) override {
    DOUBLE_ENTER("put_Enabled");
    return port_call([&] { control_->set_enabled(value != 0); });
  }
  HRESULT STDMETHODCALLTYPE get_PowerPercent(FLOAT* value) override {
    DOUBLE_ENTER("get_PowerPercent");
    return read(value, [&] { return control_->power_percent(); });
  }
  HRESULT STDMETHODCALLTYPE put_PowerPercent(FLOAT value) override {
    DOUBLE_ENTER("put_PowerPercent");
    return port_call([&] { control_->set_power_percent(value); });
  }

 private:
  void retire() override { control_.reset(); }
  std::shared_ptr<platform::TorchControl> control_;
};

class InfraredTorchControl final
    : public Object<InfraredTorchControl, Threading::Agile, abi::UnmodelledIInfraredTorchControl<InfraredTorchControl>> {
 public:
  explicit InfraredTorchControl(std::shared_ptr<platform::InfraredTorchControl> control)
      : Object("Windows.Media.Devices.InfraredTorchControl"), control_(std::move(control)) {}
  HRESULT STDMETHODCALLTYPE get_IsSupported(boolean* value) override {
    DOUBLE_ENTER("get_IsSupported");
    return read(value, [&] { return control_->is_supported(); });
  }
  HRESULT STDMETHODCALLTYPE get_CurrentMode(abi::InfraredTorchMode* value) override {
    DOUBLE_ENTER("get_CurrentMode");
    return read(value, [&] { return control_->current_mode(); });
  }
  HRESULT STDMETHODCALLTYPE put_CurrentMode(abi::InfraredTorchMode value) override {
    DOUBLE_ENTER("put_CurrentMode");
    return port_call([&] { control_->set_current_mode(static_cast<platform::InfraredTorchMode>(value)); });
  }
  HRESULT STDMETHODCALLTYPE get_MinPower(INT32* value) override {
    DOUBLE_ENTER("get_MinPower");
    return read(value, [&] { return control_->min_power(); });
  }
  HRESULT STDMETHODCALLTYPE get_MaxPower(INT32* value) override {
    DOUBLE_ENTER("get_MaxPower");
    return read(value, [&] { return control_->max_power(); });
  }
  HRESULT STDMETHODCALLTYPE get_PowerStep(INT32* value) override {
    DOUBLE_ENTER("get_PowerStep");
    return read(value, [&] { return control_->power_step(); });
  }
  HRESULT STDMETHODCALLTYPE get_Power(INT32* value) override {
    DOUBLE_ENTER("get_Power");
    return read(value, [&] { return control_->power(); });
  }
  HRESULT STDMETHODCALLTYPE put_Power(INT32 value) override {
    DOUBLE_ENTER("put_Power");
    return port_call([&] { control_->set_power(value); });
  }

 private:
  void retire() override { control_.reset(); }
  std::shared_ptr<platform::InfraredTorchControl> control_;
};

// The control the port offers, or null when the source has none.
template <class Wrapper, class I, class Get>
HRESULT control_of(I** value, Get get) {
  if (value == nullptr) return E_POINTER;
  *value = nullptr;
  decltype(get()) control;
  if (HRESULT result = port_call([&] { control = get(); }); FAILED(result)) return result;
  if (!control) return S_OK;
  return hand_out(make<Wrapper>(std::move(control)), value);
}

}  // namespace

HRESULT VideoDeviceController::get_ExposureControl(abi::IExposureControl** value) {
  DOUBLE_ENTER("get_ExposureControl");
  return control_of<ExposureControl>(value, [&] { return controller_->exposure_control(); });
}

HRESULT VideoDeviceController::get_IsoSpeedControl(abi::IIsoSpeedControl** value) {
  DOUBLE_ENTER("get_IsoSpeedControl");
  return control_of<IsoSpeedControl>(value, [&] { return controller_->iso_speed_control(); });
}

HRESULT VideoDeviceController::get_TorchControl(abi::ITorchControl** value) {
  DOUBLE_ENTER("get_TorchControl");
  return control_of<TorchControl>(value, [&] { return controller_->torch_control(); });
}

HRESULT VideoDeviceController::get_InfraredTorchControl(abi::IInfraredTorchControl** value) {
  DOUBLE_ENTER("get_InfraredTorchControl");
  return control_of<InfraredTorchControl>(value, [&] { return controller_->infrared_torch_control(); });
}

}  // namespace vexcap::windows_double
