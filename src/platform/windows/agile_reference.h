// An agile reference: holds an object that is not agile (the capture instance) so that any
// thread of the process can resolve it to an interface pointer of its own.
#pragma once

#include <objidl.h>

#include "platform/windows/com_ptr.h"
#include "platform/windows/platform_error.h"

#if defined(__MINGW32__)
// combase.dll; the MinGW headers declare neither the function nor its options.
extern "C" HRESULT WINAPI RoGetAgileReference(UINT32 options, REFIID riid, IUnknown* unknown,
                                              IAgileReference** reference);
#endif

namespace vexcap::windows {

#if defined(__MINGW32__)
inline constexpr UINT32 agile_reference_default = 0;  // AGILEREFERENCE_DEFAULT
#else
inline constexpr AgileReferenceOptions agile_reference_default = AGILEREFERENCE_DEFAULT;
#endif

template <class I>
class AgileReference {
 public:
  AgileReference() = default;
  explicit AgileReference(const ComPtr<I>& object) {
    check(RoGetAgileReference(agile_reference_default, iid_of<I>(), object.get(), reference_.put()));
  }
  explicit operator bool() const { return static_cast<bool>(reference_); }

  // A reference of the caller's own; throws PlatformError.
  ComPtr<I> resolve() const {
    check_present(reference_);
    ComPtr<I> object;
    check(reference_->Resolve(iid_of<I>(), object.put_void()));
    return object;
  }

 private:
  ComPtr<IAgileReference> reference_;
};

}  // namespace vexcap::windows
