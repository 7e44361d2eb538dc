// The adapter's Windows Runtime half under Wine, which has no capture runtime classes: the
// port operations that need them fail as platform errors, and the wait helper and HSTRINGs
// work against hand-made asynchronous operations, every reference given back. (The capture's
// agile reference is exercised on the Windows double, tests/windows_double.)
#include <windows.h>

#include <roapi.h>

#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <thread>

#include "platform/port.h"
#include "platform/windows/async_wait.h"
#include "platform/windows/hstring.h"
#include "platform/windows/platform_error.h"
#include "platform/windows/winrt/abi.h"

namespace {

using namespace vexcap;
using windows::ComPtr;
namespace abi = windows::abi;

constexpr HRESULT kClassNotRegistered = HRESULT(0x80040154u);  // REGDB_E_CLASSNOTREG
constexpr HRESULT kCancelled = HRESULT(0x800704C7u);           // HRESULT_FROM_WIN32(ERROR_CANCELLED)
constexpr HRESULT kDeviceNotAvailable = HRESULT(0x800710DFu);

class WindowsRuntimeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_GE(RoInitialize(RO_INIT_MULTITHREADED), 0);
    delegates_before_ = windows::live_delegates();
  }
  void TearDown() override {
    EXPECT_EQ(windows::live_delegates(), delegates_before_) << "a delegate was not released";
    RoUninitialize();
  }

 private:
  long delegates_before_ = 0;
};

template <class Operation>
void expect_class_not_registered(Operation operation) {
  try {
    operation();
    ADD_FAILURE() << "no platform error";
  } catch (const platform::PlatformError& error) {
    EXPECT_EQ(error.code(), kClassNotRegistered);
    // Wine's message tables may lack the text; whatever the system says is what is carried.
    EXPECT_EQ(error.message(), windows::platform_error(kClassNotRegistered).message());
  }
}

using WinrtWithoutCaptureRuntime = WindowsRuntimeTest;

TEST_F(WinrtWithoutCaptureRuntime, OperationsNeedingCaptureClassesFailAsPlatformErrors) {
  platform::Platform& windows_platform = platform::current();
  expect_class_not_registered([&] { windows_platform.find_all_source_groups(); });
  expect_class_not_registered([&] { windows_platform.create_capture(); });
  expect_class_not_registered([&] { windows_platform.create_source_group_watcher(); });
}

// ---- The wait helper against hand-made asynchronous operations --------------------------------

