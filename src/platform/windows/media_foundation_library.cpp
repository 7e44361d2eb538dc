#include "platform/windows/media_foundation_library.h"

#include <windows.h>

namespace vexcap::windows {

namespace {

// One DLL from the system folder, freed when the process lets the library go.
class SystemLibrary {
 public:
  explicit SystemLibrary(const wchar_t* name)
      : module_(LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32)),
        error_(module_ ? ERROR_SUCCESS : GetLastError()) {}
  SystemLibrary(const SystemLibrary&) = delete;
  SystemLibrary& operator=(const SystemLibrary&) = delete;
  ~SystemLibrary() {
    if (module_) FreeLibrary(module_);
  }
  HRESULT result() const { return module_ ? S_OK : HRESULT_FROM_WIN32(error_ ? error_ : ERROR_MOD_NOT_FOUND); }

  template <class Function>
  bool resolve(const char* name, Function& function) const {
    if (!module_) return false;
    function = reinterpret_cast<Function>(reinterpret_cast<void (*)()>(GetProcAddress(module_, name)));
    return function != nullptr;
  }

 private:
  HMODULE module_;
  DWORD error_;
};

class Binding {
 public:
  Binding() : mfplat_(L"mfplat.dll"), mf_(L"mf.dll") {
    if (FAILED(binding_.result = mfplat_.result()) || FAILED(binding_.result = mf_.result())) return;
    const bool complete = mfplat_.resolve("MFStartup", functions_.startup) &&
                          mfplat_.resolve("MFShutdown", functions_.shutdown) &&
                          mfplat_.resolve("MFCreateAttributes", functions_.create_attributes) &&
                          mf_.resolve("MFEnumDeviceSources", functions_.enum_device_sources) &&
                          mf_.resolve("MFCreateDeviceSource", functions_.create_device_source);
    if (!complete) {
      binding_.result = HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND);
      return;
    }
    binding_.functions = &functions_;
  }
  const MediaFoundationBinding& binding() const { return binding_; }

 private:
  SystemLibrary mfplat_;
  SystemLibrary mf_;
  MediaFoundationFunctions functions_;
  MediaFoundationBinding binding_;
};

}  // namespace

const MediaFoundationBinding& media_foundation() {
  static const Binding binding;  // the process's one binding
  return binding.binding();
}

}  // namespace vexcap::windows
