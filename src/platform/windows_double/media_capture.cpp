#include "platform/windows_double/media_capture.h"

#include "platform/virtual/virtual_platform.h"
#include "platform/windows_double/async_operation.h"
#include "platform/windows_double/collections.h"
#include "platform/windows_double/event_handlers.h"
#include "platform/windows_double/frame_reader.h"
#include "platform/windows_double/frame_source.h"
#include "platform/windows_double/hstrings.h"
#include "platform/windows_double/violations.h"

namespace vexcap::windows_double {

namespace {

constexpr HRESULT kClosed = HRESULT(0x80000013u);  // RO_E_CLOSED

class FailedEventArgs final
    : public Object<FailedEventArgs, Threading::Agile, abi::UnmodelledIMediaCaptureFailedEventArgs<FailedEventArgs>> {
 public:
  explicit FailedEventArgs(platform::CaptureFailure failure)
      : Object("Windows.Media.Capture.MediaCaptureFailedEventArgs"), failure_(std::move(failure)) {}
  HRESULT STDMETHODCALLTYPE get_Message(HSTRING* value) override {
    DOUBLE_ENTER("get_Message");
    return hand_out_string(failure_.message, value);
  }
  HRESULT STDMETHODCALLTYPE get_Code(UINT32* value) override {
    DOUBLE_ENTER("get_Code");
    return give(value, UINT32(failure_.code));
  }

 private:
  const platform::CaptureFailure failure_;
};

class ExclusiveControlChangedArgs final
    : public Object<ExclusiveControlChangedArgs, Threading::Agile,
                    abi::UnmodelledIMediaCaptureDeviceExclusiveControlStatusChangedEventArgs<ExclusiveControlChangedArgs>> {
 public:
  explicit ExclusiveControlChangedArgs(platform::ExclusiveControlChange change)
      : Object("Windows.Media.Capture.MediaCaptureDeviceExclusiveControlStatusChangedEventArgs"),
        change_(std::move(change)) {}
  HRESULT STDMETHODCALLTYPE get_DeviceId(HSTRING* value) override {
    DOUBLE_ENTER("get_DeviceId");
    return hand_out_string(change_.device_id, value);
  }
  HRESULT STDMETHODCALLTYPE get_Status(abi::MediaCaptureDeviceExclusiveControlStatus* value) override {
    DOUBLE_ENTER("get_Status");
    return give(value, static_cast<abi::MediaCaptureDeviceExclusiveControlStatus>(change_.status));
  }

 private:
  const platform::ExclusiveControlChange change_;
};

}  // namespace

// ---- Settings ----------------------------------------------------------------------------------

HRESULT InitializationSettings::put_StreamingCaptureMode(abi::StreamingCaptureMode value) {
  DOUBLE_ENTER("put_StreamingCaptureMode");
  std::lock_guard lock(mutex_);
  settings_.streaming_capture_mode = static_cast<platform::StreamingCaptureMode>(value);
  return S_OK;
}

HRESULT InitializationSettings::get_StreamingCaptureMode(abi::StreamingCaptureMode* value) {
  DOUBLE_ENTER("get_StreamingCaptureMode");
  if (value == nullptr) return E_POINTER;
  std::lock_guard lock(mutex_);
  *value = static_cast<abi::StreamingCaptureMode>(settings_.streaming_capture_mode);
  return S_OK;
}

HRESULT InitializationSettings::get_SourceGroup(abi::IMediaFrameSourceGroup** value) {
  DOUBLE_ENTER("get_SourceGroup");
  std::lock_guard lock(mutex_);
  return hand_out(group_, value);
}

HRESULT InitializationSettings::put_SourceGroup(abi::IMediaFrameSourceGroup* value) {
  DOUBLE_ENTER("put_SourceGroup");
  auto* own = dynamic_cast<SourceGroup*>(value);
  if (value != nullptr && own == nullptr) {
    record_violation("MediaCaptureInitializationSettings::put_SourceGroup with a group the platform did not hand out");
    return E_INVALIDARG;
  }
  Ref<SourceGroup> group;
  if (own) {
    own->internal_add_ref();
    group = Ref<SourceGroup>::adopt(own);
  }
  std::lock_guard lock(mutex_);
  group_ = std::move(group);
  return S_OK;
}

HRESULT InitializationSettings::get_SharingMode(abi::MediaCaptureSharingMode* value) {
  DOUBLE_ENTER("get_SharingMode");
  if (value == nullptr) return E_POINTER;
  std::lock_guard lock(mutex_);
  *value = static_cast<abi::MediaCaptureSharingMode>(settings_.sharing_mode);
  return S_OK;
}

HRESULT InitializationSettings::put_SharingMode(abi::MediaCaptureSharingMode value) {
  DOUBLE_ENTER("put_SharingMode");
  std::lock_guard lock(mutex_);
  settings_.sharing_mode = static_cast<platform::SharingMode>(value);
  return S_OK;
}

HRESULT InitializationSettings::get_MemoryPreference(abi::MediaCaptureMemoryPreference* value) {
  DOUBLE_ENTER("get_MemoryPreference");
  if (value == nullptr) return E_POINTER;
  std::lock_guard lock(mutex_);
  *value = static_cast<abi::MediaCaptureMemoryPreference>(settings_.memory_preference);
  return S_OK;
}

HRESULT InitializationSettings::put_MemoryPreference(abi::MediaCaptureMemoryPreference value) {
  DOUBLE_ENTER("put_MemoryPreference");
  std::lock_guard lock(mutex_);
  settings_.memory_preference = static_cast<platform::MemoryPreference>(value);
  return S_OK;
}

platform::CaptureSettings InitializationSettings::port_settings() {
  std::lock_guard lock(mutex_);
  platform::CaptureSettings settings = settings_;
  settings.source_group = group_ ? group_->port() : nullptr;
  return settings;
}

void InitializationSettings::retire() {
  std::lock_guard lock(mutex_);
  group_.reset();
}

// ---- MediaCapture ------------------------------------------------------------------------------

std::shared_ptr<platform::Capture> MediaCapture::capture() {
  std::lock_guard lock(mutex_);
  return capture_;
}

void MediaCapture::retire() {
  std::shared_ptr<platform::Capture> capture;
  std::lock_guard lock(mutex_);
  capture = std::move(capture_);
}

HRESULT MediaCapture::InitializeWithSettingsAsync(abi::IMediaCaptureInitializationSettings* settings,
                                                  abi::IAsyncAction** action) {
  DOUBLE_ENTER("InitializeWithSettingsAsync");
  if (action == nullptr) return E_POINTER;
  auto* own = dynamic_cast<InitializationSettings*>(settings);
  if (own == nullptr) return E_INVALIDARG;
  auto port = capture();
  if (!port) return kClosed;
  *action = AsyncAction::start("MediaCapture::InitializeWithSettingsAsync",
                               [port, port_settings = own->port_settings()] { port->initialize(port_settings); });
  return S_OK;
}

HRESULT MediaCapture::add_Failed(abi::IMediaCaptureFailedEventHandler* handler, abi::EventRegistrationToken* token) {
  DOUBLE_ENTER("add_Failed");
  if (handler == nullptr || token == nullptr) return E_POINTER;
  auto port = capture();
  if (!port) return kClosed;
  auto delegate = ComPtr<abi::IMediaCaptureFailedEventHandler>::copy_from(handler);
  auto cell = new_token_cell();
  std::weak_ptr<platform::Capture> weak = port;
  const auto registered = port->add_failed([this, delegate, cell, weak](const platform::CaptureFailure& failure) {
    if (!alive()) return;
    auto args = make<FailedEventArgs>(failure);
    if (delegate->Invoke(this, args.get()) != kDisconnected) return;
    if (auto still = weak.lock()) still->remove_failed(*cell);
  });
  *cell = registered;
  return hand_out_token(registered, token);
}

HRESULT MediaCapture::remove_Failed(abi::EventRegistrationToken token) {
  DOUBLE_ENTER("remove_Failed");
  auto port = capture();
  if (!port) return kClosed;
  port->remove_failed(token.value);
  return S_OK;
}

HRESULT MediaCapture::get_FrameSources(abi::IMapView<HSTRING, abi::MediaFrameSource>** value) {
  DOUBLE_ENTER("get_FrameSources");
  auto port = capture();
  if (!port) return kClosed;
  std::vector<std::shared_ptr<platform::FrameSource>> sources;
  if (HRESULT result = port_call([&] { sources = port->frame_sources(); }); FAILED(result)) return result;
  std::vector<MapEntry<HSTRING, abi::MediaFrameSource>> entries;
  for (auto& source : sources) {
    platform::SourceInfo info;
    if (HRESULT result = port_call([&] { info = source->info(); }); FAILED(result)) return result;
    const std::wstring id = info.id.value_or(L"");
    entries.push_back({[id](HSTRING key) { return text_of(key) == id; },
                       [id](HSTRING* out) { return hand_out_string(id, out); },
                       object_element<abi::IMediaFrameSource>(make<FrameSource>(source))});
  }
  return hand_out(make<MapView<HSTRING, abi::MediaFrameSource>>(std::move(entries)), value);
}

HRESULT MediaCapture::create_reader(abi::IMediaFrameSource* source, std::optional<std::wstring> subtype,
                                    abi::IAsyncOperation<abi::MediaFrameReader>** value) {
  if (value == nullptr) return E_POINTER;
  auto* own = dynamic_cast<FrameSource*>(source);
  if (own == nullptr) return E_INVALIDARG;
  auto port = capture();
  if (!port) return kClosed;
  *value = AsyncOperation<abi::MediaFrameReader>::start(
      "MediaCapture::CreateFrameReaderAsync", [port, frame_source = own->port(), subtype] {
        auto reader = port->create_frame_reader(frame_source, subtype);
        return object_outcome<abi::IMediaFrameReader>(make<FrameReader>(reader, frame_source->info().kind));
      });
  return S_OK;
}

HRESULT MediaCapture::CreateFrameReaderAsync(abi::IMediaFrameSource* source,
                                             abi::IAsyncOperation<abi::MediaFrameReader>** value) {
  DOUBLE_ENTER("CreateFrameReaderAsync");
  return create_reader(source, std::nullopt, value);
}

HRESULT MediaCapture::CreateFrameReaderWithSubtypeAsync(abi::IMediaFrameSource* source, HSTRING subtype,
                                                        abi::IAsyncOperation<abi::MediaFrameReader>** value) {
  DOUBLE_ENTER("CreateFrameReaderWithSubtypeAsync");
  return create_reader(source, text_of(subtype), value);
}

HRESULT MediaCapture::add_CaptureDeviceExclusiveControlStatusChanged(ExclusiveHandler* handler,
                                                                    abi::EventRegistrationToken* token) {
  DOUBLE_ENTER("add_CaptureDeviceExclusiveControlStatusChanged");
  if (handler == nullptr || token == nullptr) return E_POINTER;
  auto port = capture();
  if (!port) return kClosed;
  auto delegate = ComPtr<ExclusiveHandler>::copy_from(handler);
  auto cell = new_token_cell();
  std::weak_ptr<platform::Capture> weak = port;
  const auto registered =
      port->add_exclusive_control_status_changed([this, delegate, cell, weak](const platform::ExclusiveControlChange& change) {
        if (!alive()) return;
        auto args = make<ExclusiveControlChangedArgs>(change);
        if (delegate->Invoke(this, args.get()) != kDisconnected) return;
        if (auto still = weak.lock()) still->remove_exclusive_control_status_changed(*cell);
      });
  *cell = registered;
  return hand_out_token(registered, token);
}

HRESULT MediaCapture::remove_CaptureDeviceExclusiveControlStatusChanged(abi::EventRegistrationToken token) {
  DOUBLE_ENTER("remove_CaptureDeviceExclusiveControlStatusChanged");
  auto port = capture();
  if (!port) return kClosed;
  port->remove_exclusive_control_status_changed(token.value);
  return S_OK;
}

// The session ends now: what the capture holds goes, and exclusive control with it.
HRESULT MediaCapture::Close() {
  DOUBLE_ENTER("Close");
  retire();
  return S_OK;
}

HRESULT MediaCaptureFactory::ActivateInstance(IInspectable** instance) {
  DOUBLE_ENTER("ActivateInstance");
  std::shared_ptr<platform::Capture> capture;
  if (HRESULT result = port_call([&] { capture = virtual_camera::virtual_platform().create_capture(); }); FAILED(result))
    return result;
  return hand_out(make<MediaCapture>(std::move(capture)), reinterpret_cast<abi::IMediaCapture**>(instance));
}

HRESULT InitializationSettingsFactory::ActivateInstance(IInspectable** instance) {
  DOUBLE_ENTER("ActivateInstance");
  return hand_out(make<InitializationSettings>(),
                  reinterpret_cast<abi::IMediaCaptureInitializationSettings**>(instance));
}

}  // namespace vexcap::windows_double
