#include "capture/capture_client.h"

#include <chrono>
#include <thread>

#include "capture/exposure_iso.h"
#include "capture/frame_delivery.h"
#include "capture/led_torch.h"
#include "capture/shutdown_test.h"
#include "log/log.h"
#include "sources/platform_names.h"
#include "sources/source_group_dump.h"
#include "sources/source_lookup.h"

namespace vexcap::capture {

using platform::PlatformError;

namespace {

constexpr auto kApplyFormatRun = std::chrono::milliseconds(100);

platform::SharingMode sharing_mode_for(std::uint32_t sharing) {
  switch (sharing) {
    case 0:
      return platform::SharingMode::SharedReadOnly;
    case 1:
      return platform::SharingMode::ExclusiveControl;
    default:
      VXLOG('E', "Unknown vexcap_stream_mode: %d, defaulting to shared", static_cast<int>(sharing));
      return platform::SharingMode::SharedReadOnly;
  }
}

// One step of tearing a capture down: a platform failure is logged and the teardown goes on.
template <typename Step>
bool teardown_step(Step step) {
  try {
    step();
    return true;
  } catch (const PlatformError& error) {
    VXLOG('W', "Capture teardown step failed: %ws", error.message().c_str());
    return false;
  }
}

}  // namespace

std::shared_ptr<CaptureClient> CaptureClient::create(platform::Platform& platform, std::uint32_t sharing) {
  return std::shared_ptr<CaptureClient>(new CaptureClient(platform, sharing));
}

CaptureClient::CaptureClient(platform::Platform& platform, std::uint32_t sharing)
    : platform_(platform), sharing_(sharing), rgb_stopped_(platform) {
  log::client_constructed();
}

CaptureClient::~CaptureClient() {
  capture_settings_.reset();
  const hresult cleared = clear();
  if (failed(cleared)) VXLOG('W', "Failed clearing VexCap: %08x", cleared);
  release_capture();    // what clear leaves standing (a client switched off with property 18)
  xu_control_.reset();  // stops its notifier and shuts its device source down
  property_controller_.reset();
  source_group_.reset();
  frame_source_.reset();
  second_source_.reset();
  log::client_destroyed();
  capture_.reset();
  frame_reader_.reset();
}

std::wstring CaptureClient::device_id() const { return std::wstring(device_id_.data()); }

// ---- Initialization ------------------------------------------------------------------------

hresult CaptureClient::initialize(const std::wstring& group_id, std::uint32_t reader_kind,
                                  std::uint16_t preferred_width, std::uint16_t preferred_height) {
  if (initialized_) return HR_INVALID_STATE;
  last_capture_failure_ = HR_OK;
  try {
    const auto groups = platform_.find_all_source_groups();
    for (std::uint32_t i = 0; i < groups.size(); ++i) sources::dump_source_group(groups[i].get(), i);

    reader_kind_ = reader_kind;
    preferred_width_ = preferred_width;
    preferred_height_ = preferred_height;

    const auto group = find_source_group(groups, group_id, sources::source_kind_for_reader(reader_kind));
    if (!group) return HR_FAIL;

    initialize_media_capture(group);  // its answer is not examined: the capture decides below
    if (!capture_) return HR_FAIL;

    reader_init(reader_kind, preferred_width, preferred_height);
    load_extension_unit(reader_kind);
    if (is_exclusive()) subscribe_to_capture_failures();
    VXLOG('D', "SourceGroup ID= %ws", group_id.c_str());
    initialized_ = true;
    if (is_exclusive()) switch_llc_on();
    return HR_OK;
  } catch (const PlatformError&) {
    return HR_ABORT;
  }
}

std::shared_ptr<platform::SourceGroup> CaptureClient::find_source_group(
    const std::vector<std::shared_ptr<platform::SourceGroup>>& groups, const std::wstring& id,
    platform::SourceKind kind) {
  auto group = sources::find_group_with_kind(groups, id, kind);
  if (!group) return nullptr;
  source_group_ = group;
  const std::wstring group_id = *group->id();
  device_id_.fill(L'\0');
  group_id.copy(device_id_.data(), std::min(group_id.size(), kDeviceIdCapacity - 1));
  return group;
}

bool CaptureClient::initialize_media_capture(const std::shared_ptr<platform::SourceGroup>& group) {
  if (!capture_) capture_ = platform_.create_capture();
  if (!capture_settings_) capture_settings_.emplace();
  platform::CaptureSettings& settings = *capture_settings_;
  settings.source_group = group;
  settings.sharing_mode = sharing_mode_for(sharing_);
  settings.streaming_capture_mode = platform::StreamingCaptureMode::Video;
  settings.memory_preference = platform::MemoryPreference::Cpu;
  try {
    capture_->initialize(settings);
    last_capture_failure_ = HR_OK;
    VXLOG('D', "MediaCapture is successfully initialized in mode %d.", static_cast<int>(sharing_));
    return true;
  } catch (const PlatformError& error) {
    VXLOG('E', "Failed to initialize media capture: %ws", error.message().c_str());
    last_capture_failure_ = error.code();
  } catch (...) {
    VXLOG('E', "Unexpected exception caught.");
    last_capture_failure_ = HR_FAIL;
  }
  // The platform never initializes this instance again: the next attempt takes a new one.
  drop_capture();
  return false;
}

void CaptureClient::drop_capture() {
  if (!capture_) return;
  teardown_step([&] { capture_->close(); });
  capture_.reset();
}

void CaptureClient::reader_init(std::uint32_t reader_kind, std::uint16_t preferred_width,
                                std::uint16_t preferred_height) {
  if (!source_group_ || frame_reader_ || !capture_) {
    VXLOG('E', "Wrong state for reader_init");
    return;
  }
  try {
    const platform::SourceKind wanted_kind = sources::source_kind_for_reader(reader_kind);
    const auto sources = capture_->frame_sources();

    const platform::StreamType default_type = sources::default_stream_type(sources, wanted_kind);

    for (const auto& source : sources) {
      const platform::SourceInfo info = source->info();
      const platform::StreamType wanted_type = sources::stream_type_to_read(info, default_type);

      if (info.kind == wanted_kind && info.stream_type == wanted_type && !frame_reader_) {
        if (const auto current = source->current_format()) current_format_height_ = current->height();
        frame_source_ = source;
        property_controller_ = source->controller();
        const bool colour = info.kind == platform::SourceKind::Color;
        VXLOG('D', "SourceKindr= %ws", sources::name_of(info.kind));
        format_table_ = sources::collect_format_table(source->supported_formats(), colour, preferred_width,
                                                      preferred_height);
        // RGB24 frames are converted by the library; everything else is asked for as NV12.
        const std::optional<std::wstring> subtype =
            table_has_subtype(format_table_, L"RGB24") ? std::nullopt : std::optional<std::wstring>(L"NV12");
        frame_reader_ = capture_->create_frame_reader(source, subtype);
        frame_reader_->set_acquisition_mode(platform::AcquisitionMode::Realtime);
        VXLOG('D', "Reader for mode %d is created", static_cast<int>(sharing_));
      } else if (info.kind == wanted_kind && info.stream_type == platform::StreamType::Photo) {
        second_source_ = source;
      }
    }
  } catch (const PlatformError& error) {
    VXLOG('E', "exception: %ws", error.message().c_str());
    throw;
  }
}

void CaptureClient::load_extension_unit(std::uint32_t reader_kind) {
  xu_control_ = std::make_unique<controls::ExtensionUnit>();
  const hresult loaded = xu_control_->load(platform_, reader_kind);
  if (failed(loaded)) VXLOG('I', "XU control not available or couldn't be loaded: %08x", loaded);
}

// Low-light compensation is switched on for every exclusive client; failures only log.
void CaptureClient::switch_llc_on() {
  const controls::PropertyTarget target = property_target();
  std::uint8_t current[controls::kExtendedPropertySize] = {};
  const hresult got = controls::get_llc(target, current);
  if (failed(got)) VXLOG('W', "Getting LLC failed: %08x", got);
  const hresult set = controls::set_llc(target, VEXCAP_LLC_ON);
  if (failed(set)) VXLOG('W', "Setting LLC failed: %08x", set);
}

controls::PropertyTarget CaptureClient::property_target() const {
  return controls::PropertyTarget{property_controller_.get(), initialized_};
}

void CaptureClient::subscribe_to_capture_failures() {
  if (!capture_) return;
  // The handler holds neither the client nor the capture: it only hands the failure to the
  // request thread and returns, so no last release ever happens on the capture's own thread.
  std::weak_ptr<CaptureClient> weak = weak_from_this();
  FailureNotifier notify = failure_notifier_;
  failed_token_ = capture_->add_failed([weak, notify](const platform::CaptureFailure&) {
    VXLOG('E', "Media capture failed. Notifying the main thread...");
    if (!notify || !notify(weak)) VXLOG('E', "No VXC thread");
  });
}

void CaptureClient::handle_capture_failure() {
  VEXCAP_DCHECK_ON_THREAD(request_thread_);
  VXLOG('E', "Handling the capture failure...");
  std::lock_guard<std::mutex> lock(failure_lock_);
  if (!initialized_) {
    // Cleared (the device closed) since the failure: there is nothing left to rebuild.
    VXLOG('I', "The failed capture was already released.");
    return;
  }
  // Each teardown step runs whatever the others met (a removed camera answers nothing).
  if (frame_reader_) {
    teardown_step([&] { frame_reader_->close(); });
    frame_reader_.reset();
    frame_arrived_token_ = 0;
    VXLOG('I', "Reader deleted.");
  }
  if (capture_) {
    if (exclusive_control_token_ != 0)
      teardown_step([&] { capture_->remove_exclusive_control_status_changed(exclusive_control_token_); });
    exclusive_control_token_ = 0;
    teardown_step([&] { capture_->remove_failed(failed_token_); });
    failed_token_ = 0;
    teardown_step([&] { capture_->close_frame_sources(); });
    frame_source_.reset();
    second_source_.reset();
    property_controller_.reset();
    run_shutdown_test(*capture_);  // lets a failed session go before its replacement opens
    drop_capture();
    VXLOG('I', "Media capture frame sources deleted.");
  }
  format_table_.clear();
  try {
    if (!initialize_media_capture(source_group_)) {
      VXLOG('E', "Failed restarting failed media capture: %ws", L"the new capture could not be initialized");
      return;
    }
    reader_init(reader_kind_, preferred_width_, preferred_height_);
    subscribe_to_capture_failures();
    VXLOG('I', "Reader restarted.");
  } catch (const PlatformError& error) {
    VXLOG('E', "Failed restarting failed media capture: %ws", error.message().c_str());
  }
  // Deliberately kept: the frame callback, the initialized flag; not restored: the
  // exclusive-control subscription, a running reader.
}

// ---- Streaming -----------------------------------------------------------------------------

bool CaptureClient::can_stream() const {
  return initialized_ && source_group_ && frame_reader_ && !rgb_disabled_;
}

hresult CaptureClient::enable_stream_type(std::int32_t format_index, std::uint32_t apply_flag) {
  VEXCAP_DCHECK_ON_THREAD(request_thread_);
  if (!can_stream()) {
    VXLOG('E', "enable_stream_type: not valid state");
    return HR_INVALID_STATE;
  }
  if (reader_kind_ == 1 && (format_index < 0 || format_index > 9)) return HR_INVALIDARG;

  auto formats = frame_source_->supported_formats();
  if (formats.empty()) return 16;  // the required plain answer, not an HRESULT
  const auto entry = format_table_.find(static_cast<std::uint32_t>(format_index));
  if (format_index < 0 || entry == format_table_.end()) return HR_NOTIMPL;
  if (entry->second.position >= formats.size()) return HR_NOTIMPL;

  frame_source_->set_format(formats[entry->second.position]);
  if (apply_flag != 1) return HR_OK;

  try {
    frame_reader_->start();
  } catch (const PlatformError& error) {
    VXLOG('E', "SetFormatAsync->StartAsync failed: %ws", error.message().c_str());
  }
  if (frame_source_->supported_formats().empty()) return 16;
  std::this_thread::sleep_for(kApplyFormatRun);
  try {
    frame_reader_->stop();
  } catch (const PlatformError& error) {
    VXLOG('E', "SetFormatAsync->StopAsync failed: %ws", error.message().c_str());
  }
  return HR_OK;
}

hresult CaptureClient::start_streaming(vexcap_frame_callback callback, void* context) {
  VEXCAP_DCHECK_ON_THREAD(request_thread_);
  if (!can_stream()) {
    VXLOG('E', "start_streaming: not valid state");
    return HR_INVALID_STATE;
  }
  std::unique_lock<Mutex> lock = stream_.hold();
  try {
    // The handler holds only a weak reference: a pending frame never keeps a client alive.
    std::weak_ptr<CaptureClient> weak = weak_from_this();
    // A start while streaming replaces the subscription: a second handler would only find the
    // frame taken, and would keep frames coming after a callback answered false.
    if (frame_arrived_token_ != 0) frame_reader_->remove_frame_arrived(frame_arrived_token_);
    frame_arrived_token_ = frame_reader_->add_frame_arrived([weak](platform::FrameReader& reader) {
      const std::shared_ptr<CaptureClient> client = weak.lock();
      if (!client) return HR_DISCONNECTED;
      return deliver_newest_frame(client->stream_, reader);
    });
    const platform::ReaderStartStatus status = frame_reader_->start();
    if (status != platform::ReaderStartStatus::Success) {
      // A reader that did not start delivers nothing: the host hears so (a grey source that
      // cannot give NV12 is the likely one).
      VXLOG('E', "Reader did not start: %ws (%d)", sources::name_of(status), static_cast<int>(status));
      frame_reader_->remove_frame_arrived(frame_arrived_token_);
      frame_arrived_token_ = 0;
      stream_.clear_listener(lock);
      return HR_INVALID_STATE;
    }
    stream_.start(lock, {callback, context});
  } catch (const PlatformError& error) {
    VXLOG('E', "start stream exception: %ws", error.message().c_str());
    lock.unlock();
    stop_streaming();  // a start that failed this way reports success with streaming stopped
    lock.lock();
  }
  return HR_OK;
}

hresult CaptureClient::read_exposure(std::uint64_t& exposure) { return get_exposure(*this, exposure); }

hresult CaptureClient::read_gain(std::uint32_t& gain) {
  return xu_control_ ? xu_control_->read_gain(gain) : HR_FAIL;
}

hresult CaptureClient::read_led_power(std::uint32_t& power) {
  const hresult torch = get_torch_power(*this, power);
  if (torch == HR_OK) return HR_OK;
  return xu_control_ ? xu_control_->read_led_power(power) : HR_FAIL;
}

void CaptureClient::register_unsupported_format(vexcap_unsupported_format_callback callback, void* context) {
  const std::unique_lock<Mutex> lock = unsupported_format_.hold();
  if (!initialized_ || unsupported_format_.registered(lock)) return;
  unsupported_format_.store(lock, callback, context);
}

void CaptureClient::unregister_unsupported_format() {
  const std::unique_lock<Mutex> lock = unsupported_format_.hold();
  if (!initialized_ || !unsupported_format_.registered(lock)) return;
  unsupported_format_.clear(lock);
}

hresult CaptureClient::register_rgb_stopped(vexcap_rgb_stopped_callback callback, void* context) {
  const RgbStoppedWorker::Target target{shared_from_this(), device_id(), reader_kind_};
  rgb_stopped_.start(target, initialized_, callback, context);
  return HR_OK;
}

hresult CaptureClient::unregister_rgb_stopped() {
  rgb_stopped_.clear_callback(initialized_);
  return HR_OK;
}

hresult CaptureClient::switch_colour_stream_off() {
  rgb_disabled_ = true;
  rgb_stopped_.stop_for_good(initialized_);
  unregister_exclusive_control_status();  // a failure is logged and goes no further
  return HR_OK;
}

hresult CaptureClient::stop_streaming() {
  {
    // First, in every state: no frame reaches the host once the call began.
    stream_.end_delivery();
  }
  if (!initialized_ || !frame_reader_) return HR_INVALID_STATE;
  if (!rgb_disabled_) frame_reader_->stop();
  frame_reader_->remove_frame_arrived(frame_arrived_token_);
  frame_arrived_token_ = 0;
  return HR_OK;
}

hresult CaptureClient::clear() {
  if (rgb_disabled_ || !initialized_) return HR_OK;
  // Every step runs whatever the earlier ones met, so nothing outlives a clear; a failure
  // anywhere is still answered.
  bool whole = true;
  try {
    const hresult stopped = stop_streaming();
    if (failed(stopped)) VXLOG('W', "Failed stopping streaming: %08x", stopped);
  } catch (const PlatformError& error) {
    VXLOG('W', "Failed stopping streaming: %ws", error.message().c_str());
    whole = false;
  }
  whole = release_capture() && whole;
  initialized_ = false;
  if (source_group_) {
    whole = teardown_step([&] { source_group_->close(); }) && whole;
    source_group_.reset();
  }
  format_table_.clear();
  return whole ? HR_OK : HR_FAIL;
}

bool CaptureClient::release_capture() {
  bool whole = true;
  if (frame_reader_) {
    whole = teardown_step([&] { frame_reader_->close(); }) && whole;
    frame_reader_.reset();
    frame_arrived_token_ = 0;
  }
  if (capture_) {
    if (exclusive_control_token_ != 0) {
      whole = teardown_step(
                  [&] { capture_->remove_exclusive_control_status_changed(exclusive_control_token_); }) &&
              whole;
      exclusive_control_token_ = 0;
    }
    if (failed_token_ != 0) {
      whole = teardown_step([&] { capture_->remove_failed(failed_token_); }) && whole;
      failed_token_ = 0;
    }
    whole = teardown_step([&] { capture_->close_frame_sources(); }) && whole;
  }
  // Sources and controllers hold on to the session: they go before the capture closes.
  frame_source_.reset();
  second_source_.reset();
  property_controller_.reset();
  if (capture_) {
    whole = teardown_step([&] { capture_->close(); }) && whole;
    capture_.reset();
  }
  return whole;
}

}  // namespace vexcap::capture
