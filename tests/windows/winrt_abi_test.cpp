// The adapter's hand-written Windows Runtime ABI declarations against the published facts
// (winrt_abi.json): every declared interface's IID and vtable slots, the IIDs the code computes
// for parameterized instances, and the layouts of the structures passed by value.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/windows/winrt/abi.h"
#include "support/json.h"

namespace {

namespace abi = vexcap::windows::abi;
using vexcap::testing::Json;

// One instance of each parameterized interface, to take its methods' slots from.
namespace probes {
using IAsyncOperationCompletedHandler = abi::IAsyncOperationCompletedHandler<abi::MediaFrameReader>;
using IAsyncOperation = abi::IAsyncOperation<abi::MediaFrameReader>;
using ITypedEventHandler = abi::ITypedEventHandler<abi::MediaCapture, abi::IInspectable>;
using IReference = abi::IReference<UINT32>;
using IReferenceArray = abi::IReferenceArray<BYTE>;
using IIterator = abi::IIterator<HSTRING>;
using IIterable = abi::IIterable<HSTRING>;
using IVectorView = abi::IVectorView<HSTRING>;
using IKeyValuePair = abi::IKeyValuePair<HSTRING, abi::IInspectable>;
using IMapView = abi::IMapView<HSTRING, abi::IInspectable>;
}  // namespace probes

// The parameterized instances the adapter passes through the ABI.
template <class... T>
struct type_list {};
using used_instances = type_list<
    abi::IAsyncOperationCompletedHandler<abi::DeviceInformation>,
    abi::IAsyncOperationCompletedHandler<abi::IVectorView<abi::MediaFrameSourceGroup>>,
    abi::IAsyncOperationCompletedHandler<abi::SoftwareBitmap>,
    abi::IAsyncOperationCompletedHandler<abi::MediaFrameReader>,
    abi::IAsyncOperationCompletedHandler<abi::MediaFrameReaderStartStatus>,
    abi::IAsyncOperationCompletedHandler<abi::MediaFrameSourceGetPropertyResult>,
    abi::IAsyncOperationCompletedHandler<abi::MediaFrameSourceGroup>,
    abi::IAsyncOperationCompletedHandler<abi::MediaFrameSourceSetPropertyStatus>,
    abi::IIterable<HSTRING>,
    abi::IIterable<abi::IKeyValuePair<GUID, abi::IInspectable>>,
    abi::IIterable<abi::IKeyValuePair<HSTRING, abi::IInspectable>>,
    abi::IIterable<abi::IKeyValuePair<HSTRING, abi::MediaFrameSource>>,
    abi::IIterable<abi::MediaFrameFormat>,
    abi::IIterable<abi::MediaFrameSourceGroup>,
    abi::IIterable<abi::MediaFrameSourceInfo>,
    abi::IIterator<HSTRING>,
    abi::IIterator<abi::IKeyValuePair<GUID, abi::IInspectable>>,
    abi::IIterator<abi::IKeyValuePair<HSTRING, abi::IInspectable>>,
    abi::IIterator<abi::IKeyValuePair<HSTRING, abi::MediaFrameSource>>,
    abi::IIterator<abi::MediaFrameFormat>,
    abi::IIterator<abi::MediaFrameSourceGroup>,
    abi::IIterator<abi::MediaFrameSourceInfo>,
    abi::IKeyValuePair<GUID, abi::IInspectable>,
    abi::IKeyValuePair<HSTRING, abi::IInspectable>,
    abi::IKeyValuePair<HSTRING, abi::MediaFrameSource>,
    abi::IMapView<GUID, abi::IInspectable>,
    abi::IMapView<HSTRING, abi::IInspectable>,
    abi::IMapView<HSTRING, abi::MediaFrameSource>,
    abi::IVectorView<HSTRING>,
    abi::IVectorView<abi::MediaFrameFormat>,
    abi::IVectorView<abi::MediaFrameSourceGroup>,
    abi::IVectorView<abi::MediaFrameSourceInfo>,
    abi::IVectorView<abi::InfraredTorchMode>,
    abi::IAsyncOperation<abi::DeviceInformation>,
    abi::IAsyncOperation<abi::IVectorView<abi::MediaFrameSourceGroup>>,
    abi::IAsyncOperation<abi::SoftwareBitmap>,
    abi::IAsyncOperation<abi::MediaFrameReader>,
    abi::IAsyncOperation<abi::MediaFrameReaderStartStatus>,
    abi::IAsyncOperation<abi::MediaFrameSourceGetPropertyResult>,
    abi::IAsyncOperation<abi::MediaFrameSourceGroup>,
    abi::IAsyncOperation<abi::MediaFrameSourceSetPropertyStatus>,
    abi::IReferenceArray<BYTE>,
    abi::IReference<UINT32>,
    abi::IReference<abi::TimeSpan>,
    abi::ITypedEventHandler<abi::DeviceWatcher, abi::IInspectable>,
    abi::ITypedEventHandler<abi::DeviceWatcher, abi::DeviceInformation>,
    abi::ITypedEventHandler<abi::DeviceWatcher, abi::DeviceInformationUpdate>,
    abi::ITypedEventHandler<abi::IMemoryBufferReference, abi::IInspectable>,
    abi::ITypedEventHandler<abi::MediaFrameReader, abi::MediaFrameArrivedEventArgs>,
    abi::ITypedEventHandler<abi::MediaFrameSource, abi::IInspectable>,
    abi::ITypedEventHandler<abi::MediaCapture, abi::IInspectable>,
    abi::ITypedEventHandler<abi::MediaCapture, abi::MediaCaptureDeviceExclusiveControlStatusChangedEventArgs>>;

const Json& facts() {
  static const Json document = Json::parse_file(VEXCAP_WINRT_ABI_FACTS);
  return document;
}

std::string iid_text(const GUID& id) {
  char text[40];
  std::snprintf(text, sizeof text, "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x",
                unsigned(id.Data1), unsigned(id.Data2), unsigned(id.Data3), id.Data4[0], id.Data4[1],
                id.Data4[2], id.Data4[3], id.Data4[4], id.Data4[5], id.Data4[6], id.Data4[7]);
  return text;
}

// GCC and Clang (the Itanium C++ ABI, MinGW included) store a pointer to a virtual member
// function as one plus its byte offset in the vtable.
template <class Member>
std::ptrdiff_t vtable_slot(Member member) {
  struct Representation {
    std::uintptr_t pointer;
    std::ptrdiff_t adjustment;
  };
  static_assert(sizeof(Member) == sizeof(Representation));
  Representation raw;
  std::memcpy(&raw, &member, sizeof raw);
  if ((raw.pointer & 1) == 0) return -1;  // not virtual
  return std::ptrdiff_t((raw.pointer - 1) / sizeof(void*));
}

struct DeclaredInterface {
  std::string name;
  bool generic = false;
  std::string base;
  std::optional<GUID> iid;
  std::vector<std::pair<std::string, std::ptrdiff_t>> slots;  // method, slot
};

struct DeclaredEnum {
  std::string name;
  std::vector<std::pair<std::string, std::int64_t>> values;  // enumerator, value
};

struct DeclaredAbi {
  std::vector<DeclaredInterface> interfaces;
  std::vector<DeclaredEnum> enums;
};

const DeclaredAbi& declared_abi() {
  static const DeclaredAbi declared = [] {
    DeclaredAbi all;
#define VEXCAP_ABI_INTERFACE(name, base)                               \
  all.interfaces.push_back({#name, false, #base, abi::name::iid, {}}); \
  {                                                                    \
    using current [[maybe_unused]] = abi::name;
#define VEXCAP_ABI_GENERIC(name, base)                             \
  all.interfaces.push_back({#name, true, #base, std::nullopt, {}}); \
  {                                                                \
    using current [[maybe_unused]] = probes::name;
#define VEXCAP_ABI_METHOD(owner, method) \
  all.interfaces.back().slots.push_back({#method, vtable_slot(&current::method)});
#define VEXCAP_ABI_END(name) }
#define VEXCAP_ABI_ENUM(name) all.enums.push_back({#name, {}});
#define VEXCAP_ABI_ENUMERATOR(name, enumerator) \
  all.enums.back().values.push_back({#enumerator, std::int64_t(abi::name::enumerator)});
#include "winrt_abi_table.inc"
#undef VEXCAP_ABI_INTERFACE
#undef VEXCAP_ABI_GENERIC
#undef VEXCAP_ABI_METHOD
#undef VEXCAP_ABI_END
#undef VEXCAP_ABI_ENUM
#undef VEXCAP_ABI_ENUMERATOR
    return all;
  }();
  return declared;
}

// The name the facts give an interface in ABI spelling: delegates take the I prefix, templates
// lose their arity mark.
std::string abi_spelling(const Json& entry) {
  std::string name = entry["short_name"].string();
  name = name.substr(0, name.find('`'));
  if (entry["kind"].string() == "delegate" && name[0] != 'I') name = "I" + name;
  return name;
}

// Interfaces the adapter needs beyond the facts file, written in its format (Windows SDK
// windows.media.mediaproperties.h and windows.media.capture.frames.h).
const Json& supplementary_facts() {
  static const Json entries = Json::parse(R"([
    {"short_name": "IMediaRatio", "kind": "winrt", "base": "IInspectable",
     "iid": "d2d0fee5-8929-401d-ac78-7d357e378163", "vtable_slots": 10,
     "methods": [{"slot": 6, "name": "put_Numerator"}, {"slot": 7, "name": "get_Numerator"},
                 {"slot": 8, "name": "put_Denominator"}, {"slot": 9, "name": "get_Denominator"}]},
    {"short_name": "IInfraredMediaFrame", "kind": "winrt", "base": "IInspectable",
     "iid": "3fd13503-004b-4f0e-91ac-465299b41658", "vtable_slots": 9,
     "methods": [{"slot": 6, "name": "get_FrameReference"}, {"slot": 7, "name": "get_VideoMediaFrame"},
                 {"slot": 8, "name": "get_IsIlluminated"}]}
  ])");
  return entries;
}

std::map<std::string, const Json*> facts_interfaces_by_abi_name() {
  std::map<std::string, const Json*> by_name;
  for (const Json& entry : facts()["interfaces"].items()) by_name[abi_spelling(entry)] = &entry;
  for (const Json& entry : supplementary_facts().items()) by_name[abi_spelling(entry)] = &entry;
  return by_name;
}

TEST(WinrtAbi, EveryDeclaredInterfaceHasTheListedIidBaseAndSlots) {
  const auto listed = facts_interfaces_by_abi_name();
  const auto& declared = declared_abi().interfaces;
  ASSERT_GT(declared.size(), 60u);
  for (const DeclaredInterface& declared_interface : declared) {
    SCOPED_TRACE(declared_interface.name);
    auto found = listed.find(declared_interface.name);
    ASSERT_NE(found, listed.end()) << "not in the facts";
    const Json& entry = *found->second;
    EXPECT_EQ(declared_interface.base, entry["base"].string());
    if (!declared_interface.generic) {
      EXPECT_EQ(iid_text(*declared_interface.iid), entry["iid"].string());
    }
    std::map<std::string, int> listed_slots;
    for (const Json& method : entry["methods"].items()) listed_slots[method["name"].string()] = int(method["slot"].number());
    EXPECT_EQ(declared_interface.slots.size(), listed_slots.size()) << "method count";
    for (const auto& [method, slot] : declared_interface.slots) {
      auto listed_slot = listed_slots.find(method);
      if (listed_slot == listed_slots.end()) {
        ADD_FAILURE() << method << " is not listed";
      } else {
        EXPECT_EQ(slot, listed_slot->second) << method;
      }
    }
    const std::ptrdiff_t first = declared_interface.base == "IInspectable" ? 6 : 3;
    EXPECT_EQ(first + std::ptrdiff_t(declared_interface.slots.size()), std::ptrdiff_t(entry["vtable_slots"].number()));
  }
}

TEST(WinrtAbi, EveryListedRuntimeInterfaceIsDeclared) {
  std::map<std::string, bool> declared;
  for (const auto& declared_interface : declared_abi().interfaces) declared[declared_interface.name] = true;
  for (const Json& entry : facts()["interfaces"].items()) {
    // The classic COM interfaces of kernel streaming and Media Foundation come from the
    // system headers.
    if (entry["kind"].string() == "com" && !entry["name"].string().starts_with("Windows.")) continue;
    EXPECT_TRUE(declared.count(abi_spelling(entry))) << entry["name"].string();
  }
}

TEST(WinrtAbi, EveryDeclaredEnumerationHasTheListedValues) {
  std::map<std::string, const Json*> listed;
  for (const auto& [name, entry] : facts()["enums"].members()) listed[name.substr(name.rfind('.') + 1)] = &entry;
  const auto& declared = declared_abi().enums;
  ASSERT_GT(declared.size(), 20u);
  for (const DeclaredEnum& declared_enum : declared) {
    SCOPED_TRACE(declared_enum.name);
    auto found = listed.find(declared_enum.name);
    ASSERT_NE(found, listed.end()) << "not in the facts";
    const auto& values = (*found->second)["values"].members();
    EXPECT_EQ(declared_enum.values.size(), values.size());
    for (const auto& [enumerator, value] : declared_enum.values) {
      auto listed_value = values.find(enumerator);
      if (listed_value == values.end()) {
        ADD_FAILURE() << enumerator << " is not listed";
      } else {
        EXPECT_EQ(value, std::int64_t(listed_value->second.number())) << enumerator;
      }
    }
  }
}

// ---- Parameterized instances -----------------------------------------------------------------

template <class T>
std::string abi_name_of();

template <class T>
struct abi_namer {
  static std::string name() {
    if constexpr (requires { typename T::default_interface; }) {
      std::string full(T::name.view());
      return full.substr(full.rfind('.') + 1) + "*";
    } else {
      return std::string(abi::value_type_info<T>::name.view());
    }
  }
};
template <>
struct abi_namer<abi::IMemoryBufferReference> {
  static std::string name() { return "IMemoryBufferReference*"; }
};
template <template <class...> class Generic, class... Args>
struct abi_namer<Generic<Args...>> {
  static std::string bare() {
    std::string text(Generic<Args...>::abi_template_name.view());
    const char* separator = "<";
    ((text += separator + abi_name_of<Args>(), separator = ", "), ...);
    return text + ">";
  }
  static std::string name() { return bare() + "*"; }
};
template <class T>
std::string abi_name_of() {
  return abi_namer<T>::name();
}

struct ComputedInstance {
  std::string abi_name;
  std::string signature;
  GUID iid;
};

template <class... T>
std::vector<ComputedInstance> computed(type_list<T...>) {
  return {{abi_namer<T>::bare(), std::string(T::signature.view()), T::iid}...};
}

TEST(WinrtAbi, ParameterizedInstancesComputeTheListedSignatureAndIid) {
  std::map<std::string, const Json*> listed;
  for (const Json& entry : facts()["generic_instances"].items()) listed[entry["abi_name"].string()] = &entry;
  std::map<std::string, bool> used;
  for (const ComputedInstance& instance : computed(used_instances{})) {
    SCOPED_TRACE(instance.abi_name);
    used[instance.abi_name] = true;
    auto found = listed.find(instance.abi_name);
    ASSERT_NE(found, listed.end()) << "not in the facts";
    EXPECT_EQ(instance.signature, (*found->second)["signature"].string());
    EXPECT_EQ(iid_text(instance.iid), (*found->second)["iid"].string());
  }
  for (const auto& [name, entry] : listed) {
    if ((*entry)["requested"].boolean()) {
      EXPECT_TRUE(used.count(name)) << name << " is requested but not used";
    }
  }
}

TEST(WinrtAbi, SignatureHashReproducesEveryListedInstanceIid) {
  const auto& instances = facts()["generic_instances"].items();
  ASSERT_FALSE(instances.empty());
  for (const Json& entry : instances) {
    EXPECT_EQ(iid_text(abi::guid_from_signature(entry["signature"].string())), entry["iid"].string())
        << entry["abi_name"].string();
  }
}

// ---- Structures passed by value ---------------------------------------------------------------

struct FieldLayout {
  const char* name;
  std::size_t offset;
};

void expect_layout(const char* struct_name, std::size_t size, std::vector<FieldLayout> fields) {
  SCOPED_TRACE(struct_name);
  const Json& entry = facts()["structs"][struct_name];
  ASSERT_FALSE(entry.is_null());
  EXPECT_EQ(size, std::size_t(entry["size"].number()));
  ASSERT_EQ(fields.size(), entry["fields"].items().size());
  for (std::size_t i = 0; i < fields.size(); ++i) {
    EXPECT_EQ(fields[i].name, entry["fields"].items()[i]["name"].string());
    EXPECT_EQ(fields[i].offset, std::size_t(entry["fields"].items()[i]["offset"].number())) << fields[i].name;
  }
}

TEST(WinrtAbi, StructuresHaveTheListedLayout) {
  using abi::BitmapPlaneDescription, abi::BitmapSize, abi::EventRegistrationToken, abi::TimeSpan;
  expect_layout("Windows.Foundation.EventRegistrationToken", sizeof(EventRegistrationToken),
                {{"value", offsetof(EventRegistrationToken, value)}});
  expect_layout("Windows.Foundation.TimeSpan", sizeof(TimeSpan), {{"Duration", offsetof(TimeSpan, Duration)}});
  expect_layout("Windows.Graphics.Imaging.BitmapPlaneDescription", sizeof(BitmapPlaneDescription),
                {{"StartIndex", offsetof(BitmapPlaneDescription, StartIndex)},
                 {"Width", offsetof(BitmapPlaneDescription, Width)},
                 {"Height", offsetof(BitmapPlaneDescription, Height)},
                 {"Stride", offsetof(BitmapPlaneDescription, Stride)}});
  expect_layout("Windows.Graphics.Imaging.BitmapSize", sizeof(BitmapSize),
                {{"Width", offsetof(BitmapSize, Width)}, {"Height", offsetof(BitmapSize, Height)}});
}

}  // namespace
