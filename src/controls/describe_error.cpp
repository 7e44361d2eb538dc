#include "controls/describe_error.h"

#include "log/log.h"

namespace vexcap::controls {

std::uint32_t error_message_number(hresult error) {
  const auto bits = static_cast<std::uint32_t>(error);
  return (bits & 0x1FFF0000u) == 0x00080000u ? (bits & 0xFFFFu) : bits;
}

void describe_error(platform::Platform& platform, hresult error) {
  const std::uint32_t number = error_message_number(error);
  if (const std::optional<std::wstring> text = platform.system_message(number))
    VXLOG('E', "%ws\n", text->c_str());
  else
    VXLOG('E', "Could not find a description for error # %#x.\n", number);
}

}  // namespace vexcap::controls
