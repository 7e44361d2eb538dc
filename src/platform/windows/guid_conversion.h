// The port's Guid and the system's GUID hold the same fields in the same order.
#pragma once

#include <guiddef.h>

#include <algorithm>

#include "platform/port.h"

namespace vexcap::windows {

inline GUID to_native(const platform::Guid& guid) {
  GUID native{guid.data1, guid.data2, guid.data3, {}};
  std::copy(std::begin(guid.data4), std::end(guid.data4), native.Data4);
  return native;
}

inline platform::Guid to_port(const GUID& native) {
  platform::Guid guid;
  guid.data1 = native.Data1;
  guid.data2 = native.Data2;
  guid.data3 = native.Data3;
  std::copy(std::begin(native.Data4), std::end(native.Data4), guid.data4);
  return guid;
}

}  // namespace vexcap::windows
