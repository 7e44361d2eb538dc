// The frame records a stream has handed to the host and not had back yet. A stream holds at
// most kOutstandingRecordLimit of them, as a capture pipeline with a fixed pool of buffers
// would: past the limit a frame is dropped until the host returns records.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>

#include "common/mutex.h"

#include "vexcap/vexcap.h"

namespace vexcap::capture {

inline constexpr std::uint32_t kOutstandingRecordLimit = VEXCAP_MAX_OUTSTANDING_FRAMES;

class OutstandingRecords : public std::enable_shared_from_this<OutstandingRecords> {
 public:
  // One more record for the host; false (and a 'W' line at the start of each run of drops)
  // when the stream already holds the limit.
  bool reserve();
  // A reservation that delivered nothing.
  void cancel();
  // The reserved record now belongs to the host: vexcap_return_frame gives it back here.
  void hand_over(const vexcap_frame* record);

  std::uint32_t count();

 private:
  void give_back();
  friend void record_returned(const vexcap_frame* record);

  Mutex mutex_;
  std::uint32_t outstanding_ VEXCAP_GUARDED_BY(mutex_) = 0;
  bool dropping_ VEXCAP_GUARDED_BY(mutex_) = false;  // frames are being dropped at the limit
};

// Called by vexcap_return_frame before it frees the record: the record counts no more for the
// stream that delivered it. Records the library did not deliver are ignored.
void record_returned(const vexcap_frame* record);

}  // namespace vexcap::capture
