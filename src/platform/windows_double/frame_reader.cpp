#include "platform/windows_double/frame_reader.h"

#include <future>
#include <memory>

#include "common/worker_thread.h"
#include "platform/windows_double/async_operation.h"
#include "platform/windows_double/event_handlers.h"
#include "platform/windows_double/frame_source.h"
#include "platform/windows_double/imaging.h"
#include "platform/windows_double/property_value.h"
#include "platform/windows_double/thread_stacks.h"
#include "platform/windows_double/violations.h"

namespace vexcap::windows_double {

namespace {

constexpr HRESULT kClosed = HRESULT(0x80000013u);  // RO_E_CLOSED

class FrameArrivedEventArgs final
    : public Object<FrameArrivedEventArgs, Threading::Agile, abi::UnmodelledIMediaFrameArrivedEventArgs<FrameArrivedEventArgs>> {
 public:
  FrameArrivedEventArgs() : Object("Windows.Media.Capture.Frames.MediaFrameArrivedEventArgs") {}
};

// One frame; its views share it.
struct FrameData {
  std::shared_ptr<platform::Frame> frame;
  platform::SourceKind kind;
};

class FrameReference;

class InfraredMediaFrame final
    : public Object<InfraredMediaFrame, Threading::Agile, abi::UnmodelledIInfraredMediaFrame<InfraredMediaFrame>> {
 public:
  explicit InfraredMediaFrame(std::shared_ptr<FrameData> data)
      : Object("Windows.Media.Capture.Frames.InfraredMediaFrame"), data_(std::move(data)) {}
  // Whether the infrared illuminator was on: the frame's capture metadata, where it says.
  HRESULT STDMETHODCALLTYPE get_IsIlluminated(boolean* value) override {
    DOUBLE_ENTER("get_IsIlluminated");
    if (value == nullptr) return E_POINTER;
    platform::IlluminationRead read;
    if (HRESULT result = port_call([&] { read = data_->frame->read_illumination(); }); FAILED(result)) return result;
    const bool reached = SUCCEEDED(read.get_service) && SUCCEEDED(read.get_sample) &&
                         SUCCEEDED(read.get_capture_metadata) && SUCCEEDED(read.get_illumination);
    *value = reached && read.illumination != 0;
    return S_OK;
  }

 private:
  void retire() override { data_.reset(); }
  std::shared_ptr<FrameData> data_;
};

class VideoMediaFrame final
    : public Object<VideoMediaFrame, Threading::Agile, abi::UnmodelledIVideoMediaFrame<VideoMediaFrame>> {
 public:
  VideoMediaFrame(std::shared_ptr<FrameData> data, std::shared_ptr<platform::Bitmap> bitmap)
      : Object("Windows.Media.Capture.Frames.VideoMediaFrame"), data_(std::move(data)), bitmap_(std::move(bitmap)) {}
  HRESULT STDMETHODCALLTYPE get_SoftwareBitmap(abi::ISoftwareBitmap** value) override {
    DOUBLE_ENTER("get_SoftwareBitmap");
    return hand_out(make<SoftwareBitmap>(bitmap_), value);
  }
  HRESULT STDMETHODCALLTYPE get_InfraredMediaFrame(abi::IInfraredMediaFrame** value) override {
    DOUBLE_ENTER("get_InfraredMediaFrame");
    if (value == nullptr) return E_POINTER;
    *value = nullptr;
    if (data_->kind != platform::SourceKind::Infrared) return S_OK;
    return hand_out(make<InfraredMediaFrame>(data_), value);
  }

 private:
  void retire() override { data_.reset(), bitmap_.reset(); }
  std::shared_ptr<FrameData> data_;
  std::shared_ptr<platform::Bitmap> bitmap_;
};

class BufferMediaFrame final
    : public Object<BufferMediaFrame, Threading::Agile, abi::UnmodelledIBufferMediaFrame<BufferMediaFrame>> {
 public:
  explicit BufferMediaFrame(std::shared_ptr<platform::Buffer> buffer)
      : Object("Windows.Media.Capture.Frames.BufferMediaFrame"), buffer_(std::move(buffer)) {}
  HRESULT STDMETHODCALLTYPE get_Buffer(abi::IBuffer** value) override {
    DOUBLE_ENTER("get_Buffer");
    return hand_out(make<StorageBuffer>(buffer_), value);
  }

 private:
  void retire() override { buffer_.reset(); }
  std::shared_ptr<platform::Buffer> buffer_;
};

class FrameReference final
    : public Object<FrameReference, Threading::Agile, abi::UnmodelledIMediaFrameReference<FrameReference>,
                    abi::UnmodelledIClosable<FrameReference>> {
 public:
  explicit FrameReference(std::shared_ptr<FrameData> data)
      : Object("Windows.Media.Capture.Frames.MediaFrameReference"), data_(std::move(data)) {}
  HRESULT STDMETHODCALLTYPE get_SourceKind(abi::MediaFrameSourceKind* value) override {
    DOUBLE_ENTER("get_SourceKind");
    return give(value, static_cast<abi::MediaFrameSourceKind>(data_->kind));
  }
  HRESULT STDMETHODCALLTYPE get_Format(abi::IMediaFrameFormat** value) override {
    DOUBLE_ENTER("get_Format");
    std::shared_ptr<platform::FrameFormat> format;
    if (HRESULT result = port_call([&] { format = data_->frame->format(); }); FAILED(result)) return result;
    return hand_out(make<FrameFormat>(std::move(format)), value);
  }
  HRESULT STDMETHODCALLTYPE get_SystemRelativeTime(abi::IReference<abi::TimeSpan>** value) override {
    DOUBLE_ENTER("get_SystemRelativeTime");
    std::int64_t time = 0;
    if (HRESULT result = port_call([&] { time = data_->frame->system_relative_time(); }); FAILED(result)) return result;
    return hand_out(make<BoxedTimeSpan>(time), value);
  }
  HRESULT STDMETHODCALLTYPE get_VideoMediaFrame(abi::IVideoMediaFrame** value) override {
    DOUBLE_ENTER("get_VideoMediaFrame");
    if (value == nullptr) return E_POINTER;
    *value = nullptr;
    std::shared_ptr<platform::Bitmap> bitmap;
    if (HRESULT result = port_call([&] { bitmap = data_->frame->software_bitmap(); }); FAILED(result)) return result;
    if (!bitmap) return S_OK;
    return hand_out(make<VideoMediaFrame>(data_, std::move(bitmap)), value);
  }
  HRESULT STDMETHODCALLTYPE get_BufferMediaFrame(abi::IBufferMediaFrame** value) override {
    DOUBLE_ENTER("get_BufferMediaFrame");
    if (value == nullptr) return E_POINTER;
    *value = nullptr;
    std::shared_ptr<platform::Buffer> buffer;
    if (HRESULT result = port_call([&] { buffer = data_->frame->buffer(); }); FAILED(result)) return result;
    if (!buffer) return S_OK;
    return hand_out(make<BufferMediaFrame>(std::move(buffer)), value);
  }
  HRESULT STDMETHODCALLTYPE Close() override {
    DOUBLE_ENTER("Close");
    return port_call([&] { data_->frame->close(); });
  }

 private:
  void retire() override { data_.reset(); }
  std::shared_ptr<FrameData> data_;
};

}  // namespace

std::shared_ptr<platform::FrameReader> FrameReader::reader() {
  std::lock_guard lock(mutex_);
  return reader_;
}

void FrameReader::retire() {
  std::shared_ptr<platform::FrameReader> reader;
  {
    std::lock_guard lock(mutex_);
    reader = std::move(reader_);
  }
  // The reader's thread ends here, unless this is that thread (then it ends after the handler).
}

HRESULT FrameReader::add_FrameArrived(ArrivedHandler* handler, abi::EventRegistrationToken* token) {
  DOUBLE_ENTER("add_FrameArrived");
  if (handler == nullptr || token == nullptr) return E_POINTER;
  auto port = reader();
  if (!port) return kClosed;
  auto delegate = ComPtr<ArrivedHandler>::copy_from(handler);
  const auto registered = port->add_frame_arrived([this, delegate](platform::FrameReader&) -> hresult {
    if (!alive()) return kDisconnected;
    auto args = make<FrameArrivedEventArgs>();
    return delegate->Invoke(this, args.get());
  });
  return hand_out_token(registered, token);
}

HRESULT FrameReader::remove_FrameArrived(abi::EventRegistrationToken token) {
  DOUBLE_ENTER("remove_FrameArrived");
  if (auto port = reader()) port->remove_frame_arrived(token.value);
  return S_OK;
}

HRESULT FrameReader::TryAcquireLatestFrame(abi::IMediaFrameReference** value) {
  DOUBLE_ENTER("TryAcquireLatestFrame");
  if (value == nullptr) return E_POINTER;
  *value = nullptr;
  auto port = reader();
  if (!port) return kClosed;
  std::shared_ptr<platform::Frame> frame;
  if (HRESULT result = port_call([&] { frame = port->try_acquire_latest_frame(); }); FAILED(result)) return result;
  if (!frame) return S_OK;
  return hand_out(make<FrameReference>(std::make_shared<FrameData>(FrameData{std::move(frame), kind_})), value);
}

HRESULT FrameReader::StartAsync(abi::IAsyncOperation<abi::MediaFrameReaderStartStatus>** operation) {
  DOUBLE_ENTER("StartAsync");
  if (operation == nullptr) return E_POINTER;
  auto port = reader();
  if (!port) return kClosed;
  *operation = AsyncOperation<abi::MediaFrameReaderStartStatus>::start("MediaFrameReader::StartAsync", [port] {
    return value_outcome(static_cast<abi::MediaFrameReaderStartStatus>(port->start()));
  });
  return S_OK;
}

HRESULT FrameReader::StopAsync(abi::IAsyncAction** action) {
  DOUBLE_ENTER("StopAsync");
  if (action == nullptr) return E_POINTER;
  auto port = reader();
  if (!port) return kClosed;
  // Stopping waits for a FrameArrived handler in flight to return.
  *action = AsyncAction::start("MediaFrameReader::StopAsync", [port] { port->stop(); }, kHandlerWaitLimit);
  return S_OK;
}

HRESULT FrameReader::put_AcquisitionMode(abi::MediaFrameReaderAcquisitionMode value) {
  DOUBLE_ENTER("put_AcquisitionMode");
  auto port = reader();
  if (!port) return kClosed;
  port->set_acquisition_mode(static_cast<platform::AcquisitionMode>(value));
  std::lock_guard lock(mutex_);
  mode_ = value;
  return S_OK;
}

HRESULT FrameReader::get_AcquisitionMode(abi::MediaFrameReaderAcquisitionMode* value) {
  DOUBLE_ENTER("get_AcquisitionMode");
  if (value == nullptr) return E_POINTER;
  std::lock_guard lock(mutex_);
  *value = mode_;
  return S_OK;
}

// Closing waits for a FrameArrived handler in flight: a handler that itself waits for the
// closing thread would hang it, so the wait is bounded and such a hang is a violation.
HRESULT FrameReader::Close() {
  DOUBLE_ENTER("Close");
  auto port = reader();
  if (!port) return S_OK;
  auto closed = std::async(std::launch::async, [port] { port->close(); });
  if (closed.wait_for(kHandlerWaitLimit) != std::future_status::ready) {
    record_violation("MediaFrameReader::Close did not complete within " + std::to_string(kHandlerWaitLimit.count()) +
                     " s: a FrameArrived handler it waits for is blocked (a synchronous wait inside a handler)");
    print_every_thread_stack();
    // The future's destructor would wait: hand it to a thread of its own.
    run_detached([closed = std::make_shared<std::future<void>>(std::move(closed))] { closed->wait(); });
    return HRESULT_FROM_WIN32(ERROR_TIMEOUT);
  }
  return S_OK;
}

}  // namespace vexcap::windows_double
