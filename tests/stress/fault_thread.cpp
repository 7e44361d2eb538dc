#include "stress/fault_thread.h"

#include <chrono>
#include <random>
#include <thread>

#include "platform/virtual/virtual_camera.h"

namespace vexcap::stress {

namespace vc = virtual_camera;

namespace {

using std::chrono::milliseconds;

constexpr hresult kFailureCodes[] = {hr(0xC00D3EA2), hr(0xC00D3EA3), hr(0x80004005), hr(0x8007001F),
                                     hr(0xC00D36B4), hr(0x80070015), hr(0xC00D4A44)};
constexpr vc::PlatformCall kCalls[] = {
    vc::PlatformCall::FindAllSourceGroups, vc::PlatformCall::Initialize,    vc::PlatformCall::CreateFrameReader,
    vc::PlatformCall::StartReader,         vc::PlatformCall::SetFormat,     vc::PlatformCall::GetProperty,
    vc::PlatformCall::SetProperty,         vc::PlatformCall::SetControl,    vc::PlatformCall::EnumDeviceSources,
    vc::PlatformCall::CreateDeviceSource,  vc::PlatformCall::KsProperty,    vc::PlatformCall::StartWatcher};

// Sleeps, but wakes early when the run ends.
void pause(const StressState& state, milliseconds duration) {
  const auto until = Clock::now() + duration;
  while (!state.stopping.load() && Clock::now() < until) std::this_thread::sleep_for(milliseconds(2));
}

}  // namespace

void run_fault_thread(StressState& state, const virtual_camera::GroupModel& group, std::uint64_t seed) {
  std::mt19937_64 rng(seed);
  auto between = [&](int low, int high) { return milliseconds(low + static_cast<int>(rng() % (high - low + 1))); };
  while (!state.stopping.load()) {
    pause(state, between(0, 200));  // 100 ms between faults on average
    if (state.stopping.load()) break;
    state.counters.faults.fetch_add(1);
    const auto began = Clock::now();
    const int roll = static_cast<int>(rng() % 100);
    std::size_t kind = 0;  // in StressState::fault_kinds
    if (roll < 40) {
      vc::raise_capture_failed(kFailureCodes[rng() % std::size(kFailureCodes)]);
    } else if (roll < 50) {
      kind = 1;
      vc::remove_group(state.group_id);
      pause(state, between(20, 200));
      vc::add_group(group);
    } else if (roll < 60) {
      kind = 2;
      vc::set_held_by_other_app(state.group_id, true);
      pause(state, between(20, 200));
      vc::set_held_by_other_app(state.group_id, false);
    } else if (roll < 70) {
      kind = 3;
      vc::set_frames_stopped(true);
      pause(state, between(20, 200));
      vc::set_frames_stopped(false);
    } else if (roll < 75) {
      kind = 4;
      vc::set_unsupported_frames(true);
      pause(state, between(10, 60));
      vc::set_unsupported_frames(false);
    } else if (roll < 90) {  // a slow platform call
      kind = 5;
      vc::set_call_fault(kCalls[rng() % std::size(kCalls)], vc::CallFault{HR_OK, between(10, 100)});
      pause(state, between(50, 300));
      vc::clear_faults();
    } else {  // a failing platform call
      kind = 6;
      vc::set_call_fault(kCalls[rng() % std::size(kCalls)],
                         vc::CallFault{kFailureCodes[rng() % std::size(kFailureCodes)], milliseconds(0)});
      pause(state, between(10, 100));
      vc::clear_faults();
    }
    state.fault_kinds[kind].count.fetch_add(1);
    state.fault_kinds[kind].active_us.fetch_add(
        std::chrono::duration_cast<std::chrono::microseconds>(Clock::now() - began).count());
    // A stream-type property the hosts set may have moved a source to a slower format; the
    // camera goes back to its 1 kHz formats (each source's last) between faults.
    for (std::size_t source = 0; source < group.sources.size(); ++source)
      vc::edit_source(state.group_id, source, [](vc::SourceModel& model) { model.current_format = model.formats.size() - 1; });
  }
}

}  // namespace vexcap::stress