// An IAsyncOperation<MediaFrameReaderStartStatus> (and its IAsyncInfo) that the test completes.
class FakeStartOperation final : public abi::IAsyncOperation<abi::MediaFrameReaderStartStatus>,
                                 public abi::IAsyncInfo {
 public:
  using Handler = abi::IAsyncOperationCompletedHandler<abi::MediaFrameReaderStartStatus>;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (iid == IID_IUnknown || iid == abi::IAsyncOperation<abi::MediaFrameReaderStartStatus>::iid) {
      *object = static_cast<abi::IAsyncOperation<abi::MediaFrameReaderStartStatus>*>(this);
    } else if (iid == abi::IAsyncInfo::iid) {
      *object = static_cast<abi::IAsyncInfo*>(this);
    } else {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++count_; }
  ULONG STDMETHODCALLTYPE Release() override { return --count_; }  // owned by the test
  HRESULT STDMETHODCALLTYPE GetIids(ULONG*, IID**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetRuntimeClassName(HSTRING*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTrustLevel(TrustLevel*) override { return E_NOTIMPL; }

  HRESULT STDMETHODCALLTYPE put_Completed(Handler* handler) override {
    std::unique_lock lock(mutex_);
    handler_ = ComPtr<Handler>::copy_from(handler);
    if (status_ != abi::AsyncStatus::Started) {
      lock.unlock();
      notify();
    }
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_Completed(Handler** handler) override {
    std::lock_guard lock(mutex_);
    *handler = ComPtr<Handler>(handler_).detach();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetResults(abi::MediaFrameReaderStartStatus* results) override {
    std::lock_guard lock(mutex_);
    if (status_ == abi::AsyncStatus::Error) return error_;
    if (status_ != abi::AsyncStatus::Completed) return HRESULT(0x8000000Eu);  // E_ILLEGAL_METHOD_CALL
    *results = abi::MediaFrameReaderStartStatus::ExclusiveControlNotAvailable;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE get_Id(UINT32* id) override { return *id = 1, S_OK; }
  HRESULT STDMETHODCALLTYPE get_Status(abi::AsyncStatus* status) override {
    std::lock_guard lock(mutex_);
    *status = status_;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_ErrorCode(HRESULT* code) override {
    std::lock_guard lock(mutex_);
    *code = error_;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Cancel() override { return S_OK; }
  HRESULT STDMETHODCALLTYPE Close() override { return S_OK; }

  // Ends the operation; the handler, if already given, runs on the calling thread.
  void finish(abi::AsyncStatus status, HRESULT error = S_OK) {
    {
      std::lock_guard lock(mutex_);
      status_ = status;
      error_ = error;
    }
    notify();
  }
  void drop_handler() { handler_.reset(); }
  ULONG count() const { return count_; }

 private:
  void notify() {
    ComPtr<Handler> handler;
    abi::AsyncStatus status;
    {
      std::lock_guard lock(mutex_);
      handler = handler_;
      status = status_;
    }
    if (handler) handler->Invoke(this, status);
  }

  std::atomic<ULONG> count_{1};
  std::mutex mutex_;
  ComPtr<Handler> handler_;
  abi::AsyncStatus status_ = abi::AsyncStatus::Started;
  HRESULT error_ = S_OK;
};

using WinrtWait = WindowsRuntimeTest;

auto operation_of(FakeStartOperation& fake) {
  return ComPtr<abi::IAsyncOperation<abi::MediaFrameReaderStartStatus>>::copy_from(&fake);
}

TEST_F(WinrtWait, AnAlreadyCompletedOperationYieldsItsResult) {
  FakeStartOperation fake;
  fake.finish(abi::AsyncStatus::Completed);
  EXPECT_EQ(windows::wait_for(operation_of(fake)), abi::MediaFrameReaderStartStatus::ExclusiveControlNotAvailable);
  fake.drop_handler();
  EXPECT_EQ(fake.count(), 1u);
}

TEST_F(WinrtWait, WaitsForCompletionOnAnotherThread) {
  FakeStartOperation fake;
  std::thread completer([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    fake.finish(abi::AsyncStatus::Completed);
  });
  const auto started = std::chrono::steady_clock::now();
  EXPECT_EQ(windows::wait_for(operation_of(fake)), abi::MediaFrameReaderStartStatus::ExclusiveControlNotAvailable);
  EXPECT_GE(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(90));
  completer.join();
  fake.drop_handler();
  EXPECT_EQ(fake.count(), 1u);
}

TEST_F(WinrtWait, AFailedOperationThrowsItsCodeWithTheSystemText) {
  FakeStartOperation fake;
  fake.finish(abi::AsyncStatus::Error, kDeviceNotAvailable);
  try {
    windows::wait_for(operation_of(fake));
    ADD_FAILURE() << "no platform error";
  } catch (const platform::PlatformError& error) {
    EXPECT_EQ(error.code(), kDeviceNotAvailable);
    EXPECT_EQ(error.message(), windows::platform_error(kDeviceNotAvailable).message());
  }
  fake.drop_handler();
  EXPECT_EQ(fake.count(), 1u);
}

TEST_F(WinrtWait, ACancelledOperationThrowsErrorCancelled) {
  FakeStartOperation fake;
  fake.finish(abi::AsyncStatus::Canceled);
  try {
    windows::wait_for(operation_of(fake));
    ADD_FAILURE() << "no platform error";
  } catch (const platform::PlatformError& error) {
    EXPECT_EQ(error.code(), kCancelled);
  }
  fake.drop_handler();
  EXPECT_EQ(fake.count(), 1u);
}

// ---- HSTRING -----------------------------------------------------------

TEST(WinrtHString, OwnsItsTextAndReadsBorrowedOnes) {
  windows::HString text(L"Windows.Media.Capture.MediaCapture");
  EXPECT_EQ(text.text(), L"Windows.Media.Capture.MediaCapture");
  EXPECT_EQ(windows::to_wstring(nullptr), L"");
  windows::HString moved(std::move(text));
  EXPECT_EQ(text.get(), nullptr);
  EXPECT_EQ(moved.text(), L"Windows.Media.Capture.MediaCapture");
}

}  // namespace
