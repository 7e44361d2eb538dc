// The ground every Windows Runtime ABI declaration of this adapter stands on: IUnknown,
// IInspectable, HSTRING and the fixed-size ABI types.
//
// On Windows these come from the system headers. Elsewhere a layout-identical minimum is
// declared so that the declarations can be checked (slots and IIDs) on the build host too.
#pragma once

#include <cstdint>

#if defined(_WIN32)
#include <windows.h>
#include <inspectable.h>
#include <objidl.h>
#include <winstring.h>
#else
#include <cstddef>

#define STDMETHODCALLTYPE
using HRESULT = std::int32_t;
using BYTE = std::uint8_t;
using INT16 = std::int16_t;
using UINT16 = std::uint16_t;
using INT32 = std::int32_t;
using UINT32 = std::uint32_t;
using INT64 = std::int64_t;
using UINT64 = std::uint64_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using FLOAT = float;
using DOUBLE = double;
using WCHAR = char16_t;
using boolean = unsigned char;
struct GUID {
  std::uint32_t Data1;
  std::uint16_t Data2;
  std::uint16_t Data3;
  std::uint8_t Data4[8];
};
using IID = GUID;
using REFIID = const IID&;
using REFGUID = const GUID&;
struct HSTRING__;
using HSTRING = HSTRING__*;
constexpr HRESULT S_OK = 0;
constexpr HRESULT E_NOINTERFACE = HRESULT(0x80004002u);
constexpr HRESULT E_POINTER = HRESULT(0x80004003u);
constexpr HRESULT E_FAIL = HRESULT(0x80004005u);
#define FAILED(hr) (HRESULT(hr) < 0)
#define SUCCEEDED(hr) (HRESULT(hr) >= 0)
inline bool operator==(const GUID& a, const GUID& b) {
  const auto* x = reinterpret_cast<const unsigned char*>(&a);
  const auto* y = reinterpret_cast<const unsigned char*>(&b);
  for (int i = 0; i < 16; ++i) {
    if (x[i] != y[i]) return false;
  }
  return true;
}
enum TrustLevel { BaseTrust = 0, PartialTrust = 1, FullTrust = 2 };

struct IUnknown {
  virtual HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) = 0;
  virtual ULONG STDMETHODCALLTYPE AddRef() = 0;
  virtual ULONG STDMETHODCALLTYPE Release() = 0;
};
struct IAgileObject : IUnknown {
  static constexpr GUID iid = {0x94ea2b94, 0xe9cc, 0x49e0, {0xc0, 0xff, 0xee, 0x64, 0xca, 0x8f, 0x5b, 0x90}};
};
struct IInspectable : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetIids(ULONG* count, IID** iids) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetRuntimeClassName(HSTRING* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTrustLevel(TrustLevel* level) = 0;
};
#endif

namespace vexcap::windows::abi {

using ::IAgileObject;
using ::IInspectable;
using ::IUnknown;

inline constexpr GUID iid_unknown = {0x00000000, 0x0000, 0x0000, {0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

struct EventRegistrationToken {
  INT64 value;
};
struct TimeSpan {
  INT64 Duration;
};
struct DateTime {
  INT64 UniversalTime;
};
struct Point {
  FLOAT X;
  FLOAT Y;
};
struct Size {
  FLOAT Width;
  FLOAT Height;
};
struct Rect {
  FLOAT X;
  FLOAT Y;
  FLOAT Width;
  FLOAT Height;
};

}  // namespace vexcap::windows::abi
