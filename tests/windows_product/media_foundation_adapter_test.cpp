// The adapter's classic COM half against Wine's Media Foundation and hand-made COM objects:
// what each step answers, and every reference it took given back.
#include <windows.h>

#include <mfapi.h>
#include <mferror.h>
#include <mfidl.h>

#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "platform/windows/capture_metadata.h"
#include "platform/windows/com_ptr.h"
#include "platform/windows/device_enumeration.h"
#include "platform/windows/device_source.h"
#include "platform/windows/mf_attributes.h"
#include "platform/windows/shutdown_query.h"
#include "platform/windows/winrt/kernel_streaming_abi.h"

namespace {

using namespace vexcap;
using windows::ComPtr;
namespace abi = windows::abi;

// The published identifiers, written out here rather than taken from the adapter.
constexpr GUID kWrappedSampleService = {0x31f52bf2, 0xd03e, 0x4048, {0x80, 0xd0, 0x9c, 0x10, 0x46, 0xd8, 0x7c, 0x61}};
constexpr GUID kCaptureMetadata = {0x2ebe23a8, 0xfaf5, 0x444a, {0xa6, 0xa2, 0xeb, 0x81, 0x08, 0x80, 0xab, 0x5d}};
constexpr GUID kFrameIllumination = {0x6d688ffc, 0x63d3, 0x46fe, {0xba, 0xda, 0x5b, 0x94, 0x7d, 0xb0, 0xd0, 0x80}};

ULONG references(IUnknown* object) {
  object->AddRef();
  return object->Release();
}

// A COM object answering IUnknown and, when asked to, one more interface.
template <class Interface>
class Fake : public Interface {
 public:
  explicit Fake(bool exposes = true) : exposes_(exposes) {}
  virtual ~Fake() = default;
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (iid == IID_IUnknown || (exposes_ && iid == windows::iid_of<Interface>())) {
      *object = static_cast<Interface*>(this);
      AddRef();
      return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++count_; }
  ULONG STDMETHODCALLTYPE Release() override { return --count_; }  // owned by the test
  ULONG count() const { return count_; }

 private:
  bool exposes_;
  ULONG count_ = 1;
};

// A frame reference that hands out a Media Foundation sample as its wrapped sample.
class FrameReference final : public Fake<IMFGetService> {
 public:
  FrameReference(IMFSample* sample, bool exposes) : Fake(exposes), sample_(sample) {}
  HRESULT STDMETHODCALLTYPE GetService(REFGUID service, REFIID iid, void** object) override {
    *object = nullptr;
    if (!sample_ || service != kWrappedSampleService) return MF_E_UNSUPPORTED_SERVICE;
    return sample_->QueryInterface(iid, object);
  }

 private:
  IMFSample* sample_;
};

class MediaFoundation : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(MFStartup(MF_VERSION, MFSTARTUP_FULL), S_OK); }
  void TearDown() override { MFShutdown(); }

  ComPtr<IMFSample> sample_with_metadata(const UINT64* illumination) {
    ComPtr<IMFSample> sample;
    EXPECT_EQ(MFCreateSample(sample.put()), S_OK);
    ComPtr<IMFAttributes> metadata;
    EXPECT_EQ(MFCreateAttributes(metadata.put(), 1), S_OK);
    if (illumination) {
      EXPECT_EQ(metadata->SetUINT64(kFrameIllumination, *illumination), S_OK);
    }
    EXPECT_EQ(sample->SetUnknown(kCaptureMetadata, metadata.get()), S_OK);
    return sample;
  }
};

TEST_F(MediaFoundation, IlluminationIsReadThroughTheWrappedSample) {
  const UINT64 lit = 0x100000001ull;
  ComPtr<IMFSample> sample = sample_with_metadata(&lit);
  const ULONG sample_references = references(sample.get());
  FrameReference frame(sample.get(), true);

  const platform::IlluminationRead read = windows::read_illumination_from_sample(&frame);
  EXPECT_EQ(read.get_service, S_OK);
  EXPECT_EQ(read.get_sample, S_OK);
  EXPECT_EQ(read.get_capture_metadata, S_OK);
  EXPECT_EQ(read.get_illumination, S_OK);
  EXPECT_EQ(read.illumination, lit);
  EXPECT_EQ(frame.count(), 1u);
  EXPECT_EQ(references(sample.get()), sample_references);
}

