#include "platform/windows_double/imaging.h"

#include <mutex>

#include "platform/virtual/imaging.h"
#include "platform/virtual/virtual_platform.h"
#include "platform/windows_double/collections.h"
#include "platform/windows_double/frame_source.h"
#include "platform/windows_double/violations.h"

namespace vexcap::windows_double {

namespace {

constexpr HRESULT kClosed = HRESULT(0x80000013u);  // RO_E_CLOSED

// Where the locked pixels are: planes, bytes and capacity. Also the memory reference's view.
struct LockedPixels {
  std::vector<platform::PlaneDescription> planes;
  std::uint8_t* data = nullptr;
  std::uint32_t capacity = 0;
  std::unique_ptr<platform::LockedBitmap> port_lock;  // keeps a frame bitmap's lock open
  std::shared_ptr<virtual_camera::PixelImage> image;  // keeps a writable bitmap's pixels
};

class MemoryBufferReference final
    : public Object<MemoryBufferReference, Threading::Agile,
                    abi::UnmodelledIMemoryBufferReference<MemoryBufferReference>,
                    abi::UnmodelledIMemoryBufferByteAccess<MemoryBufferReference>,
                    abi::UnmodelledIClosable<MemoryBufferReference>> {
 public:
  explicit MemoryBufferReference(std::shared_ptr<LockedPixels> pixels)
      : Object("Windows.Foundation.IMemoryBufferReference"), pixels_(std::move(pixels)) {}
  HRESULT STDMETHODCALLTYPE get_Capacity(UINT32* value) override {
    DOUBLE_ENTER("get_Capacity");
    if (value == nullptr) return E_POINTER;
    std::lock_guard lock(mutex_);
    *value = pixels_ ? pixels_->capacity : 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetBuffer(BYTE** value, UINT32* capacity) override {
    DOUBLE_ENTER("GetBuffer");
    if (value == nullptr || capacity == nullptr) return E_POINTER;
    std::lock_guard lock(mutex_);
    if (!pixels_) return kClosed;
    *value = pixels_->data;
    *capacity = pixels_->capacity;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Close() override {
    DOUBLE_ENTER("Close");
    std::lock_guard lock(mutex_);
    pixels_.reset();
    return S_OK;
  }

 private:
  void retire() override {
    std::lock_guard lock(mutex_);
    pixels_.reset();
  }
  std::mutex mutex_;
  std::shared_ptr<LockedPixels> pixels_;
};

class BitmapBuffer final
    : public Object<BitmapBuffer, Threading::Agile, abi::UnmodelledIBitmapBuffer<BitmapBuffer>,
                    abi::UnmodelledIMemoryBuffer<BitmapBuffer>, abi::UnmodelledIClosable<BitmapBuffer>> {
 public:
  explicit BitmapBuffer(std::shared_ptr<LockedPixels> pixels)
      : Object("Windows.Graphics.Imaging.BitmapBuffer"), pixels_(std::move(pixels)) {}
  HRESULT STDMETHODCALLTYPE GetPlaneCount(INT32* value) override {
    DOUBLE_ENTER("GetPlaneCount");
    if (value == nullptr) return E_POINTER;
    std::lock_guard lock(mutex_);
    if (!pixels_) return kClosed;
    *value = INT32(pixels_->planes.size());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetPlaneDescription(INT32 index, abi::BitmapPlaneDescription* value) override {
    DOUBLE_ENTER("GetPlaneDescription");
    if (value == nullptr) return E_POINTER;
    std::lock_guard lock(mutex_);
    if (!pixels_) return kClosed;
    if (index < 0 || std::size_t(index) >= pixels_->planes.size()) return kBounds;
    const auto& plane = pixels_->planes[std::size_t(index)];
    *value = {plane.start_index, plane.width, plane.height, plane.stride};
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE CreateReference(abi::IMemoryBufferReference** value) override {
    DOUBLE_ENTER("CreateReference");
    std::lock_guard lock(mutex_);
    if (!pixels_) return kClosed;
    return hand_out(make<MemoryBufferReference>(pixels_), value);
  }
  HRESULT STDMETHODCALLTYPE Close() override {
    DOUBLE_ENTER("Close");
    std::lock_guard lock(mutex_);
    pixels_.reset();
    return S_OK;
  }

 private:
  void retire() override {
    std::lock_guard lock(mutex_);
    pixels_.reset();
  }
  std::mutex mutex_;
  std::shared_ptr<LockedPixels> pixels_;
};

}  // namespace

SoftwareBitmap::SoftwareBitmap(std::shared_ptr<platform::Bitmap> bitmap)
    : Object("Windows.Graphics.Imaging.SoftwareBitmap"), bitmap_(std::move(bitmap)) {}

SoftwareBitmap::SoftwareBitmap(virtual_camera::PixelImage image)
    : Object("Windows.Graphics.Imaging.SoftwareBitmap"),
      image_(std::make_shared<virtual_camera::PixelImage>(std::move(image))) {}

void SoftwareBitmap::retire() {
  std::lock_guard lock(mutex_);
  bitmap_.reset();
  image_.reset();
}

std::shared_ptr<platform::Bitmap> SoftwareBitmap::port() {
  std::lock_guard lock(mutex_);
  if (bitmap_) return bitmap_;
  if (image_) return std::make_shared<virtual_camera::VirtualBitmap>(*image_);
  return nullptr;
}

std::optional<SoftwareBitmap::Shape> SoftwareBitmap::shape() {
  std::lock_guard lock(mutex_);
  if (bitmap_) return Shape{bitmap_->pixel_format(), bitmap_->pixel_width(), bitmap_->pixel_height()};
  if (image_) return Shape{image_->format, image_->width, image_->height};
  return std::nullopt;
}

HRESULT SoftwareBitmap::get_BitmapPixelFormat(abi::BitmapPixelFormat* value) {
  DOUBLE_ENTER("get_BitmapPixelFormat");
  const auto pixels = shape();
  return pixels ? give(value, pixels->format) : kClosed;
}

HRESULT SoftwareBitmap::get_PixelWidth(INT32* value) {
  DOUBLE_ENTER("get_PixelWidth");
  const auto pixels = shape();
  return pixels ? give(value, pixels->width) : kClosed;
}

HRESULT SoftwareBitmap::get_PixelHeight(INT32* value) {
  DOUBLE_ENTER("get_PixelHeight");
  const auto pixels = shape();
  return pixels ? give(value, pixels->height) : kClosed;
}

HRESULT SoftwareBitmap::get_IsReadOnly(boolean* value) {
  DOUBLE_ENTER("get_IsReadOnly");
  if (value == nullptr) return E_POINTER;
  std::lock_guard lock(mutex_);
  *value = image_ == nullptr;
  return S_OK;
}

HRESULT SoftwareBitmap::LockBuffer(abi::BitmapBufferAccessMode mode, abi::IBitmapBuffer** value) {
  DOUBLE_ENTER("LockBuffer");
  if (value == nullptr) return E_POINTER;
  auto pixels = std::make_shared<LockedPixels>();
  {
    std::lock_guard lock(mutex_);
    if (closed_ || (!bitmap_ && !image_)) return kClosed;
    if (image_) {
      pixels->image = image_;
      pixels->planes = image_->planes();
      pixels->data = image_->bytes.data();
      pixels->capacity = std::uint32_t(image_->bytes.size());
    } else {
      if (mode != abi::BitmapBufferAccessMode::Read) {
        record_violation("SoftwareBitmap::LockBuffer for writing on a read-only bitmap");
        return E_ACCESSDENIED;
      }
      HRESULT locked = port_call([&] { pixels->port_lock = bitmap_->lock_for_read(); });
      if (FAILED(locked)) return locked;
      for (std::int32_t i = 0; i < pixels->port_lock->plane_count(); ++i) pixels->planes.push_back(pixels->port_lock->plane(i));
      pixels->data = const_cast<std::uint8_t*>(pixels->port_lock->data());
      pixels->capacity = pixels->port_lock->capacity();
    }
  }
  return hand_out(make<BitmapBuffer>(std::move(pixels)), value);
}

HRESULT SoftwareBitmap::Close() {
  DOUBLE_ENTER("Close");
  std::lock_guard lock(mutex_);
  closed_ = true;
  return S_OK;
}

HRESULT StorageBuffer::get_Capacity(UINT32* value) {
  DOUBLE_ENTER("get_Capacity");
  return give(value, buffer_->capacity());
}

HRESULT StorageBuffer::get_Length(UINT32* value) {
  DOUBLE_ENTER("get_Length");
  return give(value, buffer_->length());
}

HRESULT StorageBuffer::put_Length(UINT32 value) {
  DOUBLE_ENTER("put_Length");
  return port_call([&] { buffer_->set_length(value); });
}

HRESULT StorageBuffer::Buffer(BYTE** value) {
  DOUBLE_ENTER("Buffer");
  if (value == nullptr) return E_POINTER;
  const platform::ByteAccess access = buffer_->byte_access();
  if (FAILED(access.query_result)) return access.query_result;
  if (FAILED(access.get_result)) return access.get_result;
  *value = access.data;
  return S_OK;
}

HRESULT SoftwareBitmapStatics::Convert(abi::ISoftwareBitmap* source, abi::BitmapPixelFormat format,
                                       abi::ISoftwareBitmap** value) {
  DOUBLE_ENTER("Convert");
  if (value == nullptr) return E_POINTER;
  auto* own = dynamic_cast<SoftwareBitmap*>(source);
  if (own == nullptr) return E_INVALIDARG;
  auto bitmap = own->port();
  if (!bitmap) return kClosed;
  std::shared_ptr<platform::Bitmap> converted;
  if (HRESULT result = port_call([&] { converted = bitmap->convert(static_cast<platform::PixelFormat>(format)); });
      FAILED(result))
    return result;
  return hand_out(make<SoftwareBitmap>(std::move(converted)), value);
}

HRESULT SoftwareBitmapStatics::CreateCopyFromBuffer(abi::IBuffer* source, abi::BitmapPixelFormat format, INT32 width,
                                                    INT32 height, abi::ISoftwareBitmap** value) {
  DOUBLE_ENTER("CreateCopyFromBuffer");
  if (value == nullptr) return E_POINTER;
  *value = nullptr;
  auto* own = dynamic_cast<StorageBuffer*>(source);
  if (own == nullptr) return E_INVALIDARG;
  auto bitmap = virtual_camera::virtual_platform().create_bitmap_copy_from_buffer(
      *own->port(), static_cast<platform::PixelFormat>(format), width, height);
  if (!bitmap) return E_INVALIDARG;
  return hand_out(make<SoftwareBitmap>(std::move(bitmap)), value);
}

HRESULT SoftwareBitmapStatics::Create(abi::BitmapPixelFormat format, INT32 width, INT32 height,
                                      abi::ISoftwareBitmap** value) {
  DOUBLE_ENTER("Create");
  if (value == nullptr) return E_POINTER;
  const auto pixel_format = static_cast<platform::PixelFormat>(format);
  if (width <= 0 || height <= 0 || virtual_camera::bytes_per_pixel(pixel_format) == 0) return E_INVALIDARG;
  return hand_out(make<SoftwareBitmap>(virtual_camera::blank_image(pixel_format, width, height)), value);
}

HRESULT BufferFactory::Create(UINT32 capacity, abi::IBuffer** value) {
  DOUBLE_ENTER("Create");
  return hand_out(make<StorageBuffer>(virtual_camera::virtual_platform().create_buffer(capacity)), value);
}

}  // namespace vexcap::windows_double
