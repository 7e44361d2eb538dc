#include "platform/virtual/capture.h"

#include "platform/virtual/controls.h"
#include "platform/virtual/frame_reader.h"
#include "platform/virtual/known_ids.h"
#include "platform/virtual/source_group.h"

namespace vexcap::virtual_camera {

using platform::PlatformError;
using platform::SharingMode;

// ---- VirtualCapture ----------------------------------------------------------------------------

VirtualCapture::VirtualCapture(std::shared_ptr<World> world) : world_(std::move(world)) {}

VirtualCapture::~VirtualCapture() {
  if (session_open_) world_->release_session(this);
}

void VirtualCapture::require_ready() {
  if (closed_) throw PlatformError(ids::kClosed, L"The object has been closed.");
  if (shut_down_) throw PlatformError(ids::kShutdown, L"The object has been shut down.");
  if (!initialized_) throw PlatformError(ids::kIllegalMethodCall, L"MediaCapture is not initialized.");
  require_connected();
}

void VirtualCapture::require_connected() {
  std::lock_guard world_lock(world_->mutex());
  if (group_ && group_->removed) throw PlatformError(HR_DISCONNECTED, L"The object invoked has disconnected from its clients.");
}

void VirtualCapture::initialize(const platform::CaptureSettings& settings) {
  {
    std::lock_guard lock(mutex_);
    if (closed_) throw PlatformError(ids::kClosed, L"The object has been closed.");
    if (shut_down_) throw PlatformError(ids::kShutdown, L"The object has been shut down.");
    if (initialized_) throw PlatformError(ids::kIllegalMethodCall, L"MediaCapture is already initialized.");
    if (initialize_failed_)
      throw PlatformError(ids::kIllegalMethodCall, L"A method was called at an unexpected time.");
  }
  try {
    world_->enter_call_or_throw(PlatformCall::Initialize);
    auto group = std::dynamic_pointer_cast<VirtualSourceGroup>(settings.source_group);
    if (!group) throw PlatformError(HR_INVALIDARG, L"The parameter is incorrect.");
    world_->open_session(shared_from_this(), group->state(), settings.sharing_mode);
  } catch (...) {
    std::lock_guard lock(mutex_);
    initialize_failed_ = true;  // a new MediaCapture is needed for the next attempt
    throw;
  }
  auto group = std::static_pointer_cast<VirtualSourceGroup>(settings.source_group);

  std::vector<std::shared_ptr<VirtualFrameSource>> sources;
  {
    std::lock_guard world_lock(world_->mutex());
    for (std::size_t i = 0; i < group->state()->model.sources.size(); ++i)
      sources.push_back(std::make_shared<VirtualFrameSource>(world_, group->state(), i, this, settings.sharing_mode));
  }
  std::lock_guard lock(mutex_);
  initialized_ = true;
  session_open_ = true;
  mode_ = settings.sharing_mode;
  group_ = group->state();
  sources_ = std::move(sources);
}

std::vector<std::shared_ptr<platform::FrameSource>> VirtualCapture::frame_sources() {
  std::lock_guard lock(mutex_);
  require_ready();
  return {sources_.begin(), sources_.end()};
}

void VirtualCapture::close_frame_sources() {
  std::lock_guard lock(mutex_);
  if (initialized_) require_connected();
  for (auto& source : sources_) source->close();
}

std::shared_ptr<platform::FrameReader> VirtualCapture::create_frame_reader(
    const std::shared_ptr<platform::FrameSource>& source, const std::optional<std::wstring>& subtype) {
  {
    std::lock_guard lock(mutex_);
    require_ready();
  }
  auto virtual_source = std::dynamic_pointer_cast<VirtualFrameSource>(source);
  if (!virtual_source || virtual_source->session() != this)
    throw PlatformError(HR_INVALIDARG, L"The frame source does not belong to this MediaCapture.");
  world_->enter_call_or_throw(PlatformCall::CreateFrameReader);
  return std::make_shared<VirtualFrameReader>(world_, virtual_source->group(), virtual_source->index(), subtype);
}

platform::EventToken VirtualCapture::add_failed(FailedHandler handler) {
  std::lock_guard lock(mutex_);
  if (initialized_) require_connected();
  return failed_handlers_.add(tokens_, std::move(handler));
}

void VirtualCapture::remove_failed(platform::EventToken token) {
  std::lock_guard lock(mutex_);
  if (initialized_) require_connected();
  failed_handlers_.remove(token);
}

platform::EventToken VirtualCapture::add_exclusive_control_status_changed(ExclusiveControlHandler handler) {
  std::lock_guard lock(mutex_);
  if (initialized_) require_connected();
  return exclusive_handlers_.add(tokens_, std::move(handler));
}

void VirtualCapture::remove_exclusive_control_status_changed(platform::EventToken token) {
  std::lock_guard lock(mutex_);
  if (initialized_) require_connected();
  exclusive_handlers_.remove(token);
}

std::optional<hresult> VirtualCapture::shutdown_if_supported() {
  {
    std::lock_guard lock(mutex_);
    if (shut_down_) return HR_OK;
    shut_down_ = true;
  }
  end_session();
  return HR_OK;
}

void VirtualCapture::close() {
  {
    std::lock_guard lock(mutex_);
    if (closed_) return;
    closed_ = true;
    failed_handlers_.clear();
    exclusive_handlers_.clear();
  }
  end_session();
}

// Sources and readers made from this capture stop answering; the session ends now.
void VirtualCapture::end_session() {
  std::vector<std::shared_ptr<VirtualFrameSource>> sources;
  {
    std::lock_guard lock(mutex_);
    sources = sources_;
    if (!session_open_) sources.clear();
    session_open_ = false;
  }
  for (auto& source : sources) source->close();
  world_->close_session(this);
}

// The World calls these with its lock held: post only, the handlers run on events_.
void VirtualCapture::post_exclusive_control_changed(const platform::ExclusiveControlChange& change) {
  events_.post([weak = weak_from_this(), change] {
    auto self = weak.lock();
    if (!self) return;
    std::vector<ExclusiveControlHandler> handlers;
    {
      std::lock_guard lock(self->mutex_);
      handlers = self->exclusive_handlers_.handlers();
    }
    for (auto& handler : handlers) handler(change);
  });
}

void VirtualCapture::post_failed(const platform::CaptureFailure& failure) {
  events_.post([weak = weak_from_this(), failure] {
    auto self = weak.lock();
    if (!self) return;
    std::vector<FailedHandler> handlers;
    {
      std::lock_guard lock(self->mutex_);
      handlers = self->failed_handlers_.handlers();
    }
    for (auto& handler : handlers) handler(failure);
  });
}

// ---- VirtualFrameSource ------------------------------------------------------------------------

VirtualFrameSource::VirtualFrameSource(std::shared_ptr<World> world, std::shared_ptr<GroupState> group,
                                       std::size_t index, const SessionSink* session, SharingMode mode)
    : world_(std::move(world)), group_(std::move(group)), index_(index), session_(session), mode_(mode) {}

void VirtualFrameSource::require_open() {
  if (closed_) throw PlatformError(ids::kClosed, L"The object has been closed.");
  if (group_->removed) throw PlatformError(HR_DISCONNECTED, L"The object invoked has disconnected from its clients.");
}

void VirtualFrameSource::close() {
  std::lock_guard lock(world_->mutex());
  closed_ = true;
}

platform::SourceInfo VirtualFrameSource::info() {
  std::lock_guard lock(world_->mutex());
  require_open();
  return source_info_of(group_->model.sources[index_]);
}

std::vector<std::shared_ptr<platform::FrameFormat>> VirtualFrameSource::supported_formats() {
  std::lock_guard lock(world_->mutex());
  require_open();
  std::vector<std::shared_ptr<platform::FrameFormat>> formats;
  for (const auto& format : group_->model.sources[index_].formats)
    formats.push_back(std::make_shared<VirtualFrameFormat>(format));
  return formats;
}

std::shared_ptr<platform::FrameFormat> VirtualFrameSource::current_format() {
  std::lock_guard lock(world_->mutex());
  require_open();
  const SourceModel& source = group_->model.sources[index_];
  if (!source.current_format || *source.current_format >= source.formats.size()) return nullptr;
  return std::make_shared<VirtualFrameFormat>(source.formats[*source.current_format]);
}

void VirtualFrameSource::set_format(const std::shared_ptr<platform::FrameFormat>& format) {
  world_->enter_call_or_throw(PlatformCall::SetFormat);
  std::lock_guard lock(world_->mutex());
  require_open();
  if (mode_ != SharingMode::ExclusiveControl)
    throw PlatformError(HR_ACCESSDENIED, L"The format cannot be set in shared read-only mode.");
  auto wanted = std::dynamic_pointer_cast<VirtualFrameFormat>(format);
  SourceModel& source = group_->model.sources[index_];
  for (std::size_t i = 0; wanted && i < source.formats.size(); ++i) {
    if (!(source.formats[i] == wanted->model())) continue;
    source.current_format = i;
    world_->record([&](Records& records) { records.format_changes.push_back({source.id.value_or(L""), wanted->model()}); });
    return;
  }
  throw PlatformError(HR_INVALIDARG, L"The format is not supported by the frame source.");
}

std::shared_ptr<platform::SourceController> VirtualFrameSource::controller() {
  std::lock_guard lock(world_->mutex());
  require_open();
  return std::make_shared<VirtualSourceController>(world_, group_, index_, mode_ == SharingMode::ExclusiveControl);
}

platform::ExclusiveControlStatus VirtualFrameSource::exclusive_control_status() {
  std::lock_guard lock(world_->mutex());
  require_open();
  const SourceModel& source = group_->model.sources[index_];
  if (source.exclusive_status_override)
    return static_cast<platform::ExclusiveControlStatus>(*source.exclusive_status_override);
  return world_->exclusive_held_elsewhere(*group_) ? platform::ExclusiveControlStatus::SharedReadOnlyAvailable
                                                  : platform::ExclusiveControlStatus::ExclusiveControlAvailable;
}

}  // namespace vexcap::virtual_camera
