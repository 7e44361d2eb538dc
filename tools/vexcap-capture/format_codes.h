// The format codes of device properties 9 and 16 in words: what each code asks of the camera.
#pragma once

#include <cstdint>
#include <string>

namespace vexcap::tool {

// Format codes run 0 to 20 (the high-resolution answer 21 names none).
inline constexpr std::uint32_t kLastFormatCode = 20;

// "infrared 640 wide at 30 fps", "colour 640x480 at 5 fps", ...; `width` x `height` is the
// colour size of the open parameters.
std::string format_code_text(std::uint32_t code, std::uint16_t width, std::uint16_t height);

}  // namespace vexcap::tool
