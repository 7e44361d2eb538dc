// IVectorView<T> and IMapView<K, V> (with IIterable / IIterator and IKeyValuePair) over the
// double's own objects or plain values, as the platform hands out collections: snapshots taken
// when the collection is made.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/windows_double/object.h"

namespace vexcap::windows_double {

inline constexpr HRESULT kBounds = HRESULT(0x8000000Bu);  // E_BOUNDS

// One element: hands the caller its ABI form (a new reference, or the value).
template <class Abi>
using Element = std::function<HRESULT(Abi*)>;

template <class V>
Element<V> value_element(V value) {
  return [value](V* out) {
    *out = value;
    return S_OK;
  };
}
template <class I, class T>
Element<I*> object_element(Ref<T> object) {
  return [object](I** out) { return hand_out(object, out); };
}

template <class T>
class VectorView final : public Object<VectorView<T>, Threading::Agile, Implements<abi::IVectorView<T>>,
                                       Implements<abi::IIterable<T>>> {
 public:
  using Abi = abi::abi_t<T>;
  explicit VectorView(std::vector<Element<Abi>> elements)
      : Object<VectorView<T>, Threading::Agile, Implements<abi::IVectorView<T>>, Implements<abi::IIterable<T>>>(
            "Windows.Foundation.Collections.IVectorView`1"),
        elements_(std::make_shared<const std::vector<Element<Abi>>>(std::move(elements))) {}

  HRESULT STDMETHODCALLTYPE GetAt(UINT32 index, Abi* item) override {
    DOUBLE_ENTER("GetAt");
    if (item == nullptr) return E_POINTER;
    if (index >= elements_->size()) return kBounds;
    return (*elements_)[index](item);
  }
  HRESULT STDMETHODCALLTYPE get_Size(UINT32* size) override {
    DOUBLE_ENTER("get_Size");
    return give(size, UINT32(elements_->size()));
  }
  HRESULT STDMETHODCALLTYPE IndexOf(Abi, UINT32*, boolean*) override { return this->unmodelled("IndexOf"); }
  HRESULT STDMETHODCALLTYPE GetMany(UINT32, UINT32, Abi*, UINT32*) override { return this->unmodelled("GetMany"); }
  HRESULT STDMETHODCALLTYPE First(abi::IIterator<T>**) override { return this->unmodelled("First"); }

 private:
  void retire() override { elements_.reset(); }
  std::shared_ptr<const std::vector<Element<Abi>>> elements_;
};

template <class K, class V>
class KeyValuePair final : public Object<KeyValuePair<K, V>, Threading::Agile, Implements<abi::IKeyValuePair<K, V>>> {
 public:
  KeyValuePair(Element<abi::abi_t<K>> key, Element<abi::abi_t<V>> value)
      : Object<KeyValuePair<K, V>, Threading::Agile, Implements<abi::IKeyValuePair<K, V>>>(
            "Windows.Foundation.Collections.IKeyValuePair`2"),
        key_(std::move(key)), value_(std::move(value)) {}
  HRESULT STDMETHODCALLTYPE get_Key(abi::abi_t<K>* key) override {
    DOUBLE_ENTER("get_Key");
    return key ? key_(key) : E_POINTER;
  }
  HRESULT STDMETHODCALLTYPE get_Value(abi::abi_t<V>* value) override {
    DOUBLE_ENTER("get_Value");
    return value ? value_(value) : E_POINTER;
  }

 private:
  void retire() override { key_ = nullptr, value_ = nullptr; }
  Element<abi::abi_t<K>> key_;
  Element<abi::abi_t<V>> value_;
};

template <class K, class V>
struct MapEntry {
  std::function<bool(abi::abi_t<K>)> matches;
  Element<abi::abi_t<K>> key;
  Element<abi::abi_t<V>> value;
};

template <class K, class V>
class MapIterator final
    : public Object<MapIterator<K, V>, Threading::Agile, Implements<abi::IIterator<abi::IKeyValuePair<K, V>>>> {
  using Pair = abi::IKeyValuePair<K, V>;

 public:
  explicit MapIterator(std::shared_ptr<const std::vector<MapEntry<K, V>>> entries)
      : Object<MapIterator<K, V>, Threading::Agile, Implements<abi::IIterator<Pair>>>(
            "Windows.Foundation.Collections.IIterator`1"),
        entries_(std::move(entries)) {}
  HRESULT STDMETHODCALLTYPE get_Current(Pair** current) override {
    DOUBLE_ENTER("get_Current");
    if (current == nullptr) return E_POINTER;
    if (at_ >= entries_->size()) return kBounds;
    const auto& entry = (*entries_)[at_];
    return hand_out(make<KeyValuePair<K, V>>(entry.key, entry.value), current);
  }
  HRESULT STDMETHODCALLTYPE get_HasCurrent(boolean* has) override {
    DOUBLE_ENTER("get_HasCurrent");
    return give(has, at_ < entries_->size());
  }
  HRESULT STDMETHODCALLTYPE MoveNext(boolean* has) override {
    DOUBLE_ENTER("MoveNext");
    if (has == nullptr) return E_POINTER;
    if (at_ < entries_->size()) ++at_;
    *has = at_ < entries_->size();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetMany(UINT32, Pair**, UINT32*) override { return this->unmodelled("GetMany"); }

 private:
  void retire() override { entries_.reset(); }
  std::shared_ptr<const std::vector<MapEntry<K, V>>> entries_;
  std::size_t at_ = 0;
};

template <class K, class V>
class MapView final : public Object<MapView<K, V>, Threading::Agile, Implements<abi::IMapView<K, V>>,
                                    Implements<abi::IIterable<abi::IKeyValuePair<K, V>>>> {
  using Pair = abi::IKeyValuePair<K, V>;
  using Base = Object<MapView<K, V>, Threading::Agile, Implements<abi::IMapView<K, V>>,
                      Implements<abi::IIterable<abi::IKeyValuePair<K, V>>>>;

 public:
  explicit MapView(std::vector<MapEntry<K, V>> entries)
      : Base("Windows.Foundation.Collections.IMapView`2"),
        entries_(std::make_shared<const std::vector<MapEntry<K, V>>>(std::move(entries))) {}

  HRESULT STDMETHODCALLTYPE Lookup(abi::abi_t<K> key, abi::abi_t<V>* value) override {
    DOUBLE_ENTER("Lookup");
    if (value == nullptr) return E_POINTER;
    for (const auto& entry : *entries_)
      if (entry.matches(key)) return entry.value(value);
    return kBounds;
  }
  HRESULT STDMETHODCALLTYPE get_Size(UINT32* size) override {
    DOUBLE_ENTER("get_Size");
    return give(size, UINT32(entries_->size()));
  }
  HRESULT STDMETHODCALLTYPE HasKey(abi::abi_t<K> key, boolean* found) override {
    DOUBLE_ENTER("HasKey");
    if (found == nullptr) return E_POINTER;
    *found = false;
    for (const auto& entry : *entries_)
      if (entry.matches(key)) *found = true;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Split(abi::IMapView<K, V>**, abi::IMapView<K, V>**) override {
    return this->unmodelled("Split");
  }
  HRESULT STDMETHODCALLTYPE First(abi::IIterator<Pair>** first) override {
    DOUBLE_ENTER("First");
    return hand_out(make<MapIterator<K, V>>(entries_), first);
  }

 private:
  void retire() override { entries_.reset(); }
  std::shared_ptr<const std::vector<MapEntry<K, V>>> entries_;
};

}  // namespace vexcap::windows_double
