#include "frames/simd/pixel_kernels.h"

#include <atomic>
#include <cstring>

#include "frames/rgb24_to_nv12.h"

#if defined(__x86_64__) || defined(_M_X64)
#define VEXCAP_X86_KERNELS 1
#include "frames/simd/x86/x86_kernels.h"
#endif

namespace vexcap::frames {
namespace {

void copy_with_memcpy(std::uint8_t* dst, const std::uint8_t* src, std::size_t bytes) {
  if (bytes != 0) std::memcpy(dst, src, bytes);
}

const PixelKernels kScalarKernels = {SimdLevel::Scalar, convert_rgb24_plane_to_nv12,
                                     rotate_units_clockwise, rotate_units_counterclockwise,
                                     reverse_units_copy, copy_with_memcpy};

SimdLevel probe_cpu() {
#if defined(VEXCAP_X86_KERNELS) && defined(__GNUC__)
  // The compiler's probe also checks that the operating system saves the wider registers.
  __builtin_cpu_init();
  // AVX-512 as the kernels use it: byte permutes (VBMI) and byte dot products (VNNI) besides
  // the base sets, as from Ice Lake and Zen 4 on. Earlier AVX-512 CPUs run the AVX2 table.
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
      __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
      __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vnni"))
    return SimdLevel::Avx512;
  if (__builtin_cpu_supports("avx2")) return SimdLevel::Avx2;
  return SimdLevel::Sse2;  // part of x86-64
#else
  return SimdLevel::Scalar;
#endif
}

const PixelKernels& table_of(SimdLevel level) {
#if defined(VEXCAP_X86_KERNELS)
  switch (level) {
    case SimdLevel::Avx512:
      return x86::avx512_kernels();
    case SimdLevel::Avx2:
      return x86::avx2_kernels();
    case SimdLevel::Sse2:
      return x86::sse2_kernels();
    case SimdLevel::Scalar:
      break;
  }
#endif
  (void)level;
  return kScalarKernels;
}

// The table in use: chosen on first use, replaced only by the test hook.
std::atomic<const PixelKernels*>& active_table() {
  static std::atomic<const PixelKernels*> active{&pixel_kernels_at(detected_simd_level())};
  return active;
}

}  // namespace

const char* simd_level_name(SimdLevel level) {
  switch (level) {
    case SimdLevel::Scalar:
      return "scalar";
    case SimdLevel::Sse2:
      return "SSE2";
    case SimdLevel::Avx2:
      return "AVX2";
    case SimdLevel::Avx512:
      return "AVX-512";
  }
  return "?";
}

SimdLevel detected_simd_level() {
  static const SimdLevel level = probe_cpu();
  return level;
}

const PixelKernels& pixel_kernels_at(SimdLevel level) {
  const SimdLevel best = detected_simd_level();
  return table_of(static_cast<int>(level) < static_cast<int>(best) ? level : best);
}

const PixelKernels& pixel_kernels() { return *active_table().load(std::memory_order_acquire); }

void cap_simd_level(SimdLevel level) {
  active_table().store(&pixel_kernels_at(level), std::memory_order_release);
}

ScopedSimdCap::ScopedSimdCap(SimdLevel level) : previous_(pixel_kernels().level) {
  cap_simd_level(level);
}

ScopedSimdCap::~ScopedSimdCap() { cap_simd_level(previous_); }

}  // namespace vexcap::frames
