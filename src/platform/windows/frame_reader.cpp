#include "platform/windows/frame_reader.h"

#include "platform/windows/async_wait.h"
#include "platform/windows/collections.h"
#include "platform/windows/event_token.h"
#include "platform/windows/frame.h"
#include "platform/windows/winrt/abi.h"

namespace vexcap::windows {

static_assert(int(abi::MediaFrameReaderStartStatus::ExclusiveControlNotAvailable) ==
              int(platform::ReaderStartStatus::ExclusiveControlNotAvailable));
static_assert(int(abi::MediaFrameReaderAcquisitionMode::Buffered) == int(platform::AcquisitionMode::Buffered));

platform::EventToken WinrtFrameReader::add_frame_arrived(FrameArrivedHandler handler) {
  // The handler sees the reader that raised the event, wrapped afresh for each call: the
  // delegate keeps no pointer to this wrapper, which may go before the platform lets go of it.
  auto arrived = make_delegate<abi::ITypedEventHandler<abi::MediaFrameReader, abi::MediaFrameArrivedEventArgs>>(
      [handler = std::move(handler)](abi::IMediaFrameReader* sender, abi::IMediaFrameArrivedEventArgs*) -> HRESULT {
        WinrtFrameReader reader(ComPtr<abi::IMediaFrameReader>::copy_from(sender));
        return handler(reader);
      });
  abi::EventRegistrationToken token{};
  check(reader_->add_FrameArrived(arrived.get(), &token));
  return to_port(token);
}

void WinrtFrameReader::remove_frame_arrived(platform::EventToken token) {
  check(reader_->remove_FrameArrived(to_abi(token)));
}

platform::ReaderStartStatus WinrtFrameReader::start() {
  ComPtr<abi::IAsyncOperation<abi::MediaFrameReaderStartStatus>> operation;
  check(reader_->StartAsync(operation.put()));
  return static_cast<platform::ReaderStartStatus>(wait_for(operation));
}

void WinrtFrameReader::stop() {
  ComPtr<abi::IAsyncAction> action;
  check(reader_->StopAsync(action.put()));
  wait_for(action);
}

void WinrtFrameReader::close() { close_if_closable(reader_); }

void WinrtFrameReader::set_acquisition_mode(platform::AcquisitionMode mode) {
  check(query<abi::IMediaFrameReader2>(reader_)->put_AcquisitionMode(
      static_cast<abi::MediaFrameReaderAcquisitionMode>(mode)));
}

std::shared_ptr<platform::Frame> WinrtFrameReader::try_acquire_latest_frame() {
  ComPtr<abi::IMediaFrameReference> frame;
  check(reader_->TryAcquireLatestFrame(frame.put()));
  if (!frame) return nullptr;
  return std::make_shared<WinrtFrame>(std::move(frame));
}

}  // namespace vexcap::windows
