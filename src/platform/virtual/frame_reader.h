// MediaFrameReader: a producer thread of its own makes frames at the current format's rate on
// the World's clock and raises FrameArrived on that thread. In Realtime mode only the newest
// frame waits to be acquired; in Buffered mode up to kBufferedFrames wait, oldest first.
#pragma once

#include <memory>

#include "platform/port.h"
#include "platform/virtual/world.h"

namespace vexcap::virtual_camera {

class VirtualFrameReader : public platform::FrameReader {
 public:
  static constexpr std::size_t kBufferedFrames = 30;

  VirtualFrameReader(std::shared_ptr<World> world, std::shared_ptr<GroupState> group, std::size_t index,
                     std::optional<std::wstring> subtype);
  ~VirtualFrameReader() override;
  VirtualFrameReader(const VirtualFrameReader&) = delete;
  VirtualFrameReader& operator=(const VirtualFrameReader&) = delete;

  platform::EventToken add_frame_arrived(FrameArrivedHandler handler) override;
  void remove_frame_arrived(platform::EventToken token) override;
  platform::ReaderStartStatus start() override;
  void stop() override;
  void close() override;
  void set_acquisition_mode(platform::AcquisitionMode mode) override;
  std::shared_ptr<platform::Frame> try_acquire_latest_frame() override;

 private:
  struct Core;
  // Shared with the producer thread, which may outlive this object only when the object is
  // released by a handler running on that very thread.
  std::shared_ptr<Core> core_;
};

}  // namespace vexcap::virtual_camera
