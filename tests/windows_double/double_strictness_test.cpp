// The double itself, used directly as any Windows host may: misuse that Windows punishes is
// answered with the platform's error and recorded as a violation.
#include <roapi.h>
#include <winstring.h>

#include "double_test.h"
#include "platform/windows/winrt/abi.h"

namespace vexcap::double_tests {
namespace {

namespace abi = windows::abi;

class DoubleStrictness : public DoubleTest {
 protected:
  void SetUp() override {
    DoubleTest::SetUp();
    ASSERT_EQ(RoInitialize(RO_INIT_MULTITHREADED), S_OK);
  }
  void TearDown() override {
    RoUninitialize();
    wd::clear_violations();  // each test checks the ones it caused
    DoubleTest::TearDown();
  }

  template <class I>
  static I* factory(const wchar_t* name) {
    HSTRING id = nullptr;
    WindowsCreateString(name, UINT32(wcslen(name)), &id);
    I* result = nullptr;
    EXPECT_EQ(RoGetActivationFactory(id, I::iid, reinterpret_cast<void**>(&result)), S_OK);
    WindowsDeleteString(id);
    return result;
  }
  static bool recorded(const std::string& part) {
    for (const auto& text : wd::violations())
      if (text.find(part) != std::string::npos) return true;
    return false;
  }
};

struct Ignore final : abi::IAsyncOperationCompletedHandler<abi::IVectorView<abi::MediaFrameSourceGroup>> {
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE Invoke(abi::IAsyncOperation<abi::IVectorView<abi::MediaFrameSourceGroup>>*,
                                   abi::AsyncStatus) override {
    return S_OK;
  }
};

TEST_F(DoubleStrictness, ASecondCompletedHandlerAndEarlyResultsAreRefused) {
  auto* statics = factory<abi::IMediaFrameSourceGroupStatics>(L"Windows.Media.Capture.Frames.MediaFrameSourceGroup");
  ASSERT_NE(statics, nullptr);
  // Static: an operation left pending calls it on its own thread, maybe after the test's end.
  static Ignore handler;
  bool saw_pending = false;
  for (int i = 0; i < 16 && !saw_pending; ++i) {  // the seed decides which complete late
    abi::IAsyncOperation<abi::IVectorView<abi::MediaFrameSourceGroup>>* operation = nullptr;
    ASSERT_EQ(statics->FindAllAsync(&operation), S_OK);
    abi::IVectorView<abi::MediaFrameSourceGroup>* groups = nullptr;
    const HRESULT early = operation->GetResults(&groups);
    if (early == HRESULT(0x8000000E)) saw_pending = true;  // E_ILLEGAL_METHOD_CALL
    if (groups) groups->Release();
    ASSERT_EQ(operation->put_Completed(&handler), S_OK);
    EXPECT_EQ(operation->put_Completed(&handler), HRESULT(0x80000018));  // E_ILLEGAL_DELEGATE_ASSIGNMENT
    operation->Release();
  }
  EXPECT_TRUE(saw_pending);
  EXPECT_TRUE(recorded("GetResults called before the operation completed"));
  EXPECT_TRUE(recorded("Completed handler assigned twice"));
  statics->Release();
}

TEST_F(DoubleStrictness, UnmodelledCallsAndDoubleReleasesAreCaught) {
  auto* statics = factory<abi::IMediaFrameSourceGroupStatics>(L"Windows.Media.Capture.Frames.MediaFrameSourceGroup");
  ASSERT_NE(statics, nullptr);
  abi::IAsyncOperation<abi::MediaFrameSourceGroup>* from_id = nullptr;
  EXPECT_EQ(statics->FromIdAsync(nullptr, &from_id), E_NOTIMPL);
  EXPECT_TRUE(recorded("unmodelled call MediaFrameSourceGroup::FromIdAsync"));
  statics->Release();
  statics->Release();  // one too many: the object is a shell now
  EXPECT_TRUE(recorded("Release of a released MediaFrameSourceGroup"));
}

TEST_F(DoubleStrictness, TheCaptureRefusesASingleThreadedApartment) {
  HSTRING id = nullptr;
  WindowsCreateString(L"Windows.Media.Capture.MediaCapture", 34, &id);
  IInspectable* instance = nullptr;
  ASSERT_EQ(RoActivateInstance(id, &instance), S_OK);
  WindowsDeleteString(id);
  std::thread([instance] {
    ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    abi::IMediaCapture* capture = nullptr;
    EXPECT_EQ(instance->QueryInterface(abi::IMediaCapture::iid, reinterpret_cast<void**>(&capture)),
              RPC_E_WRONG_THREAD);
    CoUninitialize();
  }).join();
  EXPECT_TRUE(recorded("called from a single-threaded apartment"));
  instance->Release();
}

TEST_F(DoubleStrictness, ObjectsUsedWithoutARuntimeAreCaught) {
  auto* statics = factory<abi::IMediaFrameSourceGroupStatics>(L"Windows.Media.Capture.Frames.MediaFrameSourceGroup");
  ASSERT_NE(statics, nullptr);
  RoUninitialize();
  HSTRING selector = nullptr;
  EXPECT_EQ(statics->GetDeviceSelector(&selector), CO_E_NOTINITIALIZED);
  EXPECT_TRUE(recorded("without a COM apartment"));
  ASSERT_EQ(RoInitialize(RO_INIT_MULTITHREADED), S_OK);
  statics->Release();
}

}  // namespace
}  // namespace vexcap::double_tests

