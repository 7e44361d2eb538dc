// AVX-512 kernel (F, BW, VL, DQ, VBMI, VNNI): RGB24 to NV12 in 16- and 32-bit integers,
// sixty-four columns of a row pair at a time, Y and chroma from the same registers.
// Built with those -m flags and -ffp-contract=off like every kernel file.
//
// Only declarations may be included besides <immintrin.h>: an inline function instantiated
// here could be shared with translation units that run on CPUs without AVX-512.
#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "frames/rgb24_to_nv12.h"
#include "frames/simd/x86/x86_kernels.h"

namespace vexcap::frames::x86 {
namespace {

// ---- Why integers give the reference's bytes -------------------------------------------------
// Y: with N = 257 R + 504 G + 98 B + 16500, the single-precision formula gives floor(N / 1000)
// for every colour except where N is a multiple of 1000; there the float sum may land just
// under the whole number (325 colours do). Such pixels are flagged and recomputed by the
// reference. In 16-bit lanes N = 8 H + L with H = 32 R + 63 G + 12 B and L = R + 2 B + 16500,
// so floor(N / 8) = H + (L >> 3) < 2^15 and floor(N / 1000) = ((H + (L >> 3)) * 33555) >> 22.
// N is a multiple of 1000 exactly when N and 1000 Y agree modulo 2^16.
// U and V: from the 2x2 sums, floor((-148 SR - 291 SG + 439 SB + 514000) / 4000) and
// floor((439 SR - 368 SG - 71 SB + 514000) / 4000) equal the float sequence unless the
// numerator is a multiple of 4000 (flagged the same way; the block goes to the reference).
// The numerators are below 2^20: floor(N / 4000) = ((N >> 5) * 33555) >> 22.
// Every step is checked over all colours and all 2x2 sums by the tests.

struct ByteIndex {
  alignas(64) std::uint8_t at[64];
};
struct WordIndex {
  alignas(64) std::uint16_t at[32];
};

// Word i holds pixel first + i's R and B bytes (source: 128 bytes from the row at `base`).
constexpr ByteIndex red_blue_words(int first) {
  ByteIndex t{};
  for (int i = 0; i < 32; ++i) {
    t.at[2 * i] = static_cast<std::uint8_t>(3 * i + first);
    t.at[2 * i + 1] = static_cast<std::uint8_t>(3 * i + first + 2);
  }
  return t;
}
// Word i holds pixel first + i's G byte (the high bytes are zeroed by the mask).
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
// Block of a chroma word after that packing (blocks 16-31 in the second register).
int block_of_chroma_word(int w) { return 4 * (w >> 3) + (w & 3); }

// packus_epi16 of the two packed chroma registers: lane k holds U and V of blocks 4k..4k+3
// from the first, then of blocks 16 + 4k.. from the second. This puts them in NV12 order.
constexpr ByteIndex chroma_in_nv12_order() {
  ByteIndex t{};
  for (int j = 0; j < 32; ++j) {
    const int b = j % 16, k = b / 4, m = b % 4, half = j < 16 ? 0 : 8;
    t.at[2 * j] = static_cast<std::uint8_t>(16 * k + half + m);
    t.at[2 * j + 1] = static_cast<std::uint8_t>(16 * k + half + 4 + m);
  }
  return t;
}

constexpr ByteIndex kRedBlueLow = red_blue_words(0), kRedBlueHigh = red_blue_words(32);
constexpr ByteIndex kGreenLow = green_words(0), kGreenHigh = green_words(32);
constexpr WordIndex kLowWords = low_words_as_packed();
constexpr ByteIndex kChromaOrder = chroma_in_nv12_order();

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

// Y of 32 pixels in 16-bit lanes; `multiple` flags the lanes whose N is a multiple of 1000.
__m512i luma32(__m512i red_blue, __m512i green, __mmask32& multiple) {
  const __m512i high = _mm512_add_epi16(
      _mm512_maddubs_epi16(red_blue, words(32 | 12 << 8)),
      _mm512_sub_epi16(_mm512_slli_epi16(green, 6), green));
  const __m512i low = _mm512_add_epi16(
      _mm512_maddubs_epi16(red_blue, words(1 | 2 << 8)),
      words(16500));
  const __m512i eighth = _mm512_add_epi16(high, _mm512_srli_epi16(low, 3));
  const __m512i y =
      _mm512_srli_epi16(_mm512_mulhi_epu16(eighth, words(33555)), 6);
  const __m512i n = _mm512_add_epi16(_mm512_slli_epi16(high, 3), low);
  multiple = _mm512_cmpeq_epi16_mask(_mm512_mullo_epi16(y, words(1000)), n);
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
  multiple = _mm512_cmpeq_epi16_mask(_mm512_mullo_epi16(q, words(4000)), low);
  return q;
}

struct RowPair {
  const std::uint8_t* top;
  const std::uint8_t* bottom;
  std::uint8_t* y_top;
  std::uint8_t* y_bottom;
  std::uint8_t* uv;
};

// Recomputes with the reference what the integers could not decide.
[[gnu::noinline, gnu::cold]] void settle_multiples(const RowPair& at, std::uint64_t y_top,
                                                   std::uint64_t y_bottom, std::uint32_t chroma_first,
                                                   std::uint32_t chroma_second) {
  for (; y_top != 0; y_top &= y_top - 1) {
    const int i = __builtin_ctzll(y_top);
    at.y_top[i] = rgb24_pixel_luma(at.top + 3 * i);
  }
  for (; y_bottom != 0; y_bottom &= y_bottom - 1) {
    const int i = __builtin_ctzll(y_bottom);
    at.y_bottom[i] = rgb24_pixel_luma(at.bottom + 3 * i);
  }
  const std::uint32_t chroma[2] = {chroma_first, chroma_second};
  for (int half = 0; half < 2; ++half) {
    for (std::uint32_t words = chroma[half]; words != 0; words &= words - 1) {
      const int block = 16 * half + block_of_chroma_word(__builtin_ctz(words));
      convert_rgb24_row_pair(at.top + 6 * block, at.bottom + 6 * block, 2, at.y_top + 2 * block,
                             at.y_bottom + 2 * block, at.uv + 2 * block);
    }
  }
}

std::uint64_t both_halves(__mmask32 low, __mmask32 high) {
  return std::uint64_t{low} | std::uint64_t{high} << 32;
}

enum class Store { Plain, Partial, Stream };

// `columns` (even, at most 64) columns of a row pair; Partial loads and stores only those.
template <Store kStore>
void convert64(const RowPair& at, unsigned columns) {
  __mmask64 loaded[3] = {~0ull, ~0ull, ~0ull};
  if constexpr (kStore == Store::Partial) {
    for (int k = 0; k < 3; ++k) {
      const int bytes = static_cast<int>(3 * columns) - 64 * k;
      loaded[k] = bytes >= 64 ? ~0ull : bytes <= 0 ? 0 : (1ull << bytes) - 1;
    }
  }
  const RowWords top = load_row<kStore == Store::Partial>(at.top, loaded);
  const RowWords bottom = load_row<kStore == Store::Partial>(at.bottom, loaded);

  __mmask32 flags[6];
  const __m512i pixel_order = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);
  const __m512i y_top = _mm512_permutexvar_epi64(
      pixel_order, _mm512_packus_epi16(luma32(top.red_blue[0], top.green[0], flags[0]),
                                       luma32(top.red_blue[1], top.green[1], flags[1])));
  const __m512i y_bottom = _mm512_permutexvar_epi64(
      pixel_order, _mm512_packus_epi16(luma32(bottom.red_blue[0], bottom.green[0], flags[2]),
                                       luma32(bottom.red_blue[1], bottom.green[1], flags[3])));
  const __m512i first = chroma_words(
      chroma_numerators(top.red_blue[0], top.green[0], bottom.red_blue[0], bottom.green[0]), flags[4]);
  const __m512i second = chroma_words(
      chroma_numerators(top.red_blue[1], top.green[1], bottom.red_blue[1], bottom.green[1]), flags[5]);
  const __m512i uv = _mm512_permutexvar_epi8(load(kChromaOrder), _mm512_packus_epi16(first, second));

