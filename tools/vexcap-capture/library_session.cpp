#include "library_session.h"

#include "call_watchdog.h"
#include "tool_error.h"

namespace vexcap::tool {

Library::Library() {
  check_call("vexcap_init", guarded("vexcap_init", [] { return vexcap_init(); }));
}

Library::~Library() { guarded("vexcap_exit", [] { return vexcap_exit(); }); }

OpenCamera::OpenCamera(const std::wstring& camera_id, const vexcap_open_params& params) {
  check_call("vexcap_device_open", guarded("vexcap_device_open", [&] {
               return vexcap_device_open(&device_, camera_id.c_str(), &params);
             }));
}

OpenCamera::~OpenCamera() { close(); }

int OpenCamera::close() {
  if (!open_) return VEXCAP_OK;
  open_ = false;
  return guarded("vexcap_device_close", [this] { return vexcap_device_close(device_); });
}

Streaming::Streaming(vexcap_device* device, vexcap_frame_callback callback, void* context,
                     std::uint32_t selector)
    : device_(device), selector_(selector) {
  check_call("vexcap_start_streaming_ex", guarded("vexcap_start_streaming_ex", [&] {
               return vexcap_start_streaming_ex(device, callback, context, selector);
             }));
}

Streaming::~Streaming() {
  if (!running_) return;
  guarded("vexcap_stop_streaming_ex", [this] { return vexcap_stop_streaming_ex(device_, selector_); });
}

void Streaming::stop() {
  if (!running_) return;
  running_ = false;
  check_call("vexcap_stop_streaming_ex", guarded("vexcap_stop_streaming_ex", [this] {
               return vexcap_stop_streaming_ex(device_, selector_);
             }));
}

}  // namespace vexcap::tool
