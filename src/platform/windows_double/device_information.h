// Windows.Devices.Enumeration: DeviceInformation (with its pairing and enclosure location), the
// statics that make the source-group watcher, the watcher and its updates.
#pragma once

#include <memory>

#include "platform/port.h"
#include "platform/windows_double/activation_factory.h"
#include "platform/windows_double/unmodelled.h"

namespace vexcap::windows_double {

class DeviceInformation final
    : public Object<DeviceInformation, Threading::Agile, abi::UnmodelledIDeviceInformation<DeviceInformation>,
                    abi::UnmodelledIDeviceInformation2<DeviceInformation>> {
 public:
  explicit DeviceInformation(platform::DeviceInformation info)
      : Object("Windows.Devices.Enumeration.DeviceInformation"), info_(std::move(info)) {}
  HRESULT STDMETHODCALLTYPE get_Id(HSTRING* value) override;
  HRESULT STDMETHODCALLTYPE get_Name(HSTRING* value) override;
  HRESULT STDMETHODCALLTYPE get_IsEnabled(boolean* value) override;
  HRESULT STDMETHODCALLTYPE get_IsDefault(boolean* value) override;
  HRESULT STDMETHODCALLTYPE get_EnclosureLocation(abi::IEnclosureLocation** value) override;
  HRESULT STDMETHODCALLTYPE get_Kind(abi::DeviceInformationKind* value) override;
  HRESULT STDMETHODCALLTYPE get_Pairing(abi::IDeviceInformationPairing** value) override;

 private:
  const platform::DeviceInformation info_;
};

class DeviceInformationStatics final
    : public Object<DeviceInformationStatics, Threading::Agile, UnmodelledActivationFactory<DeviceInformationStatics>,
                    abi::UnmodelledIDeviceInformationStatics<DeviceInformationStatics>> {
 public:
  DeviceInformationStatics() : Object("Windows.Devices.Enumeration.DeviceInformation") {}
  HRESULT STDMETHODCALLTYPE CreateWatcherAqsFilter(HSTRING filter, abi::IDeviceWatcher** watcher) override;
};

}  // namespace vexcap::windows_double
