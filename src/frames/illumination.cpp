#include "frames/illumination.h"

#include "log/log.h"

namespace vexcap::frames {

hresult read_frame_illumination(platform::Frame& frame, std::uint64_t& value) {
  const platform::IlluminationRead read = frame.read_illumination();
  if (failed(read.get_service)) {
    VXLOG('E', "Failed to get IMFGetService (HRESULT 0x%08x)", static_cast<unsigned>(read.get_service));
    return read.get_service;
  }
  if (failed(read.get_sample)) {
    VXLOG('E', "Failed to get IMFSample (HRESULT 0x%08x)", static_cast<unsigned>(read.get_sample));
    return read.get_sample;
  }
  // Past this point the sample was reached: a missing flag counts as "lit".
  if (failed(read.get_capture_metadata)) {
    VXLOG('E', "MFSampleExtension_CaptureMetadata not available (HRESULT 0x%08x)",
          static_cast<unsigned>(read.get_capture_metadata));
    value = 1;
    return read.get_capture_metadata;
  }
  if (failed(read.get_illumination)) {
    VXLOG('W', "Illumination: Not available (HRESULT 0x%08x)",
          static_cast<unsigned>(read.get_illumination));
    value = 1;
    return read.get_illumination;
  }
  value = read.illumination;
  VXLOG('D', "Illumination: %I64u", value);
  return HR_OK;
}

}  // namespace vexcap::frames
