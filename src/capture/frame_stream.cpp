#include "capture/frame_stream.h"

namespace vexcap::capture {

FrameStream::Listener FrameStream::listener() {
  MutexLock lock(listener_lock_);
  return listener_;
}

void FrameStream::start(const std::unique_lock<Mutex>&, Listener listener) {
  listener_ = listener;
  ++generation_;
}

void FrameStream::clear_listener(const std::unique_lock<Mutex>&) { listener_ = Listener{}; }

void FrameStream::end_delivery() {
  MutexLock lock(listener_lock_);
  listener_ = Listener{};
}

void FrameStream::on_frame_dropped(FrameDropReason reason) {
  if (reason == FrameDropReason::UnsupportedFormat) raise_unsupported_format();
}

void FrameStream::raise_unsupported_format() {
  unsupported_format_.raise(
      [](vexcap_unsupported_format_callback callback, void* context) { callback(true, context); });
}

}  // namespace vexcap::capture
