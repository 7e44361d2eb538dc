// Turns an RGB24 buffer frame into an NV12 bitmap with the library's own arithmetic.
#pragma once

#include <memory>

#include "common/hresult.h"
#include "platform/port.h"

namespace vexcap::frames {

// True for the subtype "RGB24" in any letter case.
bool is_rgb24_subtype(const std::wstring& subtype);

// On success (HR_OK) `slot` holds an NV12 bitmap of the frame's size. Every failure is logged
// and answered; `slot` is then left alone.
hresult convert_rgb24_frame_to_nv12(platform::Frame& frame, platform::Platform& platform,
                                    std::shared_ptr<platform::Bitmap>& slot);

}  // namespace vexcap::frames
