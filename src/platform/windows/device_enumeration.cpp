#include "platform/windows/device_enumeration.h"

#include <mfapi.h>
#include <mfidl.h>

#include <memory>
#include <utility>

#include "platform/windows/com_ptr.h"
#include "platform/windows/media_foundation_library.h"
#include "platform/windows/mf_attributes.h"

namespace vexcap::windows {

namespace {

struct TaskMemory {
  void operator()(void* memory) const { CoTaskMemFree(memory); }
};

class MfDeviceActivate final : public platform::DeviceActivate {
 public:
  explicit MfDeviceActivate(ComPtr<IMFActivate> activate) : activate_(std::move(activate)) {}

  hresult symbolic_link(std::wstring& link) override {
    wchar_t* text = nullptr;
    UINT32 length = 0;
    const HRESULT result = activate_->GetAllocatedString(
        MF_DEVSOURCE_ATTRIBUTE_SOURCE_TYPE_VIDCAP_SYMBOLIC_LINK, &text, &length);
    const std::unique_ptr<wchar_t, TaskMemory> owned(text);
    if (FAILED(result)) return result;
    link.assign(text, length);
    return S_OK;
  }

 private:
  ComPtr<IMFActivate> activate_;
};

// The array MFEnumDeviceSources hands out: every reference not taken is released with it.
class ActivateArray {
 public:
  ActivateArray() = default;
  ActivateArray(const ActivateArray&) = delete;
  ActivateArray& operator=(const ActivateArray&) = delete;
  ~ActivateArray() {
    for (UINT32 i = 0; i < count_; ++i)
      if (items_[i]) items_[i]->Release();
    CoTaskMemFree(items_);
  }

  IMFActivate*** put() { return &items_; }
  UINT32* put_count() { return &count_; }
  UINT32 count() const { return items_ ? count_ : 0; }
  ComPtr<IMFActivate> take(UINT32 index) {
    return ComPtr<IMFActivate>::attach(std::exchange(items_[index], nullptr));
  }

 private:
  IMFActivate** items_ = nullptr;
  UINT32 count_ = 0;
};

}  // namespace

hresult enum_device_sources(platform::Attributes& attributes,
                            std::vector<std::shared_ptr<platform::DeviceActivate>>& activates) {
  IMFAttributes* filter = native_attributes(attributes);
  if (!filter) return E_INVALIDARG;
  const MediaFoundationBinding& mf = media_foundation();
  if (!mf.functions) return mf.result;
  ActivateArray found;
  const HRESULT result = mf.functions->enum_device_sources(filter, found.put(), found.put_count());
  if (FAILED(result)) return result;
  activates.clear();
  for (UINT32 i = 0; i < found.count(); ++i) {
    ComPtr<IMFActivate> activate = found.take(i);
    // A null entry stays null: the core reports it.
    activates.push_back(activate ? std::make_shared<MfDeviceActivate>(std::move(activate)) : nullptr);
  }
  return S_OK;
}

}  // namespace vexcap::windows
