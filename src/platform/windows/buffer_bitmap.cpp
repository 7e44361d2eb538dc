#include "platform/windows/buffer_bitmap.h"

#include <cwctype>
#include <optional>
#include <string>

#include "platform/windows/activation.h"
#include "platform/windows/winrt/abi.h"

namespace vexcap::windows {

namespace {

std::wstring upper(std::wstring text) {
  for (auto& c : text) c = static_cast<wchar_t>(std::towupper(c));
  return text;
}

// Media Foundation subtypes whose bytes a SoftwareBitmap takes as they are.
std::optional<abi::BitmapPixelFormat> bitmap_format_of(const std::wstring& subtype) {
  if (subtype == L"NV12") return abi::BitmapPixelFormat::Nv12;
  if (subtype == L"YUY2") return abi::BitmapPixelFormat::Yuy2;
  if (subtype == L"L8" || subtype == L"GRAY8") return abi::BitmapPixelFormat::Gray8;
  if (subtype == L"L16" || subtype == L"D16" || subtype == L"GRAY16") return abi::BitmapPixelFormat::Gray16;
  if (subtype == L"ARGB32" || subtype == L"RGB32") return abi::BitmapPixelFormat::Bgra8;
  return std::nullopt;
}

// RGB24 has no bitmap format of its own: it is widened to BGRA8, the first byte of each pixel
// read as red as everywhere else in the library.
std::shared_ptr<platform::Bitmap> widened_rgb24(const std::uint8_t* rgb, std::int32_t width, std::int32_t height) {
  ComPtr<abi::ISoftwareBitmap> bitmap;
  check(activation_factory<abi::ISoftwareBitmapFactory>(class_id::software_bitmap)
            ->Create(abi::BitmapPixelFormat::Bgra8, width, height, bitmap.put()));
  check_present(bitmap);
  {
    ComPtr<abi::IBitmapBuffer> locked;
    check(bitmap->LockBuffer(abi::BitmapBufferAccessMode::Write, locked.put()));
    check_present(locked);
    abi::BitmapPlaneDescription plane{};
    check(locked->GetPlaneDescription(0, &plane));
    ComPtr<abi::IMemoryBufferReference> reference;
    check(query<abi::IMemoryBuffer>(locked)->CreateReference(reference.put()));
    BYTE* bgra = nullptr;
    UINT32 capacity = 0;
    check(query<abi::IMemoryBufferByteAccess>(reference)->GetBuffer(&bgra, &capacity));
    if (std::uint64_t(plane.StartIndex) + std::uint64_t(plane.Stride) * std::uint64_t(height) > capacity) {
      throw_platform_error(HR_BOUNDS);
    }
    for (std::int32_t y = 0; y < height; ++y) {
      BYTE* row = bgra + plane.StartIndex + std::size_t(plane.Stride) * std::size_t(y);
      for (std::int32_t x = 0; x < width; ++x) {
        const std::uint8_t* pixel = rgb + (std::size_t(y) * std::size_t(width) + std::size_t(x)) * 3;
        row[x * 4 + 0] = pixel[2], row[x * 4 + 1] = pixel[1], row[x * 4 + 2] = pixel[0], row[x * 4 + 3] = 255;
      }
    }
    check(query<abi::IClosable>(reference)->Close());
    check(query<abi::IClosable>(locked)->Close());
  }
  return bitmap_of(std::move(bitmap));
}

}  // namespace

std::shared_ptr<platform::Bitmap> bitmap_from_frame_buffer(WinrtBuffer& buffer, const platform::FrameFormat& format) {
  const std::wstring subtype = upper(format.subtype());
  const auto width = static_cast<std::int32_t>(format.width());
  const auto height = static_cast<std::int32_t>(format.height());
  if (width <= 0 || height <= 0) return nullptr;
  if (auto bitmap_format = bitmap_format_of(subtype)) {
    return create_bitmap_copy_from_buffer(buffer, static_cast<platform::PixelFormat>(*bitmap_format), width, height);
  }
  if (subtype != L"RGB24") return nullptr;
  const platform::ByteAccess access = buffer.byte_access();
  if (access.data == nullptr || buffer.length() < std::uint64_t(width) * std::uint64_t(height) * 3) return nullptr;
  return widened_rgb24(access.data, width, height);
}

}  // namespace vexcap::windows
