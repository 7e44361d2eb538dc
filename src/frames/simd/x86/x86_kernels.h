// The x86-64 kernel tables, one translation unit each, compiled for their instruction set.
// Only pixel_kernels.cpp refers to them, and only after checking the CPU.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frames/simd/pixel_kernels.h"

// Kernel steps are small functions; the compiler must fold them into the loop, where their
// constants stay in registers.
#if defined(_MSC_VER) && !defined(__clang__)
#define VEXCAP_KERNEL_STEP __forceinline
#else
#define VEXCAP_KERNEL_STEP [[gnu::always_inline]] inline
#endif

namespace vexcap::frames::x86 {

const PixelKernels& sse2_kernels();
const PixelKernels& avx2_kernels();
const PixelKernels& avx512_kernels();

// Every level's streamed rows for its quarter-turn tiles (QuarterTurnTiles), in SSE2, which
// every x86-64 CPU runs: 256-bit stores measured no faster.
void stream_rows(const std::uint8_t* src, std::size_t src_pitch, std::uint8_t* dst, std::size_t dst_pitch,
                 std::uint32_t rows, std::size_t bytes);
void finish_streams();

}  // namespace vexcap::frames::x86
