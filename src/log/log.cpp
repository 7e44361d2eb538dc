#include "log/log.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>

#include "common/mutex.h"

#include "log/log_format.h"

namespace vexcap::log {

namespace {

// The log's state is process-wide: every device and thread shares one log.
struct LogState {
  Mutex lock;                           // serializes formatting and printing
  std::atomic<int> ready{0};            // non-zero while a capture client has set the log up
  std::atomic<std::uint32_t> gate{0xFF};  // non-zero: lines are printed
  Sink sink VEXCAP_GUARDED_BY(lock) = nullptr;
  void* sink_context VEXCAP_GUARDED_BY(lock) = nullptr;
};

LogState& state() {
  static LogState instance;
  return instance;
}

constexpr std::size_t kMessageCapacity = 512;  // 511 characters kept, then the terminator
constexpr std::size_t kFormatCapacity = 1024;

}  // namespace

void write(std::uint64_t, int, char level, const char* format, ...) {
  LogState& log = state();
  if (!log.ready.load(std::memory_order_acquire)) return;
  // Off is the common case on the frame path: skip the lock (the gate is read again under it).
  if (log.gate.load(std::memory_order_relaxed) == 0) return;

  MutexLock guard(log.lock);
  if (log.gate.load(std::memory_order_relaxed) == 0 || format == nullptr) return;

  char translated[kFormatCapacity];
  const char* effective = translate_format(format, translated, sizeof translated) ? translated : format;

  char message[kMessageCapacity];
  va_list args;
  va_start(args, format);
  int written = std::vsnprintf(message, sizeof message, effective, args);
  va_end(args);
  if (written < 0) message[0] = '\0';
  message[kMessageCapacity - 1] = '\0';

  if (log.sink) {
    log.sink(level, message, log.sink_context);
  } else {
    std::fprintf(stdout, "%c: %s\n", level, message);
    std::fflush(stdout);
  }
}

void client_constructed() {
  LogState& log = state();
  log.ready.store(1, std::memory_order_release);
  MutexLock guard(log.lock);
  log.gate.store(0, std::memory_order_relaxed);
}

void client_destroyed() { state().ready.store(0, std::memory_order_release); }

void set_output_from_property(std::uint32_t value) {
  LogState& log = state();
  if (!log.ready.load(std::memory_order_acquire)) return;
  MutexLock guard(log.lock);
  log.gate.store(value == 0x501 ? 0xFF : 0, std::memory_order_relaxed);
}

bool is_ready() { return state().ready.load(std::memory_order_acquire) != 0; }

void set_sink_for_testing(Sink sink, void* context) {
  LogState& log = state();
  MutexLock guard(log.lock);
  log.sink = sink;
  log.sink_context = context;
}

}  // namespace vexcap::log
