// Windows.Foundation.PropertyValue: the boxed values the double hands out (a format's rotation,
// an extended property's bytes, a frame's time) and the statics that box the caller's values.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/windows_double/activation_factory.h"
#include "platform/windows_double/unmodelled.h"

namespace vexcap::windows_double {

class BoxedUInt32 final : public Object<BoxedUInt32, Threading::Agile, abi::UnmodelledIPropertyValue<BoxedUInt32>,
                                        Implements<abi::IReference<UINT32>>> {
 public:
  explicit BoxedUInt32(UINT32 value) : Object("Windows.Foundation.IReference`1<UInt32>"), value_(value) {}
  HRESULT STDMETHODCALLTYPE get_Type(abi::PropertyType* type) override;
  HRESULT STDMETHODCALLTYPE GetUInt32(UINT32* value) override;
  HRESULT STDMETHODCALLTYPE get_Value(UINT32* value) override;

 private:
  const UINT32 value_;
};

class BoxedInt32 final : public Object<BoxedInt32, Threading::Agile, abi::UnmodelledIPropertyValue<BoxedInt32>,
                                       Implements<abi::IReference<INT32>>> {
 public:
  explicit BoxedInt32(INT32 value) : Object("Windows.Foundation.IReference`1<Int32>"), value_(value) {}
  HRESULT STDMETHODCALLTYPE get_Type(abi::PropertyType* type) override;
  HRESULT STDMETHODCALLTYPE GetInt32(INT32* value) override;
  HRESULT STDMETHODCALLTYPE get_Value(INT32* value) override;

 private:
  const INT32 value_;
};

class BoxedBytes final : public Object<BoxedBytes, Threading::Agile, abi::UnmodelledIPropertyValue<BoxedBytes>,
                                       Implements<abi::IReferenceArray<BYTE>>> {
 public:
  explicit BoxedBytes(std::vector<std::uint8_t> bytes)
      : Object("Windows.Foundation.IReferenceArray`1<UInt8>"), bytes_(std::move(bytes)) {}
  HRESULT STDMETHODCALLTYPE get_Type(abi::PropertyType* type) override;
  HRESULT STDMETHODCALLTYPE GetUInt8Array(UINT32* length, BYTE** value) override;
  HRESULT STDMETHODCALLTYPE get_Value(UINT32* length, BYTE** value) override;

 private:
  const std::vector<std::uint8_t> bytes_;
};

class BoxedTimeSpan final : public Object<BoxedTimeSpan, Threading::Agile, Implements<abi::IReference<abi::TimeSpan>>> {
 public:
  explicit BoxedTimeSpan(std::int64_t duration) : Object("Windows.Foundation.IReference`1<TimeSpan>"), duration_(duration) {}
  HRESULT STDMETHODCALLTYPE get_Value(abi::TimeSpan* value) override;

 private:
  const std::int64_t duration_;
};

class PropertyValueStatics final
    : public Object<PropertyValueStatics, Threading::Agile, UnmodelledActivationFactory<PropertyValueStatics>,
                    abi::UnmodelledIPropertyValueStatics<PropertyValueStatics>> {
 public:
  PropertyValueStatics() : Object("Windows.Foundation.PropertyValue") {}
  HRESULT STDMETHODCALLTYPE CreateUInt32(UINT32 value, IInspectable** boxed) override;
  HRESULT STDMETHODCALLTYPE CreateInt32(INT32 value, IInspectable** boxed) override;
  HRESULT STDMETHODCALLTYPE CreateUInt8Array(UINT32 length, BYTE* value, IInspectable** boxed) override;
};

// The value of an IReference<UINT32> the caller passed; nullopt for null. Fails for an object
// that is not one.
HRESULT read_boxed_uint32(abi::IReference<UINT32>* boxed, std::optional<std::uint32_t>& value);

}  // namespace vexcap::windows_double
