#include "metadata_csv.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "frame_pixels.h"

namespace vexcap::tool {

MetadataCsv::MetadataCsv(const std::filesystem::path& path) : file_(path) {
  file_.write("index,timestamp_us,width,height,stride,pixel_format,exposure_100ns,iso_speed,"
              "led_power,illumination,png\n");
}

void MetadataCsv::add_row(std::uint64_t index, const vexcap_frame& frame, const std::string& png) {
  char row[256];
  const int length =
      std::snprintf(row, sizeof row,
                    "%" PRIu64 ",%" PRId64 ",%" PRIu32 ",%" PRIu32 ",%" PRId32 ",%s,%" PRIu64 ",%" PRIu32 ",%u,%u,%s\n",
                    index, frame.timestamp, frame.width, frame.height, frame.stride,
                    pixel_format_name(frame.pixel_format), frame.exposure, frame.iso_speed,
                    static_cast<unsigned>(frame.led_power), static_cast<unsigned>(frame.illumination),
                    png.c_str());
  file_.write(row, static_cast<std::size_t>(std::clamp(length, 0, static_cast<int>(sizeof row) - 1)));
}

}  // namespace vexcap::tool