TEST_F(MediaFoundation, TheFirstFailingStepEndsTheIlluminationChain) {
  FrameReference no_service(nullptr, false);
  platform::IlluminationRead read = windows::read_illumination_from_sample(&no_service);
  EXPECT_EQ(read.get_service, E_NOINTERFACE);
  EXPECT_EQ(read.get_sample, S_OK);  // not reached
  EXPECT_EQ(no_service.count(), 1u);

  FrameReference no_sample(nullptr, true);
  read = windows::read_illumination_from_sample(&no_sample);
  EXPECT_EQ(read.get_service, S_OK);
  EXPECT_EQ(read.get_sample, MF_E_UNSUPPORTED_SERVICE);
  EXPECT_EQ(read.get_capture_metadata, S_OK);
  EXPECT_EQ(no_sample.count(), 1u);

  ComPtr<IMFSample> bare;
  ASSERT_EQ(MFCreateSample(bare.put()), S_OK);
  const ULONG bare_references = references(bare.get());
  FrameReference without_metadata(bare.get(), true);
  read = windows::read_illumination_from_sample(&without_metadata);
  EXPECT_EQ(read.get_capture_metadata, MF_E_ATTRIBUTENOTFOUND);
  EXPECT_EQ(read.get_illumination, S_OK);
  EXPECT_EQ(references(bare.get()), bare_references);

  ComPtr<IMFSample> unlit = sample_with_metadata(nullptr);
  FrameReference without_flag(unlit.get(), true);
  read = windows::read_illumination_from_sample(&without_flag);
  EXPECT_EQ(read.get_capture_metadata, S_OK);
  EXPECT_EQ(read.get_illumination, MF_E_ATTRIBUTENOTFOUND);
  EXPECT_EQ(read.illumination, 0u);
  EXPECT_EQ(without_flag.count(), 1u);
}

class Shutdownable final : public Fake<IMFShutdown> {
 public:
  using Fake::Fake;
  HRESULT STDMETHODCALLTYPE Shutdown() override { return ++calls, MF_E_SHUTDOWN; }
  HRESULT STDMETHODCALLTYPE GetShutdownStatus(MFSHUTDOWN_STATUS*) override { return E_NOTIMPL; }
  int calls = 0;
};

TEST(ShutdownQuery, OnlyAnObjectWithIMFShutdownIsShutDown) {
  Shutdownable plain(false);
  EXPECT_EQ(windows::shutdown_if_supported(&plain), std::nullopt);
  EXPECT_EQ(plain.calls, 0);

  Shutdownable session(true);
  EXPECT_EQ(windows::shutdown_if_supported(&session), std::optional<hresult>(MF_E_SHUTDOWN));
  EXPECT_EQ(session.calls, 1);
  EXPECT_EQ(plain.count() + session.count(), 2u);
}

TEST_F(MediaFoundation, AttributeStoresHoldThePortsGuidsAndStrings) {
  const platform::Guid key{0x58f0aad8, 0x22bf, 0x4f8a, {0xbb, 0x3d, 0xd2, 0xc4, 0x97, 0x8c, 0x6e, 0x2f}};
  const platform::Guid value{0x24e552d7, 0x6523, 0x47f7, {0xa6, 0x47, 0xd3, 0x46, 0x5b, 0xf1, 0xf5, 0xca}};
  const GUID native_key = {0x58f0aad8, 0x22bf, 0x4f8a, {0xbb, 0x3d, 0xd2, 0xc4, 0x97, 0x8c, 0x6e, 0x2f}};
  const GUID native_value = {0x24e552d7, 0x6523, 0x47f7, {0xa6, 0x47, 0xd3, 0x46, 0x5b, 0xf1, 0xf5, 0xca}};

  std::shared_ptr<platform::Attributes> attributes;
  ASSERT_EQ(windows::create_attributes(2, attributes), S_OK);
  ASSERT_EQ(attributes->set_guid(key, value), S_OK);
  IMFAttributes* store = windows::native_attributes(*attributes);
  ASSERT_NE(store, nullptr);
  GUID read{};
  EXPECT_EQ(store->GetGUID(native_key, &read), S_OK);
  EXPECT_TRUE(read == native_value);

  ASSERT_EQ(attributes->set_string(key, L"\\\\?\\usb#vid_1234&pid_5678"), S_OK);
  std::array<wchar_t, 64> text{};
  EXPECT_EQ(store->GetString(native_key, text.data(), UINT32(text.size()), nullptr), S_OK);
  EXPECT_STREQ(text.data(), L"\\\\?\\usb#vid_1234&pid_5678");
}

TEST(DeviceSources, StoresFromElsewhereAreRefused) {
  class Foreign final : public platform::Attributes {
    hresult set_guid(const platform::Guid&, const platform::Guid&) override { return S_OK; }
    hresult set_string(const platform::Guid&, const std::wstring&) override { return S_OK; }
  } foreign;
  std::vector<std::shared_ptr<platform::DeviceActivate>> activates;
  std::shared_ptr<platform::DeviceSource> source;
  EXPECT_EQ(windows::enum_device_sources(foreign, activates), E_INVALIDARG);
  EXPECT_EQ(windows::create_device_source(foreign, source), E_INVALIDARG);
  EXPECT_EQ(source, nullptr);
}

// ---- A device source with kernel streaming -----------------------------------------------------

