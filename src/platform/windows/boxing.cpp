#include "platform/windows/boxing.h"

#include "platform/windows/activation.h"

namespace vexcap::windows {

namespace {

ComPtr<abi::IPropertyValueStatics> property_values() {
  return activation_factory<abi::IPropertyValueStatics>(class_id::property_value);
}

// Owns an array the platform allocated with CoTaskMemAlloc.
class TaskMemory {
 public:
  TaskMemory() = default;
  TaskMemory(const TaskMemory&) = delete;
  TaskMemory& operator=(const TaskMemory&) = delete;
  ~TaskMemory() { CoTaskMemFree(bytes_); }
  BYTE** put() { return &bytes_; }
  const BYTE* get() const { return bytes_; }

 private:
  BYTE* bytes_ = nullptr;
};

}  // namespace

ComPtr<abi::IReference<UINT32>> box_uint32(std::uint32_t value) {
  ComPtr<IInspectable> boxed;
  check(property_values()->CreateUInt32(value, boxed.put()));
  return query<abi::IReference<UINT32>>(boxed);
}

platform::PropertyValue unbox_property_value(const ComPtr<IInspectable>& value) {
  check_present(value);
  platform::PropertyValue result;
  HString class_name;
  if (SUCCEEDED(value->GetRuntimeClassName(class_name.put()))) result.type_name = class_name.text();
  auto array = value.try_as<abi::IReferenceArray<BYTE>>();
  if (!array) return result;
  UINT32 length = 0;
  TaskMemory bytes;
  check(array->get_Value(&length, bytes.put()));
  result.bytes.emplace(bytes.get(), bytes.get() + length);
  return result;
}

}  // namespace vexcap::windows
