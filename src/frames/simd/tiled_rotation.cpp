#include "frames/simd/tiled_rotation.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace vexcap::frames {
namespace {

// Tiles every `size` units from `begin` to `end`, and where that leaves a ragged end one more
// flush with it, overlapping the one before: a quarter turn never writes its source, so units
// written twice get the same bytes twice, where the scalar moves cost ten times a tile's.
template <class Visit>
void for_each_tile_start(std::uint32_t begin, std::uint32_t end, std::uint32_t size, Visit visit) {
  std::uint32_t at = begin;
  for (; at + size <= end; at += size) visit(at);
  if (at != end) visit(end - size);
}

// The same from `end` back to `begin`; a ragged start takes the tile at `begin`, or, when the
// span is shorter than a tile, the one ending at `end`.
template <class Visit>
void for_each_tile_start_backwards(std::uint32_t begin, std::uint32_t end, std::uint32_t size, Visit visit) {
  std::uint32_t at = end;
  for (; at >= begin + size; at -= size) visit(at - size);
  if (at != begin) visit(std::min(begin, end - size));
}

// A strip reads one line per source row, each on its own page once rows are a page long: down
// a 4K plane that is more pages than a second-level TLB maps, and every strip walks them all
// again. Tall planes are walked in bands of rows instead, each band's pages serving all of
// its strips (a 4K Gray16 frame from memory took two thirds of the time). At 1080 rows bands
// lost to the whole plane.
constexpr std::uint32_t kBandRows = 512;
constexpr std::uint32_t kBandedAbove = 1536;

// A tile writes a short piece of each of its destination rows and the strip's next tiles the
// pieces beside it, so the first piece of a line waits for the line to come from memory. Once
// per line, the lines one line further along the rows are asked for, for writing, while this
// tile is turned (frames from memory took about a tenth less).
constexpr std::uintptr_t kLineBytes = 64;

class DestinationFetch {
 public:
  DestinationFetch(std::size_t pitch, std::uint32_t rows) : pitch_(pitch), rows_(rows) {}

  void after_tile(const std::uint8_t* written) {
    const std::uintptr_t ahead = reinterpret_cast<std::uintptr_t>(written) + kLineBytes;
    if (ahead / kLineBytes == line_) return;
    line_ = ahead / kLineBytes;
#if defined(__GNUC__)
    for (std::uint32_t row = 0; row < rows_; ++row)
      __builtin_prefetch(reinterpret_cast<const void*>(ahead + row * pitch_), 1, 3);
#endif
  }

