#include "frames/rgb24_frame.h"

#include <cwctype>

#include "frames/simd/pixel_kernels.h"
#include "log/log.h"

namespace vexcap::frames {
namespace {

// Closes the temporary output buffer on every path.
struct BufferCloser {
  platform::Buffer* buffer;
  ~BufferCloser() {
    if (buffer) buffer->close();
  }
};

}  // namespace

bool is_rgb24_subtype(const std::wstring& subtype) {
  static constexpr std::wstring_view kRgb24 = L"RGB24";
  if (subtype.size() != kRgb24.size()) return false;
  for (std::size_t i = 0; i < subtype.size(); ++i) {
    if (std::towupper(subtype[i]) != std::towupper(kRgb24[i])) return false;
  }
  return true;
}

hresult convert_rgb24_frame_to_nv12(platform::Frame& frame, platform::Platform& platform,
                                    std::shared_ptr<platform::Bitmap>& slot) {
  const std::shared_ptr<platform::FrameFormat> format = frame.format();
  const std::uint32_t width = format ? format->width() : 0;
  const std::uint32_t height = format ? format->height() : 0;
  const std::shared_ptr<platform::Buffer> input = frame.buffer();
  const std::uint32_t length = input ? input->length() : 0;
  // 64-bit product: a large frame must not wrap into a "long enough" buffer.
  if (!input || static_cast<std::uint64_t>(length) < std::uint64_t{width} * height * 3) {
    VXLOG('E', "Unexpected buffer length %u < %u x %u x 3", length, width, height);
    return HR_INVALIDARG;
  }
  const platform::ByteAccess in = input->byte_access();
  if (failed(in.query_result)) {
    VXLOG('E', "Querying interface of frame buffer to get byte access failed (HRESULT 0x%08x)",
          static_cast<unsigned>(in.query_result));
    return in.query_result;
  }
  if (failed(in.get_result)) {
    VXLOG('E', "Getting buffer access to the input image failed (HRESULT 0x%08x)",
          static_cast<unsigned>(in.get_result));
    return in.get_result;
  }

  const std::uint32_t capacity = (width * height * 3) >> 1;
  const std::shared_ptr<platform::Buffer> output = platform.create_buffer(capacity);
  BufferCloser closer{output.get()};
  const platform::ByteAccess out = output->byte_access();
  if (failed(out.query_result)) {
    VXLOG('E', "Querying interface of output temp buffer failed (HRESULT 0x%08x)",
          static_cast<unsigned>(out.query_result));
    return out.query_result;
  }
  if (failed(out.get_result)) {
    VXLOG('E', "Getting buffer access to the output image failed (HRESULT 0x%08x)",
          static_cast<unsigned>(out.get_result));
    return out.get_result;
  }
  output->set_length(capacity);

  pixel_kernels().rgb24_to_nv12(in.data, width, height, out.data);

  std::shared_ptr<platform::Bitmap> bitmap = platform.create_bitmap_copy_from_buffer(
      *output, platform::PixelFormat::Nv12, static_cast<std::int32_t>(width),
      static_cast<std::int32_t>(height));
  if (!bitmap) {
    VXLOG('E', "Failed creating a bitmap copy from buffer for the RGB to NV12 conversion.");
    return HR_FAIL;
  }
  slot = std::move(bitmap);
  return HR_OK;
}

}  // namespace vexcap::frames
