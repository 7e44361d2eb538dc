// vexcap_endurance: start the library, open, stream, close and exit, many times over (manual
// clock, so each cycle costs no frame time), and fail when the heap, the thread count or the
// descriptor count grows after the warm-up, or when exit leaves more than the process had
// before the first start. Both stream modes take turns; every cycle delivers frames, and now
// and then an RGB-status registration lets its notifier poll the camera for a while. Nothing
// of the virtual camera is reset: what grows is what a host would see grow.
//   vexcap_endurance [--cycles N]
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "platform/virtual/virtual_camera.h"
#include "support/crash_report.h"
#include "support/process_footprint.h"
#include "vexcap/vexcap.h"

namespace vc = vexcap::virtual_camera;
using vexcap::testing::Footprint;
using namespace std::chrono_literals;

namespace {

constexpr long long kHeapSlack = 64 * 1024;  // allocator caches, lazily grown tables
constexpr int kSamples = 20;
constexpr long long kNotifierEvery = 500;  // cycles between two RGB-status registrations
constexpr auto kNotifierPolls = 350ms;     // a few of the notifier's 100 ms polls

std::atomic<long long> g_delivered{0};
std::atomic<long long> g_returned{0};

bool take_frame(vexcap_frame* frame, void*) {
  ++g_delivered;
  if (vexcap_return_frame(frame) == VEXCAP_OK) ++g_returned;
  return true;
}

void on_rgb_status(bool, void*) {}

// One init / open / stream / close / exit on the exclusive (odd cycles) or shared (even) stream
// mode.
bool run_cycle(long long cycle, const std::wstring& group) {
  if (vexcap_init() != VEXCAP_OK) return false;
  const std::uint32_t mode = cycle % 2 != 0 ? VEXCAP_STREAM_MODE_EXCLUSIVE : VEXCAP_STREAM_MODE_SHARED;
  const vexcap_open_params params{mode, 640, 480};
  vexcap_device* device = nullptr;
  if (vexcap_device_open(&device, group.c_str(), &params) != VEXCAP_OK) return false;
  const long long before = g_delivered.load();
  bool ok = vexcap_start_streaming_ex(device, take_frame, nullptr, mode) == VEXCAP_OK;
  vc::advance_time(34ms);
  ok = ok && g_delivered.load() > before;
  ok = vexcap_stop_streaming_ex(device, mode) == VEXCAP_OK && ok;
  if (cycle % kNotifierEvery == 0) {
    ok = vexcap_register_for_rgb_status_event(device, on_rgb_status, nullptr) == VEXCAP_OK && ok;
    std::this_thread::sleep_for(kNotifierPolls);
    ok = vexcap_unregister_for_rgb_status_event(device) == VEXCAP_OK && ok;
  }
  ok = vexcap_device_close(device) == VEXCAP_OK && ok;
  return vexcap_exit() == VEXCAP_OK && ok;
}

// Threads that end on their own (initialization threads) may still be leaving /proc.
Footprint settled_footprint(int thread_ceiling) {
  Footprint now = Footprint::now();
  for (int i = 0; i < 200 && now.threads > thread_ceiling; ++i) {
    std::this_thread::sleep_for(1ms);
    now = Footprint::now();
  }
  return now;
}

}  // namespace

int main(int argc, char** argv) {
  vexcap::testing::print_stack_on_crash();
  long long cycles = 10000;
  for (int i = 1; i + 1 < argc; i += 2) {
    if (std::strcmp(argv[i], "--cycles") == 0) {
      cycles = std::atoll(argv[i + 1]);
    } else {
      std::fprintf(stderr, "usage: %s [--cycles N]\n", argv[0]);
      return 2;
    }
  }
  if (cycles < kSamples) cycles = kSamples;

  vc::Scenario scenario = vc::default_scenario();
  scenario.clock = vc::ClockMode::Manual;
  vc::use_scenario(scenario);
  const std::wstring group = *scenario.groups.at(0).id;
  // A first thread wakes ThreadSanitizer's own background thread, so it is in the count.
  std::thread([] {}).join();
  std::this_thread::sleep_for(100ms);
  const Footprint at_start = Footprint::now();

  // The first sample, after a twentieth of the cycles, is the baseline.
  const auto started = std::chrono::steady_clock::now();
  const long long step = cycles / kSamples;
  Footprint baseline;
  Footprint highest;
  bool ok = true;
  std::printf("| cycle | heap bytes | threads | descriptors |\n|---|---|---|---|\n");
  for (long long cycle = 1; cycle <= cycles && ok; ++cycle) {
    if (!run_cycle(cycle, group)) {
      std::fprintf(stderr, "cycle %lld failed\n", cycle);
      ok = false;
    }
    if (cycle % step != 0) continue;
    const Footprint sample = settled_footprint(cycle == step ? 1 << 30 : baseline.threads);
    std::printf("| %lld | %lld | %d | %d |\n", cycle, sample.heap_bytes, sample.threads, sample.descriptors);
    if (cycle == step) {
      baseline = highest = sample;
      continue;
    }
    highest.heap_bytes = std::max(highest.heap_bytes, sample.heap_bytes);
    highest.threads = std::max(highest.threads, sample.threads);
    highest.descriptors = std::max(highest.descriptors, sample.descriptors);
    if (!sample.within(baseline, kHeapSlack)) {
      std::fprintf(stderr, "grew after the warm-up: %s, baseline %s\n", sample.text().c_str(),
                   baseline.text().c_str());
      ok = false;
    }
  }
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
  const int exit_result = vexcap_exit();  // after the last cycle's: answers 0, does nothing
  const Footprint at_end = settled_footprint(at_start.threads);

  std::printf("\n%lld cycles in %.1f s (%.2f ms each); frames delivered %lld, returned %lld\n", cycles,
              seconds, 1000.0 * seconds / static_cast<double>(cycles), g_delivered.load(), g_returned.load());
  std::printf("baseline %s\nhighest  %s\nbefore the first vexcap_init %s\nafter the last vexcap_exit  %s\n",
              baseline.text().c_str(), highest.text().c_str(), at_start.text().c_str(), at_end.text().c_str());
  ok = ok && exit_result == VEXCAP_OK && g_delivered.load() == g_returned.load() &&
       at_end.within(at_start, kHeapSlack);
  std::printf("%s\n", ok ? "ENDURANCE PASSED" : "ENDURANCE FAILED");
  return ok ? 0 : 1;
}
