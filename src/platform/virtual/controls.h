// The frame source's controller: extended-id properties (face-auth mode, LLC) and the typed
// controls of its video device controller. Controls act on the live source, so what one
// session applies every other session sees; a shared read-only session cannot apply anything.
// Once the group is removed every call answers RPC_E_DISCONNECTED.
#pragma once

#include <memory>

#include "platform/port.h"
#include "platform/virtual/world.h"

namespace vexcap::virtual_camera {

// A handle on one live source.
class SourceHandle {
 public:
  SourceHandle(std::shared_ptr<World> world, std::shared_ptr<GroupState> group, std::size_t index, bool exclusive)
      : world_(std::move(world)), group_(std::move(group)), index_(index), exclusive_(exclusive) {}

 protected:
  SourceModel& source() { return group_->model.sources[index_]; }  // caller holds the World lock
  void record(ControlKind kind, double value);                  // caller holds the World lock
  void require_control() const;  // throws unless the session holds exclusive control
  void require_connected() const;  // caller holds the World lock; throws once the group is removed

  std::shared_ptr<World> world_;
  std::shared_ptr<GroupState> group_;
  std::size_t index_;
  bool exclusive_;
};

class VirtualSourceController : public platform::SourceController, private SourceHandle {
 public:
  using SourceHandle::SourceHandle;
  platform::GetPropertyResult get_property_by_extended_id(const std::vector<std::uint8_t>& id,
                                                          std::optional<std::uint32_t> max_size) override;
  platform::SetPropertyStatus set_property_by_extended_id(const std::vector<std::uint8_t>& id,
                                                          const std::vector<std::uint8_t>& value) override;
  std::shared_ptr<platform::ExposureControl> exposure_control() override;
  std::shared_ptr<platform::IsoSpeedControl> iso_speed_control() override;
  std::shared_ptr<platform::TorchControl> torch_control() override;
  std::shared_ptr<platform::InfraredTorchControl> infrared_torch_control() override;

 private:
  platform::GetPropertyResult answer_get(const std::vector<std::uint8_t>& id, std::optional<std::uint32_t> max_size);
  platform::SetPropertyStatus apply_set(const std::vector<std::uint8_t>& id, const std::vector<std::uint8_t>& value);
};

}  // namespace vexcap::virtual_camera
