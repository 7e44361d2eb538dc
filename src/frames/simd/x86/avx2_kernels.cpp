// AVX2 kernels. Built with -mavx2 -ffp-contract=off: no fused multiply-add may change a byte.
//
// Besides <immintrin.h>, only declarations may be included, and templates that this file
// instantiates with its own types or keeps in an unnamed namespace: any other inline function
// compiled here could be shared with translation units that run on CPUs without AVX2.
#include <immintrin.h>
#if defined(_MSC_VER) && !defined(__clang__)
#include <intrin.h>  // __movsb
#endif

#include <cstdint>
#include <cstring>

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
// A run needs more vectors than the 16 registers hold: the pointers travel by value (a row
// pair in memory would be reloaded after every store, which may alias it), and the constants
// are read as memory operands through a pointer the compiler cannot see through, which keeps
// it from rebuilding them in registers (and from turning the multiplications into shifts).

struct alignas(32) Vector {
  std::int8_t at[32];
};

constexpr Vector repeat_dwords(std::uint32_t value) {
  Vector v{};
  for (int i = 0; i < 32; ++i) v.at[i] = static_cast<std::int8_t>(value >> 8 * (i % 4) & 0xFF);
  return v;
}
constexpr Vector repeat_words(int value) {
  return repeat_dwords(static_cast<std::uint32_t>(value & 0xFFFF) * 0x10001u);
}
// Two 16-bit values in every 32-bit lane.
constexpr Vector repeat_word_pairs(int low, int high) {
  return repeat_dwords(static_cast<std::uint32_t>(low & 0xFFFF) |
                       static_cast<std::uint32_t>(high & 0xFFFF) << 16);
}

// Sixteen pixels (48 bytes) become words, lane L holding pixels 8L..8L+7. Two loads cover
// them: `low` (bytes 0-31) and `high` (bytes 16-47), each lane's pixels lying in the same lane
// of the two, so nothing past the sixteenth pixel is read. This picks byte `first` of pixel i,
// then (unless negative) byte `second`, into word i, from `high` (from_high) or from `low`.
constexpr Vector pick(bool from_high, int first, int second) {
  Vector v{};
  for (int lane = 0; lane < 2; ++lane)
    for (int i = 0; i < 8; ++i)
      for (int half = 0; half < 2; ++half) {
        const int channel = half == 0 ? first : second;
        const int at = 24 * lane + 3 * i + channel;  // byte of the 48
        const int in_low = at - 16 * lane, in_high = at - 16 - 16 * lane;
        const bool high = in_low >= 16;
        v.at[16 * lane + 2 * i + half] =
            static_cast<std::int8_t>(channel < 0 || high != from_high ? -1 : high ? in_high : in_low);
      }
  return v;
}

// The G bytes of a lane's eight pixels never share a position between `low` and `high`: one
// byte blend gathers all eight, one shuffle spreads them to words.
struct GreenPlace {
  bool from_high;
  int position;  // within the lane
};
constexpr GreenPlace green_place(int lane, int i) {
  const int at = 24 * lane + 3 * i + 1;  // byte of the 48
  const int in_low = at - 16 * lane;
  return in_low < 16 ? GreenPlace{false, in_low} : GreenPlace{true, at - 16 - 16 * lane};
}
constexpr Vector green_bytes_from_high() {
  Vector v{};
  for (int lane = 0; lane < 2; ++lane)
    for (int i = 0; i < 8; ++i) {
      const GreenPlace g = green_place(lane, i);
      if (g.from_high) v.at[16 * lane + g.position] = -1;
    }
  return v;
}
constexpr Vector green_of_blend() {
  Vector v{};
  for (int lane = 0; lane < 2; ++lane)
    for (int i = 0; i < 8; ++i) {
      v.at[16 * lane + 2 * i] = static_cast<std::int8_t>(green_place(lane, i).position);
      v.at[16 * lane + 2 * i + 1] = -1;
    }
  return v;
}

// Each 32-bit lane holds R, B of pixels 2j and 2j + 1: reordered to R R B B, one vpmaddubsw
// sums them into SR | SB << 16.
constexpr Vector reds_then_blues() {
  Vector v{};
  constexpr int kOrder[4] = {0, 2, 1, 3};
  for (int i = 0; i < 32; ++i) v.at[i] = static_cast<std::int8_t>(i % 16 / 4 * 4 + kOrder[i % 4]);
  return v;
}

