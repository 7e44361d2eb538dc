// Tile transposes by interleaving, for every vector width and unit size. Everything here sits
// in an unnamed namespace: each kernel file gets its own copy, built for its instruction set,
// and none can be shared with a file built for another.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "frames/simd/x86/x86_kernels.h"

namespace vexcap::frames::x86 {
namespace {

// Interleaving row i with row i + n/2, log2(n) times over, transposes n rows of n units
// (within each 128-bit lane of the registers). interleave(a, b, low, high) sets `low` and
// `high` to the units of a and b interleaved from their lower and upper halves.
template <int N, class Vec, class Interleave>
VEXCAP_KERNEL_STEP void transpose_by_interleaving(Vec (&r)[N], Interleave interleave) {
  constexpr int kRounds = std::bit_width(static_cast<unsigned>(N)) - 1;
#pragma GCC unroll 16
  for (int round = 0; round < kRounds; ++round) {
    Vec t[N];
#pragma GCC unroll 16
    for (int i = 0; i < N / 2; ++i) interleave(r[i], r[i + N / 2], t[2 * i], t[2 * i + 1]);
#pragma GCC unroll 16
    for (int i = 0; i < N; ++i) r[i] = t[i];
  }
}

// One tile: register i = load(i), transposed, then store(j, register j).
template <int N, class Vec, class Load, class Interleave, class Store>
VEXCAP_KERNEL_STEP void turn_tile(Load load, Interleave interleave, Store store) {
  Vec r[N];
#pragma GCC unroll 16
  for (int i = 0; i < N; ++i) r[i] = load(i);
  transpose_by_interleaving<N>(r, interleave);
#pragma GCC unroll 16
  for (int j = 0; j < N; ++j) store(j, r[j]);
}

}  // namespace
}  // namespace vexcap::frames::x86
