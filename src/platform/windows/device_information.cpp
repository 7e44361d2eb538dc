#include "platform/windows/device_information.h"

#include "platform/windows/hstring.h"
#include "platform/windows/platform_error.h"

namespace vexcap::windows {

namespace {

static_assert(int(abi::Panel::Right) == int(platform::Panel::Right));
static_assert(int(abi::DeviceInformationKind::DevicePanel) == int(platform::DeviceInformationKind::DevicePanel));

std::optional<platform::Pairing> pairing_of(const ComPtr<abi::IDeviceInformation2>& information) {
  ComPtr<abi::IDeviceInformationPairing> pairing;
  if (!information || FAILED(information->get_Pairing(pairing.put())) || !pairing) return std::nullopt;
  boolean is_paired = false, can_pair = false;
  check(pairing->get_IsPaired(&is_paired));
  check(pairing->get_CanPair(&can_pair));
  return platform::Pairing{is_paired != 0, can_pair != 0};
}

std::optional<platform::Panel> panel_of(const ComPtr<abi::IDeviceInformation>& information) {
  ComPtr<abi::IEnclosureLocation> location;
  if (FAILED(information->get_EnclosureLocation(location.put())) || !location) return std::nullopt;
  abi::Panel panel = abi::Panel::Unknown;
  check(location->get_Panel(&panel));
  return static_cast<platform::Panel>(panel);
}

// A string property: never missing on this platform (an HSTRING may only be empty).
std::wstring text_of(HRESULT result, const HString& text) {
  check(result);
  return text.text();
}

}  // namespace

std::shared_ptr<const platform::DeviceInformation> device_information_of(
    const ComPtr<abi::IDeviceInformation>& information) {
  if (!information) return nullptr;
  auto record = std::make_shared<platform::DeviceInformation>();
  HString id, name;
  record->id = text_of(information->get_Id(id.put()), id);
  record->name = text_of(information->get_Name(name.put()), name);
  boolean is_default = false, is_enabled = false;
  check(information->get_IsDefault(&is_default));
  check(information->get_IsEnabled(&is_enabled));
  record->is_default = is_default != 0;
  record->is_enabled = is_enabled != 0;
  auto information2 = information.try_as<abi::IDeviceInformation2>();
  if (information2) {
    abi::DeviceInformationKind kind = abi::DeviceInformationKind::DeviceInterface;
    check(information2->get_Kind(&kind));
    record->kind = static_cast<platform::DeviceInformationKind>(kind);
  }
  record->pairing = pairing_of(information2);
  record->enclosure_panel = panel_of(information);
  return record;
}

}  // namespace vexcap::windows
