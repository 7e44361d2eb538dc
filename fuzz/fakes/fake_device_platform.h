// The Media Foundation side of a platform: attribute stores that record what was set, one
// camera's activation object and device source with a topology. Other platform calls throw.
#pragma once

#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "fake_ks_control.h"
#include "platform/port.h"

namespace vexcap::testing {

class FakeAttributes final : public platform::Attributes {
 public:
  std::vector<std::pair<platform::Guid, platform::Guid>> guids;
  std::vector<std::pair<platform::Guid, std::wstring>> strings;
  hresult set_guid(const platform::Guid& key, const platform::Guid& value) override {
    guids.emplace_back(key, value);
    return 0;
  }
  hresult set_string(const platform::Guid& key, const std::wstring& value) override {
    strings.emplace_back(key, value);
    return 0;
  }
};

class FakeActivate final : public platform::DeviceActivate {
 public:
  std::wstring link = L"\\\\?\\USB#VID_1234&PID_5678#cam";
  hresult symbolic_link(std::wstring& out) override {
    out = link;
    return 0;
  }
};

class FakeTopology final : public platform::KsTopology {
 public:
  std::vector<platform::Guid> nodes;
  hresult node_count(std::uint32_t* count) override {
    *count = static_cast<std::uint32_t>(nodes.size());
    return 0;
  }
  hresult node_type(std::uint32_t index, platform::Guid* type) override {
    if (index >= nodes.size()) return hr(0x80070057);
    *type = nodes[index];
    return 0;
  }
};

class FakeDeviceSource final : public platform::DeviceSource {
 public:
  std::shared_ptr<FakeKsControl> control = std::make_shared<FakeKsControl>();
  std::shared_ptr<FakeTopology> topology = std::make_shared<FakeTopology>();
  int shutdowns = 0;
  hresult shutdown() override {
    ++shutdowns;
    return 0;
  }
  hresult query_ks_control(std::shared_ptr<platform::KsControl>& out) override {
    out = control;
    return 0;
  }
  hresult query_topology(std::shared_ptr<platform::KsTopology>& out) override {
    out = topology;
    return 0;
  }
};

class FakeDevicePlatform final : public platform::Platform {
 public:
  std::vector<std::shared_ptr<FakeAttributes>> stores;  // in creation order
  std::vector<std::shared_ptr<platform::DeviceActivate>> activates{
      std::make_shared<FakeActivate>()};
  std::shared_ptr<FakeDeviceSource> source = std::make_shared<FakeDeviceSource>();
  hresult create_attributes_result = 0;
  std::map<std::uint32_t, std::wstring> messages;
  std::vector<std::uint32_t> message_queries;

  hresult create_attributes(std::uint32_t, std::shared_ptr<platform::Attributes>& out) override {
    if (create_attributes_result < 0) return create_attributes_result;
    stores.push_back(std::make_shared<FakeAttributes>());
    out = stores.back();
    return 0;
  }
  hresult enum_device_sources(platform::Attributes&,
                              std::vector<std::shared_ptr<platform::DeviceActivate>>& out) override {
    out = activates;
    return 0;
  }
  hresult create_device_source(platform::Attributes&,
                               std::shared_ptr<platform::DeviceSource>& out) override {
    out = source;
    return 0;
  }
  std::optional<std::wstring> system_message(std::uint32_t id) override {
    message_queries.push_back(id);
    auto found = messages.find(id);
    if (found == messages.end()) return std::nullopt;
    return found->second;
  }

  platform::Runtime& runtime() override { throw unused(); }
  std::vector<std::shared_ptr<platform::SourceGroup>> find_all_source_groups() override {
    throw unused();
  }
  std::shared_ptr<platform::Capture> create_capture() override { throw unused(); }
  std::unique_ptr<platform::DeviceWatcher> create_source_group_watcher() override {
    throw unused();
  }
  std::shared_ptr<platform::Buffer> create_buffer(std::uint32_t) override { throw unused(); }
  std::shared_ptr<platform::Bitmap> create_bitmap_copy_from_buffer(platform::Buffer&,
                                                                   platform::PixelFormat,
                                                                   std::int32_t,
                                                                   std::int32_t) override {
    throw unused();
  }

 private:
  static std::logic_error unused() { return std::logic_error("not used by these tests"); }
};

}  // namespace vexcap::testing
