// AVX-512 (F, BW, VL, DQ) kernel: RGB24 to NV12. Built with those -m flags and
// -ffp-contract=off: no fused multiply-add may change a byte.
//
// Only declarations may be included besides <immintrin.h>: an inline function instantiated
// here could be shared with translation units that run on CPUs without AVX-512.
#include <immintrin.h>

#include <cstdint>

#include "frames/rgb24_to_nv12.h"
#include "frames/simd/x86/x86_kernels.h"

namespace vexcap::frames::x86 {
namespace {

// ---- RGB24 to NV12: sixteen columns of a row pair at a time ----------------------------------
// The arithmetic and its exactness argument are those of the SSE2 kernel.

struct Channels {
  __m512i r, g, b;
};

// Exactly the 48 bytes of sixteen pixels (a masked load), spread so that each 128-bit lane
// holds four pixels at bytes 0-11; each channel lands zero-extended in 32 bits.
Channels load16(const std::uint8_t* p) {
  const __m512i spread = _mm512_setr_epi32(0, 1, 2, 3, 3, 4, 5, 6, 6, 7, 8, 9, 9, 10, 11, 12);
  const __m512i v = _mm512_permutexvar_epi32(spread, _mm512_maskz_loadu_epi32(0x0FFF, p));
  const __m512i pick_r = _mm512_broadcast_i32x4(
      _mm_setr_epi8(0, -1, -1, -1, 3, -1, -1, -1, 6, -1, -1, -1, 9, -1, -1, -1));
  const __m512i one = _mm512_set1_epi32(1);
  return {_mm512_shuffle_epi8(v, pick_r), _mm512_shuffle_epi8(v, _mm512_add_epi32(pick_r, one)),
          _mm512_shuffle_epi8(v, _mm512_add_epi32(pick_r, _mm512_add_epi32(one, one)))};
}

__m128i luma16(const Channels& c) {
  __m512 s = _mm512_add_ps(_mm512_mul_ps(_mm512_set1_ps(0.257f), _mm512_cvtepi32_ps(c.r)),
                           _mm512_mul_ps(_mm512_set1_ps(0.504f), _mm512_cvtepi32_ps(c.g)));
  s = _mm512_add_ps(s, _mm512_mul_ps(_mm512_set1_ps(0.098f), _mm512_cvtepi32_ps(c.b)));
  s = _mm512_add_ps(_mm512_add_ps(s, _mm512_set1_ps(16.0f)), _mm512_set1_ps(0.5f));
  return _mm512_cvtepi32_epi8(_mm512_cvttps_epi32(s));
}

__m512 block_sums(__m512i top, __m512i bottom) {
  const __m512i column = _mm512_add_epi32(top, bottom);
  return _mm512_cvtepi32_ps(_mm512_add_epi32(column, _mm512_srli_epi64(column, 32)));
}

__m512 weigh(__m512 sr, __m512 sg, __m512 sb, float wr, float wg, float wb) {
  const __m512 s =
      _mm512_add_ps(_mm512_mul_ps(sr, _mm512_set1_ps(wr)), _mm512_mul_ps(sg, _mm512_set1_ps(wg)));
  return _mm512_add_ps(_mm512_add_ps(s, _mm512_mul_ps(sb, _mm512_set1_ps(wb))),
                       _mm512_set1_ps(514000.0f));
}

__mmask16 whole_quotients(__m512 numerator) {
  const __m512 nearest =
      _mm512_roundscale_ps(_mm512_mul_ps(numerator, _mm512_set1_ps(1.0f / 4000)),
                           _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
  return _mm512_cmp_ps_mask(_mm512_mul_ps(nearest, _mm512_set1_ps(4000.0f)), numerator,
                            _CMP_EQ_OQ);
}

void rgb24_row_pair(const std::uint8_t* row0, const std::uint8_t* row1, std::uint32_t width,
                    std::uint8_t* y0, std::uint8_t* y1, std::uint8_t* uv) {
  std::uint32_t x = 0;
  for (; x + 16 <= width; x += 16) {
    const Channels a = load16(row0 + std::size_t{x} * 3);
    const Channels b = load16(row1 + std::size_t{x} * 3);
    const __m512 sr = block_sums(a.r, b.r), sg = block_sums(a.g, b.g), sb = block_sums(a.b, b.b);
    const __m512 nu = weigh(sr, sg, sb, -148.0f, -291.0f, 439.0f);
    const __m512 nv = weigh(sr, sg, sb, 439.0f, -368.0f, -71.0f);
    if ((whole_quotients(nu) | whole_quotients(nv)) & 0x5555) {
      convert_rgb24_row_pair(row0 + std::size_t{x} * 3, row1 + std::size_t{x} * 3, 16, y0 + x,
                             y1 + x, uv + x);
      continue;
    }
    const __m512i qu = _mm512_cvttps_epi32(_mm512_mul_ps(nu, _mm512_set1_ps(1.0f / 4000)));
    const __m512i qv = _mm512_cvttps_epi32(_mm512_mul_ps(nv, _mm512_set1_ps(1.0f / 4000)));
    // Block k's U and V sit in the low 16 bits of 64-bit lane k.
    const __m512i pairs = _mm512_or_si512(qu, _mm512_slli_epi32(qv, 8));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(y0 + x), luma16(a));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(y1 + x), luma16(b));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(uv + x), _mm512_cvtepi64_epi16(pairs));
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

}  // namespace

// Rotations and reversals are shuffles and moves: the 512-bit versions measured slower than the
// AVX2 ones (lane inserts, double-pumped shuffles), so this level keeps those.
const PixelKernels& avx512_kernels() {
  static const PixelKernels kernels = {SimdLevel::Avx512, rgb24_to_nv12,
                                       avx2_kernels().rotate_clockwise,
                                       avx2_kernels().rotate_counterclockwise,
                                       avx2_kernels().reverse_units};
  return kernels;
}

}  // namespace vexcap::frames::x86
