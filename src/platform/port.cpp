#include "platform/port.h"

#include <cstring>
#include <utility>

namespace vexcap::platform {

bool operator==(const Guid& a, const Guid& b) {
  return a.data1 == b.data1 && a.data2 == b.data2 && a.data3 == b.data3 &&
         std::memcmp(a.data4, b.data4, sizeof a.data4) == 0;
}

PlatformError::PlatformError(hresult code, std::wstring message)
    : code_(code), message_(std::move(message)) {}

}  // namespace vexcap::platform
