// Frames as the writer loop and the checks take them: one at a time, given back to the library
// when the owner goes.
#pragma once

#include "vexcap/vexcap.h"

namespace vexcap::tool {

class ReturnedFrame {
 public:
  explicit ReturnedFrame(vexcap_frame* frame) : frame_(frame) {}
  ~ReturnedFrame() { vexcap_return_frame(frame_); }
  ReturnedFrame(const ReturnedFrame&) = delete;
  ReturnedFrame& operator=(const ReturnedFrame&) = delete;
  const vexcap_frame& operator*() const { return *frame_; }
  const vexcap_frame* operator->() const { return frame_; }

 private:
  vexcap_frame* frame_;
};

}  // namespace vexcap::tool
