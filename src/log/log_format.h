// Rewrites the library's Windows-flavoured printf conversions for the C runtime in use.
#pragma once

#include <cstddef>

namespace vexcap::log {

// Translates `format` into `out` (capacity bytes, always terminated):
//   %ws -> %ls; %I64x -> %llx; and, where long is 64-bit, %lu / %ld / %lx / %li / %lX ->
//   without the l, because the library passes 32-bit values for them (Windows' long).
// Returns false, leaving `out` unusable, when the translation does not fit.
bool translate_format(const char* format, char* out, std::size_t capacity);

}  // namespace vexcap::log
