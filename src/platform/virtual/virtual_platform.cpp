#include "platform/virtual/virtual_platform.h"

namespace vexcap::virtual_camera {

namespace {
[[noreturn]] void not_modelled_yet() {
  throw platform::PlatformError(HR_NOTIMPL, L"not modelled by the virtual camera yet");
}
}  // namespace

std::vector<std::shared_ptr<platform::SourceGroup>> VirtualPlatform::find_all_source_groups() {
  not_modelled_yet();
}
std::shared_ptr<platform::Capture> VirtualPlatform::create_capture() { not_modelled_yet(); }
std::unique_ptr<platform::DeviceWatcher> VirtualPlatform::create_source_group_watcher() {
  not_modelled_yet();
}
std::shared_ptr<platform::Buffer> VirtualPlatform::create_buffer(std::uint32_t) { not_modelled_yet(); }
std::shared_ptr<platform::Bitmap> VirtualPlatform::create_bitmap_copy_from_buffer(
    platform::Buffer&, platform::PixelFormat, std::int32_t, std::int32_t) {
  not_modelled_yet();
}
hresult VirtualPlatform::create_attributes(std::uint32_t, std::shared_ptr<platform::Attributes>&) {
  return HR_NOTIMPL;
}
hresult VirtualPlatform::enum_device_sources(platform::Attributes&,
                                             std::vector<std::shared_ptr<platform::DeviceActivate>>&) {
  return HR_NOTIMPL;
}
hresult VirtualPlatform::create_device_source(platform::Attributes&,
                                              std::shared_ptr<platform::DeviceSource>&) {
  return HR_NOTIMPL;
}
std::optional<std::wstring> VirtualPlatform::system_message(std::uint32_t) { return std::nullopt; }

VirtualPlatform& virtual_platform() {
  static VirtualPlatform instance;
  return instance;
}

}  // namespace vexcap::virtual_camera

namespace vexcap::platform {
Platform& current() { return virtual_camera::virtual_platform(); }
}  // namespace vexcap::platform
