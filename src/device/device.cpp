#include "device/device.h"

#include <chrono>
#include <mutex>
#include <set>
#include <thread>

#include "capture/exposure_iso.h"
#include "capture/led_torch.h"
#include "device/client_init_thread.h"
#include "log/log.h"

namespace vexcap::device {

namespace {

// Pause between two initialization attempts, so a camera that keeps failing does not spin.
constexpr auto kRetryPause = std::chrono::milliseconds(100);
constexpr auto kWorkerJoinLimit = std::chrono::milliseconds(5000);

}  // namespace

std::shared_ptr<Device> Device::create(DeviceEnvironment environment) {
  auto exclusive = capture::CaptureClient::create(*environment.platform, VEXCAP_STREAM_MODE_EXCLUSIVE);
  if (!exclusive) {
    VXLOG('E', "Failed creating exclusive vexcap");
    return nullptr;
  }
  auto shared = capture::CaptureClient::create(*environment.platform, VEXCAP_STREAM_MODE_SHARED);
  if (!shared) {
    VXLOG('E', "Failed creating shared vexcap");
    return nullptr;
  }
  // Only the exclusive client subscribes to capture failures; recovery runs on the request thread.
  exclusive->set_failure_notifier(environment.capture_failures);
  exclusive->bind_to_request_thread(environment.request_thread);
  shared->bind_to_request_thread(environment.request_thread);
  return std::shared_ptr<Device>(new Device(std::move(shared), std::move(exclusive), std::move(environment)));
}

hresult Device::open(const std::wstring& device_id, const vexcap_open_params& params) {
  VEXCAP_DCHECK_ON_THREAD(request_thread_);
  const hresult exclusive = open_client(exclusive_, device_id, params);
  if (failed(exclusive)) return exclusive;
  return open_client(shared_, device_id, params);
}

namespace {

// Each distinct cause is logged once per open, not at every retry: the platform's answer to the
// capture's initialization when there was one, else the attempt's own.
void report_failed_attempt(const capture::CaptureClient& client, hresult result,
                           std::set<hresult>& reported) {
  const hresult platform = client.last_capture_failure();
  const hresult cause = failed(platform) ? platform : result;
  if (!reported.insert(cause).second) return;
  VXLOG('E', "Opening the camera failed: %08x; trying again every 100 ms", static_cast<unsigned>(cause));
  if (cause == HR_ACCESSDENIED)
    VXLOG('E', "Camera access is denied: allow it in the camera privacy settings");
}

}  // namespace

hresult Device::open_client(const std::shared_ptr<capture::CaptureClient>& client,
                            const std::wstring& device_id, const vexcap_open_params& params) {
  const ManualResetEvent& exit_requested = *environment_.exit_requested;
  // One initialization at a time per client: an attempt abandoned after the time limit finishes
  // before the next one starts (or the client is torn down), and a client it left initialized
  // counts as opened.
  const std::shared_ptr<std::mutex> serial = initialization_lock(*client);
  std::set<hresult> reported;
  for (;;) {
    const hresult result = run_client_initialization(
        [client, serial, device_id, params] {
          std::lock_guard<std::mutex> lock(*serial);
          // The open parameters' stream mode names the source kind both clients read.
          return client->initialize(device_id, params.stream_mode, params.format_arg1, params.format_arg2);
        },
        environment_.between_wait_slices);
    // Already initialized: a late attempt finished the job.
    if (result == HR_OK || result == HR_INVALID_STATE) return HR_OK;
    if (exit_requested.is_set()) return HR_ABORT;
    report_failed_attempt(*client, result, reported);
    // An attempt abandoned at its time limit still holds the client: the next one starts once
    // it has ended, so a platform call that never returns keeps one thread, not one per retry.
    do {
      if (exit_requested.wait_for(kRetryPause)) return HR_ABORT;
      if (environment_.between_wait_slices) environment_.between_wait_slices();
    } while (!std::unique_lock<std::mutex>(*serial, std::try_to_lock).owns_lock());
  }
}

const std::shared_ptr<std::mutex>& Device::initialization_lock(const capture::CaptureClient& client) const {
  return &client == exclusive_.get() ? exclusive_initialization_ : shared_initialization_;
}

Device::~Device() {
  std::lock_guard<std::mutex> initialization(*exclusive_initialization_);
  exclusive_->unregister_rgb_stopped();
}

hresult Device::close() {
  VEXCAP_DCHECK_ON_THREAD(request_thread_);
  // An initialization abandoned after its time limit may still be running: it ends first.
  {
    std::lock_guard<std::mutex> initialization(*exclusive_initialization_);
    exclusive_->unregister_rgb_stopped();  // while the client is still initialized
    exclusive_->clear();
  }
  {
    std::lock_guard<std::mutex> initialization(*shared_initialization_);
    shared_->clear();
  }
  replace_worker(unsupported_format_notifier_, nullptr);
  return HR_OK;
}

void Device::replace_worker(std::unique_ptr<WorkerThread>& slot, std::unique_ptr<WorkerThread> next) {
  if (slot && !slot->join_for(kWorkerJoinLimit)) VXLOG('W', "Timeout waiting for previous thread to finish!");
  slot = std::move(next);  // a thread still running is abandoned by its handle's release
}

hresult Device::set_exposure(std::int64_t exposure) {
  VEXCAP_DCHECK_ON_THREAD(request_thread_);
  const hresult result = capture::set_exposure(*exclusive_, exposure);
  if (result == HR_OK) shared_->control_tracker().store_exposure(static_cast<std::uint64_t>(exposure));
  return result;
}

hresult Device::set_iso_speed(std::uint32_t iso_speed) {
  VEXCAP_DCHECK_ON_THREAD(request_thread_);
  const hresult result = capture::set_iso_speed(*exclusive_, iso_speed);
  if (result == HR_OK) shared_->control_tracker().store_iso_speed(iso_speed);
  return result;
}

hresult Device::set_led_power(std::uint32_t power) {
  VEXCAP_DCHECK_ON_THREAD(request_thread_);
  const hresult result = capture::set_led_power(*exclusive_, power);
  if (result == HR_OK) shared_->control_tracker().store_led_power(power);
  return result;
}

hresult Device::get_exposure(std::uint64_t& exposure) { return capture::get_exposure(*exclusive_, exposure); }

hresult Device::get_iso_speed(std::uint32_t& iso_speed) {
  controls::ExtensionUnit* unit = exclusive_->extension_unit();
  return unit != nullptr ? unit->read_gain(iso_speed) : HR_FAIL;
}

hresult Device::get_led_power(std::uint32_t& power) {
  power = 0;
  const hresult torch = capture::get_torch_power(*exclusive_, power);
  if (torch == HR_OK) return HR_OK;
  controls::ExtensionUnit* unit = exclusive_->extension_unit();
  return unit != nullptr ? unit->read_led_power(power) : HR_FAIL;
}

}  // namespace vexcap::device
