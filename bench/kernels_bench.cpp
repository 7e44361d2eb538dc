// Each kernel of the frame path at every instruction-set level this CPU runs, next to libyuv's
// closest path and to memcpy of the output frame, hot and cold, at four frame sizes.
#include <benchmark/benchmark.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "buffers.h"
#include "frames/rotation.h"
#include "frames/simd/pixel_kernels.h"

#if defined(VEXCAP_BENCH_LIBYUV)
#include <libyuv.h>
#endif

namespace vexcap::bench {
namespace {

using frames::FrameLayout;
using frames::PixelKernels;
using frames::Rotation;
using frames::SimdLevel;

struct Size {
  std::uint32_t w, h;
};
const Size kSizes[] = {{640, 480}, {1280, 720}, {1920, 1080}, {3840, 2160}};

using Kernel = std::function<void(const std::uint8_t* src, std::uint8_t* dst)>;

void add(const std::string& kernel, const std::string& impl, Size size, std::size_t src_bytes,
         std::size_t dst_bytes, Kernel run) {
  for (Cache cache : {Cache::Hot, Cache::Cold}) {
    const std::string name = kernel + "/" + impl + "/" + std::to_string(size.w) + "x" +
                             std::to_string(size.h) + "/" + cache_name(cache);
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
      FrameSlots slots(src_bytes, dst_bytes, cache);
      for (auto _ : state) {
        const Slot slot = slots.next();
        run(slot.src, slot.dst);
        benchmark::DoNotOptimize(slot.dst);
        benchmark::ClobberMemory();
      }
      state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * size.w * size.h);
    })->UseRealTime()->Unit(benchmark::kMicrosecond);
  }
}

std::vector<SimdLevel> levels() {
  std::vector<SimdLevel> out;
  for (SimdLevel level : {SimdLevel::Sse2, SimdLevel::Avx2, SimdLevel::Avx512})
    if (static_cast<int>(level) <= static_cast<int>(frames::detected_simd_level()))
      out.push_back(level);
  return out;
}

std::string impl_name(SimdLevel level) {
  switch (level) {
    case SimdLevel::Scalar: return "scalar";
    case SimdLevel::Sse2: return "sse2";
    case SimdLevel::Avx2: return "avx2";
    case SimdLevel::Avx512: return "avx512";
  }
  return "?";
}

// The scalar reference runs at one size only: it is ten times slower and only shows the gain.
bool with_scalar(Size s) { return s.w == 1920; }

void register_rgb24(Size s) {
  const std::size_t rgb = std::size_t{s.w} * s.h * 3, nv12 = std::size_t{s.w} * s.h * 3 / 2;
  add("copy_nv12", "memcpy", s, nv12, nv12,
      [=](const std::uint8_t* src, std::uint8_t* dst) { std::memcpy(dst, src, nv12); });
  std::vector<SimdLevel> all = levels();
  if (with_scalar(s)) all.insert(all.begin(), SimdLevel::Scalar);
  for (SimdLevel level : all) {
    const PixelKernels* k = &frames::pixel_kernels_at(level);
    add("rgb24_to_nv12", impl_name(level), s, rgb, nv12,
        [=](const std::uint8_t* src, std::uint8_t* dst) { k->rgb24_to_nv12(src, s.w, s.h, dst); });
  }
#if defined(VEXCAP_BENCH_LIBYUV)
  // libyuv's RAW is R,G,B in memory, as ours. It writes I420; MergeUVPlane interleaves.
  auto planes = std::make_shared<std::vector<std::uint8_t>>(std::size_t{s.w} * s.h / 2);
  add("rgb24_to_nv12", "libyuv", s, rgb, nv12, [=](const std::uint8_t* src, std::uint8_t* dst) {
    const int w = int(s.w), h = int(s.h);
    std::uint8_t* u = planes->data();
    std::uint8_t* v = u + std::size_t{s.w} * s.h / 4;
    libyuv::RAWToI420(src, w * 3, dst, w, u, w / 2, v, w / 2, w, h);
    libyuv::MergeUVPlane(u, w / 2, v, w / 2, dst + std::size_t{s.w} * s.h, w, w / 2, h / 2);
  });
#endif
}

