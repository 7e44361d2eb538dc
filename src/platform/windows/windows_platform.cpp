// The Windows platform: the product's adapter behind the port.
#include "platform/port.h"
#include "platform/windows/capture.h"
#include "platform/windows/device_enumeration.h"
#include "platform/windows/device_source.h"
#include "platform/windows/device_watcher.h"
#include "platform/windows/imaging.h"
#include "platform/windows/mf_attributes.h"
#include "platform/windows/platform_error.h"
#include "platform/windows/source_group.h"
#include "platform/windows/windows_runtime.h"

namespace vexcap::windows {

namespace {

class WindowsPlatform final : public platform::Platform {
 public:
  platform::Runtime& runtime() override { return runtime_; }

  std::vector<std::shared_ptr<platform::SourceGroup>> find_all_source_groups() override {
    return windows::find_all_source_groups();
  }
  std::shared_ptr<platform::Capture> create_capture() override { return std::make_shared<WinrtCapture>(); }
  std::unique_ptr<platform::DeviceWatcher> create_source_group_watcher() override {
    return windows::create_source_group_watcher();
  }
  std::shared_ptr<platform::Buffer> create_buffer(std::uint32_t capacity) override {
    return windows::create_buffer(capacity);
  }
  std::shared_ptr<platform::Bitmap> create_bitmap_copy_from_buffer(platform::Buffer& buffer,
                                                                   platform::PixelFormat format,
                                                                   std::int32_t width,
                                                                   std::int32_t height) override {
    return windows::create_bitmap_copy_from_buffer(buffer, format, width, height);
  }
  hresult create_attributes(std::uint32_t initial_size,
                            std::shared_ptr<platform::Attributes>& attributes) override {
    return windows::create_attributes(initial_size, attributes);
  }
  hresult enum_device_sources(platform::Attributes& attributes,
                              std::vector<std::shared_ptr<platform::DeviceActivate>>& activates) override {
    return windows::enum_device_sources(attributes, activates);
  }
  hresult create_device_source(platform::Attributes& attributes,
                               std::shared_ptr<platform::DeviceSource>& source) override {
    return windows::create_device_source(attributes, source);
  }
  std::optional<std::wstring> system_message(std::uint32_t message_id) override {
    return windows::system_message(message_id);
  }

 private:
  WindowsRuntime runtime_;
};

}  // namespace

}  // namespace vexcap::windows

namespace vexcap::platform {
Platform& current() {
  static windows::WindowsPlatform instance;  // the process's one platform
  return instance;
}
}  // namespace vexcap::platform
