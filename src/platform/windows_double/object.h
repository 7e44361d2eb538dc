// The base of every object the double hands out: one reference count, the live-object
// registry by runtime class, a bounded quarantine that keeps released objects as inert shells
// (so a call or Release on a dead object is caught, not undefined), and the guard each method
// passes first: the caller's apartment (CoGetApartmentType) must exist and, for classes that are
// not agile, must not be single-threaded.
//
// References the double keeps for itself (an operation its worker completes, a frame its reader
// holds) go through Ref<T>, which skips the caller checks: the platform's own threads may drop
// them at any time, as the platform's do.
#pragma once

#include <objidl.h>
#include <winstring.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include "platform/windows/com_ptr.h"
#include "platform/windows/winrt/abi.h"

namespace vexcap::windows_double {

namespace abi = vexcap::windows::abi;
using vexcap::windows::ComPtr;
using vexcap::windows::iid_of;

// The threading model a class's metadata gives it.
enum class Threading {
  Agile,    // callable from any apartment
  MtaOnly,  // "mta" + standard marshaling: callable from the multithreaded apartment only
};

class ObjectCore {
 public:
  ObjectCore(const char* runtime_class, Threading threading);
  ObjectCore(const ObjectCore&) = delete;
  ObjectCore& operator=(const ObjectCore&) = delete;
  virtual ~ObjectCore();

  const char* runtime_class() const { return runtime_class_; }
  std::string short_name() const;
  bool alive() const { return alive_; }

  // The guard of every method: S_OK, or the failure the caller gets (a violation is recorded).
  HRESULT enter(const char* method);
  // A method the double does not model: E_NOTIMPL and "unmodelled call <Class>::<Method>".
  HRESULT unmodelled(const char* method);

  // IUnknown as callers see it (checked) and as the double itself uses it (unchecked).
  ULONG checked_add_ref();
  ULONG checked_release();
  void internal_add_ref() { ++references_; }
  void internal_release();

  // IMarshal (the free-threaded marshaler, aggregated) and IAgileObject for agile classes;
  // E_NOINTERFACE otherwise.
  HRESULT query_platform_interfaces(REFIID id, void** object, IUnknown* outer);
  HRESULT runtime_class_name(HSTRING* name);

 protected:
  // Drops what the object holds when its last reference goes; the shell stays in quarantine.
  virtual void retire() {}

 private:
  void last_reference_gone();

  const char* const runtime_class_;
  const Threading threading_;
  std::atomic<long> references_{1};
  std::atomic<bool> alive_{true};
  std::atomic<IUnknown*> marshaler_{nullptr};
};

// Live objects the double handed out, by runtime class name.
std::map<std::string, long> live_objects_by_class();

// A reference the double keeps to one of its own objects.
template <class T>
class Ref {
 public:
  Ref() = default;
  Ref(std::nullptr_t) {}
  // Takes over the creation reference of a new object.
  static Ref adopt(T* object) {
    Ref ref;
    ref.object_ = object;
    return ref;
  }
  Ref(const Ref& other) : object_(other.object_) {
    if (object_) object_->internal_add_ref();
  }
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Ref& operator=(Ref other) {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Ref() {
    if (object_) object_->internal_release();
  }
  T* get() const { return object_; }
  T* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }
  void reset() { Ref().swap(*this); }
  void swap(Ref& other) { std::swap(object_, other.object_); }

 private:
  T* object_ = nullptr;
};

template <class T, class... Args>
Ref<T> make(Args&&... args) {
  return Ref<T>::adopt(new T(std::forward<Args>(args)...));
}

// Hands the caller a new reference to interface I of one of the double's objects.
template <class I, class T>
HRESULT hand_out(const Ref<T>& object, I** out) {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  if (!object) return S_OK;
  object->internal_add_ref();
  *out = static_cast<I*>(object.get());
  return S_OK;
}

// Writes a getter's answer to the caller's out parameter.
template <class T, class V>
HRESULT give(T* out, V&& value) {
  if (out == nullptr) return E_POINTER;
  *out = static_cast<T>(std::forward<V>(value));
  return S_OK;
}

// An object answering the interfaces in Bases (each names its ABI interface as
// `interface_type`); the first is its IUnknown and IInspectable.
template <class Self, Threading kThreading, class... Bases>
class Object : public ObjectCore, public Bases... {
 public:
  explicit Object(const char* runtime_class) : ObjectCore(runtime_class, kThreading) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (HRESULT entered = enter("QueryInterface"); FAILED(entered)) return entered;
    // A class may refuse an interface it lists, as a device refuses what its driver lacks.
    if constexpr (requires(Self& self) { self.refuses_interface(id); }) {
      if (HRESULT refused = static_cast<Self*>(this)->refuses_interface(id); FAILED(refused)) return refused;
    }
    if (id == abi::iid_unknown || (kInspectable && id == iid_of<IInspectable>())) {
      *object = identity();
    } else if (!(find<Bases>(id, object) || ...)) {
      return query_platform_interfaces(id, object, identity());
    }
    internal_add_ref();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return checked_add_ref(); }
  ULONG STDMETHODCALLTYPE Release() override { return checked_release(); }
  virtual HRESULT STDMETHODCALLTYPE GetIids(ULONG*, IID**) { return unmodelled("GetIids"); }
  virtual HRESULT STDMETHODCALLTYPE GetRuntimeClassName(HSTRING* name) { return runtime_class_name(name); }
  virtual HRESULT STDMETHODCALLTYPE GetTrustLevel(TrustLevel* level) {
    if (HRESULT entered = enter("GetTrustLevel"); FAILED(entered)) return entered;
    return give(level, BaseTrust);
  }

 private:
  using First = std::tuple_element_t<0, std::tuple<Bases...>>;
  static constexpr bool kInspectable = std::is_base_of_v<IInspectable, typename First::interface_type>;

  template <class Base>
  bool find(REFIID id, void** object) {
    using I = typename Base::interface_type;
    if (id != iid_of<I>()) return false;
    *object = static_cast<I*>(static_cast<Self*>(this));
    return true;
  }
  IUnknown* identity() {
    return static_cast<typename First::interface_type*>(static_cast<Self*>(this));
  }
};

// A hand-written implementation of interface I (parameterized ones, Media Foundation's).
template <class I>
struct Implements : I {
  using interface_type = I;
};

// The guard at the top of every modelled method.
#define DOUBLE_ENTER(method)                                          \
  do {                                                                \
    if (const HRESULT entered_ = this->enter(method); FAILED(entered_)) \
      return entered_;                                                \
  } while (0)

}  // namespace vexcap::windows_double
