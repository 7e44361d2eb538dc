// Bitmaps and buffers: SoftwareBitmap, its locked buffer, and the Windows.Storage.Streams buffer.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "platform/port.h"
#include "platform/virtual/pixel_image.h"

namespace vexcap::virtual_camera {

// Immutable once made, so frames, copies and locks share the pixels freely.
class VirtualBitmap : public platform::Bitmap {
 public:
  explicit VirtualBitmap(PixelImage image);
  platform::PixelFormat pixel_format() override { return image_->format; }
  std::int32_t pixel_width() override { return image_->width; }
  std::int32_t pixel_height() override { return image_->height; }
  // Throws PlatformError(E_INVALIDARG) for a conversion the platform would refuse.
  std::shared_ptr<platform::Bitmap> convert(platform::PixelFormat format) override;
  std::unique_ptr<platform::LockedBitmap> lock_for_read() override;

  const PixelImage& image() const { return *image_; }

 private:
  std::shared_ptr<const PixelImage> image_;
};

class VirtualBuffer : public platform::Buffer {
 public:
  explicit VirtualBuffer(std::uint32_t capacity);
  explicit VirtualBuffer(std::vector<std::uint8_t> contents);  // length = capacity = size
  std::uint32_t length() override;
  void set_length(std::uint32_t length) override;  // throws E_INVALIDARG beyond capacity
  std::uint32_t capacity() override;
  platform::ByteAccess byte_access() override;  // the get step fails once closed
  void close() override;

 private:
  std::mutex mutex_;  // guards every field
  std::vector<std::uint8_t> bytes_;
  std::uint32_t length_ = 0;
  bool closed_ = false;
};

// SoftwareBitmap::CreateCopyFromBuffer: null when the format is not modelled or the buffer
// holds fewer bytes than the layout needs.
std::shared_ptr<platform::Bitmap> bitmap_copy_from_buffer(platform::Buffer& buffer,
                                                          platform::PixelFormat format,
                                                          std::int32_t width, std::int32_t height);

}  // namespace vexcap::virtual_camera
