// AVX2 kernels. Built with -mavx2 -ffp-contract=off: no fused multiply-add may change a byte.
//
// Besides <immintrin.h>, only declarations may be included, and templates that this file
// instantiates with its own types or keeps in an unnamed namespace: any other inline function
// compiled here could be shared with translation units that run on CPUs without AVX2.
#include <immintrin.h>

#include <cstdint>

#include "frames/rgb24_to_nv12.h"
#include "frames/simd/rgb24_row_pair_walker.h"
#include "frames/simd/rgb24_whole_numbers.h"
#include "frames/simd/x86/avx2_tiles.h"
#include "frames/simd/x86/x86_kernels.h"

namespace vexcap::frames::x86 {
namespace {

void store(std::uint8_t* p, __m256i v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }

// ---- RGB24 to NV12: thirty-two columns of a row pair at a time -----------------------------
// The integer arithmetic of the AVX-512 kernel (see rgb24_whole_numbers.h), in 256-bit lanes:
// pixels deinterleaved with byte shuffles into R | B << 8 and G words, Y and chroma from them.

__m256i words(int v) { return _mm256_set1_epi16(static_cast<short>(v)); }
__m256i word_pairs(int low, int high) {
  return _mm256_set1_epi32(
      static_cast<int>((static_cast<unsigned>(high) << 16) | (static_cast<unsigned>(low) & 0xFFFF)));
}
// A constant GCC must multiply by: it would otherwise turn each vpmullw into shifts.
__m256i opaque_words(int v) {
  __m256i k = words(v);
#if defined(__GNUC__)
  asm("" : "+x"(k));
#endif
  return k;
}

// Sixteen pixels (48 bytes) as words, lane L holding pixels 8L..8L+7. Two loads cover them:
// `low` (bytes 0-31) and `high` (bytes 16-47), each lane's pixels lying in the same lane of
// the two, so nothing past the sixteenth pixel is read.
struct Words16 {
  __m256i red_blue, green;
};

// Byte `first` of pixel i, then (unless negative) byte `second`, into word i, from `high`
// (from_high) or from `low`.
__m256i pick(bool from_high, int first, int second) {
  alignas(32) std::int8_t idx[32];
  for (int lane = 0; lane < 2; ++lane)
    for (int i = 0; i < 8; ++i)
      for (int half = 0; half < 2; ++half) {
        const int channel = half == 0 ? first : second;
        const int at = 24 * lane + 3 * i + channel;  // byte of the 48
        const int in_low = at - 16 * lane, in_high = at - 16 - 16 * lane;
        const bool high = in_low >= 16;
        idx[16 * lane + 2 * i + half] =
            static_cast<std::int8_t>(channel < 0 || high != from_high ? -1 : high ? in_high : in_low);
      }
  return _mm256_load_si256(reinterpret_cast<const __m256i*>(idx));
}

struct Picks {
  __m256i rb_low, rb_high, g_low, g_high;
};
Picks make_picks() {
  return {pick(false, 0, 2), pick(true, 0, 2), pick(false, 1, -1), pick(true, 1, -1)};
}

VEXCAP_KERNEL_STEP Words16 load16(const std::uint8_t* p, const Picks& picks) {
  const __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
  const __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 16));
  return {_mm256_or_si256(_mm256_shuffle_epi8(low, picks.rb_low),
                          _mm256_shuffle_epi8(high, picks.rb_high)),
          _mm256_or_si256(_mm256_shuffle_epi8(low, picks.g_low),
                          _mm256_shuffle_epi8(high, picks.g_high))};
}

// Y of 16 pixels as words; `multiple` gets all-ones in the words whose N is a multiple of 1000.
VEXCAP_KERNEL_STEP __m256i luma16(const Words16& px, __m256i& multiple) {
  const __m256i high = _mm256_add_epi16(_mm256_maddubs_epi16(px.red_blue, words(32 | 12 << 8)),
                                        _mm256_maddubs_epi16(px.green, words(63)));
  const __m256i low =
      _mm256_add_epi16(_mm256_maddubs_epi16(px.red_blue, words(1 | 2 << 8)), words(16500));
  const __m256i eighth = _mm256_add_epi16(high, _mm256_srli_epi16(low, 3));
  const __m256i y = _mm256_srli_epi16(_mm256_mulhi_epu16(eighth, words(33555)), 6);
  // N and 1000 Y agree modulo 2^16 exactly when N is a multiple of 1000.
  const __m256i n = _mm256_add_epi16(_mm256_slli_epi16(high, 3), low);
  multiple = _mm256_cmpeq_epi16(_mm256_mullo_epi16(y, opaque_words(1000)), n);
  return y;
}

