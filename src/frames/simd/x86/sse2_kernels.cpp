// SSE2 kernels: the x86-64 baseline. Built with -ffp-contract=off like every kernel file.
//
// Besides <emmintrin.h>, only declarations may be included, and templates that this file
// instantiates with its own types or keeps in an unnamed namespace: any other inline function
// compiled here could be shared with other translation units built for another instruction set.
#include <emmintrin.h>

#include <cstdint>
#include <cstring>

#include "frames/rgb24_to_nv12.h"
#include "frames/simd/rgb24_row_pair_walker.h"
#include "frames/simd/tiled_rotation.h"
#include "frames/simd/x86/tile_transposes.h"
#include "frames/simd/x86/x86_kernels.h"

namespace vexcap::frames::x86 {
namespace {

// ---- RGB24 to NV12: four columns of a row pair at a time ------------------------------------
// Y in single precision exactly as the reference orders it. U and V from the 2x2 channel sums:
// (-148 SR - 291 SG + 439 SB + 514000) / 4000 and (439 SR - 368 SG - 71 SB + 514000) / 4000,
// truncated, equal the float formula unless the quotient is a whole number, where the float
// rounding decides: such groups go to the scalar reference.

struct Channels {
  __m128i r, g, b;
};

Channels load4(const std::uint8_t* p) {
  return {_mm_setr_epi32(p[0], p[3], p[6], p[9]), _mm_setr_epi32(p[1], p[4], p[7], p[10]),
          _mm_setr_epi32(p[2], p[5], p[8], p[11])};
}

std::uint32_t luma4(const Channels& c) {
  __m128 s = _mm_add_ps(_mm_mul_ps(_mm_set1_ps(0.257f), _mm_cvtepi32_ps(c.r)),
                        _mm_mul_ps(_mm_set1_ps(0.504f), _mm_cvtepi32_ps(c.g)));
  s = _mm_add_ps(s, _mm_mul_ps(_mm_set1_ps(0.098f), _mm_cvtepi32_ps(c.b)));
  s = _mm_add_ps(_mm_add_ps(s, _mm_set1_ps(16.0f)), _mm_set1_ps(0.5f));
  __m128i y = _mm_cvttps_epi32(s);
  y = _mm_packs_epi32(y, y);
  return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(y, y)));
}

// Lane 2k holds the sum over block k; odd lanes are left over.
__m128i block_sums(__m128i top, __m128i bottom) {
  const __m128i column = _mm_add_epi32(top, bottom);
  return _mm_add_epi32(column, _mm_srli_epi64(column, 32));
}

__m128 weigh(__m128 sr, __m128 sg, __m128 sb, float wr, float wg, float wb) {
  const __m128 s = _mm_add_ps(_mm_mul_ps(sr, _mm_set1_ps(wr)), _mm_mul_ps(sg, _mm_set1_ps(wg)));
  return _mm_add_ps(_mm_add_ps(s, _mm_mul_ps(sb, _mm_set1_ps(wb))), _mm_set1_ps(514000.0f));
}

// Lanes whose numerator is a multiple of 4000.
int whole_quotients(__m128 numerator) {
  const __m128 nearest = _mm_cvtepi32_ps(_mm_cvtps_epi32(_mm_mul_ps(numerator, _mm_set1_ps(1.0f / 4000))));
  return _mm_movemask_ps(_mm_cmpeq_ps(_mm_mul_ps(nearest, _mm_set1_ps(4000.0f)), numerator));
}

// Four columns of a row pair.
struct Rgb24Runs {
  static constexpr std::uint32_t kColumns = 4;

  void convert(Rgb24RowPair at) const {
    const Channels a = load4(at.top);
    const Channels b = load4(at.bottom);
    const __m128 sr = _mm_cvtepi32_ps(block_sums(a.r, b.r));
    const __m128 sg = _mm_cvtepi32_ps(block_sums(a.g, b.g));
    const __m128 sb = _mm_cvtepi32_ps(block_sums(a.b, b.b));
    const __m128 nu = weigh(sr, sg, sb, -148.0f, -291.0f, 439.0f);
    const __m128 nv = weigh(sr, sg, sb, 439.0f, -368.0f, -71.0f);
    if ((whole_quotients(nu) | whole_quotients(nv)) & 0x5) {
      convert_rgb24_row_pair(at.top, at.bottom, kColumns, at.y_top, at.y_bottom, at.uv);
      return;
    }
    const __m128i qu = _mm_cvttps_epi32(_mm_mul_ps(nu, _mm_set1_ps(1.0f / 4000)));
    const __m128i qv = _mm_cvttps_epi32(_mm_mul_ps(nv, _mm_set1_ps(1.0f / 4000)));
    const __m128i pairs = _mm_or_si128(qu, _mm_slli_epi32(qv, 8));
    const std::uint16_t chroma[2] = {static_cast<std::uint16_t>(_mm_extract_epi16(pairs, 0)),
                                     static_cast<std::uint16_t>(_mm_extract_epi16(pairs, 4))};
    const std::uint32_t luma_top = luma4(a), luma_bottom = luma4(b);
    std::memcpy(at.y_top, &luma_top, 4);
    std::memcpy(at.y_bottom, &luma_bottom, 4);
    std::memcpy(at.uv, chroma, 4);
  }
};

