// IRestrictedErrorInfo: the error details a Windows Runtime call leaves on its thread. The
// Windows SDK declares it; the MinGW headers do not, so it is declared here for them.
#pragma once

#include <unknwn.h>
#include <wtypes.h>

#if defined(__MINGW32__)
namespace vexcap::windows {

struct IRestrictedErrorInfo : IUnknown {
  static constexpr GUID iid = {0x82ba7092, 0x4c88, 0x427d, {0xa7, 0xbc, 0x16, 0xdd, 0x93, 0xfe, 0xb6, 0x7e}};
  virtual HRESULT STDMETHODCALLTYPE GetErrorDetails(BSTR* description, HRESULT* error,
                                                     BSTR* restricted_description,
                                                     BSTR* capability_sid) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetReference(BSTR* reference) = 0;
};

}  // namespace vexcap::windows

// combase.dll, through runtimeobject.
extern "C" HRESULT WINAPI GetRestrictedErrorInfo(vexcap::windows::IRestrictedErrorInfo** info);
#else
#include <restrictederrorinfo.h>
#include <roerrorapi.h>

namespace vexcap::windows {
using ::IRestrictedErrorInfo;
}  // namespace vexcap::windows
#endif
