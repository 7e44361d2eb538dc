// AVX-512 kernel (F, BW, VL, DQ, VBMI, VNNI): RGB24 to NV12 in 16- and 32-bit integers,
// sixty-four columns of a row pair at a time, Y and chroma from the same registers.
// Built with those -m flags and -ffp-contract=off like every kernel file.
//
// Besides <immintrin.h>, only declarations may be included, and templates that this file
// instantiates with its own types or keeps in an unnamed namespace: any other inline function
// compiled here could be shared with translation units that run on CPUs without AVX-512.
#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "frames/rgb24_to_nv12.h"
#include "frames/simd/rgb24_row_pair_walker.h"
#include "frames/simd/rgb24_whole_numbers.h"
#include "frames/simd/x86/avx2_tiles.h"
#include "frames/simd/x86/x86_kernels.h"

namespace vexcap::frames::x86 {
namespace {

// ---- The integer arithmetic (see rgb24_whole_numbers.h) -------------------------------------
// Y in 16-bit lanes: N = 8 H + L with H = 32 R + 63 G + 12 B and L = R + 2 B + 16500, so
// floor(N / 8) = H + (L >> 3) < 2^15 and floor(N / 1000) = ((H + (L >> 3)) * 33555) >> 22.
// U and V: the numerators are below 2^20, floor(N / 4000) = ((N >> 5) * 33555) >> 22; a
// numerator is a multiple of 4000 exactly when it agrees with 4000 floor(N / 4000) modulo 2^16.

struct ByteIndex {
  alignas(64) std::uint8_t at[64];
};
struct WordIndex {
  alignas(64) std::uint16_t at[32];
};

// Word i takes the R and B bytes of the pixel at byte 3 i + first of two 64-byte registers.
constexpr ByteIndex red_blue_words(int first) {
  ByteIndex t{};
  for (int i = 0; i < 32; ++i) {
    t.at[2 * i] = static_cast<std::uint8_t>(3 * i + first);
    t.at[2 * i + 1] = static_cast<std::uint8_t>(3 * i + first + 2);
  }
  return t;
}
// Word i takes that pixel's G byte (the high bytes are zeroed by the mask).
constexpr ByteIndex green_words(int first) {
  ByteIndex t{};
  for (int i = 0; i < 32; ++i) t.at[2 * i] = static_cast<std::uint8_t>(3 * i + first + 1);
  return t;
}

// After packus_epi32(u, v), lane k holds the U then the V words of blocks 4k..4k+3: these
// pick the numerators' low words (u in 0-15, v in 16-31 as dwords) in that same order.
constexpr WordIndex low_words_as_packed() {
  WordIndex t{};
  for (int w = 0; w < 32; ++w) {
    const int k = w / 8, m = w % 8;
    t.at[w] = static_cast<std::uint16_t>(m < 4 ? 2 * (4 * k + m) : 32 + 2 * (4 * k + m - 4));
  }
  return t;
}

// The low bytes of the chroma words of blocks 0-15 (first register) and 16-31 (second) in
// NV12 order: U and V of block 4k + m are words 8k + m and 8k + 4 + m.
constexpr ByteIndex chroma_in_nv12_order() {
  ByteIndex t{};
  for (int j = 0; j < 32; ++j) {
    const int b = j % 16, k = b / 4, m = b % 4, second = j < 16 ? 0 : 64;
    t.at[2 * j] = static_cast<std::uint8_t>(second + 2 * (8 * k + m));
    t.at[2 * j + 1] = static_cast<std::uint8_t>(second + 2 * (8 * k + 4 + m));
  }
  return t;
}
// The low bytes of two registers of words, in order.
constexpr ByteIndex low_bytes() {
  ByteIndex t{};
  for (int i = 0; i < 64; ++i) t.at[i] = static_cast<std::uint8_t>(2 * i);
  return t;
}

constexpr ByteIndex kRedBlueLow = red_blue_words(0), kRedBlueHigh = red_blue_words(32);
constexpr ByteIndex kGreenLow = green_words(0), kGreenHigh = green_words(32);
constexpr WordIndex kLowWords = low_words_as_packed();
constexpr ByteIndex kChromaOrder = chroma_in_nv12_order(), kLowBytes = low_bytes();

__m512i load(const ByteIndex& t) { return _mm512_load_si512(t.at); }
__m512i load(const WordIndex& t) { return _mm512_load_si512(t.at); }
__m512i words(int v) { return _mm512_set1_epi16(static_cast<short>(v)); }
// Two 16-bit values in every 32-bit lane.
__m512i word_pairs(int low, int high) {
  return _mm512_set1_epi32(
      static_cast<int>((static_cast<unsigned>(high) << 16) | (static_cast<unsigned>(low) & 0xFFFF)));
}

// One row's 64 pixels as 16-bit lanes: R | B << 8 and G, pixels 0-31 and 32-63.
struct RowWords {
  __m512i red_blue[2], green[2];
};

template <bool kPartial>
RowWords load_row(const std::uint8_t* p, const __mmask64 (&loaded)[3]) {
  __m512i v[3];
  for (int k = 0; k < 3; ++k)
    v[k] = kPartial ? _mm512_maskz_loadu_epi8(loaded[k], p + 64 * k) : _mm512_loadu_si512(p + 64 * k);
  constexpr __mmask64 kEvenBytes = 0x5555555555555555ull;
  return {{_mm512_permutex2var_epi8(v[0], load(kRedBlueLow), v[1]),
           _mm512_permutex2var_epi8(v[1], load(kRedBlueHigh), v[2])},
          {_mm512_maskz_permutex2var_epi8(kEvenBytes, v[0], load(kGreenLow), v[1]),
           _mm512_maskz_permutex2var_epi8(kEvenBytes, v[1], load(kGreenHigh), v[2])}};
}

// A constant GCC must multiply by: it would otherwise turn each vpmullw into five
// shifts and subtractions.
__m512i opaque_words(int v) {
  __m512i k = words(v);
#if defined(__GNUC__)
  asm("" : "+v"(k));
#endif
  return k;
}

// Y of 32 pixels in 16-bit lanes; `multiple` flags the lanes whose N is a multiple of 1000:
// N = 8 eighth + low mod 8, so those where low is a multiple of 8 and eighth of 125.
__m512i luma32(__m512i red_blue, __m512i green, __mmask32& multiple) {
  const __m512i high = _mm512_add_epi16(_mm512_maddubs_epi16(red_blue, words(32 | 12 << 8)),
                                        _mm512_maddubs_epi16(green, words(63)));
  const __m512i low = _mm512_add_epi16(_mm512_maddubs_epi16(red_blue, words(1 | 2 << 8)),
                                       words(16500));
  const __m512i eighth = _mm512_add_epi16(high, _mm512_srli_epi16(low, 3));
  const __m512i y = _mm512_srli_epi16(_mm512_mulhi_epu16(eighth, words(33555)), 6);
  multiple = _mm512_mask_cmpeq_epi16_mask(_mm512_testn_epi16_mask(low, words(7)),
                                          _mm512_mullo_epi16(y, opaque_words(125)), eighth);
  return y;
}

// U and V numerators of 16 blocks (32-bit lanes) from both rows' words of 32 pixels.
struct Numerators {
  __m512i u, v;
};
Numerators chroma_numerators(__m512i rb_top, __m512i g_top, __m512i rb_bottom, __m512i g_bottom) {
  const __m512i first_of_pair = _mm512_set1_epi32(0x00010001);  // bytes 1,0,1,0
  const __m512i second_of_pair = _mm512_set1_epi32(0x01000100);
  // SR | SG << 16 and SB | 16 << 16 per block.
  __m512i sg = _mm512_dpbusd_epi32(_mm512_setzero_si512(), g_top, first_of_pair);
  sg = _mm512_dpbusd_epi32(sg, g_bottom, first_of_pair);
  __m512i red_green = _mm512_dpbusd_epi32(_mm512_slli_epi32(sg, 16), rb_top, first_of_pair);
  red_green = _mm512_dpbusd_epi32(red_green, rb_bottom, first_of_pair);
  __m512i blue_bias = _mm512_dpbusd_epi32(_mm512_set1_epi32(16 << 16), rb_top, second_of_pair);
  blue_bias = _mm512_dpbusd_epi32(blue_bias, rb_bottom, second_of_pair);
  // 16 x 32125 = 514000.
  return {_mm512_dpwssd_epi32(_mm512_madd_epi16(red_green, word_pairs(-148, -291)),
                              blue_bias, word_pairs(439, 32125)),
          _mm512_dpwssd_epi32(_mm512_madd_epi16(red_green, word_pairs(439, -368)),
                              blue_bias, word_pairs(-71, 32125))};
}

// floor(numerator / 4000) of blocks 0-15 (first) and 16-31 (second) as packed words, and the
// words whose numerator is a multiple of 4000.
__m512i chroma_words(Numerators n, __mmask32& multiple) {
  const __m512i eighth = _mm512_packus_epi32(_mm512_srli_epi32(n.u, 5), _mm512_srli_epi32(n.v, 5));
  const __m512i q =
      _mm512_srli_epi16(_mm512_mulhi_epu16(eighth, words(33555)), 6);
  const __m512i low = _mm512_permutex2var_epi16(n.u, load(kLowWords), n.v);
  multiple = _mm512_cmpeq_epi16_mask(_mm512_mullo_epi16(q, opaque_words(4000)), low);
  return q;
}

// Chroma word w of the packed registers belongs to block 4 (w / 8) + w % 4 (U or V).
std::uint32_t blocks_of_chroma_words(std::uint32_t words) {
  std::uint32_t blocks = 0;
  for (int k = 0; k < 4; ++k) blocks |= ((words >> 8 * k | words >> (8 * k + 4)) & 0xF) << 4 * k;
  return blocks;
}

std::uint64_t both_halves(__mmask32 low, __mmask32 high) {
  return std::uint64_t{low} | std::uint64_t{high} << 32;
}

// `columns` (even, at most 64) columns of a row pair; Partial loads and stores only those.
template <bool kPartial>
VEXCAP_KERNEL_STEP void convert64(Rgb24RowPair at, unsigned columns) {
  __mmask64 loaded[3] = {~0ull, ~0ull, ~0ull};
  if constexpr (kPartial) {
    for (int k = 0; k < 3; ++k) {
      const int bytes = static_cast<int>(3 * columns) - 64 * k;
      loaded[k] = bytes >= 64 ? ~0ull : bytes <= 0 ? 0 : (1ull << bytes) - 1;
    }
  }
  const RowWords top = load_row<kPartial>(at.top, loaded);
  const RowWords bottom = load_row<kPartial>(at.bottom, loaded);

  __mmask32 flags[6];
  const __m512i y_top = _mm512_permutex2var_epi8(luma32(top.red_blue[0], top.green[0], flags[0]),
                                                 load(kLowBytes),
                                                 luma32(top.red_blue[1], top.green[1], flags[1]));
  const __m512i y_bottom =
      _mm512_permutex2var_epi8(luma32(bottom.red_blue[0], bottom.green[0], flags[2]), load(kLowBytes),
                               luma32(bottom.red_blue[1], bottom.green[1], flags[3]));
  const __m512i first = chroma_words(
      chroma_numerators(top.red_blue[0], top.green[0], bottom.red_blue[0], bottom.green[0]), flags[4]);
  const __m512i second = chroma_words(
      chroma_numerators(top.red_blue[1], top.green[1], bottom.red_blue[1], bottom.green[1]), flags[5]);
  const __m512i uv = _mm512_permutex2var_epi8(first, load(kChromaOrder), second);

  if constexpr (kPartial) {
    const __mmask64 stored = (1ull << columns) - 1;
    _mm512_mask_storeu_epi8(at.y_top, stored, y_top);
    _mm512_mask_storeu_epi8(at.y_bottom, stored, y_bottom);
    _mm512_mask_storeu_epi8(at.uv, stored, uv);
  } else {
    _mm512_storeu_si512(at.y_top, y_top);
    _mm512_storeu_si512(at.y_bottom, y_bottom);
    _mm512_storeu_si512(at.uv, uv);
  }
  // Zeroed pixels past a partial run flag nothing: N = 16500 and both chroma numerators are
  // 514000, none a multiple. The row pair is copied for the call only, so that the loop keeps
  // its pointers in registers.
  if ((flags[0] | flags[1] | flags[2] | flags[3] | flags[4] | flags[5]) != 0) [[unlikely]] {
    const Rgb24RowPair pair{at.top, at.bottom, at.y_top, at.y_bottom, at.uv};
    settle_whole_numbers(pair, both_halves(flags[0], flags[1]), both_halves(flags[2], flags[3]),
                         blocks_of_chroma_words(flags[4]) | blocks_of_chroma_words(flags[5]) << 16);
  }
}

// Sixty-four columns of a row pair; the last, shorter run's even columns with masked loads
// and stores.
struct Rgb24Runs {
  static constexpr std::uint32_t kColumns = 64;

