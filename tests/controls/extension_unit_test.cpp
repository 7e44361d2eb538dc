// The extension unit's loading where no virtual camera can take it: a platform that fails to
// create attribute stores, hands out a null activation object, or is loaded a second time.
// Everything past the device source runs on virtual cameras through the exports.
#include "controls/extension_unit.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/log_capture.h"

namespace vexcap::controls {
namespace {

class Attributes final : public platform::Attributes {
 public:
  hresult set_guid(const platform::Guid&, const platform::Guid&) override { return HR_OK; }
  hresult set_string(const platform::Guid&, const std::wstring&) override { return HR_OK; }
};

class Activate final : public platform::DeviceActivate {
 public:
  hresult symbolic_link(std::wstring& out) override {
    out = L"\\\\?\\USB#VID_1234&PID_5678#cam";
    return HR_OK;
  }
};

// A source without nodes: loading finds no unit but keeps the source.
class Source final : public platform::DeviceSource, public platform::KsControl, public platform::KsTopology {
 public:
  int shutdowns = 0;
  hresult shutdown() override { return ++shutdowns, HR_OK; }
  hresult query_ks_control(std::shared_ptr<platform::KsControl>& out) override {
    out = std::shared_ptr<platform::KsControl>(std::shared_ptr<void>(), this);
    return HR_OK;
  }
  hresult query_topology(std::shared_ptr<platform::KsTopology>& out) override {
    out = std::shared_ptr<platform::KsTopology>(std::shared_ptr<void>(), this);
    return HR_OK;
  }
  hresult property(const std::uint8_t*, std::uint32_t, std::uint8_t*, std::uint32_t, std::uint32_t*) override {
    return HR_FAIL;
  }
  hresult node_count(std::uint32_t* count) override { return *count = 0, HR_OK; }
  hresult node_type(std::uint32_t, platform::Guid*) override { return HR_FAIL; }
};

class DevicePlatform final : public platform::Platform {
 public:
  hresult create_attributes_result = HR_OK;
  std::vector<std::shared_ptr<platform::DeviceActivate>> activates{std::make_shared<Activate>()};
  std::shared_ptr<Source> source = std::make_shared<Source>();

  hresult create_attributes(std::uint32_t, std::shared_ptr<platform::Attributes>& out) override {
    if (failed(create_attributes_result)) return create_attributes_result;
    out = std::make_shared<Attributes>();
    return HR_OK;
  }
  hresult enum_device_sources(platform::Attributes&, std::vector<std::shared_ptr<platform::DeviceActivate>>& out) override {
    out = activates;
    return HR_OK;
  }
  hresult create_device_source(platform::Attributes&, std::shared_ptr<platform::DeviceSource>& out) override {
    out = source;
    return HR_OK;
  }
  std::optional<std::wstring> system_message(std::uint32_t) override { return std::nullopt; }
  platform::Runtime& runtime() override { throw unused(); }
  std::vector<std::shared_ptr<platform::SourceGroup>> find_all_source_groups() override { throw unused(); }
  std::shared_ptr<platform::Capture> create_capture() override { throw unused(); }
  std::unique_ptr<platform::DeviceWatcher> create_source_group_watcher() override { throw unused(); }
  std::shared_ptr<platform::Buffer> create_buffer(std::uint32_t) override { throw unused(); }
  std::shared_ptr<platform::Bitmap> create_bitmap_copy_from_buffer(platform::Buffer&, platform::PixelFormat,
                                                                   std::int32_t, std::int32_t) override {
    throw unused();
  }

 private:
  static std::logic_error unused() { return std::logic_error("not used by these tests"); }
};

TEST(ExtensionUnitOnAFakePlatform, FailuresBeforeTheDeviceSource) {
  testing::LogCapture log;
  DevicePlatform platform;
  ExtensionUnit xu;
  platform.activates = {nullptr};
  EXPECT_EQ(xu.load(platform, 0), HR_FAIL);
  EXPECT_EQ(log.lines(), std::vector<std::string>{"E: Unexpected null activate"});

  platform.create_attributes_result = hr(0x8007000E);
  log.clear();
  EXPECT_EQ(xu.load(platform, 0), hr(0x8007000E));
  EXPECT_EQ(log.lines(), (std::vector<std::string>{"E: MFCreateAttributes failed: 8007000e\n",
                                                   "E: Failed creating enumeration attributes: 8007000e"}));
  EXPECT_FALSE(xu.has_control());
  std::uint32_t out = 7;
  EXPECT_EQ(xu.read_rgb_status(out), HR_FAIL);
  EXPECT_EQ(out, 7u);
}

TEST(ExtensionUnitOnAFakePlatform, LoadingAgainShutsThePreviousSourceDown) {
  DevicePlatform platform;
  ExtensionUnit xu;
  EXPECT_EQ(xu.load(platform, 1), HR_MF_NOT_FOUND);  // no unit, but the source stays open
  EXPECT_EQ(platform.source->shutdowns, 0);
  EXPECT_EQ(xu.load(platform, 1), HR_MF_NOT_FOUND);
  EXPECT_EQ(platform.source->shutdowns, 1);
}

}  // namespace
}  // namespace vexcap::controls
