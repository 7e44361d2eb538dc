#include "capture/rgb_stopped_worker.h"

#include <algorithm>
#include <optional>
#include <system_error>

#include "common/host_callback.h"
#include "log/log.h"
#include "platform/port.h"
#include "sources/platform_names.h"
#include "sources/source_lookup.h"

namespace vexcap::capture {

using platform::PlatformError;

namespace {

// One pass's own session on the group: exclusive, whatever the client's own stream mode, so a
// frame arrives only once nobody else holds the camera.
class Probe {
 public:
  Probe(platform::Platform& platform, const std::shared_ptr<platform::SourceGroup>& group)
      : capture_(platform.create_capture()) {
    settings_.source_group = group;
    settings_.sharing_mode = platform::SharingMode::ExclusiveControl;
    settings_.streaming_capture_mode = platform::StreamingCaptureMode::Video;
    settings_.memory_preference = platform::MemoryPreference::Cpu;
  }
  // The pass's session ends with the pass: exclusive control is free again at once.
  ~Probe() {
    try {
      if (reader_) reader_->close();
      reader_.reset();
      capture_->close();
    } catch (const PlatformError& error) {
      VXLOG('W', "Capture teardown step failed: %ws", error.message().c_str());
    }
  }
  Probe(const Probe&) = delete;
  Probe& operator=(const Probe&) = delete;

  // Opens the session, reads the source a client's reader would read and starts it. A frame
  // sets `seen` and ends the pass's wait.
  void start(platform::SourceKind kind, const std::shared_ptr<std::atomic<bool>>& seen,
             const std::shared_ptr<ManualResetEvent>& wake) {
    capture_->initialize(settings_);
    const auto sources = capture_->frame_sources();
    const platform::StreamType default_type = sources::default_stream_type(sources, kind);
    for (const auto& source : sources) {
      const platform::SourceInfo info = source->info();
      if (info.kind != kind || info.stream_type != sources::stream_type_to_read(info, default_type)) continue;
      reader_ = capture_->create_frame_reader(source, std::nullopt);
      break;
    }
    if (!reader_) return;  // nothing to read: the pass sees no frame
    reader_->add_frame_arrived([seen, wake](platform::FrameReader& sender) {
      if (const auto frame = sender.try_acquire_latest_frame()) {
        seen->store(true);
        frame->close();
        wake->set();
      }
      return HR_OK;
    });
    reader_->start();
  }

  void stop() {
    if (reader_) reader_->stop();
  }

 private:
  std::shared_ptr<platform::Capture> capture_;
  platform::CaptureSettings settings_;
  std::shared_ptr<platform::FrameReader> reader_;
};

std::shared_ptr<platform::SourceGroup> find_group_again(platform::Platform& platform,
                                                        const std::wstring& device_id,
                                                        std::uint32_t reader_kind) {
  return sources::find_group_with_kind(platform.find_all_source_groups(), device_id,
                                       sources::source_kind_for_reader(reader_kind));
}

}  // namespace

RgbStoppedWorker::~RgbStoppedWorker() {
  // On the worker's own thread (it held the last reference) the worker is left to end by itself.
  if (task_ && !task_->is_current_thread()) task_->join();  // it no longer holds the client
}

void RgbStoppedWorker::start(const Target& target, bool initialized, vexcap_rgb_stopped_callback callback,
                             void* context) {
  std::lock_guard<std::mutex> lock(lock_);
  if (!initialized) return;
  callback_ = callback;
  context_ = context;
  stopped_event_.reset();
  try {
    // An earlier worker still running is let go here and ends by itself.
    task_ = std::make_unique<WorkerThread>([this, target] { run(target.device_id, target.reader_kind); });
  } catch (const std::system_error&) {
    // No worker: the registration stands and reports success all the same.
  }
}

void RgbStoppedWorker::clear_callback(bool initialized) {
  {
    std::lock_guard<std::mutex> lock(lock_);
    if (!initialized || callback_.load() == nullptr) return;
    callback_ = nullptr;
    context_ = nullptr;
  }
  wake_passes();                      // a waiting pass ends now instead of after its full wait
  stopped_event_.wait_for(kEndWait);  // a worker that does not end in time is left behind
}

void RgbStoppedWorker::stop_for_good(bool initialized) {
  {
    MutexLock lock(worker_lock_);
    stop_ = true;
    for (const auto& wake : pass_wakes_) wake->set();
  }
  clear_callback(initialized);
}

void RgbStoppedWorker::run(const std::wstring& device_id, std::uint32_t reader_kind) {
  if (probe_until_stopped(device_id, reader_kind)) {
    // The pair as it stands now, read without the lock.
    const vexcap_rgb_stopped_callback callback = callback_.load();
    void* const context = context_.load();
    if (callback != nullptr) {
      HostCallbackScope marked;
      callback(true, context);
    }
  }
  stopped_event_.set();
}

bool RgbStoppedWorker::probe_until_stopped(const std::wstring& device_id, std::uint32_t reader_kind) {
  const auto seen = std::make_shared<std::atomic<bool>>(false);  // the notify mark
  for (;;) {
    if (seen->load()) return true;
    // A platform failure anywhere in a pass (the camera held by another application, or gone)
    // makes a pass without a frame; the pass still waits, so a failing camera is not hammered.
    std::optional<Probe> probe;
    try {
      probe.emplace(platform_, find_group_again(platform_, device_id, reader_kind));
    } catch (const PlatformError& error) {
      VXLOG('E', "exception: %ws", error.message().c_str());
    }
    const auto wake = std::make_shared<ManualResetEvent>();
    if (!begin_pass(wake)) return false;
    if (probe) {
      try {
        probe->start(sources::source_kind_for_reader(reader_kind), seen, wake);
      } catch (const PlatformError& error) {
        VXLOG('E', "exception: %ws", error.message().c_str());
      }
    }
    wake->wait_for(kPassWait);
    if (!end_pass(wake)) return false;
    if (probe) {
      try {
        probe->stop();
      } catch (const PlatformError& error) {
        VXLOG('E', "exception: %ws", error.message().c_str());
      }
      probe.reset();
    }
    if (!callback_registered()) return false;
  }
}

bool RgbStoppedWorker::begin_pass(const std::shared_ptr<ManualResetEvent>& wake) {
  MutexLock lock(worker_lock_);
  if (stop_) return false;
  pass_wakes_.push_back(wake);
  return true;
}

bool RgbStoppedWorker::end_pass(const std::shared_ptr<ManualResetEvent>& wake) {
  MutexLock lock(worker_lock_);
  std::erase(pass_wakes_, wake);
  return !stop_;
}

void RgbStoppedWorker::wake_passes() {
  MutexLock lock(worker_lock_);
  for (const auto& wake : pass_wakes_) wake->set();
}

bool RgbStoppedWorker::callback_registered() {
  std::lock_guard<std::mutex> lock(lock_);
  return callback_.load() != nullptr;
}

}  // namespace vexcap::capture