  VEXCAP_KERNEL_STEP void convert(Rgb24RowPair at) const { convert64<false>(at, kColumns); }
  std::uint32_t convert_last(Rgb24RowPair at, std::uint32_t columns) const {
    const std::uint32_t even = columns & ~1u;
    if (even != 0) convert64<true>(at, even);
    return even;
  }
};

void rgb24_to_nv12(const std::uint8_t* src, std::uint32_t width, std::uint32_t height,
                   std::uint8_t* dst) {
  convert_rgb24_frame_in_runs(Rgb24Runs{}, src, width, height, dst);
}

}  // namespace

// Rotations and reversals are shuffles and moves: the 512-bit versions measured slower than the
// 256-bit ones (lane inserts, double-pumped shuffles), so this level builds the AVX2 tiles with
// its 32 registers and keeps the AVX2 reversal and copy.
const PixelKernels& avx512_kernels() {
  static const PixelKernels kernels = {SimdLevel::Avx512, rgb24_to_nv12,
                                       rotate_clockwise_in_tiles<avx2_tiles::kTiles>,
                                       rotate_counterclockwise_in_tiles<avx2_tiles::kTiles>,
                                       avx2_kernels().reverse_units, avx2_kernels().copy_bytes};
  return kernels;
}

}  // namespace vexcap::frames::x86
