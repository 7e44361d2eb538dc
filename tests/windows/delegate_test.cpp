// Reference counting and calls of the adapter's delegates and ComPtr, on plain objects: the
// same code hands delegates to the platform, so a miscount here is a leak or a crash there.
#include <gtest/gtest.h>

#include <memory>

#include "platform/windows/delegate.h"
#include "platform/windows/winrt/foundation_abi.h"

namespace {

namespace abi = vexcap::windows::abi;
using vexcap::windows::ComPtr;
using vexcap::windows::live_delegates;
using vexcap::windows::make_delegate;
using Handler = abi::IAsyncActionCompletedHandler;

ULONG references(IUnknown* object) {
  object->AddRef();
  return object->Release();
}

TEST(WindowsDelegate, InvokeForwardsArgumentsAndResult) {
  abi::IAsyncAction* seen_sender = nullptr;
  abi::AsyncStatus seen_status = abi::AsyncStatus::Started;
  auto handler = make_delegate<Handler>([&](abi::IAsyncAction* sender, abi::AsyncStatus status) {
    seen_sender = sender;
    seen_status = status;
    return HRESULT(0x80010108u);
  });
  auto* fake_sender = reinterpret_cast<abi::IAsyncAction*>(std::uintptr_t(0x1000));
  EXPECT_EQ(handler->Invoke(fake_sender, abi::AsyncStatus::Error), HRESULT(0x80010108u));
  EXPECT_EQ(seen_sender, fake_sender);
  EXPECT_EQ(seen_status, abi::AsyncStatus::Error);
}

TEST(WindowsDelegate, ExceptionsBecomeTheirHresult) {
  auto platform_failure = make_delegate<Handler>([](abi::IAsyncAction*, abi::AsyncStatus) -> HRESULT {
    throw vexcap::platform::PlatformError(HRESULT(0x800710DFu), L"device not available");
  });
  auto other_failure = make_delegate<Handler>([](abi::IAsyncAction*, abi::AsyncStatus) -> HRESULT {
    throw 42;
  });
  EXPECT_EQ(platform_failure->Invoke(nullptr, abi::AsyncStatus::Completed), HRESULT(0x800710DFu));
  EXPECT_EQ(other_failure->Invoke(nullptr, abi::AsyncStatus::Completed), HRESULT(0x80004005u));
}

TEST(WindowsDelegate, AnswersItsOwnInterfaceUnknownAndAgileObjectOnly) {
  auto handler = make_delegate<Handler>([](abi::IAsyncAction*, abi::AsyncStatus) { return S_OK; });
  ASSERT_EQ(references(handler.get()), 1u);

  ComPtr<IAgileObject> agile;
  EXPECT_EQ(handler.query(agile), S_OK);
  ASSERT_TRUE(agile);
  ComPtr<Handler> same;
  EXPECT_EQ(agile.query(same), S_OK);
  EXPECT_EQ(same.get(), handler.get());
  EXPECT_EQ(references(handler.get()), 3u);

  ComPtr<abi::IClosable> not_implemented;
  EXPECT_EQ(handler.query(not_implemented), E_NOINTERFACE);
  EXPECT_FALSE(not_implemented);
  EXPECT_EQ(references(handler.get()), 3u);
}

TEST(WindowsDelegate, LastReleaseDestroysTheDelegateAndItsCallback) {
  const long before = live_delegates();
  auto state = std::make_shared<int>(0);
  {
    auto handler = make_delegate<Handler>([state](abi::IAsyncAction*, abi::AsyncStatus) { return S_OK; });
    EXPECT_EQ(live_delegates(), before + 1);
    ComPtr<Handler> copy = handler;
    ComPtr<Handler> moved = std::move(copy);
    EXPECT_FALSE(copy);
    EXPECT_EQ(references(handler.get()), 2u);
    Handler* raw = moved.detach();
    EXPECT_EQ(references(handler.get()), 2u);
    ComPtr<Handler>::attach(raw);  // released at the end of the statement
    EXPECT_EQ(references(handler.get()), 1u);
    EXPECT_EQ(state.use_count(), 2);
  }
  EXPECT_EQ(live_delegates(), before);
  EXPECT_EQ(state.use_count(), 1);
}

}  // namespace
