// One MediaFrameReference: time, format, pixels (a bitmap, or a buffer only) and the
// capture-metadata chain behind it.
#pragma once

#include <memory>
#include <mutex>

#include "platform/port.h"
#include "platform/virtual/imaging.h"
#include "platform/virtual/scenario.h"

namespace vexcap::virtual_camera {

struct FrameContents {
  std::int64_t time = 0;  // 100 ns units
  FormatModel format;      // as delivered (the reader's subtype when it converts)
  std::shared_ptr<VirtualBitmap> bitmap;  // null for buffer-only frames
  std::shared_ptr<VirtualBuffer> buffer;  // null for bitmap frames
  platform::IlluminationRead illumination;
};

// The bitmap layout a subtype is delivered in ("L8" -> Gray8, "YUY2" -> Yuy2, ...); Unknown for
// RGB24 and subtypes no bitmap is made of. Subtypes compare without regard to case.
platform::PixelFormat layout_of_subtype(const std::wstring& subtype);
std::wstring upper_case(std::wstring text);

// What the pattern frame n of a source looks like as delivered through a reader that asked
// for `reader_subtype` (or for none). See pixel_image.h for the pattern.
// How a source lays its bitmaps out in memory.
struct FrameLayoutModel {
  std::uint32_t stride_padding = 0;
  std::uint32_t nv12_plane_rows_alignment = 0;
};

FrameContents make_frame_contents(const FormatModel& format, const std::optional<std::wstring>& reader_subtype,
                                  std::uint64_t n, std::int64_t time, IlluminationMetadata metadata,
                                  const FrameLayoutModel& layout, bool unsupported,
                                  const Rgb24Model& rgb24 = {});

class VirtualFrame : public platform::Frame {
 public:
  explicit VirtualFrame(FrameContents contents) : contents_(std::move(contents)) {}
  std::int64_t system_relative_time() override;
  std::shared_ptr<platform::FrameFormat> format() override;
  std::shared_ptr<platform::Bitmap> software_bitmap() override;
  std::shared_ptr<platform::Buffer> buffer() override;
  // RGB24 buffers become a Bgra8 bitmap (bytes R G B read as red, green, blue; pixels past the
  // end of a short buffer are black); buffers of other layouts give null.
  std::shared_ptr<platform::Bitmap> bitmap_from_buffer() override;
  platform::IlluminationRead read_illumination() override;
  void close() override;

 private:
  void require_open();  // caller holds mutex_

  std::mutex mutex_;  // guards closed_
  bool closed_ = false;
  const FrameContents contents_;
};

}  // namespace vexcap::virtual_camera
