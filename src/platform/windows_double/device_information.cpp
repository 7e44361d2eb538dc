#include "platform/windows_double/device_information.h"

#include <mutex>

#include "platform/virtual/virtual_platform.h"
#include "platform/windows_double/event_handlers.h"
#include "platform/windows_double/hstrings.h"
#include "platform/windows_double/source_group.h"
#include "platform/windows_double/violations.h"

namespace vexcap::windows_double {

namespace {

class Pairing final : public Object<Pairing, Threading::Agile, abi::UnmodelledIDeviceInformationPairing<Pairing>> {
 public:
  explicit Pairing(platform::Pairing pairing) : Object("Windows.Devices.Enumeration.DeviceInformationPairing"), pairing_(pairing) {}
  HRESULT STDMETHODCALLTYPE get_IsPaired(boolean* value) override {
    DOUBLE_ENTER("get_IsPaired");
    return give(value, pairing_.is_paired);
  }
  HRESULT STDMETHODCALLTYPE get_CanPair(boolean* value) override {
    DOUBLE_ENTER("get_CanPair");
    return give(value, pairing_.can_pair);
  }

 private:
  const platform::Pairing pairing_;
};

class EnclosureLocation final
    : public Object<EnclosureLocation, Threading::Agile, abi::UnmodelledIEnclosureLocation<EnclosureLocation>> {
 public:
  explicit EnclosureLocation(platform::Panel panel) : Object("Windows.Devices.Enumeration.EnclosureLocation"), panel_(panel) {}
  HRESULT STDMETHODCALLTYPE get_Panel(abi::Panel* value) override {
    DOUBLE_ENTER("get_Panel");
    return give(value, static_cast<abi::Panel>(panel_));
  }

 private:
  const platform::Panel panel_;
};

class DeviceInformationUpdate final
    : public Object<DeviceInformationUpdate, Threading::Agile, abi::UnmodelledIDeviceInformationUpdate<DeviceInformationUpdate>> {
 public:
  explicit DeviceInformationUpdate(std::wstring id)
      : Object("Windows.Devices.Enumeration.DeviceInformationUpdate"), id_(std::move(id)) {}
  HRESULT STDMETHODCALLTYPE get_Id(HSTRING* value) override {
    DOUBLE_ENTER("get_Id");
    return hand_out_string(id_, value);
  }

 private:
  const std::wstring id_;
};

class DeviceWatcher final : public Object<DeviceWatcher, Threading::Agile, abi::UnmodelledIDeviceWatcher<DeviceWatcher>> {
  using AddedHandler = abi::ITypedEventHandler<abi::DeviceWatcher, abi::DeviceInformation>;
  using UpdateHandler = abi::ITypedEventHandler<abi::DeviceWatcher, abi::DeviceInformationUpdate>;

 public:
  explicit DeviceWatcher(std::unique_ptr<platform::DeviceWatcher> watcher)
      : Object("Windows.Devices.Enumeration.DeviceWatcher"), watcher_(std::move(watcher)) {}

