// A device: one camera opened twice, through an exclusive and a shared capture client.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "capture/capture_client.h"
#include "common/hresult.h"
#include "common/manual_reset_event.h"
#include "common/thread_checker.h"
#include "common/worker_thread.h"
#include "device/device_environment.h"
#include "vexcap/vexcap.h"

namespace vexcap::device {

class Device {
 public:
  // Null when either client cannot be created.
  static std::shared_ptr<Device> create(DeviceEnvironment environment);

  // Initializes the exclusive client, then the shared one, each on its own thread with the
  // 10000 ms limit. A failed initialization is tried again every 100 ms until it succeeds (each
  // with a new capture; each distinct failure logged once): a camera that never initializes
  // keeps the request waiting, by design, until vexcap_exit asks the library to end, which makes
  // it answer E_ABORT once the attempt in progress has ended.
  hresult open(const std::wstring& device_id, const vexcap_open_params& params);
  // Stops the exclusive client before the shared one. The device's event registrations end
  // with it.
  hresult close();
  // A device left open at exit still ends its RGB-stopped worker, which would otherwise keep
  // probing the camera.
  ~Device();

  // The thread that tells the host of an unsupported format. A replacement, and the close,
  // wait up to 5000 ms for the previous one.
  void replace_unsupported_format_notifier(std::unique_ptr<WorkerThread> next) {
    replace_worker(unsupported_format_notifier_, std::move(next));
  }

  // Controls run on the exclusive client; a set that succeeded also gives the shared client's
  // tracker the requested value (not a clamped one), so frames of either client report it.
  hresult set_exposure(std::int64_t exposure);
  hresult set_iso_speed(std::uint32_t iso_speed);
  hresult set_led_power(std::uint32_t power);
  hresult get_exposure(std::uint64_t& exposure);
  hresult get_iso_speed(std::uint32_t& iso_speed);  // the extension unit's gain alone
  // The torch's power, or the extension unit's LED power when the torch does not answer.
  hresult get_led_power(std::uint32_t& power);

  // Device property (set): runs on the exclusive client, plus the device's own rules for
  // automatic exposure off, the stream type that sets the frame rate (16) and the colour
  // stream switched off (18). See device_properties.cpp.
  hresult set_property(const vexcap_property& property);

  // The device keeps its clients for as long as it lives.
  capture::CaptureClient& exclusive_client() const { return *exclusive_; }
  capture::CaptureClient& shared_client() const { return *shared_; }
  // The client a stream selector picks: 1 the exclusive client, anything else the shared one.
  capture::CaptureClient& client_for_selector(std::uint32_t selector) const {
    return selector == VEXCAP_STREAM_SELECT_EXCLUSIVE ? *exclusive_ : *shared_;
  }

 private:
  Device(std::shared_ptr<capture::CaptureClient> shared, std::shared_ptr<capture::CaptureClient> exclusive,
         DeviceEnvironment environment)
      : shared_(std::move(shared)), exclusive_(std::move(exclusive)), environment_(std::move(environment)) {}
  hresult open_client(const std::shared_ptr<capture::CaptureClient>& client, const std::wstring& device_id,
                      const vexcap_open_params& params);
  const std::shared_ptr<std::mutex>& initialization_lock(const capture::CaptureClient& client) const;

  hresult switch_auto_exposure_off(const vexcap_property& property);
  hresult finish_stream_type_apply(std::uint32_t format_code, hresult result);

  static void replace_worker(std::unique_ptr<WorkerThread>& slot, std::unique_ptr<WorkerThread> next);

  std::shared_ptr<capture::CaptureClient> shared_;
  std::shared_ptr<capture::CaptureClient> exclusive_;
  std::unique_ptr<WorkerThread> unsupported_format_notifier_;
  const DeviceEnvironment environment_;
  const ThreadChecker request_thread_{environment_.request_thread};
  // Held by a client's initialization thread for its attempt, and by the teardown: one never
  // runs beside the other, even after an attempt outlived its time limit.
  const std::shared_ptr<std::mutex> exclusive_initialization_ = std::make_shared<std::mutex>();
  const std::shared_ptr<std::mutex> shared_initialization_ = std::make_shared<std::mutex>();
};

}  // namespace vexcap::device
