// Windows.Graphics.Imaging.SoftwareBitmap (with its statics and factory, its locked buffer and
// memory reference) and Windows.Storage.Streams.Buffer, over the virtual camera's bitmaps and
// buffers. A frame's bitmap is read-only; a bitmap the caller creates has pixels of its own.
#pragma once

#include <memory>
#include <mutex>
#include <optional>

#include "platform/port.h"
#include "platform/virtual/pixel_image.h"
#include "platform/windows_double/activation_factory.h"
#include "platform/windows_double/unmodelled.h"

namespace vexcap::windows_double {

class SoftwareBitmap final
    : public Object<SoftwareBitmap, Threading::Agile, abi::UnmodelledISoftwareBitmap<SoftwareBitmap>,
                    abi::UnmodelledIClosable<SoftwareBitmap>> {
 public:
  explicit SoftwareBitmap(std::shared_ptr<platform::Bitmap> bitmap);   // read-only
  explicit SoftwareBitmap(virtual_camera::PixelImage image);           // writable
  HRESULT STDMETHODCALLTYPE get_BitmapPixelFormat(abi::BitmapPixelFormat* value) override;
  HRESULT STDMETHODCALLTYPE get_PixelWidth(INT32* value) override;
  HRESULT STDMETHODCALLTYPE get_PixelHeight(INT32* value) override;
  HRESULT STDMETHODCALLTYPE get_IsReadOnly(boolean* value) override;
  HRESULT STDMETHODCALLTYPE LockBuffer(abi::BitmapBufferAccessMode mode, abi::IBitmapBuffer** value) override;
  HRESULT STDMETHODCALLTYPE Close() override;

  // The port's view of the pixels (a copy for a writable bitmap).
  std::shared_ptr<platform::Bitmap> port();

 private:
  struct Shape {
    platform::PixelFormat format;
    std::int32_t width;
    std::int32_t height;
  };
  std::optional<Shape> shape();  // nullopt once released

  void retire() override;
  std::mutex mutex_;
  std::shared_ptr<platform::Bitmap> bitmap_;
  std::shared_ptr<virtual_camera::PixelImage> image_;
  bool closed_ = false;
};

class StorageBuffer final : public Object<StorageBuffer, Threading::Agile, abi::UnmodelledIBuffer<StorageBuffer>,
                                   abi::UnmodelledIBufferByteAccess<StorageBuffer>> {
 public:
  explicit StorageBuffer(std::shared_ptr<platform::Buffer> buffer)
      : Object("Windows.Storage.Streams.Buffer"), buffer_(std::move(buffer)) {}
  HRESULT STDMETHODCALLTYPE get_Capacity(UINT32* value) override;
  HRESULT STDMETHODCALLTYPE get_Length(UINT32* value) override;
  HRESULT STDMETHODCALLTYPE put_Length(UINT32 value) override;
  HRESULT STDMETHODCALLTYPE Buffer(BYTE** value) override;

  const std::shared_ptr<platform::Buffer>& port() const { return buffer_; }

 private:
  void retire() override { buffer_.reset(); }
  std::shared_ptr<platform::Buffer> buffer_;
};

class SoftwareBitmapStatics final
    : public Object<SoftwareBitmapStatics, Threading::Agile, UnmodelledActivationFactory<SoftwareBitmapStatics>,
                    abi::UnmodelledISoftwareBitmapStatics<SoftwareBitmapStatics>,
                    abi::UnmodelledISoftwareBitmapFactory<SoftwareBitmapStatics>> {
 public:
  SoftwareBitmapStatics() : Object("Windows.Graphics.Imaging.SoftwareBitmap") {}
  HRESULT STDMETHODCALLTYPE Convert(abi::ISoftwareBitmap* source, abi::BitmapPixelFormat format,
                                    abi::ISoftwareBitmap** value) override;
  HRESULT STDMETHODCALLTYPE CreateCopyFromBuffer(abi::IBuffer* source, abi::BitmapPixelFormat format, INT32 width,
                                                 INT32 height, abi::ISoftwareBitmap** value) override;
  HRESULT STDMETHODCALLTYPE Create(abi::BitmapPixelFormat format, INT32 width, INT32 height,
                                   abi::ISoftwareBitmap** value) override;
};

class BufferFactory final : public Object<BufferFactory, Threading::Agile, UnmodelledActivationFactory<BufferFactory>,
                                          abi::UnmodelledIBufferFactory<BufferFactory>> {
 public:
  BufferFactory() : Object("Windows.Storage.Streams.Buffer") {}
  HRESULT STDMETHODCALLTYPE Create(UINT32 capacity, abi::IBuffer** value) override;
};

}  // namespace vexcap::windows_double