  HRESULT STDMETHODCALLTYPE add_Added(AddedHandler* handler, abi::EventRegistrationToken* token) override {
    DOUBLE_ENTER("add_Added");
    if (handler == nullptr || token == nullptr) return E_POINTER;
    auto cell = new_token_cell();
    auto delegate = ComPtr<AddedHandler>::copy_from(handler);
    auto registered = watcher_->add_added([this, delegate, cell](const platform::DeviceInformation& info) {
      if (!alive()) return;
      auto information = make<DeviceInformation>(info);
      if (delegate->Invoke(this, information.get()) == kDisconnected) watcher_->remove_added(*cell);
    });
    *cell = registered;
    return hand_out_token(registered, token);
  }
  HRESULT STDMETHODCALLTYPE remove_Added(abi::EventRegistrationToken token) override {
    DOUBLE_ENTER("remove_Added");
    watcher_->remove_added(token.value);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE add_Updated(UpdateHandler* handler, abi::EventRegistrationToken* token) override {
    DOUBLE_ENTER("add_Updated");
    return add_update(handler, token, &platform::DeviceWatcher::add_updated, &platform::DeviceWatcher::remove_updated);
  }
  HRESULT STDMETHODCALLTYPE remove_Updated(abi::EventRegistrationToken token) override {
    DOUBLE_ENTER("remove_Updated");
    watcher_->remove_updated(token.value);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE add_Removed(UpdateHandler* handler, abi::EventRegistrationToken* token) override {
    DOUBLE_ENTER("add_Removed");
    return add_update(handler, token, &platform::DeviceWatcher::add_removed, &platform::DeviceWatcher::remove_removed);
  }
  HRESULT STDMETHODCALLTYPE remove_Removed(abi::EventRegistrationToken token) override {
    DOUBLE_ENTER("remove_Removed");
    watcher_->remove_removed(token.value);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_Status(abi::DeviceWatcherStatus* status) override {
    DOUBLE_ENTER("get_Status");
    if (status == nullptr) return E_POINTER;
    std::lock_guard lock(mutex_);
    *status = status_;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Start() override {
    DOUBLE_ENTER("Start");
    std::lock_guard lock(mutex_);
    if (status_ == abi::DeviceWatcherStatus::Started) return kIllegalMethodCall;
    try {
      watcher_->start();
    } catch (const platform::PlatformError& error) {
      return HRESULT(error.code());
    }
    status_ = abi::DeviceWatcherStatus::Started;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Stop() override {
    DOUBLE_ENTER("Stop");
    std::lock_guard lock(mutex_);
    if (status_ != abi::DeviceWatcherStatus::Started) return kIllegalMethodCall;
    watcher_->stop();
    status_ = abi::DeviceWatcherStatus::Stopped;
    return S_OK;
  }

 private:
  static constexpr HRESULT kIllegalMethodCall = HRESULT(0x8000000Eu);

  using AddUpdate = platform::EventToken (platform::DeviceWatcher::*)(platform::DeviceWatcher::UpdateHandler);
  using RemoveUpdate = void (platform::DeviceWatcher::*)(platform::EventToken);

  HRESULT add_update(UpdateHandler* handler, abi::EventRegistrationToken* token, AddUpdate add, RemoveUpdate remove) {
    if (handler == nullptr || token == nullptr) return E_POINTER;
    auto cell = new_token_cell();
    auto delegate = ComPtr<UpdateHandler>::copy_from(handler);
    auto registered = (watcher_.get()->*add)([this, delegate, cell, remove](const platform::DeviceInformationUpdate& update) {
      if (!alive()) return;
      auto args = make<DeviceInformationUpdate>(update.id);
      if (delegate->Invoke(this, args.get()) == kDisconnected) (watcher_.get()->*remove)(*cell);
    });
    *cell = registered;
    return hand_out_token(registered, token);
  }

  void retire() override {
    std::unique_ptr<platform::DeviceWatcher> watcher;
    {
      std::lock_guard lock(mutex_);
      if (status_ == abi::DeviceWatcherStatus::Started)
        record_violation("DeviceWatcher released while started (Stop it first)");
    }
    watcher = std::move(watcher_);  // its event thread is joined here
  }

  std::mutex mutex_;
  abi::DeviceWatcherStatus status_ = abi::DeviceWatcherStatus::Created;
  std::unique_ptr<platform::DeviceWatcher> watcher_;
};

}  // namespace

HRESULT DeviceInformation::get_Id(HSTRING* value) {
  DOUBLE_ENTER("get_Id");
  return hand_out_string(info_.id.value_or(L""), value);
}

HRESULT DeviceInformation::get_Name(HSTRING* value) {
  DOUBLE_ENTER("get_Name");
  return hand_out_string(info_.name.value_or(L""), value);
}

HRESULT DeviceInformation::get_IsEnabled(boolean* value) {
  DOUBLE_ENTER("get_IsEnabled");
  return give(value, info_.is_enabled);
}

HRESULT DeviceInformation::get_IsDefault(boolean* value) {
  DOUBLE_ENTER("get_IsDefault");
  return give(value, info_.is_default);
}

HRESULT DeviceInformation::get_EnclosureLocation(abi::IEnclosureLocation** value) {
  DOUBLE_ENTER("get_EnclosureLocation");
  if (value == nullptr) return E_POINTER;
  *value = nullptr;
  if (!info_.enclosure_panel) return S_OK;
  return hand_out(make<EnclosureLocation>(*info_.enclosure_panel), value);
}

HRESULT DeviceInformation::get_Kind(abi::DeviceInformationKind* value) {
  DOUBLE_ENTER("get_Kind");
  return give(value, static_cast<abi::DeviceInformationKind>(info_.kind));
}

HRESULT DeviceInformation::get_Pairing(abi::IDeviceInformationPairing** value) {
  DOUBLE_ENTER("get_Pairing");
  if (value == nullptr) return E_POINTER;
  *value = nullptr;
  if (!info_.pairing) return S_OK;
  return hand_out(make<Pairing>(*info_.pairing), value);
}

HRESULT DeviceInformationStatics::CreateWatcherAqsFilter(HSTRING filter, abi::IDeviceWatcher** watcher) {
  DOUBLE_ENTER("CreateWatcherAqsFilter");
  if (watcher == nullptr) return E_POINTER;
  if (text_of(filter) != source_group_selector()) {
    record_violation("DeviceInformation::CreateWatcherAqsFilter with a filter the double does not model");
    return E_INVALIDARG;
  }
  return hand_out(make<DeviceWatcher>(virtual_camera::virtual_platform().create_source_group_watcher()), watcher);
}

}  // namespace vexcap::windows_double
