// Windows.Graphics.Imaging and Windows.Storage.Streams: software bitmaps and buffers.
// Declared from the published metadata; the slot order is checked by the ABI test.
#pragma once

#include "platform/windows/winrt/generics_abi.h"

namespace vexcap::windows::abi {

// Windows.Graphics.Imaging.ISoftwareBitmap
struct ISoftwareBitmap : IInspectable {
  static constexpr GUID iid = {0x689e0708, 0x7eef, 0x483f, {0x96, 0x3f, 0xda, 0x93, 0x88, 0x18, 0xe0, 0x73}};
  virtual HRESULT STDMETHODCALLTYPE get_BitmapPixelFormat(BitmapPixelFormat* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_BitmapAlphaMode(BitmapAlphaMode* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PixelWidth(INT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_PixelHeight(INT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_IsReadOnly(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_DpiX(DOUBLE value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_DpiX(DOUBLE* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_DpiY(DOUBLE value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_DpiY(DOUBLE* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE LockBuffer(BitmapBufferAccessMode mode, IBitmapBuffer** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE CopyTo(ISoftwareBitmap* bitmap) = 0;
  virtual HRESULT STDMETHODCALLTYPE CopyFromBuffer(IBuffer* buffer) = 0;
  virtual HRESULT STDMETHODCALLTYPE CopyToBuffer(IBuffer* buffer) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetReadOnlyView(ISoftwareBitmap** value) = 0;
};

// Windows.Graphics.Imaging.ISoftwareBitmapStatics
struct ISoftwareBitmapStatics : IInspectable {
  static constexpr GUID iid = {0xdf0385db, 0x672f, 0x4a9d, {0x80, 0x6e, 0xc2, 0x44, 0x2f, 0x34, 0x3e, 0x86}};
  virtual HRESULT STDMETHODCALLTYPE Copy(ISoftwareBitmap* source, ISoftwareBitmap** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE Convert(ISoftwareBitmap* source, BitmapPixelFormat format, ISoftwareBitmap** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE ConvertWithAlpha(ISoftwareBitmap* source, BitmapPixelFormat format, BitmapAlphaMode alpha, ISoftwareBitmap** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateCopyFromBuffer(IBuffer* source, BitmapPixelFormat format, INT32 width, INT32 height, ISoftwareBitmap** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateCopyWithAlphaFromBuffer(IBuffer* source, BitmapPixelFormat format, INT32 width, INT32 height, BitmapAlphaMode alpha, ISoftwareBitmap** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateCopyFromSurfaceAsync(IInspectable* surface, IAsyncOperation<SoftwareBitmap>** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateCopyWithAlphaFromSurfaceAsync(IInspectable* surface, BitmapAlphaMode alpha, IAsyncOperation<SoftwareBitmap>** value) = 0;
};

// Windows.Graphics.Imaging.ISoftwareBitmapFactory
struct ISoftwareBitmapFactory : IInspectable {
  static constexpr GUID iid = {0xc99feb69, 0x2d62, 0x4d47, {0xa6, 0xb3, 0x4f, 0xdb, 0x6a, 0x07, 0xfd, 0xf8}};
  virtual HRESULT STDMETHODCALLTYPE Create(BitmapPixelFormat format, INT32 width, INT32 height, ISoftwareBitmap** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateWithAlpha(BitmapPixelFormat format, INT32 width, INT32 height, BitmapAlphaMode alpha, ISoftwareBitmap** value) = 0;
};

// Windows.Graphics.Imaging.IBitmapBuffer
struct IBitmapBuffer : IInspectable {
  static constexpr GUID iid = {0xa53e04c4, 0x399c, 0x438c, {0xb2, 0x8f, 0xa6, 0x3a, 0x6b, 0x83, 0xd1, 0xa1}};
  virtual HRESULT STDMETHODCALLTYPE GetPlaneCount(INT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetPlaneDescription(INT32 index, BitmapPlaneDescription* value) = 0;
};

// Windows.Storage.Streams.IBuffer
struct IBuffer : IInspectable {
  static constexpr GUID iid = {0x905a0fe0, 0xbc53, 0x11df, {0x8c, 0x49, 0x00, 0x1e, 0x4f, 0xc6, 0x86, 0xda}};
  virtual HRESULT STDMETHODCALLTYPE get_Capacity(UINT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Length(UINT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Length(UINT32 value) = 0;
};

// Windows.Storage.Streams.IBufferFactory
struct IBufferFactory : IInspectable {
  static constexpr GUID iid = {0x71af914d, 0xc10f, 0x484b, {0xbc, 0x50, 0x14, 0xbc, 0x62, 0x3b, 0x3a, 0x27}};
  virtual HRESULT STDMETHODCALLTYPE Create(UINT32 capacity, IBuffer** value) = 0;
};

// Windows.Storage.Streams.IBufferStatics
struct IBufferStatics : IInspectable {
  static constexpr GUID iid = {0xe901e65b, 0xd716, 0x475a, {0xa9, 0x0a, 0xaf, 0x72, 0x29, 0xb1, 0xe7, 0x41}};
  virtual HRESULT STDMETHODCALLTYPE CreateCopyFromMemoryBuffer(IMemoryBuffer* input, IBuffer** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateMemoryBufferOverIBuffer(IBuffer* input, IMemoryBuffer** value) = 0;
};

// Windows.Storage.Streams.IBufferByteAccess
struct IBufferByteAccess : IUnknown {
  static constexpr GUID iid = {0x905a0fef, 0xbc53, 0x11df, {0x8c, 0x49, 0x00, 0x1e, 0x4f, 0xc6, 0x86, 0xda}};
  virtual HRESULT STDMETHODCALLTYPE Buffer(BYTE** value) = 0;
};

}  // namespace vexcap::windows::abi
