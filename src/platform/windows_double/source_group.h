// Windows.Media.Capture.Frames.MediaFrameSourceGroup: the statics (FindAllAsync, the device
// selector), the groups and their source infos, over the virtual camera's enumeration.
#pragma once

#include <memory>
#include <string>

#include "platform/port.h"
#include "platform/windows_double/activation_factory.h"
#include "platform/windows_double/unmodelled.h"

namespace vexcap::windows_double {

// The AQS filter GetDeviceSelector hands out.
const std::wstring& source_group_selector();

class SourceGroup final : public Object<SourceGroup, Threading::Agile, abi::UnmodelledIMediaFrameSourceGroup<SourceGroup>> {
 public:
  explicit SourceGroup(std::shared_ptr<platform::SourceGroup> group)
      : Object("Windows.Media.Capture.Frames.MediaFrameSourceGroup"), group_(std::move(group)) {}
  HRESULT STDMETHODCALLTYPE get_Id(HSTRING* value) override;
  HRESULT STDMETHODCALLTYPE get_DisplayName(HSTRING* value) override;
  HRESULT STDMETHODCALLTYPE get_SourceInfos(abi::IVectorView<abi::MediaFrameSourceInfo>** value) override;

  const std::shared_ptr<platform::SourceGroup>& port() const { return group_; }

 private:
  void retire() override { group_.reset(); }
  std::shared_ptr<platform::SourceGroup> group_;
};

class SourceInfo final : public Object<SourceInfo, Threading::Agile, abi::UnmodelledIMediaFrameSourceInfo<SourceInfo>> {
 public:
  explicit SourceInfo(platform::SourceInfo info)
      : Object("Windows.Media.Capture.Frames.MediaFrameSourceInfo"), info_(std::move(info)) {}
  HRESULT STDMETHODCALLTYPE get_Id(HSTRING* value) override;
  HRESULT STDMETHODCALLTYPE get_MediaStreamType(abi::MediaStreamType* value) override;
  HRESULT STDMETHODCALLTYPE get_SourceKind(abi::MediaFrameSourceKind* value) override;
  HRESULT STDMETHODCALLTYPE get_DeviceInformation(abi::IDeviceInformation** value) override;

 private:
  const platform::SourceInfo info_;
};

class SourceGroupStatics final
    : public Object<SourceGroupStatics, Threading::Agile, UnmodelledActivationFactory<SourceGroupStatics>,
                    abi::UnmodelledIMediaFrameSourceGroupStatics<SourceGroupStatics>> {
 public:
  SourceGroupStatics() : Object("Windows.Media.Capture.Frames.MediaFrameSourceGroup") {}
  HRESULT STDMETHODCALLTYPE FindAllAsync(
      abi::IAsyncOperation<abi::IVectorView<abi::MediaFrameSourceGroup>>** value) override;
  HRESULT STDMETHODCALLTYPE GetDeviceSelector(HSTRING* value) override;
};

}  // namespace vexcap::windows_double
