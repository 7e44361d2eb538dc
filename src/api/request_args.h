// The small argument records an export builds on its stack; their addresses travel as the
// message's wParam / lParam and live only during the call.
#pragma once

#include <cstdint>

#include "vexcap/vexcap.h"

namespace vexcap::api {

struct CallbackArgs {  // wParam of the streaming and event registrations
  void* callback;
  void* context;
};

template <typename T>
struct ResultPointerArg {  // lParam of the discovery queries
  T* result;
};

struct VidPidArgs {  // lParam of the vid/pid-in-use query
  const wchar_t* vid;
  const wchar_t* pid;
};

struct VidPidTextArgs {  // wParam of the source-group-type-for-vid/pid query
  const wchar_t* vid;
  const wchar_t* pid;
};

template <typename T>
struct ValueArg {  // wParam of the control setters
  T value;
};

template <typename T>
std::uintptr_t as_wparam(T* record) {
  return reinterpret_cast<std::uintptr_t>(record);
}
template <typename T>
std::intptr_t as_lparam(T* record) {
  return reinterpret_cast<std::intptr_t>(record);
}
template <typename T>
T* from_param(std::uintptr_t value) {
  return reinterpret_cast<T*>(value);
}
template <typename T>
T* from_param(std::intptr_t value) {
  return reinterpret_cast<T*>(value);
}

}  // namespace vexcap::api
