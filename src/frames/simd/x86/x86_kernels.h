// The x86-64 kernel tables, one translation unit each, compiled for their instruction set.
// Only pixel_kernels.cpp refers to them, and only after checking the CPU.
#pragma once

#include <cstddef>

#include "frames/simd/pixel_kernels.h"

namespace vexcap::frames::x86 {

const PixelKernels& sse2_kernels();
const PixelKernels& avx2_kernels();
const PixelKernels& avx512_kernels();

// Bytes of the last-level cache (cpuid), 8 MiB when the CPU does not say. Kernels whose
// frames exceed it write with non-temporal stores rather than evict what is cached.
std::size_t last_level_cache_bytes();

}  // namespace vexcap::frames::x86
