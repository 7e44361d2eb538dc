// The capture client: one media-capture session on one camera source group, its frame reader
// and the host's frame callback. A device holds two: one exclusive, one shared read-only.
//
// Its narrow parts: the FrameStream that frame delivery gets instead of the client, the event
// registrations (exclusive-control status, unsupported format) and the RGB-stopped worker.
//
// Every operation runs on the request thread, except the frame-arrived handler (platform
// threads) and the capture-failure handler. Lock order: no operation holds two of the
// client's locks at once.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "capture/event_registration.h"
#include "capture/frame_stream.h"
#include "capture/rgb_stopped_worker.h"
#include "common/hresult.h"
#include "common/thread_checker.h"
#include "controls/extended_properties.h"
#include "controls/extension_unit.h"
#include "platform/port.h"
#include "sources/format_table.h"
#include "vexcap/vexcap.h"

namespace vexcap::capture {

// The client's device identifier holds at most this many UTF-16 units, terminator included.
constexpr std::size_t kDeviceIdCapacity = 260;

class CaptureClient final : public std::enable_shared_from_this<CaptureClient>, private FrameCamera {
 public:
  // `sharing` (a vexcap_stream_mode): 0 shared, 1 exclusive, anything else logged and treated as
  // shared. The client's sessions, readers and extension unit come from `platform`.
  static std::shared_ptr<CaptureClient> create(platform::Platform& platform, std::uint32_t sharing);
  ~CaptureClient();
  CaptureClient(const CaptureClient&) = delete;
  CaptureClient& operator=(const CaptureClient&) = delete;

  // Binds the client to the source group `group_id` and creates its reader for `reader_kind`.
  hresult initialize(const std::wstring& group_id, std::uint32_t reader_kind, std::uint16_t preferred_width,
                     std::uint16_t preferred_height);
  void reader_init(std::uint32_t reader_kind, std::uint16_t preferred_width, std::uint16_t preferred_height);
  // True when the capture instance is ready; its callers go on whatever it answers. A capture
  // whose initialization failed is spent (the platform refuses to initialize it again): it is
  // closed and dropped, so the client holds none and the next attempt starts afresh.
  bool initialize_media_capture(const std::shared_ptr<platform::SourceGroup>& group);
  // The platform's answer to the last failed capture initialization (privacy settings, the
  // camera held elsewhere, ...); HR_OK once one succeeded.
  hresult last_capture_failure() const { return last_capture_failure_.load(); }

  // Selects the format with code `format_index`; apply flag 1 runs the reader briefly with it.
  hresult enable_stream_type(std::int32_t format_index, std::uint32_t apply_flag);
  hresult start_streaming(vexcap_frame_callback callback, void* context);
  hresult stop_streaming();
  // Tears the capture instance down (device close, destruction): readers stopped and closed,
  // sources and controllers dropped, then the capture closed, each step whatever the others
  // met. Exclusive control is free once it returns.
  hresult clear();

  // Capture failures are handed to the request thread: the notifier queues the recovery request
  // and returns at once, false when there is no request thread. Set before initialize.
  using FailureNotifier = std::function<bool(const std::weak_ptr<CaptureClient>&)>;
  void set_failure_notifier(FailureNotifier notifier) { failure_notifier_ = std::move(notifier); }
  // The thread its requests run on, checked in debug builds; a client bound to none (a test
  // driving it directly) is not checked.
  void bind_to_request_thread(std::thread::id thread) { request_thread_ = ThreadChecker(thread); }
  // Recovery on the request thread: a new capture instance and a new, stopped reader. A client
  // cleared (or closed) since the failure is left alone.
  void handle_capture_failure();

  bool is_exclusive() const { return sharing_ == VEXCAP_STREAM_MODE_EXCLUSIVE; }
  platform::Platform& platform() override { return platform_; }
  bool initialized() const { return initialized_; }
  bool rgb_disabled() const { return rgb_disabled_; }
  std::uint32_t reader_kind() const { return reader_kind_; }
  std::uint16_t preferred_width() const { return preferred_width_; }
  std::uint16_t preferred_height() const { return preferred_height_; }
  const sources::FormatTable& format_table() const { return format_table_; }
  std::wstring device_id() const;
  std::shared_ptr<platform::FrameSource> frame_source() const override { return frame_source_; }
  std::shared_ptr<platform::FrameSource> second_source() const { return second_source_; }
  std::shared_ptr<platform::FrameReader> frame_reader() const { return frame_reader_; }
  bool has_capture() const { return capture_ != nullptr; }
  controls::ExtensionUnit* extension_unit() const { return xu_control_.get(); }
  // The frame source's controller, for the extended properties.
  controls::PropertyTarget property_target() const;
  bool has_source_group() const { return source_group_ != nullptr; }
  // The client's frames as frame delivery sees them.
  FrameStream& frame_stream() { return stream_; }
  // The controls this client set last, for the frames it reads.
  ControlTracker& control_tracker() { return stream_.control_tracker(); }
  // Counts the starts: a stop asked for earlier applies only to the stream it saw running.
  std::uint64_t stream_generation() const { return stream_.generation(); }
  // Frames per second the host accepts, 0 = no limit.
  void set_frame_rate_limit(std::uint32_t frames_per_second) {
    stream_.frame_rate_limit().set(frames_per_second);
  }

