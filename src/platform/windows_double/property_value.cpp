#include "platform/windows_double/property_value.h"

#include <combaseapi.h>

#include <cstring>

namespace vexcap::windows_double {

HRESULT BoxedUInt32::get_Type(abi::PropertyType* type) {
  DOUBLE_ENTER("get_Type");
  return give(type, abi::PropertyType::UInt32);
}

HRESULT BoxedUInt32::GetUInt32(UINT32* value) {
  DOUBLE_ENTER("GetUInt32");
  return give(value, value_);
}

HRESULT BoxedUInt32::get_Value(UINT32* value) {
  DOUBLE_ENTER("get_Value");
  return give(value, value_);
}

HRESULT BoxedInt32::get_Type(abi::PropertyType* type) {
  DOUBLE_ENTER("get_Type");
  return give(type, abi::PropertyType::Int32);
}

HRESULT BoxedInt32::GetInt32(INT32* value) {
  DOUBLE_ENTER("GetInt32");
  return give(value, value_);
}

HRESULT BoxedInt32::get_Value(INT32* value) {
  DOUBLE_ENTER("get_Value");
  return give(value, value_);
}

HRESULT BoxedBytes::get_Type(abi::PropertyType* type) {
  DOUBLE_ENTER("get_Type");
  return give(type, abi::PropertyType::UInt8Array);
}

HRESULT BoxedBytes::GetUInt8Array(UINT32* length, BYTE** value) { return get_Value(length, value); }

// The caller receives its own copy, allocated with CoTaskMemAlloc as the platform does.
HRESULT BoxedBytes::get_Value(UINT32* length, BYTE** value) {
  DOUBLE_ENTER("get_Value");
  if (length == nullptr || value == nullptr) return E_POINTER;
  *value = static_cast<BYTE*>(CoTaskMemAlloc(bytes_.empty() ? 1 : bytes_.size()));
  if (*value == nullptr) return E_OUTOFMEMORY;
  if (!bytes_.empty()) std::memcpy(*value, bytes_.data(), bytes_.size());
  *length = UINT32(bytes_.size());
  return S_OK;
}

HRESULT BoxedTimeSpan::get_Value(abi::TimeSpan* value) {
  DOUBLE_ENTER("get_Value");
  if (value == nullptr) return E_POINTER;
  value->Duration = duration_;
  return S_OK;
}

HRESULT PropertyValueStatics::CreateUInt32(UINT32 value, IInspectable** boxed) {
  DOUBLE_ENTER("CreateUInt32");
  return hand_out(make<BoxedUInt32>(value), reinterpret_cast<abi::IPropertyValue**>(boxed));
}

HRESULT PropertyValueStatics::CreateInt32(INT32 value, IInspectable** boxed) {
  DOUBLE_ENTER("CreateInt32");
  return hand_out(make<BoxedInt32>(value), reinterpret_cast<abi::IPropertyValue**>(boxed));
}

HRESULT PropertyValueStatics::CreateUInt8Array(UINT32 length, BYTE* value, IInspectable** boxed) {
  DOUBLE_ENTER("CreateUInt8Array");
  if (value == nullptr && length != 0) return E_POINTER;
  return hand_out(make<BoxedBytes>(std::vector<std::uint8_t>(value, value + length)),
                  reinterpret_cast<abi::IPropertyValue**>(boxed));
}

HRESULT read_boxed_uint32(abi::IReference<UINT32>* boxed, std::optional<std::uint32_t>& value) {
  value.reset();
  if (boxed == nullptr) return S_OK;
  UINT32 number = 0;
  if (HRESULT read = boxed->get_Value(&number); FAILED(read)) return read;
  value = number;
  return S_OK;
}

}  // namespace vexcap::windows_double
