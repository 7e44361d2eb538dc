// ExposureControl, IsoSpeedControl, TorchControl and InfraredTorchControl on a live source.
#include <algorithm>

#include "platform/virtual/controls.h"

namespace vexcap::virtual_camera {

using platform::PlatformError;

void SourceHandle::record(ControlKind kind, double value) {
  world_->record([&](Records& records) { records.applied_controls.push_back({source().id.value_or(L""), kind, value}); });
}

void SourceHandle::require_connected() const {
  if (group_->removed) throw PlatformError(HR_DISCONNECTED, L"The object invoked has disconnected from its clients.");
}

void SourceHandle::require_control() const {
  if (!exclusive_) throw PlatformError(HR_ACCESSDENIED, L"The control cannot be set in shared read-only mode.");
}

namespace {

// The control's live settings; the scenario may have taken the control away since it was fetched.
template <typename Settings>
Settings& settings(std::optional<Settings>& model) {
  if (!model) throw PlatformError(HR_NOINTERFACE, L"No such interface supported");
  return *model;
}

[[noreturn]] void invalid_value() { throw PlatformError(HR_INVALIDARG, L"The parameter is incorrect."); }
[[noreturn]] void unsupported() { throw PlatformError(HR_NOTIMPL, L"The control is not supported by the device."); }

// Reads and writes of one control's live settings under the World lock. A write first passes
// the call's fault, then the sharing rule and the supported flag.
template <typename Settings, std::optional<Settings> SourceModel::*member>
class ControlAccess : protected SourceHandle {
 public:
  using SourceHandle::SourceHandle;

