// vexcap_stress: 8 host threads call random exports with valid and invalid arguments while the
// virtual camera streams colour and infrared at 1 kHz (rotated, and RGB24 converted), a fault
// thread injects failures, removals, preemption, stopped and undecodable frames and slow or
// failing platform calls, and a lifecycle thread ends the library and starts it again under
// them. At the end the invariants are checked and printed as a table; nothing of the virtual
// camera is reset before the heap is counted.
//   vexcap_stress [--seconds N] [--seed S] [--threads T]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "platform/virtual/virtual_camera.h"
#include "stress/fault_thread.h"
#include "stress/host_calls.h"
#include "stress/stress_state.h"
#include "stress/timed_call.h"
#include "stress/watchdog.h"
#include "support/crash_report.h"
#include "support/process_footprint.h"
#include "vexcap/vexcap.h"

namespace vc = vexcap::virtual_camera;
using namespace vexcap::stress;

namespace vexcap::stress {

std::int64_t now_us() {
  return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch()).count();
}

void FrameLedger::delivered(vexcap_frame* frame) {
  std::lock_guard<std::mutex> lock(mutex_);
  outstanding_.insert(frame);
  delivered_.fetch_add(1, std::memory_order_relaxed);
}

void FrameLedger::returning(vexcap_frame* frame) {
  std::lock_guard<std::mutex> lock(mutex_);
  if (outstanding_.erase(frame) == 0) double_returns_.fetch_add(1);
  returned_.fetch_add(1, std::memory_order_relaxed);
}

std::size_t FrameLedger::outstanding() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return outstanding_.size();
}

}  // namespace vexcap::stress

namespace {

struct Options {
  int seconds = 60;
  std::uint64_t seed = 0;
  int threads = 8;
};

Options parse(int argc, char** argv) {
  Options options;
  options.seed = static_cast<std::uint64_t>(std::chrono::system_clock::now().time_since_epoch().count());
  for (int i = 1; i + 1 < argc; i += 2) {
    if (std::strcmp(argv[i], "--seconds") == 0) options.seconds = std::atoi(argv[i + 1]);
    else if (std::strcmp(argv[i], "--seed") == 0) options.seed = std::strtoull(argv[i + 1], nullptr, 10);
    else if (std::strcmp(argv[i], "--threads") == 0) options.threads = std::atoi(argv[i + 1]);
    else {
      std::fprintf(stderr, "usage: %s [--seconds N] [--seed S] [--threads T]\n", argv[0]);
      std::exit(2);
    }
  }
  return options;
}

// The default camera with a 1 kHz format on each source: small infrared frames turned by 90
// degrees, small RGB24 colour frames that the library converts to NV12 and turns by 180. The
// colour source also offers RGB24 at 1280x720 and 30 Hz: the format table's one RGB24 entry
// (code 19), which makes the library read RGB24 frames (the 1 kHz format has no code) instead
// of asking the camera for NV12. With the open parameters' size 160x120 the table has no code
// 11, so a stream-type property naming only a frame rate cannot move colour to 30 Hz.
vc::Scenario thousand_hertz_camera() {
  vc::Scenario scenario = vc::default_scenario();
  scenario.clock = vc::ClockMode::Real;
  vc::GroupModel& group = scenario.groups.at(0);
  for (vc::SourceModel& source : group.sources) {
    const bool colour = source.kind == vexcap::platform::SourceKind::Color;
    vc::FormatModel fast = source.formats.at(0);
    fast.subtype = colour ? L"RGB24" : L"L8";
    if (colour) {
      vc::FormatModel hd = fast;
      hd.width = 1280;
      hd.height = 720;
      hd.frame_rate_numerator = 30;
      hd.frame_rate_denominator = 1;
      source.formats.push_back(hd);
    }
    fast.width = 160;
    fast.height = 120;
    fast.frame_rate_numerator = 1000;
    fast.frame_rate_denominator = 1;
    fast.rotation = colour ? 180 : 90;
    source.formats.push_back(fast);
    source.current_format = source.formats.size() - 1;
  }
  return scenario;
}

using vexcap::testing::Footprint;

// The heap is compared only where the sanitizers count it: plain malloc keeps freed blocks in
// arenas whose figures move with thread caches.
long long counted_heap_bytes() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  return Footprint::now().heap_bytes;
#else
  return -1;
#endif
}

struct Row {
  std::string check;
  std::string figure;
  bool ok;
};

}  // namespace

