// The virtual platform: the device of every test and of the demo.
#pragma once

#include <memory>

#include "platform/port.h"
#include "platform/virtual/virtual_runtime.h"
#include "platform/virtual/world.h"

namespace vexcap::virtual_camera {

class VirtualPlatform : public platform::Platform {
 public:
  VirtualPlatform();

  VirtualRuntime& runtime() override { return runtime_; }
  // The simulated system behind this platform (scenario, faults, records).
  World& world() { return *world_; }

  std::vector<std::shared_ptr<platform::SourceGroup>> find_all_source_groups() override;
  std::shared_ptr<platform::Capture> create_capture() override;
  std::unique_ptr<platform::DeviceWatcher> create_source_group_watcher() override;
  std::shared_ptr<platform::Buffer> create_buffer(std::uint32_t capacity) override;
  std::shared_ptr<platform::Bitmap> create_bitmap_copy_from_buffer(platform::Buffer& buffer,
                                                                   platform::PixelFormat format,
                                                                   std::int32_t width,
                                                                   std::int32_t height) override;
  hresult create_attributes(std::uint32_t initial_size,
                            std::shared_ptr<platform::Attributes>& attributes) override;
  hresult enum_device_sources(platform::Attributes& attributes,
                              std::vector<std::shared_ptr<platform::DeviceActivate>>& activates) override;
  hresult create_device_source(platform::Attributes& attributes,
                               std::shared_ptr<platform::DeviceSource>& source) override;
  std::optional<std::wstring> system_message(std::uint32_t message_id) override;

 private:
  VirtualRuntime runtime_;
  std::shared_ptr<World> world_;
};

// The process's virtual platform (what platform::current() returns in virtual builds).
VirtualPlatform& virtual_platform();

}  // namespace vexcap::virtual_camera