 protected:
  template <typename F> auto read(F f) {
    std::lock_guard lock(world_->mutex());
    require_connected();
    return f(settings(source().*member));
  }
  template <typename F> void write(F f) {
    world_->enter_call_or_throw(PlatformCall::SetControl);
    std::lock_guard lock(world_->mutex());
    require_connected();
    require_control();
    auto& s = settings(source().*member);
    if (!s.supported) unsupported();
    f(s);
  }
};

class Exposure : public platform::ExposureControl, ControlAccess<ExposureModel, &SourceModel::exposure> {
 public:
  using ControlAccess::ControlAccess;
  bool supported() override { return read([](ExposureModel& s) { return s.supported; }); }
  bool auto_enabled() override { return read([](ExposureModel& s) { return s.auto_enabled; }); }
  std::int64_t min() override { return read([](ExposureModel& s) { return s.min; }); }
  std::int64_t max() override { return read([](ExposureModel& s) { return s.max; }); }
  std::int64_t step() override { return read([](ExposureModel& s) { return s.step; }); }
  std::int64_t value() override { return read([](ExposureModel& s) { return s.value; }); }
  void set_value(std::int64_t value) override {
    write([&](ExposureModel& s) {
      if (value < s.min || value > s.max) invalid_value();
      s.value = value;
      record(ControlKind::ExposureValue, double(value));
    });
  }
  void set_auto(bool enabled) override {
    write([&](ExposureModel& s) {
      s.auto_enabled = enabled;
      record(ControlKind::ExposureAuto, enabled ? 1 : 0);
    });
  }

};

class IsoSpeed : public platform::IsoSpeedControl, ControlAccess<IsoSpeedModel, &SourceModel::iso_speed> {
 public:
  using ControlAccess::ControlAccess;
  bool supported() override { return read([](IsoSpeedModel& s) { return s.supported; }); }
  std::uint32_t min() override { return read([](IsoSpeedModel& s) { return s.min; }); }
  std::uint32_t max() override { return read([](IsoSpeedModel& s) { return s.max; }); }
  std::uint32_t value() override { return read([](IsoSpeedModel& s) { return s.value; }); }
  void set_value(std::uint32_t value) override {
    write([&](IsoSpeedModel& s) {
      if (value < s.min || value > s.max) invalid_value();
      s.value = value;
      record(ControlKind::IsoSpeed, value);
    });
  }

};

class Torch : public platform::TorchControl, ControlAccess<TorchModel, &SourceModel::torch> {
 public:
  using ControlAccess::ControlAccess;
  bool supported() override { return read([](TorchModel& s) { return s.supported; }); }
  bool power_supported() override { return read([](TorchModel& s) { return s.power_supported; }); }
  bool enabled() override { return read([](TorchModel& s) { return s.enabled; }); }
  float power_percent() override { return read([](TorchModel& s) { return s.power_percent; }); }
  void set_enabled(bool enabled) override {
    write([&](TorchModel& s) {
      s.enabled = enabled;
      record(ControlKind::TorchEnabled, enabled ? 1 : 0);
    });
  }
  void set_power_percent(float percent) override {
    write([&](TorchModel& s) {
      if (!s.power_supported) unsupported();
      if (!(percent >= 0.0f && percent <= 100.0f)) invalid_value();
      s.power_percent = percent;
      record(ControlKind::TorchPowerPercent, percent);
    });
  }

};

class InfraredTorch : public platform::InfraredTorchControl, ControlAccess<InfraredTorchModel, &SourceModel::infrared_torch> {
 public:
  using ControlAccess::ControlAccess;
  bool is_supported() override { return read([](InfraredTorchModel& s) { return s.supported; }); }
  platform::InfraredTorchMode current_mode() override { return read([](InfraredTorchModel& s) { return s.mode; }); }
  std::int32_t min_power() override { return read([](InfraredTorchModel& s) { return s.min_power; }); }
  std::int32_t max_power() override { return read([](InfraredTorchModel& s) { return s.max_power; }); }
  std::int32_t power_step() override { return read([](InfraredTorchModel& s) { return s.power_step; }); }
  std::int32_t power() override { return read([](InfraredTorchModel& s) { return s.power; }); }
  void set_current_mode(platform::InfraredTorchMode mode) override {
    write([&](InfraredTorchModel& s) {
      if (std::find(s.modes.begin(), s.modes.end(), mode) == s.modes.end()) invalid_value();
      s.mode = mode;
      record(ControlKind::InfraredTorchMode, double(static_cast<std::int32_t>(mode)));
    });
  }
  void set_power(std::int32_t power) override {
    write([&](InfraredTorchModel& s) {
      if (power < s.min_power || power > s.max_power) invalid_value();
      s.power = power;
      record(ControlKind::InfraredTorchPower, power);
    });
  }

};

// A control the source lacks is no object at all.
template <typename Control, typename Settings>
std::shared_ptr<Control> make_if(const std::optional<Settings>& model, std::shared_ptr<World> world,
                                 std::shared_ptr<GroupState> group, std::size_t index, bool exclusive) {
  if (!model) return nullptr;
  return std::make_shared<Control>(std::move(world), std::move(group), index, exclusive);
}

}  // namespace

std::shared_ptr<platform::ExposureControl> VirtualSourceController::exposure_control() {
  std::lock_guard lock(world_->mutex());
  require_connected();
  return make_if<Exposure>(source().exposure, world_, group_, index_, exclusive_);
}

std::shared_ptr<platform::IsoSpeedControl> VirtualSourceController::iso_speed_control() {
  std::lock_guard lock(world_->mutex());
  require_connected();
  return make_if<IsoSpeed>(source().iso_speed, world_, group_, index_, exclusive_);
}

std::shared_ptr<platform::TorchControl> VirtualSourceController::torch_control() {
  std::lock_guard lock(world_->mutex());
  require_connected();
  return make_if<Torch>(source().torch, world_, group_, index_, exclusive_);
}

std::shared_ptr<platform::InfraredTorchControl> VirtualSourceController::infrared_torch_control() {
  std::lock_guard lock(world_->mutex());
  require_connected();
  return make_if<InfraredTorch>(source().infrared_torch, world_, group_, index_, exclusive_);
}

}  // namespace vexcap::virtual_camera
