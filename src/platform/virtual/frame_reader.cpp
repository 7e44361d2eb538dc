

#include "platform/virtual/frame_reader.h"
#include <algorithm>
#include <deque>
#include <map>
#include <mutex>
#include <thread>
#include "platform/virtual/frame.h"
#include "platform/virtual/handler_table.h"
#include "platform/virtual/known_ids.h"

namespace vexcap::virtual_camera {

using platform::PlatformError;
using platform::ReaderStartStatus;

struct VirtualFrameReader::Core {
  Core(std::shared_ptr<World> w, std::shared_ptr<GroupState> g, std::size_t i, std::optional<std::wstring> s)
      : world(std::move(w)), group(std::move(g)), index(i), subtype(std::move(s)) {}

  const std::shared_ptr<World> world;
  const std::shared_ptr<GroupState> group;
  const std::size_t index;
  const std::optional<std::wstring> subtype;

  mutable std::mutex mutex;  // guards everything below
  platform::FrameReader* sender = nullptr;  // the public object while it lives
  HandlerTable<FrameArrivedHandler> handlers;
  TokenCounter tokens;
  std::deque<std::shared_ptr<platform::Frame>> waiting;
  platform::AcquisitionMode mode = platform::AcquisitionMode::Realtime;
  bool started = false;
  bool closed = false;
  std::uint64_t produced = 0;
  std::shared_ptr<Clock::Pacer> pacer;
  std::thread thread;

