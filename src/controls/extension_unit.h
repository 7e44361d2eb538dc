// The camera's kernel-streaming side: the camera opened a second time as a Media Foundation
// device source, its IKsControl, the processing-unit node and the vendor extension unit
// ("XU"), with the few property reads and writes the library needs.
//
// One per capture client. Property operations take no lock (each builds its request on its
// own stack) and are also called from frame-arrived threads and the RGB-status notifier.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "common/hresult.h"
#include "controls/rgb_status_notifier.h"
#include "platform/port.h"
#include "vexcap/vexcap.h"

namespace vexcap::controls {

struct ExtensionUnitDescriptor {
  platform::Guid property_set;
  std::array<std::uint8_t, 8> signature;  // looked for in the unit's descriptor bytes
  std::uint32_t node_id = 0;
  bool found = false;
};

class ExtensionUnit {
 public:
  static constexpr std::uint32_t kNoNode = 255;

  ExtensionUnit();
  ~ExtensionUnit();  // stops the notifier, then shuts the device source down
  ExtensionUnit(const ExtensionUnit&) = delete;
  ExtensionUnit& operator=(const ExtensionUnit&) = delete;

  // Opens the first camera of the reader kind's category (1: sensor cameras, else video
  // cameras) and finds its processing node and extension unit. A failed load keeps what was
  // set up so far.
  hresult load(platform::Platform& platform, std::uint32_t reader_kind);

  // Reads leave the output as it was on failure.
  hresult read_gain(std::uint32_t& gain);
  hresult write_gain(std::uint32_t gain);  // only on cameras carrying either unit
  hresult read_video_control_mode(std::uint32_t& mode);
  hresult write_led_power(std::uint32_t power);
  hresult read_led_power(std::uint32_t& power);
  hresult read_rgb_status(std::uint32_t& status);
  hresult write_primary_control18(std::uint8_t value);

  // The RGB-status notifier (see register_rgb_status_notifier for the registration proper).
  hresult start_rgb_status_notifier(vexcap_rgb_status_callback callback, void* context);
  void stop_rgb_status_notifier();

  bool has_control() const { return control_ != nullptr; }
  std::uint32_t processing_node() const { return processing_node_; }
  const ExtensionUnitDescriptor& primary_unit() const { return primary_unit_; }
  const ExtensionUnitDescriptor& alternative_unit() const { return alternative_unit_; }

 private:
  hresult open_source(platform::Platform& platform, std::uint32_t reader_kind);
  hresult find_processing_node(platform::KsTopology& topology, std::uint32_t count);
  hresult find_unit(platform::KsTopology& topology, std::uint32_t count,
                    ExtensionUnitDescriptor& unit);
  hresult read_unit_control(const ExtensionUnitDescriptor& unit, std::uint32_t control_id,
                         std::array<std::uint8_t, 512>& data, std::uint32_t& returned);
  hresult write_unit_control(const ExtensionUnitDescriptor& unit, std::uint32_t control_id,
                           std::uint8_t* data, std::uint32_t size);

  platform::Platform* platform_ = nullptr;  // set by load; used to describe errors
  std::shared_ptr<platform::DeviceSource> source_;
  std::shared_ptr<platform::KsControl> control_;
  std::uint32_t processing_node_ = kNoNode;
  ExtensionUnitDescriptor primary_unit_;
  ExtensionUnitDescriptor alternative_unit_;
  // Last: its polling threads read through control_ and end before it goes.
  RgbStatusNotifier notifier_;
};

}  // namespace vexcap::controls
