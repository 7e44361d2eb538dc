// Windows.Media.MediaProperties: the frame rate of a frame format. Not among the published
// facts the other declarations are checked against; the ABI test carries its own entry.
#pragma once

#include "platform/windows/winrt/generics_abi.h"

namespace vexcap::windows::abi {

// Windows.Media.MediaProperties.IMediaRatio
struct IMediaRatio : IInspectable {
  static constexpr GUID iid = {0xd2d0fee5, 0x8929, 0x401d, {0xac, 0x78, 0x7d, 0x35, 0x7e, 0x37, 0x81, 0x63}};
  virtual HRESULT STDMETHODCALLTYPE put_Numerator(UINT32 value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Numerator(UINT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Denominator(UINT32 value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Denominator(UINT32* value) = 0;
};

}  // namespace vexcap::windows::abi