void rgb24_to_nv12(const std::uint8_t* src, std::uint32_t width, std::uint32_t height,
                   std::uint8_t* dst) {
  convert_rgb24_frame_in_runs(Rgb24Runs{}, src, width, height, dst);
}

// ---- Quarter turns: square tiles of 16 bytes or 8 two-byte units -------------------------------

__m128i load(const std::uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
void store(std::uint8_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }

template <int N, bool kClockwise>
void turn_square_tile(const std::uint8_t* src, std::size_t src_pitch, std::uint8_t* dst,
                      std::size_t dst_pitch) {
  turn_tile<N, __m128i>(
      [&](int i) { return load(src + (kClockwise ? N - 1 - i : i) * src_pitch); },
      [](__m128i a, __m128i b, __m128i& low, __m128i& high) {
        if constexpr (N == 16) {
          low = _mm_unpacklo_epi8(a, b), high = _mm_unpackhi_epi8(a, b);
        } else {
          low = _mm_unpacklo_epi16(a, b), high = _mm_unpackhi_epi16(a, b);
        }
      },
      [&](int j, __m128i v) { store(dst + (kClockwise ? j : N - 1 - j) * dst_pitch, v); });
}

constexpr QuarterTurnTiles kTiles = {{{16, 16}, turn_square_tile<16, true>, turn_square_tile<16, false>},
                                     {{8, 8}, turn_square_tile<8, true>, turn_square_tile<8, false>},
                                     stream_rows,
                                     finish_streams};

// ---- Row reversal ----------------------------------------------------------------------------

__m128i reverse_u16(__m128i v) {
  v = _mm_shuffle_epi32(v, 0x1B);
  v = _mm_shufflelo_epi16(v, 0xB1);
  return _mm_shufflehi_epi16(v, 0xB1);
}

__m128i reverse_u8(__m128i v) {
  v = reverse_u16(v);
  return _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8));
}

void reverse_units(const std::uint8_t* src, std::uint8_t* dst, std::size_t units,
                   std::size_t unit) {
  if (unit != 1 && unit != 2) return reverse_units_copy(src, dst, units, unit);
  const std::size_t bytes = units * unit;
  std::size_t done = 0;
  for (; done + 16 <= bytes; done += 16) {
    const __m128i v = load(src + bytes - done - 16);
    store(dst + done, unit == 1 ? reverse_u8(v) : reverse_u16(v));
  }
  reverse_units_copy(src, dst + done, (bytes - done) / unit, unit);
}

// ---- Copy -----------------------------------------------------------------------------------
// 64 bytes a step into 16-byte aligned destination lines; the first and last 16 bytes are
// stored unaligned, overlapping the steps beside them.

void copy_bytes(std::uint8_t* dst, const std::uint8_t* src, std::size_t bytes) {
  if (bytes < 16) {
    if (bytes != 0) std::memcpy(dst, src, bytes);
    return;
  }
  const __m128i first = load(src), last = load(src + bytes - 16);
  std::size_t at = 16 - (reinterpret_cast<std::uintptr_t>(dst) & 15);
  for (; at + 64 <= bytes; at += 64) {
    const __m128i a = load(src + at), b = load(src + at + 16);
    const __m128i c = load(src + at + 32), d = load(src + at + 48);
    _mm_store_si128(reinterpret_cast<__m128i*>(dst + at), a);
    _mm_store_si128(reinterpret_cast<__m128i*>(dst + at + 16), b);
    _mm_store_si128(reinterpret_cast<__m128i*>(dst + at + 32), c);
    _mm_store_si128(reinterpret_cast<__m128i*>(dst + at + 48), d);
  }
  for (; at + 16 <= bytes; at += 16) _mm_store_si128(reinterpret_cast<__m128i*>(dst + at), load(src + at));
  store(dst, first);
  store(dst + bytes - 16, last);
}

const PixelKernels kKernels = {SimdLevel::Sse2, rgb24_to_nv12,
                               rotate_clockwise_in_tiles<kTiles>,
                               rotate_counterclockwise_in_tiles<kTiles>, reverse_units, copy_bytes};

}  // namespace

const PixelKernels& sse2_kernels() { return kKernels; }

// The bytes before the first whole destination line and after the last go through the caches.
void stream_rows(const std::uint8_t* src, std::size_t src_pitch, std::uint8_t* dst, std::size_t dst_pitch,
                 std::uint32_t rows, std::size_t bytes) {
  for (std::uint32_t r = 0; r < rows; ++r, src += src_pitch, dst += dst_pitch) {
    std::size_t head = (0 - reinterpret_cast<std::uintptr_t>(dst)) & 63;
    if (head > bytes) head = bytes;
    std::memcpy(dst, src, head);
    std::size_t at = head;
    for (; at + 64 <= bytes; at += 64) {
      const __m128i a = load(src + at), b = load(src + at + 16);
      const __m128i c = load(src + at + 32), d = load(src + at + 48);
      _mm_stream_si128(reinterpret_cast<__m128i*>(dst + at), a);
      _mm_stream_si128(reinterpret_cast<__m128i*>(dst + at + 16), b);
      _mm_stream_si128(reinterpret_cast<__m128i*>(dst + at + 32), c);
      _mm_stream_si128(reinterpret_cast<__m128i*>(dst + at + 48), d);
    }
    std::memcpy(dst + at, src + at, bytes - at);
  }
}

void finish_streams() { _mm_sfence(); }

}  // namespace vexcap::frames::x86
