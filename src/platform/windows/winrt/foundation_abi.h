// Windows.Foundation: asynchronous actions, closing, boxing and memory buffers.
// Declared from the published metadata; the slot order is checked by the ABI test.
#pragma once

#include "platform/windows/winrt/generics_abi.h"

namespace vexcap::windows::abi {

// Windows.Foundation.IAsyncAction
// requires IAsyncInfo (QueryInterface for it; not part of this vtable)
struct IAsyncAction : IInspectable {
  static constexpr GUID iid = {0x5a648006, 0x843a, 0x4da9, {0x86, 0x5b, 0x9d, 0x26, 0xe5, 0xdf, 0xad, 0x7b}};
  virtual HRESULT STDMETHODCALLTYPE put_Completed(IAsyncActionCompletedHandler* handler) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Completed(IAsyncActionCompletedHandler** handler) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetResults() = 0;
};

// Windows.Foundation.IClosable
struct IClosable : IInspectable {
  static constexpr GUID iid = {0x30d5a829, 0x7fa4, 0x4026, {0x83, 0xbb, 0xd7, 0x5b, 0xae, 0x4e, 0xa9, 0x9e}};
  virtual HRESULT STDMETHODCALLTYPE Close() = 0;
};

// Windows.Foundation.IPropertyValue
struct IPropertyValue : IInspectable {
  static constexpr GUID iid = {0x4bd682dd, 0x7554, 0x40e9, {0x9a, 0x9b, 0x82, 0x65, 0x4e, 0xde, 0x7e, 0x62}};
  virtual HRESULT STDMETHODCALLTYPE get_Type(PropertyType* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_IsNumericScalar(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetUInt8(BYTE* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetInt16(INT16* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetUInt16(UINT16* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetInt32(INT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetUInt32(UINT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetInt64(INT64* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetUInt64(UINT64* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSingle(FLOAT* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDouble(DOUBLE* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetChar16(WCHAR* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetBoolean(boolean* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetString(HSTRING* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetGuid(GUID* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDateTime(DateTime* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTimeSpan(TimeSpan* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetPoint(Point* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSize(Size* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetRect(Rect* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetUInt8Array(UINT32* valueLength, BYTE** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetInt16Array(UINT32* valueLength, INT16** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetUInt16Array(UINT32* valueLength, UINT16** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetInt32Array(UINT32* valueLength, INT32** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetUInt32Array(UINT32* valueLength, UINT32** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetInt64Array(UINT32* valueLength, INT64** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetUInt64Array(UINT32* valueLength, UINT64** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSingleArray(UINT32* valueLength, FLOAT** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDoubleArray(UINT32* valueLength, DOUBLE** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetChar16Array(UINT32* valueLength, WCHAR** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetBooleanArray(UINT32* valueLength, boolean** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetStringArray(UINT32* valueLength, HSTRING** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetInspectableArray(UINT32* valueLength, IInspectable*** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetGuidArray(UINT32* valueLength, GUID** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDateTimeArray(UINT32* valueLength, DateTime** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTimeSpanArray(UINT32* valueLength, TimeSpan** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetPointArray(UINT32* valueLength, Point** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSizeArray(UINT32* valueLength, Size** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetRectArray(UINT32* valueLength, Rect** value) = 0;
};

// Windows.Foundation.IPropertyValueStatics
struct IPropertyValueStatics : IInspectable {
  static constexpr GUID iid = {0x629bdbc8, 0xd932, 0x4ff4, {0x96, 0xb9, 0x8d, 0x96, 0xc5, 0xc1, 0xe8, 0x58}};
  virtual HRESULT STDMETHODCALLTYPE CreateEmpty(IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateUInt8(BYTE value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateInt16(INT16 value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateUInt16(UINT16 value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateInt32(INT32 value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateUInt32(UINT32 value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateInt64(INT64 value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateUInt64(UINT64 value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateSingle(FLOAT value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateDouble(DOUBLE value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateChar16(WCHAR value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateBoolean(boolean value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateString(HSTRING value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateInspectable(IInspectable* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateGuid(GUID value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateDateTime(DateTime value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateTimeSpan(TimeSpan value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreatePoint(Point value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateSize(Size value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateRect(Rect value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateUInt8Array(UINT32 valueLength, BYTE* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateInt16Array(UINT32 valueLength, INT16* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateUInt16Array(UINT32 valueLength, UINT16* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateInt32Array(UINT32 valueLength, INT32* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateUInt32Array(UINT32 valueLength, UINT32* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateInt64Array(UINT32 valueLength, INT64* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateUInt64Array(UINT32 valueLength, UINT64* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateSingleArray(UINT32 valueLength, FLOAT* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateDoubleArray(UINT32 valueLength, DOUBLE* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateChar16Array(UINT32 valueLength, WCHAR* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateBooleanArray(UINT32 valueLength, boolean* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateStringArray(UINT32 valueLength, HSTRING* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateInspectableArray(UINT32 valueLength, IInspectable** value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateGuidArray(UINT32 valueLength, GUID* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateDateTimeArray(UINT32 valueLength, DateTime* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateTimeSpanArray(UINT32 valueLength, TimeSpan* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreatePointArray(UINT32 valueLength, Point* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateSizeArray(UINT32 valueLength, Size* value, IInspectable** propertyValue) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateRectArray(UINT32 valueLength, Rect* value, IInspectable** propertyValue) = 0;
};

// Windows.Foundation.IMemoryBuffer
struct IMemoryBuffer : IInspectable {
  static constexpr GUID iid = {0xfbc4dd2a, 0x245b, 0x11e4, {0xaf, 0x98, 0x68, 0x94, 0x23, 0x26, 0x0c, 0xf8}};
  virtual HRESULT STDMETHODCALLTYPE CreateReference(IMemoryBufferReference** reference) = 0;
};

// Windows.Foundation.IMemoryBufferReference
struct IMemoryBufferReference : IInspectable {
  static constexpr GUID iid = {0xfbc4dd29, 0x245b, 0x11e4, {0xaf, 0x98, 0x68, 0x94, 0x23, 0x26, 0x0c, 0xf8}};
  virtual HRESULT STDMETHODCALLTYPE get_Capacity(UINT32* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE add_Closed(ITypedEventHandler<IMemoryBufferReference, IInspectable>* handler, EventRegistrationToken* cookie) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_Closed(EventRegistrationToken cookie) = 0;
};

// Windows.Foundation.IAsyncInfo
// declared in asyncinfo.h (global-namespace IAsyncInfo in the SDK C++ headers)
struct IAsyncInfo : IInspectable {
  static constexpr GUID iid = {0x00000036, 0x0000, 0x0000, {0xc0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
  virtual HRESULT STDMETHODCALLTYPE get_Id(UINT32* id) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Status(AsyncStatus* status) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ErrorCode(HRESULT* errorCode) = 0;
  virtual HRESULT STDMETHODCALLTYPE Cancel() = 0;
  virtual HRESULT STDMETHODCALLTYPE Close() = 0;
};

// Windows.Foundation.AsyncActionCompletedHandler
struct IAsyncActionCompletedHandler : IUnknown {
  static constexpr GUID iid = {0xa4ed5c81, 0x76c9, 0x40bd, {0x8b, 0xe6, 0xb1, 0xd9, 0x0f, 0xb2, 0x0a, 0xe7}};
  static constexpr bool is_delegate = true;
  virtual HRESULT STDMETHODCALLTYPE Invoke(IAsyncAction* asyncInfo, AsyncStatus asyncStatus) = 0;
};

// Windows.Foundation.IMemoryBufferByteAccess
struct IMemoryBufferByteAccess : IUnknown {
  static constexpr GUID iid = {0x5b0d3235, 0x4dba, 0x4d44, {0x86, 0x5e, 0x8f, 0x1d, 0x0e, 0x4f, 0xd0, 0x4d}};
  virtual HRESULT STDMETHODCALLTYPE GetBuffer(BYTE** value, UINT32* capacity) = 0;
};

}  // namespace vexcap::windows::abi
