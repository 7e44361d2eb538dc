#include "platform/windows/imaging.h"

#include "platform/windows/activation.h"
#include "platform/windows/collections.h"
#include "platform/windows/winrt/abi.h"

namespace vexcap::windows {

namespace {

static_assert(int(abi::BitmapPixelFormat::Yuy2) == int(platform::PixelFormat::Yuy2));
static_assert(int(abi::BitmapPixelFormat::Gray16) == int(platform::PixelFormat::Gray16));

ComPtr<abi::ISoftwareBitmapStatics> bitmaps() {
  return activation_factory<abi::ISoftwareBitmapStatics>(class_id::software_bitmap);
}

// A bitmap's buffer locked for reading: the lock and the memory reference stay open while
// the bytes are read, and are closed (unlocking the bitmap) when it goes.
class WinrtLockedBitmap final : public platform::LockedBitmap {
 public:
  explicit WinrtLockedBitmap(ComPtr<abi::IBitmapBuffer> buffer) : buffer_(std::move(buffer)) {
    check(query<abi::IMemoryBuffer>(buffer_)->CreateReference(reference_.put()));
    check_present(reference_);
    check(query<abi::IMemoryBufferByteAccess>(reference_)->GetBuffer(&data_, &capacity_));
  }
  WinrtLockedBitmap(const WinrtLockedBitmap&) = delete;
  WinrtLockedBitmap& operator=(const WinrtLockedBitmap&) = delete;
  ~WinrtLockedBitmap() override {
    // Unlocking cannot fail in a way the reader could act on.
    if (auto closable = reference_.try_as<abi::IClosable>()) closable->Close();
    if (auto closable = buffer_.try_as<abi::IClosable>()) closable->Close();
  }

  std::int32_t plane_count() override {
    INT32 count = 0;
    check(buffer_->GetPlaneCount(&count));
    return count;
  }
  platform::PlaneDescription plane(std::int32_t index) override {
    abi::BitmapPlaneDescription plane{};
    check(buffer_->GetPlaneDescription(index, &plane));
    return {plane.StartIndex, plane.Width, plane.Height, plane.Stride};
  }
  const std::uint8_t* data() override { return data_; }
  std::uint32_t capacity() override { return capacity_; }

 private:
  ComPtr<abi::IBitmapBuffer> buffer_;
  ComPtr<abi::IMemoryBufferReference> reference_;
  BYTE* data_ = nullptr;
  UINT32 capacity_ = 0;
};

}  // namespace

platform::PixelFormat WinrtBitmap::pixel_format() {
  abi::BitmapPixelFormat format = abi::BitmapPixelFormat::Unknown;
  check(bitmap_->get_BitmapPixelFormat(&format));
  return static_cast<platform::PixelFormat>(format);
}

std::int32_t WinrtBitmap::pixel_width() {
  INT32 width = 0;
  check(bitmap_->get_PixelWidth(&width));
  return width;
}

std::int32_t WinrtBitmap::pixel_height() {
  INT32 height = 0;
  check(bitmap_->get_PixelHeight(&height));
  return height;
}

std::shared_ptr<platform::Bitmap> WinrtBitmap::convert(platform::PixelFormat format) {
  ComPtr<abi::ISoftwareBitmap> converted;
  check(bitmaps()->Convert(bitmap_.get(), static_cast<abi::BitmapPixelFormat>(format), converted.put()));
  return bitmap_of(std::move(converted));
}

std::unique_ptr<platform::LockedBitmap> WinrtBitmap::lock_for_read() {
  ComPtr<abi::IBitmapBuffer> buffer;
  check(bitmap_->LockBuffer(abi::BitmapBufferAccessMode::Read, buffer.put()));
  check_present(buffer);
  return std::make_unique<WinrtLockedBitmap>(std::move(buffer));
}

std::uint32_t WinrtBuffer::length() {
  UINT32 length = 0;
  check(buffer_->get_Length(&length));
  return length;
}

void WinrtBuffer::set_length(std::uint32_t length) { check(buffer_->put_Length(length)); }

std::uint32_t WinrtBuffer::capacity() {
  UINT32 capacity = 0;
  check(buffer_->get_Capacity(&capacity));
  return capacity;
}

platform::ByteAccess WinrtBuffer::byte_access() {
  platform::ByteAccess access;
  ComPtr<abi::IBufferByteAccess> bytes;
  access.query_result = buffer_.query(bytes);
  if (FAILED(access.query_result)) return access;
  BYTE* data = nullptr;
  access.get_result = bytes->Buffer(&data);
  if (SUCCEEDED(access.get_result)) access.data = data;
  return access;
}

void WinrtBuffer::close() { close_if_closable(buffer_); }

std::shared_ptr<platform::Bitmap> bitmap_of(ComPtr<abi::ISoftwareBitmap> bitmap) {
  if (!bitmap) return nullptr;
  return std::make_shared<WinrtBitmap>(std::move(bitmap));
}

std::shared_ptr<platform::Buffer> buffer_of(ComPtr<abi::IBuffer> buffer) {
  if (!buffer) return nullptr;
  return std::make_shared<WinrtBuffer>(std::move(buffer));
}

std::shared_ptr<platform::Buffer> create_buffer(std::uint32_t capacity) {
  ComPtr<abi::IBuffer> buffer;
  check(activation_factory<abi::IBufferFactory>(class_id::buffer)->Create(capacity, buffer.put()));
  check_present(buffer);
  return buffer_of(std::move(buffer));
}

std::shared_ptr<platform::Bitmap> create_bitmap_copy_from_buffer(platform::Buffer& buffer, platform::PixelFormat format,
                                                                 std::int32_t width, std::int32_t height) {
  auto* own = dynamic_cast<WinrtBuffer*>(&buffer);
  if (own == nullptr) throw_platform_error(E_INVALIDARG);
  ComPtr<abi::ISoftwareBitmap> bitmap;
  check(bitmaps()->CreateCopyFromBuffer(own->abi().get(), static_cast<abi::BitmapPixelFormat>(format), width, height,
                                        bitmap.put()));
  return bitmap_of(std::move(bitmap));
}

}  // namespace vexcap::windows
