#include "capture/outstanding_records.h"

#include <map>

#include "log/log.h"

namespace vexcap::capture {
namespace {

// Which stream each record in the host's hands came from. Process-wide because records are:
// the host returns them from any thread, after their device, client or library has gone.
// An empty map holds no memory, so a host that returns everything leaves nothing behind.
struct RecordOwners {
  Mutex mutex;
  std::map<const vexcap_frame*, std::shared_ptr<OutstandingRecords>> owners VEXCAP_GUARDED_BY(mutex);
};

RecordOwners& record_owners() {
  static RecordOwners owners;
  return owners;
}

}  // namespace

bool OutstandingRecords::reserve() {
  MutexLock lock(mutex_);
  if (outstanding_ >= kOutstandingRecordLimit) {
    if (!dropping_) {
      VXLOG('W', "Frame dropped: the host holds %u records of this stream", outstanding_);
      dropping_ = true;
    }
    return false;
  }
  dropping_ = false;
  ++outstanding_;
  return true;
}

void OutstandingRecords::cancel() { give_back(); }

void OutstandingRecords::give_back() {
  MutexLock lock(mutex_);
  if (outstanding_ > 0) --outstanding_;
}

void OutstandingRecords::hand_over(const vexcap_frame* record) {
  RecordOwners& owners = record_owners();
  MutexLock lock(owners.mutex);
  owners.owners[record] = shared_from_this();
}

std::uint32_t OutstandingRecords::count() {
  MutexLock lock(mutex_);
  return outstanding_;
}

void record_returned(const vexcap_frame* record) {
  std::shared_ptr<OutstandingRecords> owner;
  {
    RecordOwners& owners = record_owners();
    MutexLock lock(owners.mutex);
    const auto it = owners.owners.find(record);
    if (it == owners.owners.end()) return;
    owner = std::move(it->second);
    owners.owners.erase(it);
  }
  owner->give_back();
}

}  // namespace vexcap::capture
