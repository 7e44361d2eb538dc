#include "platform/virtual/imaging.h"

#include "platform/virtual/known_ids.h"

namespace vexcap::virtual_camera {

namespace {

class VirtualLockedBitmap : public platform::LockedBitmap {
 public:
  explicit VirtualLockedBitmap(std::shared_ptr<const PixelImage> image) : image_(std::move(image)) {}
  std::int32_t plane_count() override { return std::int32_t(image_->planes().size()); }
  platform::PlaneDescription plane(std::int32_t index) override {
    auto planes = image_->planes();
    if (index < 0 || std::size_t(index) >= planes.size())
      throw platform::PlatformError(HR_BOUNDS, L"The plane index is out of range.");
    return planes[std::size_t(index)];
  }
  const std::uint8_t* data() override { return image_->bytes.data(); }
  std::uint32_t capacity() override { return std::uint32_t(image_->bytes.size()); }

 private:
  std::shared_ptr<const PixelImage> image_;
};

}  // namespace

VirtualBitmap::VirtualBitmap(PixelImage image) : image_(std::make_shared<const PixelImage>(std::move(image))) {}

std::shared_ptr<platform::Bitmap> VirtualBitmap::convert(platform::PixelFormat format) {
  auto converted = convert_image(*image_, format);
  if (!converted) throw platform::PlatformError(HR_INVALIDARG, L"The parameter is incorrect.");
  return std::make_shared<VirtualBitmap>(std::move(*converted));
}

std::unique_ptr<platform::LockedBitmap> VirtualBitmap::lock_for_read() {
  return std::make_unique<VirtualLockedBitmap>(image_);
}

VirtualBuffer::VirtualBuffer(std::uint32_t capacity) : bytes_(capacity, 0) {}
VirtualBuffer::VirtualBuffer(std::vector<std::uint8_t> contents)
    : bytes_(std::move(contents)), length_(std::uint32_t(bytes_.size())) {}

std::uint32_t VirtualBuffer::length() {
  std::lock_guard lock(mutex_);
  return length_;
}

void VirtualBuffer::set_length(std::uint32_t length) {
  std::lock_guard lock(mutex_);
  if (length > bytes_.size()) throw platform::PlatformError(HR_INVALIDARG, L"The parameter is incorrect.");
  length_ = length;
}

std::uint32_t VirtualBuffer::capacity() {
  std::lock_guard lock(mutex_);
  return std::uint32_t(bytes_.size());
}

platform::ByteAccess VirtualBuffer::byte_access() {
  std::lock_guard lock(mutex_);
  if (closed_) return {HR_OK, ids::kClosed, nullptr};
  return {HR_OK, HR_OK, bytes_.data()};
}

void VirtualBuffer::close() {
  std::lock_guard lock(mutex_);
  closed_ = true;
}

std::shared_ptr<platform::Bitmap> bitmap_copy_from_buffer(platform::Buffer& buffer, platform::PixelFormat format,
                                                          std::int32_t width, std::int32_t height) {
  platform::ByteAccess access = buffer.byte_access();
  if (failed(access.query_result) || failed(access.get_result) || access.data == nullptr) return nullptr;
  auto image = image_from_bytes(format, width, height, access.data, buffer.length());
  if (!image) return nullptr;
  return std::make_shared<VirtualBitmap>(std::move(*image));
}

}  // namespace vexcap::virtual_camera
