// Reading Windows Runtime collections into vectors of interface pointers.
#pragma once

#include <vector>

#include "platform/windows/activation.h"
#include "platform/windows/winrt/foundation_abi.h"

namespace vexcap::windows {

// The elements of a vector view, in order; entries may be null.
template <class T>
auto elements_of(const ComPtr<abi::IVectorView<T>>& view) {
  using Element = std::remove_pointer_t<abi::abi_t<T>>;
  std::vector<ComPtr<Element>> elements;
  if (!view) return elements;
  UINT32 size = 0;
  check(view->get_Size(&size));
  elements.reserve(size);
  for (UINT32 i = 0; i < size; ++i) {
    ComPtr<Element> element;
    check(view->GetAt(i, element.put()));
    elements.push_back(std::move(element));
  }
  return elements;
}

// The values of a map view in the map's iteration order.
template <class K, class V>
auto values_of(const ComPtr<abi::IMapView<K, V>>& map) {
  using Value = std::remove_pointer_t<abi::abi_t<V>>;
  std::vector<ComPtr<Value>> values;
  if (!map) return values;
  auto pairs = query<abi::IIterable<abi::IKeyValuePair<K, V>>>(map);
  ComPtr<abi::IIterator<abi::IKeyValuePair<K, V>>> at;
  check(pairs->First(at.put()));
  boolean has_current = false;
  check(at->get_HasCurrent(&has_current));
  while (has_current) {
    ComPtr<abi::IKeyValuePair<K, V>> pair;
    check(at->get_Current(pair.put()));
    ComPtr<Value> value;
    check(pair->get_Value(value.put()));
    values.push_back(std::move(value));
    check(at->MoveNext(&has_current));
  }
  return values;
}

// IClosable::Close when the object has it.
template <class I>
void close_if_closable(const ComPtr<I>& object) {
  if (auto closable = object.template try_as<abi::IClosable>()) check(closable->Close());
}

}  // namespace vexcap::windows