// U and V of 8 blocks as words (block j: words 2j and 2j + 1) and the words whose numerator
// is a multiple of 4000.
VEXCAP_KERNEL_STEP __m256i chroma8(const Words16& top, const Words16& bottom,
                                              __m256i& multiple) {
  // Each 32-bit lane holds R, B of pixels 2j and 2j + 1: reordered to R R B B, one vpmaddubsw
  // sums them into SR | SB << 16 (per row, then the rows added).
  const __m256i reds_then_blues = _mm256_setr_epi8(0, 2, 1, 3, 4, 6, 5, 7, 8, 10, 9, 11, 12, 14, 13, 15,
                                                   0, 2, 1, 3, 4, 6, 5, 7, 8, 10, 9, 11, 12, 14, 13, 15);
  const __m256i ones = _mm256_set1_epi8(1);
  const __m256i red_blue = _mm256_add_epi16(
      _mm256_maddubs_epi16(_mm256_shuffle_epi8(top.red_blue, reds_then_blues), ones),
      _mm256_maddubs_epi16(_mm256_shuffle_epi8(bottom.red_blue, reds_then_blues), ones));
  // SG | 16 << 16; 16 x 32125 = 514000.
  const __m256i green_bias =
      _mm256_or_si256(_mm256_madd_epi16(_mm256_add_epi16(top.green, bottom.green), words(1)),
                      _mm256_set1_epi32(16 << 16));
  const __m256i nu = _mm256_add_epi32(_mm256_madd_epi16(red_blue, word_pairs(-148, 439)),
                                      _mm256_madd_epi16(green_bias, word_pairs(-291, 32125)));
  const __m256i nv = _mm256_add_epi32(_mm256_madd_epi16(red_blue, word_pairs(439, -71)),
                                      _mm256_madd_epi16(green_bias, word_pairs(-368, 32125)));
  // Block j's U and V side by side in 32-bit lane j, as NV12 stores them.
  const __m256i eighth = _mm256_blend_epi16(_mm256_srli_epi32(nu, 5), _mm256_slli_epi32(nv, 11), 0xAA);
  const __m256i q = _mm256_srli_epi16(_mm256_mulhi_epu16(eighth, words(33555)), 6);
  const __m256i low = _mm256_blend_epi16(nu, _mm256_slli_epi32(nv, 16), 0xAA);
  multiple = _mm256_cmpeq_epi16(_mm256_mullo_epi16(q, opaque_words(4000)), low);
  return q;
}

// Bit i set for each all-ones word i of the two 16-word flag registers.
std::uint32_t word_bits(__m256i first, __m256i second) {
  std::uint32_t bits = 0;
  const std::uint32_t bytes[2] = {static_cast<std::uint32_t>(_mm256_movemask_epi8(first)),
                                  static_cast<std::uint32_t>(_mm256_movemask_epi8(second))};
  for (int i = 0; i < 32; ++i) bits |= (bytes[i / 16] >> (2 * (i % 16)) & 1u) << i;
  return bits;
}
// Blocks with a flagged U or V word (words 2j, 2j + 1: block j).
std::uint32_t blocks_of_chroma_words(std::uint32_t chroma_words) {
  std::uint32_t blocks = 0;
  for (int j = 0; j < 16; ++j) blocks |= (chroma_words >> 2 * j & 3u ? 1u : 0u) << j;
  return blocks;
}

VEXCAP_KERNEL_STEP void convert32(const Rgb24RowPair& at, const Picks& picks) {
  const Words16 top[2] = {load16(at.top, picks), load16(at.top + 48, picks)};
  const Words16 bottom[2] = {load16(at.bottom, picks), load16(at.bottom + 48, picks)};
  __m256i flags[6];
  // packus interleaves the lanes of its two registers: vpermq 0xD8 puts the quarters in order.
  const __m256i y_top = _mm256_permute4x64_epi64(
      _mm256_packus_epi16(luma16(top[0], flags[0]), luma16(top[1], flags[1])), 0xD8);
  const __m256i y_bottom = _mm256_permute4x64_epi64(
      _mm256_packus_epi16(luma16(bottom[0], flags[2]), luma16(bottom[1], flags[3])), 0xD8);
  const __m256i uv = _mm256_permute4x64_epi64(
      _mm256_packus_epi16(chroma8(top[0], bottom[0], flags[4]), chroma8(top[1], bottom[1], flags[5])),
      0xD8);
  store(at.y_top, y_top);
  store(at.y_bottom, y_bottom);
  store(at.uv, uv);
  const __m256i any = _mm256_or_si256(_mm256_or_si256(flags[0], flags[1]),
                                      _mm256_or_si256(_mm256_or_si256(flags[2], flags[3]),
                                                      _mm256_or_si256(flags[4], flags[5])));
  if (!_mm256_testz_si256(any, any)) [[unlikely]] {
    settle_whole_numbers(at, word_bits(flags[0], flags[1]), word_bits(flags[2], flags[3]),
                         blocks_of_chroma_words(word_bits(flags[4], flags[5])));
  }
}

// Thirty-two columns of a row pair.
struct Rgb24Runs {
  static constexpr std::uint32_t kColumns = 32;
  Picks picks = make_picks();

  VEXCAP_KERNEL_STEP void convert(const Rgb24RowPair& at) const { convert32(at, picks); }
};

void rgb24_to_nv12(const std::uint8_t* src, std::uint32_t width, std::uint32_t height,
                   std::uint8_t* dst) {
  convert_rgb24_frame_in_runs(Rgb24Runs{}, src, width, height, dst);
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

const PixelKernels kKernels = {SimdLevel::Avx2, rgb24_to_nv12,
                               rotate_clockwise_in_tiles<avx2_tiles::kTiles>,
                               rotate_counterclockwise_in_tiles<avx2_tiles::kTiles>, reverse_units};

}  // namespace

const PixelKernels& avx2_kernels() { return kKernels; }

}  // namespace vexcap::frames::x86