void register_rotations(Size s) {
  const std::size_t gray8 = std::size_t{s.w} * s.h, gray16 = gray8 * 2, nv12 = gray8 * 3 / 2;
  const FrameLayout g8{frames::kGray8, s.w, s.h, std::int32_t(s.w)};
  const FrameLayout g16{frames::kGray16, s.w, s.h, std::int32_t(s.w * 2)};
  const FrameLayout yuv{frames::kNv12, s.w, s.h, std::int32_t(s.w)};
  std::vector<SimdLevel> all = levels();
  if (with_scalar(s)) all.insert(all.begin(), SimdLevel::Scalar);
  for (SimdLevel level : all) {
    const PixelKernels* k = &frames::pixel_kernels_at(level);
    const std::string impl = impl_name(level);
    add("gray8_rotate90", impl, s, gray8, gray8, [=](const std::uint8_t* src, std::uint8_t* dst) {
      frames::rotate_quarter_turn(g8, src, Rotation::By90, dst, *k);
    });
    add("gray8_rotate270", impl, s, gray8, gray8, [=](const std::uint8_t* src, std::uint8_t* dst) {
      frames::rotate_quarter_turn(g8, src, Rotation::By270, dst, *k);
    });
    add("gray8_rotate180", impl, s, gray8, gray8, [=](const std::uint8_t* src, std::uint8_t* dst) {
      frames::rotate_half_turn_copy(g8, src, gray8, dst, *k);
    });
    add("gray16_rotate90", impl, s, gray16, gray16, [=](const std::uint8_t* src, std::uint8_t* dst) {
      frames::rotate_quarter_turn(g16, src, Rotation::By90, dst, *k);
    });
    add("nv12_rotate90", impl, s, nv12, nv12, [=](const std::uint8_t* src, std::uint8_t* dst) {
      frames::rotate_quarter_turn(yuv, src, Rotation::By90, dst, *k);
    });
  }
#if defined(VEXCAP_BENCH_LIBYUV)
  const int w = int(s.w), h = int(s.h);
  add("gray8_rotate90", "libyuv", s, gray8, gray8, [=](const std::uint8_t* src, std::uint8_t* dst) {
    libyuv::RotatePlane90(src, w, dst, h, w, h);
  });
  add("gray8_rotate270", "libyuv", s, gray8, gray8, [=](const std::uint8_t* src, std::uint8_t* dst) {
    libyuv::RotatePlane270(src, w, dst, h, w, h);
  });
  add("gray8_rotate180", "libyuv", s, gray8, gray8, [=](const std::uint8_t* src, std::uint8_t* dst) {
    libyuv::RotatePlane180(src, w, dst, w, w, h);
  });
  add("gray16_rotate90", "libyuv", s, gray16, gray16, [=](const std::uint8_t* src, std::uint8_t* dst) {
    libyuv::RotatePlane_16(reinterpret_cast<const std::uint16_t*>(src), w,
                           reinterpret_cast<std::uint16_t*>(dst), h, w, h, libyuv::kRotate90);
  });
  // Y as bytes, the interleaved chroma as 16-bit pairs.
  add("nv12_rotate90", "libyuv", s, nv12, nv12, [=](const std::uint8_t* src, std::uint8_t* dst) {
    libyuv::RotatePlane(src, w, dst, h, w, h, libyuv::kRotate90);
    libyuv::RotatePlane_16(reinterpret_cast<const std::uint16_t*>(src + gray8), w / 2,
                           reinterpret_cast<std::uint16_t*>(dst + gray8), h / 2, w / 2, h / 2,
                           libyuv::kRotate90);
  });
#endif
  add("copy_gray8", "memcpy", s, gray8, gray8,
      [=](const std::uint8_t* src, std::uint8_t* dst) { std::memcpy(dst, src, gray8); });
}

}  // namespace

void register_kernel_benchmarks() {
  for (Size s : kSizes) {
    register_rgb24(s);
    register_rotations(s);
  }
}

}  // namespace vexcap::bench
