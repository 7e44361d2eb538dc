// The numbered device properties of one capture client (vexcap_set_dev_property and
// vexcap_get_dev_property). The device's own rules that involve both of its clients live with
// the device (device/device.h). Request thread only.
#pragma once

#include "common/hresult.h"
#include "vexcap/vexcap.h"

namespace vexcap::capture {
class CaptureClient;
}

namespace vexcap::capture {

// Runs one property on the client. An id the client does not know is logged and answers 0.
hresult set_device_property(capture::CaptureClient& client, const vexcap_property& property);
// Writes the answer to property.value; an unknown id is logged, answers 0 and writes nothing.
hresult get_device_property(capture::CaptureClient& client, vexcap_property& property);

}  // namespace vexcap::capture
