#include "platform/virtual/virtual_platform.h"

#include "platform/virtual/capture.h"
#include "platform/virtual/device_watcher.h"
#include "platform/virtual/imaging.h"
#include "platform/virtual/kernel_streaming.h"
#include "platform/virtual/source_group.h"

namespace vexcap::virtual_camera {

VirtualPlatform::VirtualPlatform() : world_(std::make_shared<World>()) {
  runtime_.count_sessions_with([world = world_.get()] { return world->open_session_count(); });
}

std::vector<std::shared_ptr<platform::SourceGroup>> VirtualPlatform::find_all_source_groups() {
  world_->enter_call_or_throw(PlatformCall::FindAllSourceGroups);
  std::vector<std::shared_ptr<platform::SourceGroup>> result;
  auto groups = world_->groups();
  std::lock_guard lock(world_->mutex());
  for (auto& group : groups)
    if (group->model.null_in_enumeration)
      result.push_back(nullptr);
    else if (group->model.enabled)
      result.push_back(std::make_shared<VirtualSourceGroup>(group));
  return result;
}

std::shared_ptr<platform::Capture> VirtualPlatform::create_capture() {
  return std::make_shared<VirtualCapture>(world_);
}

std::unique_ptr<platform::DeviceWatcher> VirtualPlatform::create_source_group_watcher() {
  return std::make_unique<VirtualDeviceWatcher>(world_);
}

std::shared_ptr<platform::Buffer> VirtualPlatform::create_buffer(std::uint32_t capacity) {
  return std::make_shared<VirtualBuffer>(capacity);
}

std::shared_ptr<platform::Bitmap> VirtualPlatform::create_bitmap_copy_from_buffer(platform::Buffer& buffer,
                                                                                  platform::PixelFormat format,
                                                                                  std::int32_t width,
                                                                                  std::int32_t height) {
  return bitmap_copy_from_buffer(buffer, format, width, height);
}

hresult VirtualPlatform::create_attributes(std::uint32_t, std::shared_ptr<platform::Attributes>& attributes) {
  attributes = std::make_shared<VirtualAttributes>();
  return HR_OK;
}

hresult VirtualPlatform::enum_device_sources(platform::Attributes& attributes,
                                             std::vector<std::shared_ptr<platform::DeviceActivate>>& activates) {
  return virtual_camera::enum_device_sources(*world_, attributes, activates);
}

hresult VirtualPlatform::create_device_source(platform::Attributes& attributes,
                                              std::shared_ptr<platform::DeviceSource>& source) {
  return virtual_camera::create_device_source(world_, attributes, source);
}

std::optional<std::wstring> VirtualPlatform::system_message(std::uint32_t message_id) {
  switch (message_id) {
    case 0x80070490u: case 1168: return L"Element not found.";
    case 0x80070492u: case 1170: return L"The property set specified does not exist on the object.";
    case 0x80070057u: case 87: return L"The parameter is incorrect.";
    case 0x80004005u: return L"Unspecified error";
    default: return std::nullopt;
  }
}

// Never destroyed: like a machine's camera system it outlives every thread of the library. A
// host that leaves without vexcap_exit has its request thread stopped by the library's own
// static teardown, which runs after this object's would have (it was made later, on first use).
VirtualPlatform& virtual_platform() {
  static VirtualPlatform* const instance = new VirtualPlatform;
  return *instance;
}

}  // namespace vexcap::virtual_camera

namespace vexcap::platform {
Platform& current() { return virtual_camera::virtual_platform(); }
}  // namespace vexcap::platform
