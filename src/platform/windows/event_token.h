// The port's event tokens are the platform's registration tokens.
#pragma once

#include "platform/port.h"
#include "platform/windows/winrt/abi_base.h"

namespace vexcap::windows {

inline platform::EventToken to_port(abi::EventRegistrationToken token) { return token.value; }
inline abi::EventRegistrationToken to_abi(platform::EventToken token) { return {token}; }

}  // namespace vexcap::windows