  if constexpr (kStore == Store::Stream) {
    _mm512_stream_si512(reinterpret_cast<__m512i*>(at.y_top), y_top);
    _mm512_stream_si512(reinterpret_cast<__m512i*>(at.y_bottom), y_bottom);
    _mm512_stream_si512(reinterpret_cast<__m512i*>(at.uv), uv);
  } else if constexpr (kStore == Store::Plain) {
    _mm512_storeu_si512(at.y_top, y_top);
    _mm512_storeu_si512(at.y_bottom, y_bottom);
    _mm512_storeu_si512(at.uv, uv);
  } else {
    const __mmask64 stored = columns >= 64 ? ~0ull : (1ull << columns) - 1;
    _mm512_mask_storeu_epi8(at.y_top, stored, y_top);
    _mm512_mask_storeu_epi8(at.y_bottom, stored, y_bottom);
    _mm512_mask_storeu_epi8(at.uv, stored, uv);
  }
  // Zeroed pixels past a partial run flag nothing: N = 16500 and both chroma numerators are
  // 514000, none a multiple.
  if ((flags[0] | flags[1] | flags[2] | flags[3] | flags[4] | flags[5]) != 0) {
    settle_multiples(at, both_halves(flags[0], flags[1]), both_halves(flags[2], flags[3]),
                     flags[4], flags[5]);
  }
}

template <Store kStore>
void rgb24_row_pair(RowPair at, std::uint32_t width) {
  std::uint32_t x = 0;
  for (; x + 64 <= width; x += 64) {
    convert64<kStore>(at, 64);
    at.top += 192, at.bottom += 192, at.y_top += 64, at.y_bottom += 64, at.uv += 64;
  }
  const std::uint32_t even_rest = (width - x) & ~1u;
  if (even_rest != 0) {
    convert64<Store::Partial>(at, even_rest);
    at.top += 3 * even_rest, at.bottom += 3 * even_rest;
    at.y_top += even_rest, at.y_bottom += even_rest, at.uv += even_rest;
  }
  if (width % 2 != 0) convert_rgb24_row_pair(at.top, at.bottom, 1, at.y_top, at.y_bottom, at.uv);
}

void rgb24_to_nv12(const std::uint8_t* src, std::uint32_t width, std::uint32_t height,
                   std::uint8_t* dst) {
  const std::size_t src_row = std::size_t{width} * 3, pixels = std::size_t{width} * height;
  std::uint8_t* chroma = dst + pixels;
  // A frame larger than the cache would only evict what is there: stream it past, when every
  // store lands on a whole aligned line.
  const bool stream = pixels * 3 + pixels * 3 / 2 > last_level_cache_bytes() && width % 64 == 0 &&
                      reinterpret_cast<std::uintptr_t>(dst) % 64 == 0;
  for (std::size_t pair = 0; pair < height / 2; ++pair) {
    const std::size_t top = pair * 2;
    const RowPair at = {src + top * src_row, src + (top + 1) * src_row, dst + top * width,
                        dst + (top + 1) * width, chroma + pair * width};
    if (stream) {
      rgb24_row_pair<Store::Stream>(at, width);
    } else {
      rgb24_row_pair<Store::Plain>(at, width);
    }
  }
  if (stream) _mm_sfence();
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
