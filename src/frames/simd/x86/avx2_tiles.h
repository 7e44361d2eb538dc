// Quarter-turn tiles in 256-bit registers, for the AVX2 file and, built with 32 registers,
// the AVX-512 one. In an unnamed namespace like tile_transposes.h: each includer gets its own
// copy, built for its instruction set.
#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "frames/simd/tiled_rotation.h"
#include "frames/simd/x86/tile_transposes.h"

namespace vexcap::frames::x86 {
namespace {

namespace avx2_tiles {

inline __m128i load128(const std::uint8_t* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
inline void store128(std::uint8_t* p, __m128i v) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}
inline __m256i load_pair(const std::uint8_t* low, const std::uint8_t* high) {
  return _mm256_inserti128_si256(_mm256_castsi128_si256(load128(low)), load128(high), 1);
}

// 16 byte columns by 32 rows: rows i and 16 + i side by side, one 16x16 square per lane, so
// each destination row of 32 bytes comes out whole. Clockwise, the low lane takes the lower
// half of the source rows. A strip of these writes 16 destination rows in pieces of 32 bytes:
// 32 columns by 16 rows wrote 32 rows in pieces of 16, and a turn from memory took half as
// long again.
template <bool kClockwise>
void turn_byte_tile(const std::uint8_t* src, std::size_t src_pitch, std::uint8_t* dst,
                    std::size_t dst_pitch) {
  turn_tile<16, __m256i>(
      [&](int i) {
        return kClockwise ? load_pair(src + (31 - i) * src_pitch, src + (15 - i) * src_pitch)
                          : load_pair(src + i * src_pitch, src + (16 + i) * src_pitch);
      },
      [](__m256i a, __m256i b, __m256i& low, __m256i& high) {
        low = _mm256_unpacklo_epi8(a, b), high = _mm256_unpackhi_epi8(a, b);
      },
      [&](int j, __m256i v) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + (kClockwise ? j : 15 - j) * dst_pitch), v);
      });
}

// 8 two-byte columns by 16 rows: rows i and 8 + i side by side, one 8x8 square per lane, so
// each destination row of 16 units comes out whole. Clockwise, the low lane takes the lower
// half of the source rows.
template <bool kClockwise>
void turn_pair_tile(const std::uint8_t* src, std::size_t src_pitch, std::uint8_t* dst,
                    std::size_t dst_pitch) {
  turn_tile<8, __m256i>(
      [&](int i) {
        return kClockwise ? load_pair(src + (15 - i) * src_pitch, src + (7 - i) * src_pitch)
                          : load_pair(src + i * src_pitch, src + (8 + i) * src_pitch);
      },
      [](__m256i a, __m256i b, __m256i& low, __m256i& high) {
        low = _mm256_unpacklo_epi16(a, b), high = _mm256_unpackhi_epi16(a, b);
      },
      [&](int j, __m256i v) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(dst + (kClockwise ? j : 7 - j) * dst_pitch), v);
      });
}

constexpr QuarterTurnTiles kTiles = {{{16, 32}, turn_byte_tile<true>, turn_byte_tile<false>},
                                     {{8, 16}, turn_pair_tile<true>, turn_pair_tile<false>},
                                     stream_rows,
                                     finish_streams};

}  // namespace avx2_tiles

}  // namespace
}  // namespace vexcap::frames::x86
