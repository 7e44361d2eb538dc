#include "support/process_footprint.h"

#include <filesystem>
#include <system_error>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// The sanitizers' allocator count (GCC ships the runtime without its header).
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#define VEXCAP_SANITIZER_HEAP 1
#elif defined(__GLIBC__)
#include <malloc.h>
#endif

#ifdef _WIN32
#include <windows.h>
// After windows.h, which it needs.
#include <tlhelp32.h>
#endif

namespace vexcap::testing {

namespace {

// Linux tells through /proc; elsewhere the figures are unknown (threads aside on Windows).
int count_entries(const char* directory) {
#if !defined(__linux__)
  (void)directory;
  return -1;
#endif
  std::error_code error;
  int count = 0;
  for (auto it = std::filesystem::directory_iterator(directory, error);
       !error && it != std::filesystem::directory_iterator(); it.increment(error))
    ++count;
  return error ? -1 : count;
}

int threads_running() {
#ifdef _WIN32
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  if (snapshot == INVALID_HANDLE_VALUE) return -1;
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  int count = 0;
  for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry))
    count += entry.th32OwnerProcessID == GetCurrentProcessId();
  CloseHandle(snapshot);
  return count;
#else
  return count_entries("/proc/self/task");
#endif
}

long long heap_in_use() {
#if defined(VEXCAP_SANITIZER_HEAP)
  return static_cast<long long>(__sanitizer_get_current_allocated_bytes());
#elif defined(__GLIBC__) && (__GLIBC__ > 2 || (__GLIBC__ == 2 && __GLIBC_MINOR__ >= 33))
  const struct mallinfo2 info = mallinfo2();
  return static_cast<long long>(info.uordblks + info.hblkhd);
#else
  return -1;
#endif
}

}  // namespace

Footprint Footprint::now() {
  return {heap_in_use(), threads_running(), count_entries("/proc/self/fd")};
}

std::string Footprint::text() const {
  return "heap " + std::to_string(heap_bytes) + " bytes, " + std::to_string(threads) + " threads, " +
         std::to_string(descriptors) + " descriptors";
}

bool Footprint::within(const Footprint& before, long long heap_slack, int thread_slack,
                       int descriptor_slack) const {
  auto ok = [](long long was, long long is, long long slack) { return was < 0 || is < 0 || is <= was + slack; };
  return ok(before.heap_bytes, heap_bytes, heap_slack) && ok(before.threads, threads, thread_slack) &&
         ok(before.descriptors, descriptors, descriptor_slack);
}

}  // namespace vexcap::testing
