// The frame-path benchmarks: kernels side by side with libyuv and memcpy, and the library's
// own work per delivered frame and per request. See docs/performance.md.
//
// --rounds=N runs every benchmark once per round, the benchmarks of a round in random order
// (with --benchmark_enable_random_interleaving), so that two implementations can be compared
// within a round, under the same load; --results=FILE writes every round's times and the
// machine (CPU model, instruction sets, the level the dispatcher picks, load) as JSON.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "frames/simd/pixel_kernels.h"

namespace vexcap::bench {
void register_kernel_benchmarks();
void register_delivery_benchmarks();

namespace {

struct Timing {
  int round;
  std::string name;
  double cpu_us, real_us;
};

// Keeps each run's per-iteration times, tagged with the round.
class RoundCollector : public benchmark::BenchmarkReporter {
 public:
  int round = 0;
  std::vector<Timing> timings;

  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      // Every benchmark reports in microseconds.
      timings.push_back({round, run.run_name.function_name, run.GetAdjustedCPUTime(),
                         run.GetAdjustedRealTime()});
    }
  }
};

// The value of /proc/cpuinfo's field `key` ("key<tabs>: value") when `line` holds it.
std::optional<std::string> cpuinfo_value(const std::string& line, const std::string& key) {
  if (line.compare(0, key.size(), key) != 0) return std::nullopt;
  const std::size_t colon = line.find_first_not_of('\t', key.size());
  if (colon == std::string::npos || line[colon] != ':') return std::nullopt;
  return line.size() > colon + 2 ? line.substr(colon + 2) : std::string();
}

// The first processor's model name and its family and model numbers: a virtual machine may
// name only the product line ("AMD EPYC"), the numbers still tell the core's generation.
std::string cpu_model() {
  std::ifstream cpuinfo("/proc/cpuinfo");
  std::string name = "unknown", family, model;
  for (std::string line; std::getline(cpuinfo, line) && !line.empty();) {  // the first block
    if (auto value = cpuinfo_value(line, "model name")) name = *value;
    if (auto value = cpuinfo_value(line, "cpu family")) family = *value;
    if (auto value = cpuinfo_value(line, "model")) model = *value;
  }
  if (family.empty() || model.empty()) return name;
  return name + " (family " + family + ", model " + model + ")";
}

std::vector<std::string> instruction_sets() {
  std::vector<std::string> found;
#if defined(__x86_64__) && defined(__GNUC__)
  __builtin_cpu_init();
#define VEXCAP_BENCH_ISA(name) \
  if (__builtin_cpu_supports(name)) found.push_back(name);
  VEXCAP_BENCH_ISA("sse2")
  VEXCAP_BENCH_ISA("avx2")
  VEXCAP_BENCH_ISA("fma")
  VEXCAP_BENCH_ISA("avx512f")
  VEXCAP_BENCH_ISA("avx512bw")
  VEXCAP_BENCH_ISA("avx512vl")
  VEXCAP_BENCH_ISA("avx512dq")
  VEXCAP_BENCH_ISA("avx512vbmi")
  VEXCAP_BENCH_ISA("avx512vnni")
#undef VEXCAP_BENCH_ISA
#endif
  return found;
}

double load_average() {
  double load[1] = {-1};
  return getloadavg(load, 1) == 1 ? load[0] : -1;
}

std::string quoted(const std::string& text) {
  std::string out = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  return out + "\"";
}

void write_results(const std::string& path, const RoundCollector& collector,
                   const std::vector<double>& loads) {
  std::ofstream out(path);
  out << "{\"machine\": {\"cpu\": " << quoted(cpu_model())
      << ", \"threads\": " << std::thread::hardware_concurrency() << ", \"instruction_sets\": [";
  const std::vector<std::string> sets = instruction_sets();
  for (std::size_t i = 0; i < sets.size(); ++i) out << (i ? ", " : "") << quoted(sets[i]);
  out << "], \"dispatched_level\": "
      << quoted(frames::simd_level_name(frames::detected_simd_level())) << ", \"load_average\": [";
  for (std::size_t i = 0; i < loads.size(); ++i) out << (i ? ", " : "") << loads[i];
  out << "]},\n \"timings\": [\n";
  for (std::size_t i = 0; i < collector.timings.size(); ++i) {
    const Timing& t = collector.timings[i];
    out << (i ? ",\n" : "") << "  {\"round\": " << t.round << ", \"name\": " << quoted(t.name)
        << ", \"cpu_us\": " << t.cpu_us << ", \"real_us\": " << t.real_us << "}";
  }
  out << "\n]}\n";
}

// Takes --NAME=VALUE out of the arguments Google Benchmark sees.
std::string take_flag(int& argc, char** argv, const char* name, const std::string& fallback) {
  const std::string prefix = std::string("--") + name + "=";
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], prefix.c_str(), prefix.size()) != 0) continue;
    std::string value = argv[i] + prefix.size();
    for (int j = i; j + 1 < argc; ++j) argv[j] = argv[j + 1];
    --argc;
    return value;
  }
  return fallback;
}

}  // namespace
}  // namespace vexcap::bench

int main(int argc, char** argv) {
  using namespace vexcap::bench;
  const int rounds = std::atoi(take_flag(argc, argv, "rounds", "1").c_str());
  const std::string results = take_flag(argc, argv, "results", "");
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  register_kernel_benchmarks();
  register_delivery_benchmarks();
  if (results.empty()) {
    benchmark::RunSpecifiedBenchmarks();
  } else {
    RoundCollector collector;
    std::vector<double> loads{load_average()};
    for (int round = 0; round < rounds; ++round) {
      collector.round = round;
      benchmark::RunSpecifiedBenchmarks(&collector);
      loads.push_back(load_average());
    }
    write_results(results, collector, loads);
  }
  benchmark::Shutdown();
  return 0;
}
