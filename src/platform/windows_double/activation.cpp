// The DLL's entry points: DllGetActivationFactory serves every runtime class the adapter
// activates (combase loads the double for the classes the prefix registers), DllCanUnloadNow,
// and the double's own queries.
#include <windows.h>

#include <activation.h>

#include <functional>
#include <map>
#include <mutex>

#include "platform/windows_double/device_information.h"
#include "platform/windows_double/double_control.h"
#include "platform/windows_double/double_settings.h"
#include "platform/windows_double/hstrings.h"
#include "platform/windows_double/imaging.h"
#include "platform/windows_double/media_capture.h"
#include "platform/windows_double/property_value.h"
#include "platform/windows_double/source_group.h"
#include "platform/windows_double/violations.h"

namespace vexcap::windows_double {

namespace {

struct FactoryRequests {
  std::mutex mutex;
  std::map<std::string, long> by_class;
};

FactoryRequests& requests() {
  static FactoryRequests* instance = new FactoryRequests;
  return *instance;
}

template <class Factory>
IActivationFactory* new_factory() {
  return new Factory();
}

const std::map<std::wstring, std::function<IActivationFactory*()>>& factories() {
  static const std::map<std::wstring, std::function<IActivationFactory*()>> all{
      {L"Windows.Media.Capture.MediaCapture", new_factory<MediaCaptureFactory>},
      {L"Windows.Media.Capture.MediaCaptureInitializationSettings", new_factory<InitializationSettingsFactory>},
      {L"Windows.Media.Capture.Frames.MediaFrameSourceGroup", new_factory<SourceGroupStatics>},
      {L"Windows.Devices.Enumeration.DeviceInformation", new_factory<DeviceInformationStatics>},
      {L"Windows.Graphics.Imaging.SoftwareBitmap", new_factory<SoftwareBitmapStatics>},
      {L"Windows.Storage.Streams.Buffer", new_factory<BufferFactory>},
      {L"Windows.Foundation.PropertyValue", new_factory<PropertyValueStatics>},
  };
  return all;
}

std::string narrow(const std::wstring& text) { return std::string(text.begin(), text.end()); }

}  // namespace

std::vector<std::string> violations() { return recorded_violations(); }
void clear_violations() { clear_recorded_violations(); }
std::map<std::string, long> live_objects() { return live_objects_by_class(); }

long factory_requests(const std::string& runtime_class) {
  std::lock_guard lock(requests().mutex);
  auto it = requests().by_class.find(runtime_class);
  return it == requests().by_class.end() ? 0 : it->second;
}

void clear_factory_requests() {
  std::lock_guard lock(requests().mutex);
  requests().by_class.clear();
}

}  // namespace vexcap::windows_double

using namespace vexcap::windows_double;

extern "C" __declspec(dllexport) HRESULT WINAPI DllGetActivationFactory(HSTRING class_id, IActivationFactory** factory) {
  if (factory == nullptr) return E_POINTER;
  *factory = nullptr;
  const std::wstring name = text_of(class_id);
  {
    std::lock_guard lock(requests().mutex);
    ++requests().by_class[narrow(name)];
  }
  auto it = factories().find(name);
  if (it == factories().end()) {
    record_violation("activation of " + narrow(name) + ", a runtime class the double does not model");
    return CLASS_E_CLASSNOTAVAILABLE;
  }
  *factory = it->second();
  return S_OK;
}

// Objects of the double may outlive any caller's view of them: the DLL stays.
extern "C" __declspec(dllexport) HRESULT WINAPI DllCanUnloadNow() { return S_FALSE; }

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) apply_prefix_scenario();
  return TRUE;
}
