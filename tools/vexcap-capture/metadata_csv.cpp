#include "metadata_csv.h"

#include <cinttypes>

#include "frame_pixels.h"

namespace vexcap::tool {

MetadataCsv::MetadataCsv(const std::filesystem::path& path) : file_(path) {
  std::fputs("index,timestamp_us,width,height,stride,pixel_format,exposure_100ns,iso_speed,"
             "led_power,illumination,png\n",
             file_.stream());
}

void MetadataCsv::add_row(std::uint64_t index, const vexcap_frame& frame, const std::string& png) {
  std::fprintf(file_.stream(), "%" PRIu64 ",%" PRId64 ",%" PRIu32 ",%" PRIu32 ",%" PRId32 ",%s,%" PRIu64
                               ",%" PRIu32 ",%u,%u,%s\n",
               index, frame.timestamp, frame.width, frame.height, frame.stride,
               pixel_format_name(frame.pixel_format), frame.exposure, frame.iso_speed,
               static_cast<unsigned>(frame.led_power), static_cast<unsigned>(frame.illumination),
               png.c_str());
}

}  // namespace vexcap::tool