struct Rgb24Constants {
  Vector red_blue_low = pick(false, 0, 2), red_blue_high = pick(true, 0, 2);
  Vector green_from_high = green_bytes_from_high(), green = green_of_blend();
  // Y: N = 8 H + L with H = 32 R + 63 G + 12 B and L = R + 2 B + 16500.
  Vector luma_high_red_blue = repeat_words(32 | 12 << 8), luma_high_green = repeat_words(63);
  Vector luma_low_red_blue = repeat_words(1 | 2 << 8), luma_bias = repeat_words(16500);
  // floor(x / 125) = (x * 33555) >> 22 for the eighths of Y's and chroma's numerators.
  Vector by_125 = repeat_words(33555);
  Vector thousand = repeat_words(1000), four_thousand = repeat_words(4000);
  Vector reds_then_blues = vexcap::frames::x86::reds_then_blues();
  Vector one_bytes = repeat_dwords(0x01010101), one_words = repeat_words(1);
  Vector sixteen_high = repeat_dwords(16u << 16);
  // 16 x 32125 = 514000.
  Vector u_red_blue = repeat_word_pairs(-148, 439), u_green_bias = repeat_word_pairs(-291, 32125);
  Vector v_red_blue = repeat_word_pairs(439, -71), v_green_bias = repeat_word_pairs(-368, 32125);
};
constexpr Rgb24Constants kRgb24Constants{};

const Rgb24Constants* opaque_constants() {
  const Rgb24Constants* k = &kRgb24Constants;
#if defined(__GNUC__)
  asm("" : "+r"(k));
#endif
  return k;
}

__m256i load(const Vector& v) { return _mm256_load_si256(reinterpret_cast<const __m256i*>(v.at)); }

struct Words16 {
  __m256i red_blue, green;
};

VEXCAP_KERNEL_STEP Words16 load16(const std::uint8_t* p, const Rgb24Constants& k) {
  __m256i low = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
  __m256i high = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + 16));
#if defined(__GNUC__)
  // Loaded once: GCC would rather load these again than keep them, and loads that straddle
  // cache lines (most of them, 48 bytes apart) cost twice.
  asm("" : "+x"(low), "+x"(high));
#endif
  return {_mm256_or_si256(_mm256_shuffle_epi8(low, load(k.red_blue_low)),
                          _mm256_shuffle_epi8(high, load(k.red_blue_high))),
          _mm256_shuffle_epi8(_mm256_blendv_epi8(low, high, load(k.green_from_high)), load(k.green))};
}

// Y of 16 pixels as words; all-ones words of `multiple` where N is a multiple of 1000.
VEXCAP_KERNEL_STEP __m256i luma16(const Words16& px, const Rgb24Constants& k, __m256i& multiple) {
  const __m256i high = _mm256_add_epi16(_mm256_maddubs_epi16(px.red_blue, load(k.luma_high_red_blue)),
                                        _mm256_maddubs_epi16(px.green, load(k.luma_high_green)));
  const __m256i low = _mm256_add_epi16(_mm256_maddubs_epi16(px.red_blue, load(k.luma_low_red_blue)),
                                       load(k.luma_bias));
  const __m256i eighth = _mm256_add_epi16(high, _mm256_srli_epi16(low, 3));
  const __m256i y = _mm256_srli_epi16(_mm256_mulhi_epu16(eighth, load(k.by_125)), 6);
  // N and 1000 Y agree modulo 2^16 exactly when N is a multiple of 1000.
  const __m256i n = _mm256_add_epi16(_mm256_slli_epi16(high, 3), low);
  multiple = _mm256_cmpeq_epi16(_mm256_mullo_epi16(y, load(k.thousand)), n);
  return y;
}

