#include "unsupported_format_watch.h"

#include "call_watchdog.h"

namespace vexcap::tool {

UnsupportedFormatWatch::UnsupportedFormatWatch(vexcap_device* device) : device_(device) {
  registered_ = guarded("vexcap_register_for_unsupported_format_status_event", [this] {
                  return vexcap_register_for_unsupported_format_status_event(device_, on_unsupported_format, this);
                }) == VEXCAP_OK;
}

UnsupportedFormatWatch::~UnsupportedFormatWatch() {
  if (!registered_) return;
  guarded("vexcap_unregister_for_unsupported_format_status_event",
          [this] { return vexcap_unregister_for_unsupported_format_status_event(device_); });
}

void UnsupportedFormatWatch::on_unsupported_format(std::uint32_t, void* context) {
  static_cast<UnsupportedFormatWatch*>(context)->reported_ = true;
}

}  // namespace vexcap::tool
