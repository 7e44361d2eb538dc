// An agile reference: holds an object that is not agile (the capture instance) so that any
// thread of the process can resolve it to an interface pointer of its own.
//
// Built on the global interface table (IGlobalInterfaceTable), which every Windows since COM
// began offers and which Wine implements; RoGetAgileReference, its Windows 8.1 successor, is a
// stub in the Wine releases the Windows double runs on (a call ends the process).
#pragma once

#include <objidl.h>

#include "platform/windows/com_ptr.h"
#include "platform/windows/platform_error.h"

namespace vexcap::windows {

template <class I>
class AgileReference {
 public:
  AgileReference() = default;
  explicit AgileReference(const ComPtr<I>& object) {
    check(CoCreateInstance(CLSID_StdGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                           __uuidof(IGlobalInterfaceTable), table_.put_void()));
    check(table_->RegisterInterfaceInGlobal(object.get(), iid_of<I>(), &cookie_));
  }
  AgileReference(const AgileReference&) = delete;
  AgileReference& operator=(const AgileReference&) = delete;
  ~AgileReference() {
    if (table_ && cookie_ != 0) table_->RevokeInterfaceFromGlobal(cookie_);
  }
  explicit operator bool() const { return cookie_ != 0; }

  // A reference of the caller's own; throws PlatformError.
  ComPtr<I> resolve() const {
    check_present(table_);
    ComPtr<I> object;
    check(table_->GetInterfaceFromGlobal(cookie_, iid_of<I>(), object.put_void()));
    return object;
  }

 private:
  ComPtr<IGlobalInterfaceTable> table_;
  DWORD cookie_ = 0;
};

}  // namespace vexcap::windows
