// What the process holds at one moment: heap bytes in use, threads and open descriptors. Tests
// that must leave nothing behind compare two samples.
#pragma once

#include <string>

namespace vexcap::testing {

struct Footprint {
  long long heap_bytes = -1;  // -1 where the allocator does not tell
  int threads = -1;           // -1 where /proc does not tell
  int descriptors = -1;

  static Footprint now();
  // "heap N bytes, T threads, D descriptors".
  std::string text() const;
  // True when no figure grew beyond its slack over `before` (unknown figures never fail).
  bool within(const Footprint& before, long long heap_slack, int thread_slack = 0,
              int descriptor_slack = 0) const;
};

}  // namespace vexcap::testing
