#include "platform/windows/capture.h"

#include "platform/windows/async_wait.h"
#include "platform/windows/collections.h"
#include "platform/windows/event_token.h"
#include "platform/windows/frame_reader.h"
#include "platform/windows/shutdown_query.h"
#include "platform/windows/source_group.h"
#include "platform/windows/winrt/abi.h"

namespace vexcap::windows {

namespace {

static_assert(int(abi::MediaCaptureSharingMode::SharedReadOnly) == int(platform::SharingMode::SharedReadOnly));
static_assert(int(abi::StreamingCaptureMode::Video) == int(platform::StreamingCaptureMode::Video));
static_assert(int(abi::MediaCaptureMemoryPreference::Cpu) == int(platform::MemoryPreference::Cpu));
static_assert(int(abi::MediaCaptureDeviceExclusiveControlStatus::SharedReadOnlyAvailable) ==
              int(platform::ExclusiveControlStatus::SharedReadOnlyAvailable));

ComPtr<abi::IMapView<HSTRING, abi::MediaFrameSource>> frame_source_map(const ComPtr<abi::IMediaCapture>& capture) {
  ComPtr<abi::IMapView<HSTRING, abi::MediaFrameSource>> sources;
  check(query<abi::IMediaCapture5>(capture)->get_FrameSources(sources.put()));
  return sources;
}

}  // namespace

WinrtCapture::WinrtCapture()
    : capture_(activate_instance<abi::IMediaCapture>(class_id::media_capture)),
      exclusive_status_(std::make_shared<std::atomic<std::int32_t>>(
          std::int32_t(platform::ExclusiveControlStatus::ExclusiveControlAvailable))) {}

void WinrtCapture::initialize(const platform::CaptureSettings& settings) {
  auto* group = dynamic_cast<WinrtSourceGroup*>(settings.source_group.get());
  if (group == nullptr) throw_platform_error(E_INVALIDARG);
  if (!settings_) {
    settings_ = activate_instance<abi::IMediaCaptureInitializationSettings>(
        class_id::media_capture_initialization_settings);
  }
  auto settings5 = query<abi::IMediaCaptureInitializationSettings5>(settings_);
  const auto streaming = static_cast<abi::StreamingCaptureMode>(settings.streaming_capture_mode);
  check(settings5->put_SourceGroup(group->abi().get()));
  check(settings5->put_SharingMode(static_cast<abi::MediaCaptureSharingMode>(settings.sharing_mode)));
  check(settings_->put_StreamingCaptureMode(streaming));
  check(settings5->put_MemoryPreference(static_cast<abi::MediaCaptureMemoryPreference>(settings.memory_preference)));
  // Set a second time, as the library always has.
  check(settings_->put_StreamingCaptureMode(streaming));
  ComPtr<abi::IAsyncAction> action;
  check(capture()->InitializeWithSettingsAsync(settings_.get(), action.put()));
  wait_for(action);
}

std::vector<std::shared_ptr<platform::FrameSource>> WinrtCapture::frame_sources() {
  std::vector<std::shared_ptr<platform::FrameSource>> sources;
  for (auto& source : values_of(frame_source_map(capture()))) {
    sources.push_back(source ? std::make_shared<WinrtFrameSource>(std::move(source), exclusive_status_) : nullptr);
  }
  return sources;
}

void WinrtCapture::close_frame_sources() { close_if_closable(frame_source_map(capture())); }

std::shared_ptr<platform::FrameReader> WinrtCapture::create_frame_reader(
    const std::shared_ptr<platform::FrameSource>& source, const std::optional<std::wstring>& subtype) {
  auto* own = dynamic_cast<WinrtFrameSource*>(source.get());
  if (own == nullptr) throw_platform_error(E_INVALIDARG);
  auto capture5 = query<abi::IMediaCapture5>(capture());
  ComPtr<abi::IAsyncOperation<abi::MediaFrameReader>> operation;
  if (subtype) {
    HString output_subtype(*subtype);
    check(capture5->CreateFrameReaderWithSubtypeAsync(own->abi().get(), output_subtype.get(), operation.put()));
  } else {
    check(capture5->CreateFrameReaderAsync(own->abi().get(), operation.put()));
  }
  auto reader = wait_for(operation);
  check_present(reader);
  return std::make_shared<WinrtFrameReader>(std::move(reader));
}

platform::EventToken WinrtCapture::add_failed(FailedHandler handler) {
  auto failed = make_delegate<abi::IMediaCaptureFailedEventHandler>(
      [handler = std::move(handler)](abi::IMediaCapture*, abi::IMediaCaptureFailedEventArgs* args) -> HRESULT {
        platform::CaptureFailure failure;
        if (args != nullptr) {
          UINT32 code = 0;
          HString message;
          check(args->get_Code(&code));
          check(args->get_Message(message.put()));
          failure = {static_cast<hresult>(code), message.text()};
        }
        handler(failure);
        return S_OK;
      });
  abi::EventRegistrationToken token{};
  check(capture()->add_Failed(failed.get(), &token));
  return to_port(token);
}

void WinrtCapture::remove_failed(platform::EventToken token) { check(capture()->remove_Failed(to_abi(token))); }

platform::EventToken WinrtCapture::add_exclusive_control_status_changed(ExclusiveControlHandler handler) {
  using Handler = abi::ITypedEventHandler<abi::MediaCapture, abi::MediaCaptureDeviceExclusiveControlStatusChangedEventArgs>;
  auto changed = make_delegate<Handler>(
      [handler = std::move(handler), status = exclusive_status_](
          abi::IMediaCapture*, abi::IMediaCaptureDeviceExclusiveControlStatusChangedEventArgs* args) -> HRESULT {
        check_present(args);
        HString device_id;
        abi::MediaCaptureDeviceExclusiveControlStatus value{};
        check(args->get_DeviceId(device_id.put()));
        check(args->get_Status(&value));
        status->store(std::int32_t(value));
        handler({device_id.text(), static_cast<platform::ExclusiveControlStatus>(value)});
        return S_OK;
      });
  abi::EventRegistrationToken token{};
  check(query<abi::IMediaCapture6>(capture())->add_CaptureDeviceExclusiveControlStatusChanged(changed.get(), &token));
  return to_port(token);
}

void WinrtCapture::remove_exclusive_control_status_changed(platform::EventToken token) {
  check(query<abi::IMediaCapture6>(capture())->remove_CaptureDeviceExclusiveControlStatusChanged(to_abi(token)));
}

std::optional<hresult> WinrtCapture::shutdown_if_supported() { return windows::shutdown_if_supported(capture().get()); }

void WinrtCapture::close() { check(query<abi::IClosable>(capture())->Close()); }

}  // namespace vexcap::windows
