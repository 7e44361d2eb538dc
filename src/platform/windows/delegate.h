// Delegates: COM objects the platform calls back (Completed handlers, event handlers).
//
// A delegate is free-threaded: it answers IAgileObject, so the platform calls it on its own
// threads without marshaling. It owns its callback; the reference count starts at one, held
// by the ComPtr that make_delegate returns, and the object deletes itself on the last Release.
// A callback that throws reports the failure as its HRESULT: nothing unwinds into the platform.
#pragma once

#include <atomic>
#include <new>
#include <utility>

#include "platform/port.h"
#include "platform/windows/com_ptr.h"

namespace vexcap::windows {

// Delegates alive in this process, so that tests and debug builds can see every one released.
inline std::atomic<long>& live_delegates() {
  static std::atomic<long> count{0};
  return count;
}

template <class Interface, class Callback, class Invoke = decltype(&Interface::Invoke)>
class Delegate;

template <class Interface, class Callback, class... Args>
class Delegate<Interface, Callback, HRESULT (STDMETHODCALLTYPE Interface::*)(Args...)> final
    : public Interface, public IAgileObject {
 public:
  explicit Delegate(Callback callback) : callback_(std::move(callback)) { ++live_delegates(); }
  ~Delegate() { --live_delegates(); }
  Delegate(const Delegate&) = delete;
  Delegate& operator=(const Delegate&) = delete;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    if (object == nullptr) return E_POINTER;
    if (id == abi::iid_unknown || id == Interface::iid) {
      *object = static_cast<Interface*>(this);
    } else if (id == iid_of<IAgileObject>()) {
      *object = static_cast<IAgileObject*>(this);
    } else {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  HRESULT STDMETHODCALLTYPE Invoke(Args... args) override {
    try {
      return callback_(args...);
    } catch (const platform::PlatformError& error) {
      return error.code();
    } catch (const std::bad_alloc&) {
      return HRESULT(0x8007000Eu);  // E_OUTOFMEMORY
    } catch (...) {
      return E_FAIL;
    }
  }

 private:
  std::atomic<ULONG> references_{1};
  Callback callback_;
};

// The callback takes the delegate's Invoke arguments and returns an HRESULT.
template <class Interface, class Callback>
ComPtr<Interface> make_delegate(Callback callback) {
  return ComPtr<Interface>::attach(new Delegate<Interface, Callback>(std::move(callback)));
}

}  // namespace vexcap::windows
