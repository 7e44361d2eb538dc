#include "platform/virtual/frame.h"

#include <algorithm>
#include <cwctype>

#include "platform/virtual/known_ids.h"
#include "platform/virtual/source_group.h"

namespace vexcap::virtual_camera {

using platform::PixelFormat;

namespace {

platform::IlluminationRead illumination_of(IlluminationMetadata metadata, std::uint64_t n) {
  platform::IlluminationRead read;
  switch (metadata) {
    case IlluminationMetadata::Alternating: read.illumination = n % 2 == 0 ? 1 : 0; break;
    case IlluminationMetadata::AlwaysOn: read.illumination = 1; break;
    case IlluminationMetadata::AlwaysOff: read.illumination = 0; break;
    case IlluminationMetadata::AttributeMissing: read.get_illumination = ids::kAttributeNotFound; break;
    case IlluminationMetadata::MetadataMissing: read.get_capture_metadata = ids::kAttributeNotFound; break;
    case IlluminationMetadata::SampleUnreachable: read.get_sample = ids::kUnsupportedService; break;
    case IlluminationMetadata::ServiceUnavailable: read.get_service = HR_NOINTERFACE; break;
  }
  return read;
}

// The RGB24 bytes of frame n: the pattern, or the source's fill colour.
std::vector<std::uint8_t> rgb24_bytes(std::int32_t width, std::int32_t height, std::uint64_t n,
                                      const Rgb24Model& rgb24) {
  if (!rgb24.fill) return pattern_rgb24(width, height, n);
  std::vector<std::uint8_t> bytes(std::size_t(width) * height * 3);
  for (std::size_t i = 0; i < bytes.size(); i += 3) std::copy_n(rgb24.fill->begin(), 3, bytes.begin() + i);
  return bytes;
}

}  // namespace

std::wstring upper_case(std::wstring text) {
  for (auto& c : text) c = wchar_t(std::towupper(wint_t(c)));
  return text;
}

PixelFormat layout_of_subtype(const std::wstring& subtype) {
  std::wstring s = upper_case(subtype);
  if (s == L"GRAY8" || s == L"L8" || s == L"Y8") return PixelFormat::Gray8;
  if (s == L"L16" || s == L"D16" || s == L"Y16" || s == L"GRAY16") return PixelFormat::Gray16;
  if (s == L"NV12") return PixelFormat::Nv12;
  if (s == L"YUY2") return PixelFormat::Yuy2;
  if (s == L"ARGB32" || s == L"RGB32") return PixelFormat::Bgra8;
  if (s == L"ABGR32") return PixelFormat::Rgba8;
  return PixelFormat::Unknown;
}

FrameContents make_frame_contents(const FormatModel& format, const std::optional<std::wstring>& reader_subtype,
                                  std::uint64_t n, std::int64_t time, IlluminationMetadata metadata,
                                  const FrameLayoutModel& layout, bool unsupported, const Rgb24Model& rgb24_model) {
  FrameContents frame;
  frame.time = time;
  frame.format = format;
  frame.illumination = illumination_of(metadata, n);
  auto width = std::int32_t(format.width), height = std::int32_t(format.height);

  if (unsupported) {  // a compressed-looking frame nothing can turn into a bitmap
    frame.format.subtype = L"MJPG";
    frame.buffer = std::make_shared<VirtualBuffer>(pattern_rgb24(width, height / 4 + 1, n));
    return frame;
  }
  PixelFormat native = layout_of_subtype(format.subtype);
  bool rgb24 = upper_case(format.subtype) == L"RGB24";
  // A reader asked for NV12 converts colour layouts; grey and depth layouts stay as they are.
  bool to_nv12 = reader_subtype && upper_case(*reader_subtype) == L"NV12" &&
                 (rgb24 || native == PixelFormat::Yuy2 || native == PixelFormat::Bgra8 || native == PixelFormat::Rgba8);
  if (to_nv12) {
    frame.format.subtype = L"NV12";
    PixelImage image = rgb24 ? rgb24_to_nv12(rgb24_bytes(width, height, n, rgb24_model).data(), width, height)
                             : *convert_image(pattern_image(native, width, height, n), PixelFormat::Nv12);
    if (layout.stride_padding || layout.nv12_plane_rows_alignment > 1)
      image = relaid(image, layout.stride_padding, layout.nv12_plane_rows_alignment);
    frame.bitmap = std::make_shared<VirtualBitmap>(std::move(image));
  } else if (rgb24) {
    std::vector<std::uint8_t> bytes = rgb24_bytes(width, height, n, rgb24_model);
    bytes.resize(bytes.size() - std::min<std::size_t>(rgb24_model.missing_bytes, bytes.size()));
    frame.buffer = std::make_shared<VirtualBuffer>(std::move(bytes));
  } else if (native != PixelFormat::Unknown) {
    frame.bitmap = std::make_shared<VirtualBitmap>(
        pattern_image(native, width, height, n, layout.stride_padding, layout.nv12_plane_rows_alignment));
  } else {
    frame.buffer = std::make_shared<VirtualBuffer>(pattern_rgb24(width, height / 4 + 1, n));
  }
  return frame;
}

void VirtualFrame::require_open() {
  if (closed_) throw platform::PlatformError(ids::kClosed, L"The object has been closed.");
}

std::int64_t VirtualFrame::system_relative_time() {
  std::lock_guard lock(mutex_);
  require_open();
  return contents_.time;
}

std::shared_ptr<platform::FrameFormat> VirtualFrame::format() {
  std::lock_guard lock(mutex_);
  require_open();
  return std::make_shared<VirtualFrameFormat>(contents_.format);
}

std::shared_ptr<platform::Bitmap> VirtualFrame::software_bitmap() {
  std::lock_guard lock(mutex_);
  require_open();
  return contents_.bitmap;
}

std::shared_ptr<platform::Buffer> VirtualFrame::buffer() {
  std::lock_guard lock(mutex_);
  require_open();
  return contents_.buffer;
}

std::shared_ptr<platform::Bitmap> VirtualFrame::bitmap_from_buffer() {
  std::lock_guard lock(mutex_);
  require_open();
  if (!contents_.buffer || upper_case(contents_.format.subtype) != L"RGB24") return nullptr;
  platform::ByteAccess access = contents_.buffer->byte_access();
  auto width = std::int32_t(contents_.format.width), height = std::int32_t(contents_.format.height);
  if (access.data == nullptr) return nullptr;
  PixelImage image = blank_image(PixelFormat::Bgra8, width, height);
  const std::int32_t whole = std::min<std::int32_t>(width * height, std::int32_t(contents_.buffer->length() / 3));
  for (std::int32_t i = whole; i < width * height; ++i) image.bytes[std::size_t(i) * 4 + 3] = 255;
  for (std::int32_t i = 0; i < whole; ++i) {
    const std::uint8_t* rgb = access.data + std::size_t(i) * 3;
    std::uint8_t* bgra = image.bytes.data() + std::size_t(i) * 4;
    bgra[0] = rgb[2], bgra[1] = rgb[1], bgra[2] = rgb[0], bgra[3] = 255;
  }
  return std::make_shared<VirtualBitmap>(std::move(image));
}

platform::IlluminationRead VirtualFrame::read_illumination() {
  std::lock_guard lock(mutex_);
  require_open();
  return contents_.illumination;
}

void VirtualFrame::close() {
  std::lock_guard lock(mutex_);
  closed_ = true;
}

}  // namespace vexcap::virtual_camera
