#include "format_codes.h"

namespace vexcap::tool {

std::string format_code_text(std::uint32_t code, std::uint16_t width, std::uint16_t height) {
  // Codes 2 to 8 and 11 to 17 step down the same ladder of frame rates.
  static const char* const kRates[] = {"30", "25", "20", "15", "10", "5", "1"};
  if (code == 0) return "infrared below 640 wide at 30 fps";
  if (code == 1) return "infrared 320x240 at 60 fps";
  if (code >= 2 && code <= 8) return std::string("infrared 640 wide at ") + kRates[code - 2] + " fps";
  if (code == 9) return "infrared below 640 wide at 60 fps";
  if (code >= 11 && code <= 17) {
    return "colour " + std::to_string(width) + "x" + std::to_string(height) + " at " + kRates[code - 11] + " fps";
  }
  if (code == 18) return "colour 1920 wide at 30 fps";
  if (code == 19) return "colour 1280x720 at 30 fps";
  if (code == 20) return "colour 3840 wide at 30 fps";
  return "code " + std::to_string(code);
}

}  // namespace vexcap::tool
