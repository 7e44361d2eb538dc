// Event subscriptions that the double forwards from the virtual camera's event threads to the
// caller's delegates. A delegate that answers RPC_E_DISCONNECTED is dropped, as the platform's
// event sources drop it.
#pragma once

#include <atomic>
#include <memory>

#include "platform/port.h"
#include "platform/windows_double/object.h"

namespace vexcap::windows_double {

inline constexpr HRESULT kDisconnected = HRESULT(0x80010108u);  // RPC_E_DISCONNECTED

// The token of a registration, known to its handler once the registration has returned it.
using TokenCell = std::shared_ptr<std::atomic<platform::EventToken>>;

inline TokenCell new_token_cell() { return std::make_shared<std::atomic<platform::EventToken>>(0); }

inline HRESULT hand_out_token(platform::EventToken token, abi::EventRegistrationToken* out) {
  if (out == nullptr) return E_POINTER;
  out->value = token;
  return S_OK;
}

}  // namespace vexcap::windows_double