// U and V of 8 blocks as words (block j: words 2j and 2j + 1) and the words whose numerator
// is a multiple of 4000.
VEXCAP_KERNEL_STEP __m256i chroma8(const Words16& top, const Words16& bottom,
                                   const Rgb24Constants& k, __m256i& multiple) {
  const __m256i red_blue = _mm256_add_epi16(
      _mm256_maddubs_epi16(_mm256_shuffle_epi8(top.red_blue, load(k.reds_then_blues)), load(k.one_bytes)),
      _mm256_maddubs_epi16(_mm256_shuffle_epi8(bottom.red_blue, load(k.reds_then_blues)),
                           load(k.one_bytes)));
  // SG | 16 << 16.
  const __m256i green_bias = _mm256_or_si256(
      _mm256_madd_epi16(_mm256_add_epi16(top.green, bottom.green), load(k.one_words)),
      load(k.sixteen_high));
  const __m256i nu = _mm256_add_epi32(_mm256_madd_epi16(red_blue, load(k.u_red_blue)),
                                      _mm256_madd_epi16(green_bias, load(k.u_green_bias)));
  const __m256i nv = _mm256_add_epi32(_mm256_madd_epi16(red_blue, load(k.v_red_blue)),
                                      _mm256_madd_epi16(green_bias, load(k.v_green_bias)));
  // Block j's U and V side by side in 32-bit lane j, as NV12 stores them.
  const __m256i eighth = _mm256_blend_epi16(_mm256_srli_epi32(nu, 5), _mm256_slli_epi32(nv, 11), 0xAA);
  const __m256i q = _mm256_srli_epi16(_mm256_mulhi_epu16(eighth, load(k.by_125)), 6);
  const __m256i low = _mm256_blend_epi16(nu, _mm256_slli_epi32(nv, 16), 0xAA);
  multiple = _mm256_cmpeq_epi16(_mm256_mullo_epi16(q, load(k.four_thousand)), low);
  return q;
}

// The Y rows and the chroma row of a run, each packed in column order.
struct Run32 {
  __m256i y_top, y_bottom, uv;
};

// The whole-number flags of one half of a run: luma words of the top row, of the bottom row,
// chroma words.
struct HalfFlags {
  __m256i top, bottom, chroma;
};

// One half of a run: sixteen columns of both rows.
VEXCAP_KERNEL_STEP void convert16(const std::uint8_t* top, const std::uint8_t* bottom,
                                  const Rgb24Constants& k, __m256i (&out)[3], HalfFlags& flags) {
  const Words16 t = load16(top, k), b = load16(bottom, k);
  out[0] = luma16(t, k, flags.top);
  out[1] = luma16(b, k, flags.bottom);
  out[2] = chroma8(t, b, k, flags.chroma);
}

// packus and packs interleave the lanes of their two registers: vpermq 0xD8 puts the quarters
// in order.
VEXCAP_KERNEL_STEP __m256i in_order(__m256i v) { return _mm256_permute4x64_epi64(v, 0xD8); }

// A run's flags, each half's words packed into bytes (put in column order only by the rare run
// that has one). Packed, the three stay in registers to the run's one test; stored half by half
// as they came, the 1080p loop took a fiftieth longer (AMD Zen 4).
struct RunFlags {
  __m256i top, bottom, chroma;
};

VEXCAP_KERNEL_STEP Run32 convert32(const Rgb24RowPair& at, const Rgb24Constants& k, RunFlags& flags) {
  __m256i first[3], second[3];
  HalfFlags f0, f1;
  convert16(at.top, at.bottom, k, first, f0);
  convert16(at.top + 48, at.bottom + 48, k, second, f1);
  flags = {_mm256_packs_epi16(f0.top, f1.top), _mm256_packs_epi16(f0.bottom, f1.bottom),
           _mm256_packs_epi16(f0.chroma, f1.chroma)};
  return {in_order(_mm256_packus_epi16(first[0], second[0])),
          in_order(_mm256_packus_epi16(first[1], second[1])),
          in_order(_mm256_packus_epi16(first[2], second[2]))};
}

// Bit i set for each flagged byte i.
std::uint32_t byte_bits(__m256i packed) {
  return static_cast<std::uint32_t>(_mm256_movemask_epi8(in_order(packed)));
}
// Bit j set where block j's U or V is flagged: bytes 2j and 2j + 1.
std::uint32_t flagged_blocks(__m256i packed) {
  const std::uint32_t bytes = byte_bits(packed);
  std::uint32_t blocks = 0;
  for (int j = 0; j < 16; ++j) blocks |= ((bytes >> 2 * j) & 3u) != 0 ? 1u << j : 0u;
  return blocks;
}

// Thirty-two columns of a row pair.
struct Rgb24Runs {
  static constexpr std::uint32_t kColumns = 32;
  const Rgb24Constants* constants = opaque_constants();

