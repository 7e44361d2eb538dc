#include "platform/windows/frame.h"

#include <optional>

#include "platform/windows/buffer_bitmap.h"
#include "platform/windows/capture_metadata.h"
#include "platform/windows/collections.h"
#include "platform/windows/frame_format.h"
#include "platform/windows/imaging.h"
#include "platform/windows/winrt/abi.h"

namespace vexcap::windows {

std::int64_t WinrtFrame::system_relative_time() {
  ComPtr<abi::IReference<abi::TimeSpan>> time;
  check(frame_->get_SystemRelativeTime(time.put()));
  if (!time) return 0;  // the source gave the frame no time
  abi::TimeSpan value{};
  check(time->get_Value(&value));
  return value.Duration;
}

std::shared_ptr<platform::FrameFormat> WinrtFrame::format() {
  ComPtr<abi::IMediaFrameFormat> format;
  check(frame_->get_Format(format.put()));
  return frame_format_of(std::move(format));
}

std::shared_ptr<platform::Bitmap> WinrtFrame::software_bitmap() {
  ComPtr<abi::IVideoMediaFrame> video;
  check(frame_->get_VideoMediaFrame(video.put()));
  if (!video) return nullptr;
  ComPtr<abi::ISoftwareBitmap> bitmap;
  check(video->get_SoftwareBitmap(bitmap.put()));
  return bitmap_of(std::move(bitmap));
}

std::shared_ptr<platform::Buffer> WinrtFrame::buffer() {
  ComPtr<abi::IBufferMediaFrame> frame;
  check(frame_->get_BufferMediaFrame(frame.put()));
  if (!frame) return nullptr;
  ComPtr<abi::IBuffer> buffer;
  check(frame->get_Buffer(buffer.put()));
  return buffer_of(std::move(buffer));
}

std::shared_ptr<platform::Bitmap> WinrtFrame::bitmap_from_buffer() {
  auto frame_buffer = buffer();
  auto frame_format = format();
  if (!frame_buffer || !frame_format) return nullptr;
  return bitmap_from_frame_buffer(static_cast<WinrtBuffer&>(*frame_buffer), *frame_format);
}

namespace {

// IInfraredMediaFrame::IsIlluminated of an infrared video frame; nullopt for other frames.
std::optional<bool> infrared_illumination(const ComPtr<abi::IMediaFrameReference>& frame) {
  ComPtr<abi::IVideoMediaFrame> video;
  if (FAILED(frame->get_VideoMediaFrame(video.put())) || !video) return std::nullopt;
  ComPtr<abi::IInfraredMediaFrame> infrared;
  if (FAILED(video->get_InfraredMediaFrame(infrared.put())) || !infrared) return std::nullopt;
  boolean illuminated = false;
  if (FAILED(infrared->get_IsIlluminated(&illuminated))) return std::nullopt;
  return illuminated != 0;
}

}  // namespace

// The capture-metadata chain where the frame reference answers IMFGetService (Microsoft
// documents that service for other objects, and it is not always there); otherwise the
// infrared frame's IsIlluminated, which is documented for every infrared frame.
platform::IlluminationRead WinrtFrame::read_illumination() {
  platform::IlluminationRead read = read_illumination_from_sample(frame_.get());
  if (SUCCEEDED(read.get_service)) return read;
  if (auto illuminated = infrared_illumination(frame_)) {
    platform::IlluminationRead from_frame;
    from_frame.illumination = *illuminated ? 1 : 0;
    return from_frame;
  }
  return read;
}

void WinrtFrame::close() { close_if_closable(frame_); }

}  // namespace vexcap::windows
