#include "capture/frame_delivery.h"

#include <cstdlib>
#include <new>
#include <optional>

#include "capture/fill_frame.h"
#include "capture/outstanding_records.h"
#include "common/host_callback.h"
#include "frames/record_rotation.h"
#include "log/log.h"

namespace vexcap::capture {
namespace {

// Releases the platform frame however the handler ends.
struct FrameCloser {
  platform::Frame& frame;
  ~FrameCloser() { frame.close(); }
};

// Owns a record until the host takes it; frees it the way vexcap_return_frame does.
struct RecordFree {
  void operator()(vexcap_frame* record) const {
    std::free(record->data);
    std::free(record);
  }
};
using OwnedRecord = std::unique_ptr<vexcap_frame, RecordFree>;

bool is_delivered_format(platform::PixelFormat format) {
  return format == platform::PixelFormat::Gray8 || format == platform::PixelFormat::Gray16 ||
         format == platform::PixelFormat::Nv12;
}

// Where an NV12 bitmap's planes lie, from the platform's plane descriptions; nothing for other
// formats or a bitmap that does not describe both planes.
std::optional<frames::Nv12Planes> nv12_planes(platform::LockedBitmap& locked, const vexcap_frame& record) {
  if (record.pixel_format != static_cast<std::uint32_t>(platform::PixelFormat::Nv12) ||
      locked.plane_count() < 2)
    return std::nullopt;
  const platform::PlaneDescription luma = locked.plane(0);
  const platform::PlaneDescription chroma = locked.plane(1);
  if (luma.start_index < 0 || chroma.start_index < 0) return std::nullopt;
  return frames::Nv12Planes{static_cast<std::size_t>(luma.start_index),
                            static_cast<std::size_t>(chroma.start_index), chroma.stride};
}

// Copies every byte of the bitmap's buffer into the record, converting other formats to NV12
// and turning the pixels upright on the way.
void copy_pixels(std::shared_ptr<platform::Bitmap> bitmap, platform::FrameSource* source,
                 vexcap_frame& record) {
  if (!is_delivered_format(bitmap->pixel_format())) {
    bitmap = bitmap->convert(platform::PixelFormat::Nv12);
    record.pixel_format = static_cast<std::uint32_t>(platform::PixelFormat::Nv12);
  }
  const std::unique_ptr<platform::LockedBitmap> locked = bitmap->lock_for_read();
  if (record.stride == 0) {
    record.stride =
        locked->plane_count() >= 1 ? locked->plane(0).stride : static_cast<std::int32_t>(record.width);
  }
  VXLOG('D', "Width: %u, Height: %u, Stride= %d", record.width, record.height, record.stride);
  // The whole capacity, not width x height: every plane with its row padding.
  frames::copy_pixels_upright(source, locked->data(), locked->capacity(), record,
                              nv12_planes(*locked, record));
}

// A reservation of one of the stream's outstanding records, given back unless the record
// reached the host.
class Reservation {
 public:
  explicit Reservation(std::shared_ptr<OutstandingRecords> records) : records_(std::move(records)) {}
  ~Reservation() {
    if (records_) records_->cancel();
  }
  Reservation(const Reservation&) = delete;
  Reservation& operator=(const Reservation&) = delete;
  void hand_over(const vexcap_frame* record) {
    records_->hand_over(record);
    records_.reset();
  }

 private:
  std::shared_ptr<OutstandingRecords> records_;
};

}  // namespace

hresult deliver_newest_frame(FrameStream& stream, platform::FrameReader& reader) {
  const std::shared_ptr<platform::Frame> frame = reader.try_acquire_latest_frame();
  if (!frame) return HR_OK;
  FrameCloser closer{*frame};

  const auto [callback, context] = stream.listener();
  if (!callback) {
    stream.on_frame_dropped(FrameDropReason::NoListener);
    return HR_OK;
  }
  // A host that keeps its records holds at most the stream's limit; further frames are dropped.
  const std::shared_ptr<OutstandingRecords> outstanding = stream.outstanding_records();
  if (!outstanding->reserve()) {
    stream.on_frame_dropped(FrameDropReason::OutstandingLimit);
    return HR_OK;
  }
  Reservation reservation(outstanding);

  try {
    OwnedRecord record(static_cast<vexcap_frame*>(std::calloc(1, sizeof(vexcap_frame))));
    if (!record) throw std::bad_alloc();
    std::shared_ptr<platform::Bitmap> bitmap;
    const std::uint32_t status = fill_frame(stream, *frame, *record, bitmap);
    if (status == kFrameTooFast) {
      stream.on_frame_dropped(FrameDropReason::OverRateLimit);
      return HR_OK;
    }
    if (status == kFrameFormatUnsupported) {
      stream.on_frame_dropped(FrameDropReason::UnsupportedFormat);
      return HR_OK;
    }

    copy_pixels(std::move(bitmap), stream.camera().frame_source().get(), *record);

    // No lock of the library's is held here: start and stop never wait for the host.
    reservation.hand_over(record.get());
    HostCallbackScope marked;
    if (callback(record.release(), context)) return HR_OK;
    // False ends delivery of this stream, whichever subscription brought the frame, until the
    // host starts streaming again.
    stream.end_delivery();
    return HR_DISCONNECTED;
  } catch (const platform::PlatformError& error) {
    VXLOG('E', "frame delivery failed: %ws", error.message().c_str());
    return error.code();
  } catch (const std::bad_alloc&) {
    VXLOG('E', "frame delivery failed: out of memory");
    return HR_OUTOFMEMORY;
  }
}

}  // namespace vexcap::capture