class KsControl final : public Fake<abi::IKsControl> {
 public:
  HRESULT STDMETHODCALLTYPE KsProperty(void* property, ULONG property_length, void* data,
                                       ULONG data_length, ULONG* bytes_returned) override {
    property_seen = static_cast<std::uint8_t*>(property);
    property_length_seen = property_length;
    data_length_seen = data_length;
    std::memset(data, 0x5a, data_length);
    *bytes_returned = data_length / 2;
    return S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE KsMethod(void*, ULONG, void*, ULONG, ULONG*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE KsEvent(void*, ULONG, void*, ULONG, ULONG*) override { return E_NOTIMPL; }
  std::uint8_t* property_seen = nullptr;
  ULONG property_length_seen = 0, data_length_seen = 0;
};

class Topology final : public Fake<abi::IKsTopologyInfo> {
 public:
  static constexpr GUID kProcessing = {0xdff229e5, 0xf70f, 0x11d0, {0xb9, 0x17, 0x00, 0xa0, 0xc9, 0x22, 0x31, 0x96}};
  HRESULT STDMETHODCALLTYPE get_NumCategories(DWORD*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_Category(DWORD, GUID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_NumConnections(DWORD*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_ConnectionInfo(DWORD, void*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_NodeName(DWORD, WCHAR*, DWORD, DWORD*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) override { return *count = 3, S_OK; }
  HRESULT STDMETHODCALLTYPE get_NodeType(DWORD node, GUID* type) override {
    if (node >= 3) return E_INVALIDARG;
    *type = kProcessing;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD, REFIID, void**) override { return E_NOTIMPL; }
};

class MediaSource final : public Fake<IMFMediaSource> {
 public:
  MediaSource(KsControl* control, Topology* topology) : control_(control), topology_(topology) {}
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (control_ && iid == abi::IKsControl::iid) return control_->QueryInterface(iid, object);
    if (topology_ && iid == abi::IKsTopologyInfo::iid) return topology_->QueryInterface(iid, object);
    return Fake::QueryInterface(iid, object);
  }
  HRESULT STDMETHODCALLTYPE GetEvent(DWORD, IMFMediaEvent**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE BeginGetEvent(IMFAsyncCallback*, IUnknown*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE EndGetEvent(IMFAsyncResult*, IMFMediaEvent**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE QueueEvent(MediaEventType, REFGUID, HRESULT, const PROPVARIANT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetCharacteristics(DWORD*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CreatePresentationDescriptor(IMFPresentationDescriptor**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Start(IMFPresentationDescriptor*, const GUID*, const PROPVARIANT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Stop() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Pause() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Shutdown() override { return ++shutdowns, S_OK; }
  int shutdowns = 0;

 private:
  KsControl* control_;
  Topology* topology_;
};

TEST(DeviceSources, KernelStreamingPassesThroughAndGivesEveryReferenceBack) {
  KsControl control;
  Topology topology;
  MediaSource media_source(&control, &topology);
  {
    windows::MfDeviceSource source(ComPtr<IMFMediaSource>::copy_from(&media_source));
    std::shared_ptr<platform::KsControl> ks;
    std::shared_ptr<platform::KsTopology> nodes;
    ASSERT_EQ(source.query_ks_control(ks), S_OK);
    ASSERT_EQ(source.query_topology(nodes), S_OK);

    // One buffer as property and data, as the core passes the processing-unit requests.
    std::array<std::uint8_t, 48> request{};
    std::uint32_t returned = 0;
    EXPECT_EQ(ks->property(request.data(), 48, request.data(), 48, &returned), S_FALSE);
    EXPECT_EQ(control.property_seen, request.data());
    EXPECT_EQ(control.property_length_seen, 48u);
    EXPECT_EQ(returned, 24u);
    EXPECT_EQ(request[47], 0x5a);
    EXPECT_EQ(ks->property(request.data(), 32, request.data(), 8, nullptr), S_FALSE);

    std::uint32_t count = 0;
    EXPECT_EQ(nodes->node_count(&count), S_OK);
    EXPECT_EQ(count, 3u);
    platform::Guid type;
    EXPECT_EQ(nodes->node_type(2, &type), S_OK);
    EXPECT_EQ(type, (platform::Guid{0xdff229e5, 0xf70f, 0x11d0, {0xb9, 0x17, 0x00, 0xa0, 0xc9, 0x22, 0x31, 0x96}}));
    EXPECT_EQ(nodes->node_type(3, &type), E_INVALIDARG);
    EXPECT_EQ(nodes->node_count(nullptr), E_POINTER);

    EXPECT_EQ(source.shutdown(), S_OK);
    EXPECT_EQ(media_source.shutdowns, 1);
  }
  EXPECT_EQ(media_source.count(), 1u);
  EXPECT_EQ(control.count(), 1u);
  EXPECT_EQ(topology.count(), 1u);
}

TEST(DeviceSources, ASourceWithoutKernelStreamingSaysSo) {
  MediaSource media_source(nullptr, nullptr);
  windows::MfDeviceSource source(ComPtr<IMFMediaSource>::copy_from(&media_source));
  std::shared_ptr<platform::KsControl> ks;
  std::shared_ptr<platform::KsTopology> nodes;
  EXPECT_EQ(source.query_ks_control(ks), E_NOINTERFACE);
  EXPECT_EQ(source.query_topology(nodes), E_NOINTERFACE);
  EXPECT_EQ(ks, nullptr);
  EXPECT_EQ(nodes, nullptr);
}

}  // namespace
