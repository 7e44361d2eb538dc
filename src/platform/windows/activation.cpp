#include "platform/windows/activation.h"

#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace vexcap::windows {

namespace {

struct Key {
  std::wstring id;
  GUID iid;
  bool operator<(const Key& other) const {
    if (id != other.id) return id < other.id;
    return std::memcmp(&iid, &other.iid, sizeof iid) < 0;
  }
};

struct FactoryCache {
  std::mutex mutex;
  std::map<Key, ComPtr<IUnknown>> factories;
};

FactoryCache& cache() {
  static FactoryCache instance;
  return instance;
}

}  // namespace

HRESULT cached_activation_factory(const wchar_t* id, REFIID iid, void** factory) {
  if (factory == nullptr) return E_POINTER;
  *factory = nullptr;
  const Key key{id, iid};
  {
    std::lock_guard lock(cache().mutex);
    if (auto it = cache().factories.find(key); it != cache().factories.end()) {
      it->second->AddRef();
      *factory = it->second.get();
      return S_OK;
    }
  }
  HString name(id);
  ComPtr<IUnknown> fetched;
  const HRESULT result = RoGetActivationFactory(name.get(), iid, fetched.put_void());
  if (FAILED(result)) return result;
  if (!fetched) return E_POINTER;
  std::lock_guard lock(cache().mutex);
  auto [it, added] = cache().factories.emplace(key, std::move(fetched));  // a racing fetch keeps the first
  it->second->AddRef();
  *factory = it->second.get();
  return S_OK;
}

void release_cached_factories() {
  std::map<Key, ComPtr<IUnknown>> released;
  {
    std::lock_guard lock(cache().mutex);
    released.swap(cache().factories);
  }
}

}  // namespace vexcap::windows