  // The unsupported-format event: raised with its lock held; nothing happens without a callback.
  // Stored only on an initialized client that has none yet: a second registration keeps the
  // first. Unregistering clears it (on an initialized client).
  void register_unsupported_format(vexcap_unsupported_format_callback callback, void* context);
  void unregister_unsupported_format();
  void raise_unsupported_format() { stream_.raise_unsupported_format(); }

  // The exclusive-control status event: the host hears the capture instance's status changes,
  // called with the event lock held. A second registration keeps the first. Registration
  // waits for a settled face-auth mode when the status reads 2. Capture-failure recovery and
  // clear drop the subscription but keep the pair, so the host unregisters before registering
  // again.
  hresult register_exclusive_control_status(vexcap_excl_ctrl_status_callback callback, void* context);
  // 0, or the platform's failure (logged) when the subscription cannot be removed.
  hresult unregister_exclusive_control_status();

  // The RGB-stopped event (see capture/rgb_stopped_worker.h): always 0.
  hresult register_rgb_stopped(vexcap_rgb_stopped_callback callback, void* context);
  hresult unregister_rgb_stopped();
  bool rgb_stopped_event_set() const { return rgb_stopped_.stopped_event_set(); }

  // The colour stream off for good (device property 18): nothing streams afterwards, the
  // RGB-stopped worker ends (waited for up to 20000 ms) and the exclusive-control status
  // subscription goes. Always 0.
  hresult switch_colour_stream_off();

 private:
  CaptureClient(platform::Platform& platform, std::uint32_t sharing);

  std::shared_ptr<platform::SourceGroup> find_source_group(
      const std::vector<std::shared_ptr<platform::SourceGroup>>& groups, const std::wstring& id,
      platform::SourceKind kind);
  void subscribe_to_capture_failures();
  // Closes and drops the reader, the subscriptions, the frame sources with their controllers
  // and the capture, in that order; every step runs whatever the earlier ones met. False when
  // any platform call failed (each is logged).
  bool release_capture();
  void drop_capture();  // closes the capture (logged on failure) and lets it go
  void load_extension_unit(std::uint32_t reader_kind);
  void switch_llc_on();
  bool can_stream() const;
  // What a frame record reports of the camera (FrameCamera).
  hresult read_exposure(std::uint64_t& exposure) override;
  hresult read_gain(std::uint32_t& gain) override;
  hresult read_led_power(std::uint32_t& power) override;

  platform::Platform& platform_;
  const std::uint32_t sharing_;   // a vexcap_stream_mode
  RgbStoppedWorker rgb_stopped_;  // rgbStoppedLock, the pair, rgbStoppedEvent, workerLock
  bool initialized_ = false;
  std::uint32_t reader_kind_ = 0;
  std::uint16_t preferred_width_ = 0;
  std::uint16_t preferred_height_ = 0;
  sources::FormatTable format_table_;
  std::unique_ptr<controls::ExtensionUnit> xu_control_;
  std::shared_ptr<platform::SourceController> property_controller_;  // kept for property_target
  std::uint32_t current_format_height_ = 0;                          // of the reader source's current format

  std::shared_ptr<platform::FrameReader> frame_reader_;
  std::shared_ptr<platform::SourceGroup> source_group_;
  std::shared_ptr<platform::FrameSource> frame_source_;
  std::shared_ptr<platform::FrameSource> second_source_;
  platform::EventToken frame_arrived_token_ = 0;
  platform::EventToken failed_token_ = 0;
  platform::EventToken exclusive_control_token_ = 0;
  std::shared_ptr<platform::Capture> capture_;  // agile: handlers reach it from other threads
  std::optional<platform::CaptureSettings> capture_settings_;
  std::atomic<hresult> last_capture_failure_{HR_OK};

  // The client's event registrations: each with its own lock, held while the host is called.
  EventRegistration<vexcap_excl_ctrl_status_callback> exclusive_control_;
  EventRegistration<vexcap_unsupported_format_callback> unsupported_format_;
  FrameStream stream_{*this, unsupported_format_};

  std::mutex failure_lock_;  // held for the whole of a capture-failure recovery
  FailureNotifier failure_notifier_;
  std::array<wchar_t, kDeviceIdCapacity> device_id_{};

  bool rgb_disabled_ = false;  // set for good when the host switches the colour stream off
  ThreadChecker request_thread_{std::thread::id()};
};

}  // namespace vexcap::capture
