// Puts a frame record's pixels upright according to the rotation its source declares.
#pragma once

#include "platform/port.h"
#include "vexcap/vexcap.h"

namespace vexcap::frames {

// `capacity`: bytes at record.data. Reads the rotation of the source's current format; 90
// and 270 move the pixels into a new C-heap buffer (the old one is freed), 180 works in place;
// width, height and stride follow. No source, no rotation or another angle changes nothing.
void rotate_record(platform::FrameSource* source, vexcap_frame& record, std::size_t capacity);

}  // namespace vexcap::frames