 private:
  std::size_t pitch_;
  std::uint32_t rows_;
  std::uintptr_t line_ = 0;
};

// Planes of 8 MiB and more (a 4K frame's plane) are turned a strip at a time into a buffer on
// the stack, whose rows then go to the destination in whole lines stored past the caches: the
// destination is not read for ownership first, and a plane that large mostly leaves the
// caches anyway. 4K turns from memory took up to a seventh less, hot ones as long (AMD Zen 4,
// paired runs). At 720p and 1080p the turn from memory took up to a third less, but into a
// destination still cached up to half as long again, so smaller planes keep the caches.
constexpr std::size_t kStreamedFrom = std::size_t{8} << 20;

// A strip buffer row holds a band's units with a line either side: a band shorter than a tile
// takes a tile that starts before it or ends after it. 16 rows of the widest band of bytes.
constexpr std::size_t kStripBytes = 16 * (kBandedAbove + 2 * kLineBytes);

std::size_t strip_pitch(std::uint32_t band, std::size_t unit) {
  return (band * unit + kLineBytes - 1) / kLineBytes * kLineBytes + 2 * kLineBytes;
}

std::uint32_t band_rows(std::uint32_t rows) { return rows > kBandedAbove ? kBandRows : rows; }

// Strips of `shape.cols` source columns, walked along the band: each strip fills `shape.cols`
// destination rows, and the source lines it reads serve the next strips while they are still
// cached. Every destination row is written front to back: turned clockwise, a lower source
// row lands further left, so clockwise strips (and bands) go from the bottom up. Written back
// to front, a turn from memory took up to a quarter longer (Gray16 at every size, AMD Zen 4).
// `strip` is a streamed turn's buffer, or null: the tiles then write the destination itself.
void turn_in_strips(const QuarterTurnTiles& tiles, const UnitTiles& kind, bool clockwise,
                    const std::uint8_t* src, std::size_t src_pitch, UnitGrid grid, std::uint8_t* dst,
                    std::size_t dst_pitch, std::uint8_t* strip) {
  const bool streamed = strip != nullptr;
  const TileShape shape = kind.shape;
  const TileTurn turn = clockwise ? kind.clockwise : kind.counterclockwise;
  const std::uint32_t band = band_rows(grid.rows);
  const std::uint32_t bands = (grid.rows + band - 1) / band;
  const std::size_t buffer_pitch = strip_pitch(band, grid.unit);
  for (std::uint32_t b = 0; b < bands; ++b) {
    const std::uint32_t top = (clockwise ? bands - 1 - b : b) * band;
    const std::uint32_t bottom = std::min(grid.rows, top + band);
    for_each_tile_start(0, grid.cols, shape.cols, [&](std::uint32_t x) {
      // The strip's destination rows, from the band's first destination unit on.
      std::uint8_t* rows = clockwise ? dst + x * dst_pitch + (grid.rows - bottom) * grid.unit
                                     : dst + (grid.cols - x - shape.cols) * dst_pitch + top * grid.unit;
      std::uint8_t* to_base = streamed ? strip + kLineBytes : rows;
      const std::size_t to_pitch = streamed ? buffer_pitch : dst_pitch;
      DestinationFetch fetch(dst_pitch, shape.cols);
      auto turn_at = [&](std::uint32_t y) {
        const std::ptrdiff_t at =
            clockwise ? std::ptrdiff_t{bottom} - y - shape.rows : std::ptrdiff_t{y} - top;
        std::uint8_t* to = to_base + at * static_cast<std::ptrdiff_t>(grid.unit);
        turn(src + y * src_pitch + x * grid.unit, src_pitch, to, to_pitch);
        if (!streamed) fetch.after_tile(to);
      };
      if (clockwise) {
        for_each_tile_start_backwards(top, bottom, shape.rows, turn_at);
      } else {
        for_each_tile_start(top, bottom, shape.rows, turn_at);
      }
      if (streamed) {
        tiles.stream_rows(strip + kLineBytes, buffer_pitch, rows, dst_pitch, shape.cols,
                          std::size_t{bottom - top} * grid.unit);
      }
    });
  }
}

// The streamed turn's buffer lives only in its own frame (never inlined into its caller), so
// every other turn keeps a small stack.
#if defined(__GNUC__)
[[gnu::noinline]]
#endif
void turn_streamed(const QuarterTurnTiles& tiles, const UnitTiles& kind, bool clockwise,
                   const std::uint8_t* src, std::size_t src_pitch, UnitGrid grid, std::uint8_t* dst,
                   std::size_t dst_pitch) {
  alignas(kLineBytes) std::uint8_t strip[kStripBytes];
  turn_in_strips(tiles, kind, clockwise, src, src_pitch, grid, dst, dst_pitch, strip);
  tiles.finish_streams();
}

}  // namespace

void rotate_in_tiles(const QuarterTurnTiles& tiles, TurnDirection direction, const std::uint8_t* src,
                     std::size_t src_pitch, UnitGrid grid, std::uint8_t* dst, std::size_t dst_pitch) {
  const bool clockwise = direction == TurnDirection::Clockwise;
  const UnitTiles* kind = grid.unit == 1 ? &tiles.bytes : grid.unit == 2 ? &tiles.pairs : nullptr;
  if (kind == nullptr || kind->clockwise == nullptr || grid.cols < kind->shape.cols ||
      grid.rows < kind->shape.rows) {
    if (clockwise) {
      rotate_units_clockwise(src, src_pitch, grid, dst, dst_pitch);
    } else {
      rotate_units_counterclockwise(src, src_pitch, grid, dst, dst_pitch);
    }
    return;
  }
  const bool streamed = tiles.stream_rows != nullptr &&
                        std::size_t{grid.rows} * grid.cols * grid.unit >= kStreamedFrom &&
                        strip_pitch(band_rows(grid.rows), grid.unit) * kind->shape.cols <= kStripBytes;
  if (streamed) {
    turn_streamed(tiles, *kind, clockwise, src, src_pitch, grid, dst, dst_pitch);
  } else {
    turn_in_strips(tiles, *kind, clockwise, src, src_pitch, grid, dst, dst_pitch, nullptr);
  }
}

}  // namespace vexcap::frames