  void run(std::shared_ptr<Clock::Pacer> my_pacer, std::shared_ptr<Clock> clock, std::int64_t base,
           std::optional<FormatModel> paced);
  std::shared_ptr<platform::Frame> produce(std::int64_t due, std::optional<FormatModel>& format);
  void deliver(std::shared_ptr<platform::Frame> frame);
  void stop_producer(std::unique_lock<std::mutex>& lock);  // leaves the lock unlocked
};

namespace {

bool is_grey_subtype(const std::wstring& subtype) {
  const platform::PixelFormat layout = layout_of_subtype(subtype);
  return layout == platform::PixelFormat::Gray8 || layout == platform::PixelFormat::Gray16;
}

// 100 ns ticks from a stream's start to its k-th frame, exact for any rational rate.
std::int64_t offset_of_frame(const FormatModel& format, std::uint64_t k) {
  std::uint32_t num = format.frame_rate_numerator ? format.frame_rate_numerator : 30;
  std::uint32_t den = format.frame_rate_denominator ? format.frame_rate_denominator : 1;
  return std::int64_t(k * 10'000'000ull * den / num);
}

}  // namespace

void VirtualFrameReader::Core::run(std::shared_ptr<Clock::Pacer> my_pacer, std::shared_ptr<Clock> clock,
                                   std::int64_t base, std::optional<FormatModel> paced) {
  std::uint64_t k = 1;  // frame k of the current schedule is due k periods after its base
  std::optional<FormatModel> format;
  for (;;) {
    std::int64_t due = base + offset_of_frame(paced.value_or(FormatModel{}), k);
    if (!my_pacer->wait_until(due)) return;
    auto frame = produce(due, format);
    if (format && !(paced && *paced == *format)) {  // a new format restarts the schedule here
      paced = format;
      base = due;
      k = 1;
    } else {
      ++k;
    }
    if (frame) deliver(std::move(frame));
    // In real time a producer that fell a whole period behind skips frames, as a camera drops
    // them, instead of raising a backlog.
    if (clock->mode() == ClockMode::Real) {
      std::int64_t period = std::max<std::int64_t>(offset_of_frame(paced.value_or(FormatModel{}), 1), 1);
      std::int64_t late = clock->now() - (base + offset_of_frame(paced.value_or(FormatModel{}), k));
      if (late > period) k += std::uint64_t(late / period);
    }
  }
}

std::shared_ptr<platform::Frame> VirtualFrameReader::Core::produce(std::int64_t due, std::optional<FormatModel>& format) {
  IlluminationMetadata metadata;
  FrameLayoutModel layout;
  bool unsupported;
  Rgb24Model rgb24;
  {
    std::lock_guard lock(world->mutex());
    const SourceModel& source = group->model.sources[index];
    format.reset();
    if (source.current_format && *source.current_format < source.formats.size())
      format = source.formats[*source.current_format];
    if (!format || group->removed || !group->model.enabled || world->frames_stopped()) return nullptr;
    metadata = source.illumination;
    layout = {source.stride_padding, source.nv12_plane_rows_alignment};
    rgb24 = source.rgb24;
    unsupported = world->unsupported_frames();
  }
  std::uint64_t n;
  {
    std::lock_guard lock(mutex);
    n = produced++;
  }
  return std::make_shared<VirtualFrame>(
      make_frame_contents(*format, subtype, n, due, metadata, layout, unsupported, rgb24));
}

void VirtualFrameReader::Core::deliver(std::shared_ptr<platform::Frame> frame) {
  std::vector<std::pair<platform::EventToken, FrameArrivedHandler>> to_call;
  platform::FrameReader* reader;
  {
    std::lock_guard lock(mutex);
    if (!started) return;
    if (mode == platform::AcquisitionMode::Realtime) waiting.clear();
    waiting.push_back(std::move(frame));
    while (waiting.size() > kBufferedFrames) waiting.pop_front();
    to_call = handlers.with_tokens();
    reader = sender;
  }
  for (auto& [token, handler] : to_call) {
    if (!reader) return;
    hresult result;
    try {
      result = handler(*reader);
    } catch (...) {
      result = HR_FAIL;  // a failing delegate stays subscribed, as on the platform
    }
    if (result != HR_DISCONNECTED) continue;
    std::lock_guard lock(mutex);  // the event source drops a disconnected delegate
    handlers.remove(token);
  }
}

void VirtualFrameReader::Core::stop_producer(std::unique_lock<std::mutex>& lock) {
  started = false;
  if (pacer) pacer->stop();
  pacer.reset();
  std::thread producer = std::move(thread);
  lock.unlock();
  if (!producer.joinable()) return;
  if (producer.get_id() == std::this_thread::get_id())
    producer.detach();  // stopped from its own handler: it ends when the handler returns
  else
    producer.join();
}

VirtualFrameReader::VirtualFrameReader(std::shared_ptr<World> world, std::shared_ptr<GroupState> group,
                                       std::size_t index, std::optional<std::wstring> subtype)
    : core_(std::make_shared<Core>(std::move(world), std::move(group), index, std::move(subtype))) {
  core_->sender = this;
}

VirtualFrameReader::~VirtualFrameReader() {
  std::unique_lock lock(core_->mutex);
  core_->sender = nullptr;
  core_->handlers.clear();
  core_->stop_producer(lock);
}

platform::EventToken VirtualFrameReader::add_frame_arrived(FrameArrivedHandler handler) {
  std::lock_guard lock(core_->mutex);
  return core_->handlers.add(core_->tokens, std::move(handler));
}

void VirtualFrameReader::remove_frame_arrived(platform::EventToken token) {
  std::lock_guard lock(core_->mutex);
  core_->handlers.remove(token);
}

platform::ReaderStartStatus VirtualFrameReader::start() {
  {
    std::lock_guard lock(core_->mutex);
    if (core_->closed) throw PlatformError(ids::kClosed, L"The object has been closed.");
    if (core_->started) return ReaderStartStatus::Success;
  }
  core_->world->enter_call_or_throw(PlatformCall::StartReader);
  ReaderStartStatus status;
  std::shared_ptr<Clock> clock = core_->world->clock();
  std::optional<FormatModel> format;
  {
    std::lock_guard lock(core_->world->mutex());
    const GroupState& group = *core_->group;
    const SourceModel& source = group.model.sources[core_->index];
    if (group.removed) throw PlatformError(HR_DISCONNECTED, L"The object invoked has disconnected from its clients.");
    status = !group.model.enabled ? ReaderStartStatus::DeviceNotAvailable : source.reader_start_status;
    // A grey or depth source that cannot give NV12 refuses a reader that asked for it.
    if (status == ReaderStartStatus::Success && source.refuses_nv12 && core_->subtype &&
        upper_case(*core_->subtype) == L"NV12" && source.current_format &&
        *source.current_format < source.formats.size() && is_grey_subtype(source.formats[*source.current_format].subtype))
      status = ReaderStartStatus::OutputFormatNotSupported;
    if (source.current_format && *source.current_format < source.formats.size())
      format = source.formats[*source.current_format];
  }
  if (status != ReaderStartStatus::Success) return status;

  std::unique_lock lock(core_->mutex);
  if (core_->started || core_->closed) return ReaderStartStatus::Success;
  if (core_->thread.joinable()) {  // a producer stopped from its own handler may still be ending
    std::thread old = std::move(core_->thread);
    lock.unlock();
    old.join();
    lock.lock();
  }
  core_->waiting.clear();
  core_->started = true;
  // The schedule starts now, before the thread runs, so a test advancing the clock right after
  // start() finds the first frame due.
  core_->pacer = std::make_shared<Clock::Pacer>(clock);
  core_->thread = std::thread([core = core_, pacer = core_->pacer, clock, base = clock->now(), format] {
    core->run(pacer, clock, base, format);
  });
  return ReaderStartStatus::Success;
}

void VirtualFrameReader::stop() {
  std::unique_lock lock(core_->mutex);
  core_->stop_producer(lock);
  std::lock_guard world_lock(core_->world->mutex());
  if (core_->group->removed) throw PlatformError(HR_DISCONNECTED, L"The object invoked has disconnected from its clients.");
}

void VirtualFrameReader::close() {
  std::unique_lock lock(core_->mutex);
  core_->closed = true;
  core_->waiting.clear();
  core_->stop_producer(lock);
}

void VirtualFrameReader::set_acquisition_mode(platform::AcquisitionMode mode) {
  std::lock_guard lock(core_->mutex);
  core_->mode = mode;
}

std::shared_ptr<platform::Frame> VirtualFrameReader::try_acquire_latest_frame() {
  std::lock_guard lock(core_->mutex);
  if (core_->waiting.empty()) return nullptr;
  std::shared_ptr<platform::Frame> frame;
  if (core_->mode == platform::AcquisitionMode::Realtime) {
    frame = core_->waiting.back();
    core_->waiting.clear();
  } else {
    frame = core_->waiting.front();
    core_->waiting.pop_front();
  }
  return frame;
}

}  // namespace vexcap::virtual_camera
