// Media Foundation as the adapter binds it at run time (the prefix's mfplat.dll and mf.dll
// stand-ins route here): start-up, attribute stores, device enumeration and the device source
// with its kernel-streaming control and topology, over the virtual camera's.
#include <combaseapi.h>
#include <mfidl.h>
#include <mfobjects.h>

#include <atomic>
#include <cstring>
#include <map>
#include <mutex>
#include <vector>

#include "platform/virtual/known_ids.h"
#include "platform/virtual/virtual_platform.h"
#include "platform/windows/guid_conversion.h"
#include "platform/windows_double/object.h"
#include "platform/windows_double/unmodelled.h"
#include "platform/windows_double/violations.h"

namespace vexcap::windows_double {

namespace {

namespace ids = virtual_camera::ids;
using windows::to_native;
using windows::to_port;

constexpr HRESULT kAttributeNotFound = HRESULT(0xC00D36E6u);  // MF_E_ATTRIBUTENOTFOUND
constexpr HRESULT kInvalidType = HRESULT(0xC00D36B4u);        // MF_E_INVALIDTYPE
constexpr HRESULT kShutdown = HRESULT(0xC00D3E85u);           // MF_E_SHUTDOWN

std::atomic<long> startups{0};

void require_started(const char* function) {
  if (startups <= 0) record_violation(std::string(function) + " called while Media Foundation is not started (MFStartup)");
}

struct GuidLess {
  bool operator()(const GUID& a, const GUID& b) const { return std::memcmp(&a, &b, sizeof(GUID)) < 0; }
};

// Copies a string to the caller in memory from CoTaskMemAlloc.
HRESULT allocated_copy(const std::wstring& text, LPWSTR* out, UINT32* length) {
  if (out == nullptr) return E_POINTER;
  *out = static_cast<LPWSTR>(CoTaskMemAlloc((text.size() + 1) * sizeof(wchar_t)));
  if (*out == nullptr) return E_OUTOFMEMORY;
  std::memcpy(*out, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
  if (length) *length = UINT32(text.size());
  return S_OK;
}

class AttributeStore final : public Object<AttributeStore, Threading::Agile, UnmodelledAttributes<AttributeStore>> {
 public:
  AttributeStore() : Object("IMFAttributes") {}

  HRESULT STDMETHODCALLTYPE SetGUID(REFGUID key, REFGUID value) override {
    DOUBLE_ENTER("SetGUID");
    std::lock_guard lock(mutex_);
    strings_.erase(key);
    guids_[key] = value;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetString(REFGUID key, LPCWSTR value) override {
    DOUBLE_ENTER("SetString");
    if (value == nullptr) return E_POINTER;
    std::lock_guard lock(mutex_);
    guids_.erase(key);
    strings_[key] = value;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetGUID(REFGUID key, GUID* value) override {
    DOUBLE_ENTER("GetGUID");
    if (value == nullptr) return E_POINTER;
    std::lock_guard lock(mutex_);
    if (auto it = guids_.find(key); it != guids_.end()) return *value = it->second, S_OK;
    return strings_.count(key) ? kInvalidType : kAttributeNotFound;
  }
  HRESULT STDMETHODCALLTYPE GetAllocatedString(REFGUID key, LPWSTR* value, UINT32* length) override {
    DOUBLE_ENTER("GetAllocatedString");
    std::lock_guard lock(mutex_);
    if (auto it = strings_.find(key); it != strings_.end()) return allocated_copy(it->second, value, length);
    return guids_.count(key) ? kInvalidType : kAttributeNotFound;
  }
  HRESULT STDMETHODCALLTYPE GetCount(UINT32* count) override {
    DOUBLE_ENTER("GetCount");
    if (count == nullptr) return E_POINTER;
    std::lock_guard lock(mutex_);
    *count = UINT32(guids_.size() + strings_.size());
    return S_OK;
  }

  // The same items in a store of the port's.
  std::shared_ptr<platform::Attributes> port() {
    std::shared_ptr<platform::Attributes> attributes;
    virtual_camera::virtual_platform().create_attributes(UINT32(guids_.size() + strings_.size()), attributes);
    std::lock_guard lock(mutex_);
    for (auto& [key, value] : guids_) attributes->set_guid(to_port(key), to_port(value));
    for (auto& [key, value] : strings_) attributes->set_string(to_port(key), value);
    return attributes;
  }

 private:
  std::mutex mutex_;
  std::map<GUID, GUID, GuidLess> guids_;
  std::map<GUID, std::wstring, GuidLess> strings_;
};

class Activate final : public Object<Activate, Threading::Agile, UnmodelledActivate<Activate>> {
 public:
  explicit Activate(std::shared_ptr<platform::DeviceActivate> activate)
      : Object("IMFActivate"), activate_(std::move(activate)) {}
  HRESULT STDMETHODCALLTYPE GetAllocatedString(REFGUID key, LPWSTR* value, UINT32* length) override {
    DOUBLE_ENTER("GetAllocatedString");
    if (key != to_native(ids::kVidcapSymbolicLink)) return kAttributeNotFound;
    std::wstring link;
    if (HRESULT result = activate_->symbolic_link(link); FAILED(result)) return result;
    return allocated_copy(link, value, length);
  }

 private:
  void retire() override { activate_.reset(); }
  std::shared_ptr<platform::DeviceActivate> activate_;
};

class MediaSource final
    : public Object<MediaSource, Threading::Agile, UnmodelledMediaSource<MediaSource>,
                    abi::UnmodelledIKsControl<MediaSource>, abi::UnmodelledIKsTopologyInfo<MediaSource>> {
 public:
  explicit MediaSource(std::shared_ptr<platform::DeviceSource> source)
      : Object("IMFMediaSource"), source_(std::move(source)) {}

  // The device answers IKsControl and IKsTopologyInfo only where its driver does.
  HRESULT refuses_interface(REFIID id) {
    if (id == iid_of<abi::IKsControl>()) return query(control_, &platform::DeviceSource::query_ks_control);
    if (id == iid_of<abi::IKsTopologyInfo>()) return query(topology_, &platform::DeviceSource::query_topology);
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE Shutdown() override {
    DOUBLE_ENTER("Shutdown");
    std::lock_guard lock(mutex_);
    if (!source_) return kShutdown;
    const HRESULT result = source_->shutdown();
    return result;
  }
  HRESULT STDMETHODCALLTYPE KsProperty(void* property, ULONG property_length, void* data, ULONG data_length,
                                       ULONG* bytes_returned) override {
    DOUBLE_ENTER("KsProperty");
    if (property == nullptr || bytes_returned == nullptr) return E_POINTER;
    std::shared_ptr<platform::KsControl> control;
    {
      std::lock_guard lock(mutex_);
      control = control_;
    }
    if (!control) return E_NOINTERFACE;
    std::uint32_t returned = 0;
    const HRESULT result = control->property(static_cast<const std::uint8_t*>(property), property_length,
                                             static_cast<std::uint8_t*>(data), data_length, &returned);
    *bytes_returned = returned;
    return result;
  }
  HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) override {
    DOUBLE_ENTER("get_NumNodes");
    if (count == nullptr) return E_POINTER;
    auto topology = this->topology();
    if (!topology) return E_NOINTERFACE;
    std::uint32_t nodes = 0;
    const HRESULT result = topology->node_count(&nodes);
    if (SUCCEEDED(result)) *count = nodes;
    return result;
  }
  HRESULT STDMETHODCALLTYPE get_NodeType(DWORD node, GUID* type) override {
    DOUBLE_ENTER("get_NodeType");
    if (type == nullptr) return E_POINTER;
    auto topology = this->topology();
    if (!topology) return E_NOINTERFACE;
    platform::Guid port_type;
    const HRESULT result = topology->node_type(node, &port_type);
    if (SUCCEEDED(result)) *type = to_native(port_type);
    return result;
  }

 private:
  template <class Held>
  HRESULT query(std::shared_ptr<Held>& held, hresult (platform::DeviceSource::*get)(std::shared_ptr<Held>&)) {
    std::lock_guard lock(mutex_);
    if (held) return S_OK;
    if (!source_) return E_NOINTERFACE;
    const HRESULT result = ((*source_).*get)(held);
    return FAILED(result) ? result : S_OK;
  }
  std::shared_ptr<platform::KsTopology> topology() {
    std::lock_guard lock(mutex_);
    return topology_;
  }
  void retire() override {
    std::lock_guard lock(mutex_);
    control_.reset(), topology_.reset(), source_.reset();
  }

  std::mutex mutex_;
  std::shared_ptr<platform::DeviceSource> source_;
  std::shared_ptr<platform::KsControl> control_;
  std::shared_ptr<platform::KsTopology> topology_;
};

AttributeStore* own_store(IMFAttributes* attributes) { return dynamic_cast<AttributeStore*>(attributes); }

}  // namespace

}  // namespace vexcap::windows_double

using namespace vexcap::windows_double;

// Media Foundation's version is 0x0002 in the high word; 0 is what the library has always
// passed and Windows accepts.
extern "C" __declspec(dllexport) HRESULT WINAPI MFStartup(ULONG version, DWORD) {
  if (version != 0 && (version >> 16) != 0x0002) return HRESULT(0xC00D36E3u);  // MF_E_BAD_STARTUP_VERSION
  ++startups;
  return S_OK;
}

extern "C" __declspec(dllexport) HRESULT WINAPI MFShutdown() {
  if (--startups < 0) {
    startups = 0;
    record_violation("MFShutdown without a matching MFStartup");
    return E_UNEXPECTED;
  }
  return S_OK;
}

extern "C" __declspec(dllexport) HRESULT WINAPI MFCreateAttributes(IMFAttributes** attributes, UINT32) {
  return give(attributes, new AttributeStore());
}

extern "C" __declspec(dllexport) HRESULT WINAPI MFEnumDeviceSources(IMFAttributes* attributes, IMFActivate*** activates,
                                                                     UINT32* count) {
  require_started("MFEnumDeviceSources");
  if (activates == nullptr || count == nullptr) return E_POINTER;
  *activates = nullptr;
  *count = 0;
  AttributeStore* store = own_store(attributes);
  if (store == nullptr) return E_INVALIDARG;
  std::vector<std::shared_ptr<vexcap::platform::DeviceActivate>> found;
  if (HRESULT result = vexcap::virtual_camera::virtual_platform().enum_device_sources(*store->port(), found); FAILED(result))
    return result;
  auto** array = static_cast<IMFActivate**>(CoTaskMemAlloc(sizeof(IMFActivate*) * (found.empty() ? 1 : found.size())));
  if (array == nullptr) return E_OUTOFMEMORY;
  for (std::size_t i = 0; i < found.size(); ++i) array[i] = found[i] ? new Activate(found[i]) : nullptr;
  *activates = array;
  *count = UINT32(found.size());
  return S_OK;
}

extern "C" __declspec(dllexport) HRESULT WINAPI MFCreateDeviceSource(IMFAttributes* attributes, IMFMediaSource** source) {
  require_started("MFCreateDeviceSource");
  if (source == nullptr) return E_POINTER;
  *source = nullptr;
  AttributeStore* store = own_store(attributes);
  if (store == nullptr) return E_INVALIDARG;
  std::shared_ptr<vexcap::platform::DeviceSource> device;
  if (HRESULT result = vexcap::virtual_camera::virtual_platform().create_device_source(*store->port(), device);
      FAILED(result))
    return result;
  *source = new MediaSource(std::move(device));
  return S_OK;
}
