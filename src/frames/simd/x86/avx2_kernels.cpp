// AVX2 kernels. Built with -mavx2 -ffp-contract=off: no fused multiply-add may change a byte.
//
// Only declarations may be included besides <immintrin.h>: an inline function instantiated
// here could be shared with translation units that run on CPUs without AVX2.
#include <immintrin.h>

#include <cstdint>

#include "frames/rgb24_to_nv12.h"
#include "frames/simd/tiled_rotation.h"
#include "frames/simd/x86/x86_kernels.h"

namespace vexcap::frames::x86 {
namespace {

__m128i load128(const std::uint8_t* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
__m256i load_pair(const std::uint8_t* low, const std::uint8_t* high) {
  return _mm256_inserti128_si256(_mm256_castsi128_si256(load128(low)), load128(high), 1);
}
void store(std::uint8_t* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }

// ---- RGB24 to NV12: eight columns of a row pair at a time ------------------------------------
// The arithmetic and its exactness argument are those of the SSE2 kernel.

struct Channels {
  __m256i r, g, b;
};

// Pixels 0-3 from bytes 0-11 (low lane), pixels 4-7 from bytes 12-23 loaded at offset 8 (high
// lane): no byte past the eighth pixel is read. Each channel lands zero-extended in 32 bits.
Channels load8(const std::uint8_t* p) {
  const __m256i v = load_pair(p, p + 8);
  const __m256i pick_r = _mm256_setr_epi8(0, -1, -1, -1, 3, -1, -1, -1, 6, -1, -1, -1, 9, -1, -1, -1,
                                          4, -1, -1, -1, 7, -1, -1, -1, 10, -1, -1, -1, 13, -1, -1, -1);
  const __m256i one = _mm256_set1_epi32(1);
  return {_mm256_shuffle_epi8(v, pick_r), _mm256_shuffle_epi8(v, _mm256_add_epi32(pick_r, one)),
          _mm256_shuffle_epi8(v, _mm256_add_epi32(pick_r, _mm256_add_epi32(one, one)))};
}

// The low byte of each 32-bit lane, packed into 8 bytes.
__m128i low_bytes(__m256i v, __m256i pick) {
  const __m256i packed = _mm256_shuffle_epi8(v, pick);
  return _mm_unpacklo_epi32(_mm256_castsi256_si128(packed), _mm256_extracti128_si256(packed, 1));
}

__m256i luma8(const Channels& c) {
  __m256 s = _mm256_add_ps(_mm256_mul_ps(_mm256_set1_ps(0.257f), _mm256_cvtepi32_ps(c.r)),
                           _mm256_mul_ps(_mm256_set1_ps(0.504f), _mm256_cvtepi32_ps(c.g)));
  s = _mm256_add_ps(s, _mm256_mul_ps(_mm256_set1_ps(0.098f), _mm256_cvtepi32_ps(c.b)));
  s = _mm256_add_ps(_mm256_add_ps(s, _mm256_set1_ps(16.0f)), _mm256_set1_ps(0.5f));
  return _mm256_cvttps_epi32(s);
}

__m256 block_sums(__m256i top, __m256i bottom) {
  const __m256i column = _mm256_add_epi32(top, bottom);
  return _mm256_cvtepi32_ps(_mm256_add_epi32(column, _mm256_srli_epi64(column, 32)));
}

__m256 weigh(__m256 sr, __m256 sg, __m256 sb, float wr, float wg, float wb) {
  const __m256 s =
      _mm256_add_ps(_mm256_mul_ps(sr, _mm256_set1_ps(wr)), _mm256_mul_ps(sg, _mm256_set1_ps(wg)));
  return _mm256_add_ps(_mm256_add_ps(s, _mm256_mul_ps(sb, _mm256_set1_ps(wb))),
                       _mm256_set1_ps(514000.0f));
}

int whole_quotients(__m256 numerator) {
  const __m256 nearest = _mm256_round_ps(_mm256_mul_ps(numerator, _mm256_set1_ps(1.0f / 4000)),
                                         _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
  return _mm256_movemask_ps(
      _mm256_cmp_ps(_mm256_mul_ps(nearest, _mm256_set1_ps(4000.0f)), numerator, _CMP_EQ_OQ));
}

void rgb24_row_pair(const std::uint8_t* row0, const std::uint8_t* row1, std::uint32_t width,
                    std::uint8_t* y0, std::uint8_t* y1, std::uint8_t* uv) {
  const __m256i pick_luma = _mm256_setr_epi8(0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                                             0, 4, 8, 12, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
  const __m256i pick_chroma = _mm256_setr_epi8(0, 1, 8, 9, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1,
                                               0, 1, 8, 9, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
  std::uint32_t x = 0;
  for (; x + 8 <= width; x += 8) {
    const Channels a = load8(row0 + std::size_t{x} * 3);
    const Channels b = load8(row1 + std::size_t{x} * 3);
    const __m256 sr = block_sums(a.r, b.r), sg = block_sums(a.g, b.g), sb = block_sums(a.b, b.b);
    const __m256 nu = weigh(sr, sg, sb, -148.0f, -291.0f, 439.0f);
    const __m256 nv = weigh(sr, sg, sb, 439.0f, -368.0f, -71.0f);
    if ((whole_quotients(nu) | whole_quotients(nv)) & 0x55) {
      convert_rgb24_row_pair(row0 + std::size_t{x} * 3, row1 + std::size_t{x} * 3, 8, y0 + x,
                             y1 + x, uv + x);
      continue;
    }
    const __m256i qu = _mm256_cvttps_epi32(_mm256_mul_ps(nu, _mm256_set1_ps(1.0f / 4000)));
    const __m256i qv = _mm256_cvttps_epi32(_mm256_mul_ps(nv, _mm256_set1_ps(1.0f / 4000)));
    const __m256i pairs = _mm256_or_si256(qu, _mm256_slli_epi32(qv, 8));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(y0 + x), low_bytes(luma8(a), pick_luma));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(y1 + x), low_bytes(luma8(b), pick_luma));
    _mm_storel_epi64(reinterpret_cast<__m128i*>(uv + x), low_bytes(pairs, pick_chroma));
  }
  if (x < width) {
    convert_rgb24_row_pair(row0 + std::size_t{x} * 3, row1 + std::size_t{x} * 3, width - x,
                           y0 + x, y1 + x, uv + x);
  }
}

void rgb24_to_nv12(const std::uint8_t* src, std::uint32_t width, std::uint32_t height,
                   std::uint8_t* dst) {
  const std::size_t src_row = std::size_t{width} * 3;
  std::uint8_t* chroma = dst + std::size_t{width} * height;
  for (std::size_t pair = 0; pair < height / 2; ++pair) {
    const std::size_t top = pair * 2;
    rgb24_row_pair(src + top * src_row, src + (top + 1) * src_row, width, dst + top * width,
                   dst + (top + 1) * width, chroma + pair * width);
  }
}

// ---- 2-byte transposes: two tiles side by side, one per 128-bit lane ---------------------------------

void transpose_lanes_u16(__m256i r[8]) {
  #pragma GCC unroll 16
  for (int round = 0; round < 3; ++round) {
    __m256i t[8];
    #pragma GCC unroll 16
    for (int i = 0; i < 4; ++i) {
      t[2 * i] = _mm256_unpacklo_epi16(r[i], r[i + 4]);
      t[2 * i + 1] = _mm256_unpackhi_epi16(r[i], r[i + 4]);
    }
    #pragma GCC unroll 16
    for (int i = 0; i < 8; ++i) r[i] = t[i];
  }
}

// A tile is N source columns by 2N source rows (N = 8 two-byte units); each
// destination row is 32 bytes. Clockwise, the low lane takes the lower half of the source
// rows so that every destination row comes out in order.
template <int N, bool clockwise>
void turn_tile(const std::uint8_t* src, std::size_t src_pitch, std::uint8_t* dst,
               std::size_t dst_pitch) {
  __m256i r[N];
  #pragma GCC unroll 16
  for (int i = 0; i < N; ++i) {
    if constexpr (clockwise) {
      r[i] = load_pair(src + (2 * N - 1 - i) * src_pitch, src + (N - 1 - i) * src_pitch);
    } else {
      r[i] = load_pair(src + i * src_pitch, src + (N + i) * src_pitch);
    }
  }
  transpose_lanes_u16(r);
  #pragma GCC unroll 16
  for (int j = 0; j < N; ++j) store(dst + (clockwise ? j : N - 1 - j) * dst_pitch, r[j]);
}

void tile_u16_cw(const std::uint8_t* s, std::size_t sp, std::uint8_t* d, std::size_t dp) {
  turn_tile<8, true>(s, sp, d, dp);
}
void tile_u16_ccw(const std::uint8_t* s, std::size_t sp, std::uint8_t* d, std::size_t dp) {
  turn_tile<8, false>(s, sp, d, dp);
}

void rotate_clockwise(const std::uint8_t* src, std::size_t src_pitch, UnitGrid grid,
                      std::uint8_t* dst, std::size_t dst_pitch) {
  if (grid.unit == 1) {
    // Wider byte tiles measured slower than the SSE2 ones (lane inserts, register spills).
    sse2_kernels().rotate_clockwise(src, src_pitch, grid, dst, dst_pitch);
  } else if (grid.unit == 2) {
    rotate_clockwise_in_tiles(src, src_pitch, grid, dst, dst_pitch, {8, 16}, tile_u16_cw);
  } else {
    rotate_units_clockwise(src, src_pitch, grid, dst, dst_pitch);
  }
}

void rotate_counterclockwise(const std::uint8_t* src, std::size_t src_pitch, UnitGrid grid,
                             std::uint8_t* dst, std::size_t dst_pitch) {
  if (grid.unit == 1) {
    // Wider byte tiles measured slower than the SSE2 ones (lane inserts, register spills).
    sse2_kernels().rotate_counterclockwise(src, src_pitch, grid, dst, dst_pitch);
  } else if (grid.unit == 2) {
    rotate_counterclockwise_in_tiles(src, src_pitch, grid, dst, dst_pitch, {8, 16}, tile_u16_ccw);
  } else {
    rotate_units_counterclockwise(src, src_pitch, grid, dst, dst_pitch);
  }
}

// ---- Row reversal ----------------------------------------------------------------------------

void reverse_units(const std::uint8_t* src, std::uint8_t* dst, std::size_t units,
                   std::size_t unit) {
  if (unit != 1 && unit != 2) return reverse_units_copy(src, dst, units, unit);
  const __m256i mirror =
      unit == 1 ? _mm256_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0,
                                   15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0)
                : _mm256_setr_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1,
                                   14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1);
  const std::size_t bytes = units * unit;
  std::size_t done = 0;
  for (; done + 32 <= bytes; done += 32) {
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + bytes - done - 32));
    store(dst + done, _mm256_permute4x64_epi64(_mm256_shuffle_epi8(v, mirror), 0x4E));
  }
  reverse_units_copy(src, dst + done, (bytes - done) / unit, unit);
}

const PixelKernels kKernels = {SimdLevel::Avx2, rgb24_to_nv12, rotate_clockwise,
                               rotate_counterclockwise, reverse_units};

}  // namespace

const PixelKernels& avx2_kernels() { return kKernels; }

}  // namespace vexcap::frames::x86
