// SoftwareBitmap and Windows.Storage.Streams.Buffer behind the port.
#pragma once

#include <memory>

#include "platform/port.h"
#include "platform/windows/com_ptr.h"
#include "platform/windows/winrt/imaging_abi.h"

namespace vexcap::windows {

class WinrtBitmap final : public platform::Bitmap {
 public:
  explicit WinrtBitmap(ComPtr<abi::ISoftwareBitmap> bitmap) : bitmap_(std::move(bitmap)) {}

  platform::PixelFormat pixel_format() override;
  std::int32_t pixel_width() override;
  std::int32_t pixel_height() override;
  std::shared_ptr<platform::Bitmap> convert(platform::PixelFormat format) override;
  std::unique_ptr<platform::LockedBitmap> lock_for_read() override;

 private:
  ComPtr<abi::ISoftwareBitmap> bitmap_;
};

class WinrtBuffer final : public platform::Buffer {
 public:
  explicit WinrtBuffer(ComPtr<abi::IBuffer> buffer) : buffer_(std::move(buffer)) {}

  std::uint32_t length() override;
  void set_length(std::uint32_t length) override;
  std::uint32_t capacity() override;
  platform::ByteAccess byte_access() override;
  void close() override;

  const ComPtr<abi::IBuffer>& abi() const { return buffer_; }

 private:
  ComPtr<abi::IBuffer> buffer_;
};

// Null for a null object.
std::shared_ptr<platform::Bitmap> bitmap_of(ComPtr<abi::ISoftwareBitmap> bitmap);
std::shared_ptr<platform::Buffer> buffer_of(ComPtr<abi::IBuffer> buffer);

// Buffer's IBufferFactory::Create.
std::shared_ptr<platform::Buffer> create_buffer(std::uint32_t capacity);

// SoftwareBitmap::CreateCopyFromBuffer; null when no bitmap results.
std::shared_ptr<platform::Bitmap> create_bitmap_copy_from_buffer(platform::Buffer& buffer, platform::PixelFormat format,
                                                                 std::int32_t width, std::int32_t height);

}  // namespace vexcap::windows