  VEXCAP_KERNEL_STEP void convert(Rgb24RowPair at) const {
    RunFlags flags;
    const Run32 run = convert32(at, *constants, flags);
    store(at.y_top, run.y_top);
    store(at.y_bottom, run.y_bottom);
    store(at.uv, run.uv);
    // The rare run with a whole number: the flags become bit masks here, and one call out of
    // the loop settles them. The row pair is copied for the call only, so that the loop keeps
    // its pointers in registers.
    const __m256i any = _mm256_or_si256(_mm256_or_si256(flags.top, flags.bottom), flags.chroma);
    if (!_mm256_testz_si256(any, any)) [[unlikely]] {
      const Rgb24RowPair pair{at.top, at.bottom, at.y_top, at.y_bottom, at.uv};
      settle_whole_numbers(pair, byte_bits(flags.top), byte_bits(flags.bottom), flagged_blocks(flags.chroma));
    }
  }
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

// ---- Copy -----------------------------------------------------------------------------------
// Records of a few kilobytes up to a megabyte go to the processor's string move (`rep movsb`),
// which may fill whole destination lines without reading them first: into a record's block
// that had left the caches, vector stores took a tenth longer (Gray8 640x480, AMD Zen 4). Not when
// the destination lies less than a line past the source modulo 4096, where the string move
// runs up to sixteen times slower on AMD CPUs, nor for larger records, where it lost to the
// vector moves (NV12 1080p from memory).
constexpr std::size_t kStringMoveFrom = 4096;
constexpr std::size_t kStringMoveBelow = std::size_t{1} << 20;

bool string_move_pays(const std::uint8_t* dst, const std::uint8_t* src, std::size_t bytes) {
  const std::uintptr_t distance =
      (reinterpret_cast<std::uintptr_t>(dst) - reinterpret_cast<std::uintptr_t>(src)) & 4095;
  return bytes >= kStringMoveFrom && bytes < kStringMoveBelow && distance >= 64;
}

void string_move(std::uint8_t* dst, const std::uint8_t* src, std::size_t bytes) {
#if defined(_MSC_VER) && !defined(__clang__)
  __movsb(dst, src, bytes);
#else
  asm volatile("rep movsb" : "+D"(dst), "+S"(src), "+c"(bytes) : : "memory");
#endif
}

// Otherwise 128 bytes a step into 32-byte aligned destination lines; the first and last 32
// bytes are stored unaligned, overlapping the steps beside them.

__m256i load256(const std::uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }

void copy_bytes(std::uint8_t* dst, const std::uint8_t* src, std::size_t bytes) {
  if (string_move_pays(dst, src, bytes)) return string_move(dst, src, bytes);
  if (bytes < 32) {
    if (bytes != 0) std::memcpy(dst, src, bytes);
    return;
  }
  const __m256i first = load256(src), last = load256(src + bytes - 32);
  const std::size_t skip = 32 - (reinterpret_cast<std::uintptr_t>(dst) & 31);
  std::size_t at = skip;
  for (; at + 128 <= bytes; at += 128) {
    const __m256i a = load256(src + at), b = load256(src + at + 32);
    const __m256i c = load256(src + at + 64), d = load256(src + at + 96);
    _mm256_store_si256(reinterpret_cast<__m256i*>(dst + at), a);
    _mm256_store_si256(reinterpret_cast<__m256i*>(dst + at + 32), b);
    _mm256_store_si256(reinterpret_cast<__m256i*>(dst + at + 64), c);
    _mm256_store_si256(reinterpret_cast<__m256i*>(dst + at + 96), d);
  }
  for (; at + 32 <= bytes; at += 32)
    _mm256_store_si256(reinterpret_cast<__m256i*>(dst + at), load256(src + at));
  store(dst, first);
  store(dst + bytes - 32, last);
}

const PixelKernels kKernels = {SimdLevel::Avx2, rgb24_to_nv12,
                               rotate_clockwise_in_tiles<avx2_tiles::kTiles>,
                               rotate_counterclockwise_in_tiles<avx2_tiles::kTiles>, reverse_units,
                               copy_bytes};

}  // namespace

const PixelKernels& avx2_kernels() { return kKernels; }

}  // namespace vexcap::frames::x86
