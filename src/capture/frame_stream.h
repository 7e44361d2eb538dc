// A capture client's frames as frame delivery sees them: the host's listener, the records in
// the host's hands, the controls a frame reports, the host's rate limit, and where a frame that
// goes no further is reported. Frame delivery gets this part of the client, never the whole.
//
// The listener is read on frame-arrived threads and written on the request thread, under the
// stream's lock; a start holds the lock for its whole run, so a frame arriving meanwhile waits
// for the new listener.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include "capture/control_tracker.h"
#include "capture/event_registration.h"
#include "capture/frame_rate.h"
#include "capture/outstanding_records.h"
#include "common/hresult.h"
#include "common/mutex.h"
#include "platform/port.h"
#include "vexcap/vexcap.h"

namespace vexcap::capture {

// Why a frame that arrived did not reach the host.
enum class FrameDropReason : std::uint8_t {
  NoListener,         // nobody listens: no record is built
  OutstandingLimit,   // the host holds the stream's limit of records
  OverRateLimit,      // faster than the host's frame-rate limit
  UnsupportedFormat,  // no bitmap can be made of it: the host hears of it through its event
};

// The camera a stream's frames come from, as a frame record reports it; the client answers.
class FrameCamera {
 public:
  virtual platform::Platform& platform() = 0;
  virtual std::shared_ptr<platform::FrameSource> frame_source() const = 0;
  virtual hresult read_exposure(std::uint64_t& exposure) = 0;
  virtual hresult read_gain(std::uint32_t& gain) = 0;
  // The torch first, the extension unit when the torch does not answer.
  virtual hresult read_led_power(std::uint32_t& power) = 0;

 protected:
  ~FrameCamera() = default;
};

class FrameStream {
 public:
  using UnsupportedFormatEvent = EventRegistration<vexcap_unsupported_format_callback>;

  FrameStream(FrameCamera& camera, UnsupportedFormatEvent& unsupported_format)
      : camera_(camera), unsupported_format_(unsupported_format) {}
  FrameStream(const FrameStream&) = delete;
  FrameStream& operator=(const FrameStream&) = delete;

  // The host's frame callback and its context, read together.
  struct Listener {
    vexcap_frame_callback callback = nullptr;
    void* context = nullptr;
  };
  Listener listener();
  // Held by a start for its whole run.
  [[nodiscard]] std::unique_lock<Mutex> hold() { return std::unique_lock<Mutex>(listener_lock_); }
  // A new stream: its listener, one more generation. The held lock is the proof of the lock.
  void start(const std::unique_lock<Mutex>& held, Listener listener) VEXCAP_NO_THREAD_SAFETY_ANALYSIS;
  void clear_listener(const std::unique_lock<Mutex>& held) VEXCAP_NO_THREAD_SAFETY_ANALYSIS;
  // No frame reaches the host until the next start (a stop, or the host's callback answered false).
  void end_delivery();
  // Counts the starts: a stop asked for earlier applies only to the stream it saw running.
  std::uint64_t generation() const { return generation_.load(); }

  // A frame went no further; an unsupported format tells the host through its event.
  void on_frame_dropped(FrameDropReason reason);
  void raise_unsupported_format();

  std::shared_ptr<OutstandingRecords> outstanding_records() const { return outstanding_records_; }
  ControlTracker& control_tracker() { return control_tracker_; }
  FrameRateLimit& frame_rate_limit() { return frame_rate_limit_; }
  FrameCamera& camera() { return camera_; }

 private:
  FrameCamera& camera_;
  UnsupportedFormatEvent& unsupported_format_;

  Mutex listener_lock_;
  Listener listener_ VEXCAP_GUARDED_BY(listener_lock_);
  std::atomic<std::uint64_t> generation_{0};
  const std::shared_ptr<OutstandingRecords> outstanding_records_ = std::make_shared<OutstandingRecords>();
  ControlTracker control_tracker_;
  FrameRateLimit frame_rate_limit_;
};

}  // namespace vexcap::capture
