// Windows.Media.Devices: the video device controller of a frame source and its exposure, ISO
// speed, torch and infrared torch controls, over the virtual camera's source controller.
#pragma once

#include <memory>

#include "platform/port.h"
#include "platform/windows_double/unmodelled.h"

namespace vexcap::windows_double {

class VideoDeviceController final
    : public Object<VideoDeviceController, Threading::Agile, abi::UnmodelledIVideoDeviceController<VideoDeviceController>,
                    abi::UnmodelledIAdvancedVideoCaptureDeviceController2<VideoDeviceController>,
                    abi::UnmodelledIAdvancedVideoCaptureDeviceController7<VideoDeviceController>> {
 public:
  explicit VideoDeviceController(std::shared_ptr<platform::SourceController> controller)
      : Object("Windows.Media.Devices.VideoDeviceController"), controller_(std::move(controller)) {}
  HRESULT STDMETHODCALLTYPE get_ExposureControl(abi::IExposureControl** value) override;
  HRESULT STDMETHODCALLTYPE get_IsoSpeedControl(abi::IIsoSpeedControl** value) override;
  HRESULT STDMETHODCALLTYPE get_TorchControl(abi::ITorchControl** value) override;
  HRESULT STDMETHODCALLTYPE get_InfraredTorchControl(abi::IInfraredTorchControl** value) override;

 private:
  void retire() override { controller_.reset(); }
  std::shared_ptr<platform::SourceController> controller_;
};

}  // namespace vexcap::windows_double
