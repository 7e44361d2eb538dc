// MediaFrameSourceGroup behind the port, and the enumeration of all groups.
#pragma once

#include <memory>
#include <vector>

#include "platform/port.h"
#include "platform/windows/com_ptr.h"
#include "platform/windows/winrt/frames_abi.h"

namespace vexcap::windows {

class WinrtSourceGroup final : public platform::SourceGroup {
 public:
  explicit WinrtSourceGroup(ComPtr<abi::IMediaFrameSourceGroup> group) : group_(std::move(group)) {}

  std::optional<std::wstring> id() const override;
  std::optional<std::wstring> display_name() const override;
  std::optional<std::vector<platform::SourceInfo>> source_infos() const override;
  void close() override;

  const ComPtr<abi::IMediaFrameSourceGroup>& abi() const { return group_; }

 private:
  ComPtr<abi::IMediaFrameSourceGroup> group_;
};

platform::SourceInfo source_info_of(const ComPtr<abi::IMediaFrameSourceInfo>& info);

// MediaFrameSourceGroup::FindAllAsync, waited for; null entries stay null.
std::vector<std::shared_ptr<platform::SourceGroup>> find_all_source_groups();

}  // namespace vexcap::windows
