#include "controls/property_status_names.h"

namespace vexcap::controls {

std::wstring status_name(platform::GetPropertyStatus status) {
  using S = platform::GetPropertyStatus;
  switch (status) {
    case S::Success: return L"Success";
    case S::UnknownFailure: return L"UnknownFailure";
    case S::NotSupported: return L"NotSupported";
    case S::DeviceNotAvailable: return L"DeviceNotAvailable";
    case S::MaxPropertyValueSizeTooSmall: return L"MaxPropertyValueSizeTooSmall";
    case S::MaxPropertyValueSizeRequired: return L"MaxPropertyValueSizeRequired";
  }
  return std::to_wstring(static_cast<std::int32_t>(status));
}

std::wstring status_name(platform::SetPropertyStatus status) {
  using S = platform::SetPropertyStatus;
  switch (status) {
    case S::Success: return L"Success";
    case S::UnknownFailure: return L"UnknownFailure";
    case S::NotSupported: return L"NotSupported";
    case S::InvalidValue: return L"InvalidValue";
    case S::DeviceNotAvailable: return L"DeviceNotAvailable";
    case S::NotInControl: return L"NotInControl";
  }
  return std::to_wstring(static_cast<std::int32_t>(status));
}

}  // namespace vexcap::controls
