// MediaCapture and its MediaFrameSources: initialization under the sharing rules, the Failed
// and exclusive-control events (raised on the session's own event thread), reader creation.
// Close ends the session at once; a capture released without it leaves its session lingering
// for a moment (World::release_session). Once the group is removed, every call on the capture
// and its sources answers RPC_E_DISCONNECTED.
#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "platform/port.h"
#include "platform/virtual/event_thread.h"
#include "platform/virtual/handler_table.h"
#include "platform/virtual/world.h"

namespace vexcap::virtual_camera {

class VirtualFrameSource;

class VirtualCapture : public platform::Capture,
                       public SessionSink,
                       public std::enable_shared_from_this<VirtualCapture> {
 public:
  explicit VirtualCapture(std::shared_ptr<World> world);
  ~VirtualCapture() override;

  void initialize(const platform::CaptureSettings& settings) override;
  std::vector<std::shared_ptr<platform::FrameSource>> frame_sources() override;
  void close_frame_sources() override;
  std::shared_ptr<platform::FrameReader> create_frame_reader(
      const std::shared_ptr<platform::FrameSource>& source, const std::optional<std::wstring>& subtype) override;
  platform::EventToken add_failed(FailedHandler handler) override;
  void remove_failed(platform::EventToken token) override;
  platform::EventToken add_exclusive_control_status_changed(ExclusiveControlHandler handler) override;
  void remove_exclusive_control_status_changed(platform::EventToken token) override;
  std::optional<hresult> shutdown_if_supported() override;
  void close() override;

  void post_exclusive_control_changed(const platform::ExclusiveControlChange& change) override;
  void post_failed(const platform::CaptureFailure& failure) override;

 private:
  void require_ready();  // caller holds mutex_
  void require_connected();  // caller holds mutex_; throws once the group is removed
  void end_session();

  std::shared_ptr<World> world_;
  EventThread events_;
  // Guards everything below. Lock order: mutex_ before the World lock (closing sources); never
  // held while a handler runs or while World posts to this session.
  std::mutex mutex_;
  bool initialized_ = false;
  bool initialize_failed_ = false;  // a MediaCapture whose initialization failed is spent
  bool shut_down_ = false;
  bool closed_ = false;
  bool session_open_ = false;
  platform::SharingMode mode_ = platform::SharingMode::SharedReadOnly;
  std::shared_ptr<GroupState> group_;
  std::vector<std::shared_ptr<VirtualFrameSource>> sources_;
  TokenCounter tokens_;
  HandlerTable<FailedHandler> failed_handlers_;
  HandlerTable<ExclusiveControlHandler> exclusive_handlers_;
};

class VirtualFrameSource : public platform::FrameSource {
 public:
  VirtualFrameSource(std::shared_ptr<World> world, std::shared_ptr<GroupState> group, std::size_t index,
                     const SessionSink* session, platform::SharingMode mode);
  platform::SourceInfo info() override;
  std::vector<std::shared_ptr<platform::FrameFormat>> supported_formats() override;
  std::shared_ptr<platform::FrameFormat> current_format() override;
  void set_format(const std::shared_ptr<platform::FrameFormat>& format) override;
  std::shared_ptr<platform::SourceController> controller() override;
  platform::ExclusiveControlStatus exclusive_control_status() override;

  void close();
  const SessionSink* session() const { return session_; }
  const std::shared_ptr<GroupState>& group() const { return group_; }
  std::size_t index() const { return index_; }

 private:
  void require_open();  // caller holds the World lock; throws once closed or disconnected

  std::shared_ptr<World> world_;
  std::shared_ptr<GroupState> group_;
  const std::size_t index_;
  const SessionSink* const session_;
  const platform::SharingMode mode_;
  bool closed_ = false;  // guarded by the World lock
};

}  // namespace vexcap::virtual_camera
