// The frame-path benchmarks: kernels side by side with libyuv and memcpy, and the library's
// own work per delivered frame and per request. See docs/performance.md.
#include <benchmark/benchmark.h>

namespace vexcap::bench {
void register_kernel_benchmarks();
void register_delivery_benchmarks();
}  // namespace vexcap::bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  vexcap::bench::register_kernel_benchmarks();
  vexcap::bench::register_delivery_benchmarks();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
