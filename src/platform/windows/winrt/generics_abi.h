// The parameterized interfaces and delegates of Windows.Foundation, as C++ templates. Each
// instance's IID is computed from its signature.
#pragma once

#include "platform/windows/winrt/abi_types.h"
#include "platform/windows/winrt/signature.h"

namespace vexcap::windows::abi {

// Template IIDs: they enter signatures, they are never asked for with QueryInterface.
inline constexpr GUID async_operation_template = {0x9fc2b0bb, 0xe446, 0x44e2, {0xaa, 0x61, 0x9c, 0xab, 0x8f, 0x63, 0x6a, 0xf2}};
inline constexpr GUID async_operation_completed_template = {0xfcdcf02c, 0xe5d8, 0x4478, {0x91, 0x5a, 0x4d, 0x90, 0xb7, 0x4b, 0x83, 0xa5}};
inline constexpr GUID typed_event_handler_template = {0x9de1c534, 0x6ae1, 0x11e0, {0x84, 0xe1, 0x18, 0xa9, 0x05, 0xbc, 0xc5, 0x3f}};
inline constexpr GUID reference_template = {0x61c17706, 0x2d65, 0x11e0, {0x9a, 0xe8, 0xd4, 0x85, 0x64, 0x01, 0x54, 0x72}};
inline constexpr GUID reference_array_template = {0x61c17707, 0x2d65, 0x11e0, {0x9a, 0xe8, 0xd4, 0x85, 0x64, 0x01, 0x54, 0x72}};
inline constexpr GUID iterable_template = {0xfaa585ea, 0x6214, 0x4217, {0xaf, 0xda, 0x7f, 0x46, 0xde, 0x58, 0x69, 0xb3}};
inline constexpr GUID iterator_template = {0x6a79e863, 0x4300, 0x459a, {0x99, 0x66, 0xcb, 0xb6, 0x60, 0x96, 0x3e, 0xe1}};
inline constexpr GUID vector_view_template = {0xbbe1fa4c, 0xb0e3, 0x4583, {0xba, 0xef, 0x1f, 0x1b, 0x2e, 0x48, 0x3e, 0x56}};
inline constexpr GUID key_value_pair_template = {0x02b51929, 0xc1c4, 0x4a7e, {0x89, 0x40, 0x03, 0x12, 0xb5, 0xc1, 0x85, 0x00}};
inline constexpr GUID map_view_template = {0xe480ce40, 0xa338, 0x4ada, {0xad, 0xcf, 0x27, 0x22, 0x72, 0xe4, 0x8c, 0xb9}};

template <class TResult>
struct IAsyncOperation;

template <class TResult>
struct IAsyncOperationCompletedHandler : IUnknown {
  static constexpr fixed_string abi_template_name{"IAsyncOperationCompletedHandler"};
  static constexpr auto signature = pinterface_signature<TResult>(async_operation_completed_template);
  static constexpr GUID iid = guid_from_signature(signature.view());
  virtual HRESULT STDMETHODCALLTYPE Invoke(IAsyncOperation<TResult>* asyncInfo, AsyncStatus status) = 0;
};

template <class TResult>
struct IAsyncOperation : IInspectable {
  static constexpr fixed_string abi_template_name{"IAsyncOperation"};
  static constexpr auto signature = pinterface_signature<TResult>(async_operation_template);
  static constexpr GUID iid = guid_from_signature(signature.view());
  using result_type = TResult;
  virtual HRESULT STDMETHODCALLTYPE put_Completed(IAsyncOperationCompletedHandler<TResult>* handler) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Completed(IAsyncOperationCompletedHandler<TResult>** handler) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetResults(abi_t<TResult>* results) = 0;
};

template <class TSender, class TResult>
struct ITypedEventHandler : IUnknown {
  static constexpr fixed_string abi_template_name{"ITypedEventHandler"};
  static constexpr auto signature = pinterface_signature<TSender, TResult>(typed_event_handler_template);
  static constexpr GUID iid = guid_from_signature(signature.view());
  virtual HRESULT STDMETHODCALLTYPE Invoke(abi_t<TSender> sender, abi_t<TResult> args) = 0;
};

template <class T>
struct IReference : IInspectable {
  static constexpr fixed_string abi_template_name{"IReference"};
  static constexpr auto signature = pinterface_signature<T>(reference_template);
  static constexpr GUID iid = guid_from_signature(signature.view());
  virtual HRESULT STDMETHODCALLTYPE get_Value(abi_t<T>* value) = 0;
};

template <class T>
struct IReferenceArray : IInspectable {
  static constexpr fixed_string abi_template_name{"IReferenceArray"};
  static constexpr auto signature = pinterface_signature<T>(reference_array_template);
  static constexpr GUID iid = guid_from_signature(signature.view());
  virtual HRESULT STDMETHODCALLTYPE get_Value(UINT32* valueLength, abi_t<T>** value) = 0;
};

template <class T>
struct IIterator : IInspectable {
  static constexpr fixed_string abi_template_name{"IIterator"};
  static constexpr auto signature = pinterface_signature<T>(iterator_template);
  static constexpr GUID iid = guid_from_signature(signature.view());
  virtual HRESULT STDMETHODCALLTYPE get_Current(abi_t<T>* current) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_HasCurrent(boolean* hasCurrent) = 0;
  virtual HRESULT STDMETHODCALLTYPE MoveNext(boolean* hasCurrent) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetMany(UINT32 capacity, abi_t<T>* value, UINT32* actual) = 0;
};

template <class T>
struct IIterable : IInspectable {
  static constexpr fixed_string abi_template_name{"IIterable"};
  static constexpr auto signature = pinterface_signature<T>(iterable_template);
  static constexpr GUID iid = guid_from_signature(signature.view());
  virtual HRESULT STDMETHODCALLTYPE First(IIterator<T>** first) = 0;
};

template <class T>
struct IVectorView : IInspectable {
  static constexpr fixed_string abi_template_name{"IVectorView"};
  static constexpr auto signature = pinterface_signature<T>(vector_view_template);
  static constexpr GUID iid = guid_from_signature(signature.view());
  using element_type = T;
  virtual HRESULT STDMETHODCALLTYPE GetAt(UINT32 index, abi_t<T>* item) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Size(UINT32* size) = 0;
  virtual HRESULT STDMETHODCALLTYPE IndexOf(abi_t<T> value, UINT32* index, boolean* found) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetMany(UINT32 startIndex, UINT32 capacity, abi_t<T>* value, UINT32* actual) = 0;
};

template <class K, class V>
struct IKeyValuePair : IInspectable {
  static constexpr fixed_string abi_template_name{"IKeyValuePair"};
  static constexpr auto signature = pinterface_signature<K, V>(key_value_pair_template);
  static constexpr GUID iid = guid_from_signature(signature.view());
  virtual HRESULT STDMETHODCALLTYPE get_Key(abi_t<K>* key) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Value(abi_t<V>* value) = 0;
};

template <class K, class V>
struct IMapView : IInspectable {
  static constexpr fixed_string abi_template_name{"IMapView"};
  static constexpr auto signature = pinterface_signature<K, V>(map_view_template);
  static constexpr GUID iid = guid_from_signature(signature.view());
  virtual HRESULT STDMETHODCALLTYPE Lookup(abi_t<K> key, abi_t<V>* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Size(UINT32* size) = 0;
  virtual HRESULT STDMETHODCALLTYPE HasKey(abi_t<K> key, boolean* found) = 0;
  virtual HRESULT STDMETHODCALLTYPE Split(IMapView<K, V>** firstPartition, IMapView<K, V>** secondPartition) = 0;
};

}  // namespace vexcap::windows::abi
