#include "capture/fill_frame.h"

#include "capture/frame_controls.h"
#include "capture/frame_rate.h"
#include "frames/illumination.h"
#include "frames/rgb24_frame.h"
#include "log/log.h"
#include "sources/platform_names.h"

namespace vexcap::capture {
namespace {

bool is_rgb24_frame(platform::Frame& frame) {
  const std::shared_ptr<platform::FrameFormat> format = frame.format();
  return format && frames::is_rgb24_subtype(format->subtype());
}

}  // namespace

std::uint32_t fill_frame(FrameStream& stream, platform::Frame& frame, vexcap_frame& record,
                         std::shared_ptr<platform::Bitmap>& bitmap) {
  VXLOG('D', "Frame Metadata----------");
  // Every frame counts towards the five after a control change, whatever becomes of it; a
  // control is read back only once the camera can be expected to apply it.
  const ControlReport report = stream.control_tracker().next_frame();

  // Later rules override earlier ones: illumination, then the rate verdict, then the RGB24
  // conversion, then the LED read.
  std::uint32_t status = HR_OK;
  std::uint64_t illumination = 0;
  const hresult illumination_read = frames::read_frame_illumination(frame, illumination);
  if (failed(illumination_read)) {
    VXLOG('W', "Failed getting frame illumination (HRESULT 0x%08x)",
          static_cast<unsigned>(illumination_read));
    status = static_cast<std::uint32_t>(illumination_read);
  }

  record.timestamp = static_cast<std::int64_t>(static_cast<std::uint64_t>(frame.system_relative_time()) / 10);
  record.illumination = static_cast<std::uint8_t>(illumination);
  record.reserved0 = 0;

  const double rate = measure_frame_rate(record.timestamp);
  // A frame over the limit still gets its bitmap: an RGB24 or LED read may yet deliver it.
  if (!stream.frame_rate_limit().admit(rate, record.timestamp)) status = kFrameTooFast;

  if (std::shared_ptr<platform::Bitmap> own = frame.software_bitmap()) {
    bitmap = std::move(own);
    record.pixel_format = static_cast<std::uint32_t>(bitmap->pixel_format());
  } else {
    bool converted = false;
    if (is_rgb24_frame(frame)) {
      const hresult result = frames::convert_rgb24_frame_to_nv12(frame, stream.camera().platform(), bitmap);
      status = static_cast<std::uint32_t>(result);
      converted = !failed(result);
      if (converted) record.pixel_format = static_cast<std::uint32_t>(bitmap->pixel_format());
    }
    if (!converted) {
      bitmap = frame.bitmap_from_buffer();
      // A buffer nothing can decode is a format the library does not support.
      if (!bitmap) return kFrameFormatUnsupported;
      record.pixel_format = static_cast<std::uint32_t>(bitmap->pixel_format());
    }
  }

  if (record.width == 0 && record.height == 0) {
    record.width = static_cast<std::uint32_t>(bitmap->pixel_width());
    record.height = static_cast<std::uint32_t>(bitmap->pixel_height());
  }

  if (const std::optional<hresult> led_read = report_controls(stream.camera(), report, record))
    status = static_cast<std::uint32_t>(*led_read);

  VXLOG('D', "Exposure: %llu", static_cast<unsigned long long>(record.exposure));
  VXLOG('D', "IsoSpeed: %u", record.iso_speed);
  VXLOG('D', "LedPower: %u", static_cast<unsigned>(record.led_power));
  VXLOG('D', "Timestamp: %lld", static_cast<long long>(record.timestamp));
  VXLOG('D', "Frame Format: %d (%ws)", static_cast<int>(record.pixel_format),
        sources::name_of(bitmap->pixel_format()));
  return status;
}

}  // namespace vexcap::capture