int main(int argc, char** argv) {
  vexcap::testing::print_stack_on_crash();
  std::setvbuf(stdout, nullptr, _IONBF, 0);  // what was printed survives a crash
  const Options options = parse(argc, argv);
  std::printf("vexcap_stress: %d s, seed %llu, %d host threads\n", options.seconds,
              static_cast<unsigned long long>(options.seed), options.threads);

  StressState state;
  for (const std::string& name : export_names()) state.exports[name];
  state.slots[0].mode = VEXCAP_STREAM_MODE_SHARED;
  state.slots[1].mode = VEXCAP_STREAM_MODE_EXCLUSIVE;
  const char* stream_names[] = {"colour, shared client", "colour, exclusive client", "infrared, shared client",
                                "infrared, exclusive client"};
  for (std::size_t i = 0; i < state.streams.size(); ++i) {
    state.streams[i].slot = &state.slots[i / 2];
    state.streams[i].name = stream_names[i];
  }
  attach_callbacks(state);

  const vc::Scenario scenario = thousand_hertz_camera();
  state.group_id = *scenario.groups.at(0).id;
  // A first thread wakes the sanitizers' own background thread, so it is in the baseline.
  std::thread([] {}).join();
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  const int threads_before = Footprint::now().threads;
  const int descriptors_before = Footprint::now().descriptors;
  vc::use_scenario(scenario);
  std::thread watchdog([&] { run_watchdog(state); });
  const long long heap_before = counted_heap_bytes();

  if (timed_call(state, "vexcap_init", {0}, [] { return vexcap_init(); }) != 0) {
    std::fprintf(stderr, "vexcap_init failed\n");
    return 1;
  }

  std::mutex subscription_mutex;
  std::vector<vexcap_device_subscription*> subscriptions;
  std::vector<std::thread> hosts;
  for (int i = 0; i < options.threads; ++i)
    hosts.emplace_back([&, i] { run_host_thread(state, options.seed + 1 + i, subscription_mutex, subscriptions); });
  std::thread faults([&] { run_fault_thread(state, scenario.groups.at(0), options.seed); });
  std::thread lifecycle([&] { run_lifecycle_thread(state, options.seed + 1000); });
  std::thread late_returns([&] {
    while (!state.stopping.load()) {
      std::this_thread::sleep_for(std::chrono::milliseconds(3));
      return_late_frames(state);
    }
  });

  const auto started = Clock::now();
  std::this_thread::sleep_for(std::chrono::seconds(options.seconds));
  state.stopping = true;
  for (std::thread& host : hosts) host.join();
  faults.join();
  lifecycle.join();
  late_returns.join();
  vc::release_slow_calls();
  vc::clear_faults();
  const double elapsed = std::chrono::duration<double>(Clock::now() - started).count();

  timed_call(state, "vexcap_init", {0}, [] { return vexcap_init(); });  // the last exit may be the lifecycle's
  // Shutdown as a host does it: streams stopped, devices closed, subscriptions ended, exit.
  for (DeviceSlot& slot : state.slots) {
    if (slot.device == nullptr) continue;
    timed_call(state, "vexcap_stop_streaming", kMappedCodes, [&] { return vexcap_stop_streaming(slot.device); });
    timed_call(state, "vexcap_device_close", kMappedCodes, [&] { return vexcap_device_close(slot.device); });
    slot.open_us.fetch_add(now_us() - slot.opened_us);
    slot.device = nullptr;
  }
  for (vexcap_device_subscription* subscription : subscriptions)
    timed_call(state, "vexcap_unregiester_device_callbacks", {0},
               [&] { return vexcap_unregiester_device_callbacks(subscription); });
  return_late_frames(state);
  const int exit_result = timed_call(state, "vexcap_exit", {0}, [] { return vexcap_exit(); });
  return_late_frames(state);

  // Threads the library abandoned by design (an initialization past its limit) finish soon.
  int threads_after = Footprint::now().threads;
  for (int i = 0; i < 100 && threads_after > threads_before + 1; ++i) {  // + the watchdog
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    threads_after = Footprint::now().threads;
  }
  const int descriptors_after = Footprint::now().descriptors;
  // No reset of the camera: after the last exit nothing of the library's holds its objects.
  const long long heap_after = counted_heap_bytes();
  state.finished = true;
  watchdog.join();

  std::uint64_t calls = 0, undocumented = 0;
  std::int64_t longest = 0;
  std::string longest_name;
  for (const auto& [name, stats] : state.exports) {
    calls += stats.calls.load();
    undocumented += stats.undocumented.load();
    if (stats.longest_us.load() > longest) {
      longest = stats.longest_us.load();
      longest_name = name;
    }
  }
  int exports_called = 0;
  for (const auto& [name, stats] : state.exports) exports_called += stats.calls.load() > 0;

  auto text = [](auto value) { return std::to_string(value); };
  const double minutes = elapsed / 60.0;
  std::vector<Row> rows = {
      {"export calls (per minute)", text(calls) + " (" + text(static_cast<long long>(calls / minutes)) + ")", calls > 0},
      {"exports called", text(exports_called) + " of " + text(state.exports.size()), exports_called == 33},
      {"frames delivered (per minute)",
       text(state.frames.delivered_count()) + " (" + text(static_cast<long long>(state.frames.delivered_count() / minutes)) + ")",
       state.frames.delivered_count() > 0},
      {"frames returned", text(state.frames.returned_count()), state.frames.returned_count() == state.frames.delivered_count()},
      {"frames returned late / callbacks false", text(state.counters.late_returns.load()) + " / " + text(state.counters.callbacks_false.load()), true},
      {"stops / closes from inside callbacks", text(state.counters.stops_in_callback.load()) + " / " + text(state.counters.closes_in_callback.load()), true},
      {"reopened right after a close from a callback", text(state.counters.reopens_after_callback_close.load()), true},
      {"exits / inits racing the other hosts", text(state.counters.exits.load()) + " / " + text(state.counters.inits.load()),
       state.counters.exits.load() > 0},
      {"records not returned", text(state.frames.outstanding()), state.frames.outstanding() == 0},
      {"records returned twice or unknown", text(state.frames.double_returns()), state.frames.double_returns() == 0},
      {"faults injected", text(state.counters.faults.load()), state.counters.faults.load() > 0},
      {"device / other events", text(state.counters.device_events.load()) + " / " + text(state.counters.other_events.load()), true},
      {"longest export latency", text(longest / 1000) + " ms (" + longest_name + ")", longest < kCallLimit.count() * 1000000},
      {"undocumented result codes", text(undocumented), undocumented == 0},
      {"vexcap_exit result", text(exit_result), exit_result == 0},
      {"threads before / after", text(threads_before) + " / " + text(threads_after - 1),
       threads_before < 0 || threads_after - 1 <= threads_before},
      {"descriptors before / after", text(descriptors_before) + " / " + text(descriptors_after),
       descriptors_before < 0 || descriptors_after <= descriptors_before},
      {"heap bytes before / after", heap_before < 0 ? "not counted" : text(heap_before) + " / " + text(heap_after),
       heap_before < 0 || heap_after <= heap_before + 64 * 1024},
      {"frame and callback checks", state.failed.load() ? "failed" : "passed", !state.failed.load()},
  };

  bool ok = true;
  std::printf("\n| invariant | figure | |\n|---|---|---|\n");
  for (const Row& row : rows) {
    std::printf("| %s | %s | %s |\n", row.check.c_str(), row.figure.c_str(), row.ok ? "ok" : "FAILED");
    ok = ok && row.ok;
  }
  // Where frames were lost: each stream at 1000 Hz for the whole run is the ceiling.
  std::printf("\nframes per stream (ceiling %lld each; per cent of it)\n", static_cast<long long>(elapsed * 1000));
  for (const StreamTag& stream : state.streams)
    std::printf("  %-28s %10llu  %5.1f %%\n", stream.name, static_cast<unsigned long long>(stream.frames.load()),
                100.0 * static_cast<double>(stream.frames.load()) / (elapsed * 1000));
  std::printf("devices opened afresh (broken client, camera back): %llu\n",
              static_cast<unsigned long long>(state.counters.reopens.load()));
  std::printf("device open (per cent of the run): colour %.1f %%, infrared %.1f %%\n",
              100.0 * static_cast<double>(state.slots[0].open_us.load()) / (elapsed * 1e6),
              100.0 * static_cast<double>(state.slots[1].open_us.load()) / (elapsed * 1e6));
  std::printf("faults: count, time active (per cent of the run)\n");
  for (const FaultKind& kind : state.fault_kinds)
    std::printf("  %-28s %6llu  %5.1f %%\n", kind.name, static_cast<unsigned long long>(kind.count.load()),
                100.0 * static_cast<double>(kind.active_us.load()) / (elapsed * 1e6));
  std::printf("\nper export: calls, longest (ms)\n");
  for (const auto& [name, stats] : state.exports)
    std::printf("  %-56s %10llu %8lld\n", name.c_str(), static_cast<unsigned long long>(stats.calls.load()),
                static_cast<long long>(stats.longest_us.load() / 1000));
  std::printf("\n%s (%.1f s)\n", ok ? "STRESS PASSED" : "STRESS FAILED", elapsed);
  return ok ? 0 : 1;
}
