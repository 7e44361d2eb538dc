// The frame-arrived work: takes the reader's newest frame, builds a frame record with a
// private copy of its pixels and hands it to the client's host callback.
#pragma once

#include "capture/frame_stream.h"
#include "common/hresult.h"
#include "platform/port.h"

namespace vexcap::capture {

// Answers HR_OK to keep receiving frames, HR_DISCONNECTED when the host's callback asked to
// stop, or the code of a platform failure (the record is then freed).
hresult deliver_newest_frame(FrameStream& stream, platform::FrameReader& reader);

}  // namespace vexcap::capture
