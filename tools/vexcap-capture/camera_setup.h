// Opening the camera the options name and setting it up as they ask: format, controls,
// diagnostic log. Every failing call throws CallError with the call's name.
#pragma once

#include <memory>
#include <string>

#include "camera_discovery.h"
#include "library_session.h"
#include "options.h"

namespace vexcap::tool {

const char* reader_name(std::uint32_t reader);  // "infrared", "colour", ...
const char* property_name(std::uint32_t id);    // "format (stream type)", ...

// Checks that the camera has the reader's source kind first: opening a camera for a kind it
// lacks never returns.
std::unique_ptr<OpenCamera> open_camera(const Camera& camera, std::uint32_t reader,
                                        std::uint16_t width, std::uint16_t height);

// vexcap_set_dev_property / vexcap_get_dev_property of one id; their result codes.
int set_property(vexcap_device* device, std::uint32_t id, std::uint32_t value);
int get_property(vexcap_device* device, std::uint32_t id, std::uint32_t& value);

// Device property 5. A library that does not serve it gets a warning, not a failure; false then.
// The library prints its log only while a camera is open, from this call on: every open (and
// every close) switches it off again.
bool switch_diagnostic_log_on(vexcap_device* device);
// Tells the person reading the log where it begins (on standard error).
void announce_log_start();

// --format / --format-apply, then the controls, in the order the options list them.
void apply_format_and_controls(vexcap_device* device, const Options& options);

}  // namespace vexcap::tool
