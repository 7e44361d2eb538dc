#include "platform/windows_double/object.h"

#include <deque>
#include <mutex>

#include "platform/windows_double/violations.h"

namespace vexcap::windows_double {

namespace {

// Released objects kept as shells, oldest first; past the bound the oldest is freed.
constexpr std::size_t kQuarantineSize = 4096;

struct Registry {
  std::mutex mutex;
  std::map<std::string, long> live;
  std::deque<ObjectCore*> quarantine;
};

Registry& registry() {
  static Registry* instance = new Registry;  // objects may be released during process exit
  return *instance;
}

std::string describe(HRESULT code) {
  char text[16];
  std::snprintf(text, sizeof text, "%08lx", static_cast<unsigned long>(code));
  return text;
}

}  // namespace

ObjectCore::ObjectCore(const char* runtime_class, Threading threading)
    : runtime_class_(runtime_class), threading_(threading) {
  std::lock_guard lock(registry().mutex);
  ++registry().live[runtime_class_];
}

ObjectCore::~ObjectCore() {
  if (IUnknown* marshaler = marshaler_.exchange(nullptr)) marshaler->Release();
}

std::string ObjectCore::short_name() const {
  std::string name = runtime_class_;
  const auto dot = name.rfind('.');
  return dot == std::string::npos ? name : name.substr(dot + 1);
}

HRESULT ObjectCore::enter(const char* method) {
  if (!alive_) {
    record_violation("call of " + short_name() + "::" + method + " on a released object");
    return RPC_E_DISCONNECTED;
  }
  APTTYPE type{};
  APTTYPEQUALIFIER qualifier{};
  const HRESULT apartment = CoGetApartmentType(&type, &qualifier);
  if (FAILED(apartment)) {
    record_violation(short_name() + "::" + method +
                     " called on a thread without a COM apartment (CoGetApartmentType " +
                     describe(apartment) + "): the Windows Runtime is not initialized in this process");
    return CO_E_NOTINITIALIZED;
  }
  if (threading_ == Threading::MtaOnly && (type == APTTYPE_STA || type == APTTYPE_MAINSTA)) {
    record_violation(short_name() + "::" + method +
                     " called from a single-threaded apartment; the class is not agile");
    return RPC_E_WRONG_THREAD;
  }
  return S_OK;
}

HRESULT ObjectCore::unmodelled(const char* method) {
  if (HRESULT entered = enter(method); FAILED(entered)) return entered;
  record_violation("unmodelled call " + short_name() + "::" + method);
  return E_NOTIMPL;
}

ULONG ObjectCore::checked_add_ref() {
  if (FAILED(enter("AddRef"))) return 0;
  return ULONG(++references_);
}

ULONG ObjectCore::checked_release() {
  if (!alive_) {
    record_violation("Release of a released " + short_name() + " (a reference released twice)");
    return 0;
  }
  enter("Release");  // a release without an apartment is reported, and still counted
  const long left = --references_;
  if (left == 0) last_reference_gone();
  if (left < 0) record_violation("Release of " + short_name() + " below zero references");
  return ULONG(left < 0 ? 0 : left);
}

void ObjectCore::internal_release() {
  if (--references_ == 0) last_reference_gone();
}

void ObjectCore::last_reference_gone() {
  alive_ = false;
  retire();
  ObjectCore* evicted = nullptr;
  {
    std::lock_guard lock(registry().mutex);
    if (--registry().live[runtime_class_] == 0) registry().live.erase(runtime_class_);
    registry().quarantine.push_back(this);
    if (registry().quarantine.size() > kQuarantineSize) {
      evicted = registry().quarantine.front();
      registry().quarantine.pop_front();
    }
  }
  delete evicted;
}

HRESULT ObjectCore::query_platform_interfaces(REFIID id, void** object, IUnknown* outer) {
  if (threading_ == Threading::Agile && id == iid_of<IAgileObject>()) {
    *object = outer;
    internal_add_ref();
    return S_OK;
  }
  if (id == iid_of<IMarshal>()) {
    // Wine's global interface table marshals in-process through the object's own IMarshal:
    // the free-threaded marshaler hands the same pointer to every apartment, and the guard
    // above keeps the threading rules.
    IUnknown* marshaler = marshaler_.load();
    if (marshaler == nullptr) {
      IUnknown* created = nullptr;
      if (FAILED(CoCreateFreeThreadedMarshaler(outer, &created))) return E_NOINTERFACE;
      if (!marshaler_.compare_exchange_strong(marshaler, created)) {
        created->Release();
      } else {
        marshaler = created;
      }
    }
    return marshaler->QueryInterface(id, object);
  }
  return E_NOINTERFACE;
}

HRESULT ObjectCore::runtime_class_name(HSTRING* name) {
  if (HRESULT entered = enter("GetRuntimeClassName"); FAILED(entered)) return entered;
  if (name == nullptr) return E_POINTER;
  const std::wstring text(runtime_class_, runtime_class_ + std::char_traits<char>::length(runtime_class_));
  return WindowsCreateString(text.c_str(), UINT32(text.size()), name);
}

std::map<std::string, long> live_objects_by_class() {
  std::lock_guard lock(registry().mutex);
  return registry().live;
}

}  // namespace vexcap::windows_double
