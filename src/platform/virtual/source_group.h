// MediaFrameSourceGroup and MediaFrameFormat as the enumeration hands them out: snapshots of
// the live scenario, holding the live group for capture initialization.
#pragma once

#include <memory>

#include "platform/port.h"
#include "platform/virtual/world.h"

namespace vexcap::virtual_camera {

class VirtualSourceGroup : public platform::SourceGroup {
 public:
  explicit VirtualSourceGroup(std::shared_ptr<GroupState> group);  // caller holds the World lock
  std::optional<std::wstring> id() const override { return id_; }
  std::optional<std::wstring> display_name() const override { return display_name_; }
  std::optional<std::vector<platform::SourceInfo>> source_infos() const override { return infos_; }
  void close() override {}

  const std::shared_ptr<GroupState>& state() const { return group_; }

 private:
  std::shared_ptr<GroupState> group_;
  std::optional<std::wstring> id_;
  std::optional<std::wstring> display_name_;
  std::optional<std::vector<platform::SourceInfo>> infos_;
};

class VirtualFrameFormat : public platform::FrameFormat {
 public:
  explicit VirtualFrameFormat(FormatModel model) : model_(std::move(model)) {}
  std::wstring major_type() const override { return model_.major_type; }
  std::wstring subtype() const override { return model_.subtype; }
  std::uint32_t width() const override { return model_.width; }
  std::uint32_t height() const override { return model_.height; }
  std::uint32_t frame_rate_numerator() const override { return model_.frame_rate_numerator; }
  std::uint32_t frame_rate_denominator() const override { return model_.frame_rate_denominator; }
  std::optional<std::wstring> rotation_text() const override {
    if (!model_.rotation) return std::nullopt;
    return std::to_wstring(*model_.rotation);
  }
  const FormatModel& model() const { return model_; }

 private:
  FormatModel model_;
};

platform::SourceInfo source_info_of(const SourceModel& source);

}  // namespace vexcap::virtual_camera
