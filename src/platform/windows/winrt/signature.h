// Windows Runtime type signatures and the IIDs of parameterized interfaces, computed at compile
// time: the IID of IVectorView<MediaFrameSourceGroup> is a name-based UUID (SHA-1) of its
// signature, so no table of instance IIDs needs to be kept by hand.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "platform/windows/winrt/abi_base.h"

namespace vexcap::windows::abi {

template <std::size_t N>
struct fixed_string {
  char chars[N + 1] = {};

  constexpr fixed_string() = default;
  constexpr fixed_string(const char (&text)[N + 1]) {
    for (std::size_t i = 0; i < N; ++i) chars[i] = text[i];
  }
  constexpr std::string_view view() const { return {chars, N}; }
};
template <std::size_t N>
fixed_string(const char (&)[N]) -> fixed_string<N - 1>;

template <std::size_t A, std::size_t B>
constexpr fixed_string<A + B> operator+(const fixed_string<A>& a, const fixed_string<B>& b) {
  fixed_string<A + B> joined;
  for (std::size_t i = 0; i < A; ++i) joined.chars[i] = a.chars[i];
  for (std::size_t i = 0; i < B; ++i) joined.chars[A + i] = b.chars[i];
  return joined;
}
template <std::size_t A, std::size_t B>
constexpr auto operator+(const fixed_string<A>& a, const char (&b)[B]) {
  return a + fixed_string<B - 1>(b);
}
template <std::size_t A, std::size_t B>
constexpr auto operator+(const char (&a)[A], const fixed_string<B>& b) {
  return fixed_string<A - 1>(a) + b;
}

// "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}", lower case, as signatures spell an IID.
constexpr fixed_string<38> braced(const GUID& id) {
  constexpr char digits[] = "0123456789abcdef";
  fixed_string<38> text;
  std::size_t at = 0;
  auto put = [&](std::uint64_t value, int nibbles) {
    for (int shift = (nibbles - 1) * 4; shift >= 0; shift -= 4) text.chars[at++] = digits[(value >> shift) & 0xF];
  };
  text.chars[at++] = '{';
  put(id.Data1, 8);
  text.chars[at++] = '-';
  put(id.Data2, 4);
  text.chars[at++] = '-';
  put(id.Data3, 4);
  text.chars[at++] = '-';
  put(id.Data4[0], 2);
  put(id.Data4[1], 2);
  text.chars[at++] = '-';
  for (int i = 2; i < 8; ++i) put(id.Data4[i], 2);
  text.chars[at++] = '}';
  return text;
}

// SHA-1 over `size` bytes read through byte_at(index).
template <class ByteAt>
constexpr std::array<std::uint8_t, 20> sha1(std::uint64_t size, ByteAt byte_at) {
  auto rotl = [](std::uint32_t value, int bits) { return (value << bits) | (value >> (32 - bits)); };
  std::uint32_t h[5] = {0x67452301u, 0xEFCDAB89u, 0x98BADCFEu, 0x10325476u, 0xC3D2E1F0u};
  const std::uint64_t padded = (size + 8) / 64 * 64 + 64;
  auto padded_byte = [&](std::uint64_t index) -> std::uint8_t {
    if (index < size) return byte_at(index);
    if (index == size) return 0x80;
    if (index >= padded - 8) return std::uint8_t((size * 8) >> ((padded - 1 - index) * 8));
    return 0;
  };
  for (std::uint64_t block = 0; block < padded; block += 64) {
    std::uint32_t w[80] = {};
    for (int i = 0; i < 16; ++i) {
      for (int b = 0; b < 4; ++b) w[i] = (w[i] << 8) | padded_byte(block + std::uint64_t(i) * 4 + b);
    }
    for (int i = 16; i < 80; ++i) w[i] = rotl(w[i - 3] ^ w[i - 8] ^ w[i - 14] ^ w[i - 16], 1);
    std::uint32_t a = h[0], b = h[1], c = h[2], d = h[3], e = h[4];
    for (int i = 0; i < 80; ++i) {
      std::uint32_t f = 0, k = 0;
      if (i < 20) {
        f = (b & c) | (~b & d), k = 0x5A827999u;
      } else if (i < 40) {
        f = b ^ c ^ d, k = 0x6ED9EBA1u;
      } else if (i < 60) {
        f = (b & c) | (b & d) | (c & d), k = 0x8F1BBCDCu;
      } else {
        f = b ^ c ^ d, k = 0xCA62C1D6u;
      }
      const std::uint32_t next = rotl(a, 5) + f + e + k + w[i];
      e = d, d = c, c = rotl(b, 30), b = a, a = next;
    }
    h[0] += a, h[1] += b, h[2] += c, h[3] += d, h[4] += e;
  }
  std::array<std::uint8_t, 20> digest{};
  for (int i = 0; i < 20; ++i) digest[i] = std::uint8_t(h[i / 4] >> (24 - (i % 4) * 8));
  return digest;
}

// The IID of a parameterized interface instance: a version-5 UUID of its signature in the
// Windows Runtime's own namespace.
constexpr GUID guid_from_signature(std::string_view signature) {
  constexpr std::uint8_t name_space[16] = {0x11, 0xf4, 0x7a, 0xd5, 0x7b, 0x73, 0x42, 0xc0,
                                           0xab, 0xae, 0x87, 0x8b, 0x1e, 0x16, 0xad, 0xee};
  const auto hash = sha1(16 + signature.size(), [&](std::uint64_t index) {
    return index < 16 ? name_space[index] : std::uint8_t(signature[index - 16]);
  });
  GUID id{};
  id.Data1 = std::uint32_t(hash[0]) << 24 | std::uint32_t(hash[1]) << 16 | std::uint32_t(hash[2]) << 8 | hash[3];
  id.Data2 = std::uint16_t(hash[4] << 8 | hash[5]);
  id.Data3 = std::uint16_t(((hash[6] & 0x0F) | 0x50) << 8 | hash[7]);
  id.Data4[0] = std::uint8_t((hash[8] & 0x3F) | 0x80);
  for (int i = 1; i < 8; ++i) id.Data4[i] = hash[8 + i];
  return id;
}

// ---- Signatures of the types that appear as type arguments --------------------------------

// Enumerations, structures and fundamental types: specialized below and where enums are
// declared. Each gives `signature` and `name` (the ABI spelling).
template <class T>
struct value_type_info;

template <class T>
constexpr auto signature_of() {
  if constexpr (requires { T::signature; }) {
    return T::signature;  // parameterized instances
  } else if constexpr (requires { typename T::default_interface; }) {
    return "rc(" + T::name + ";" + signature_of<typename T::default_interface>() + ")";
  } else if constexpr (requires { T::is_delegate; }) {
    return "delegate(" + braced(T::iid) + ")";
  } else if constexpr (requires { T::iid; }) {
    return braced(T::iid);
  } else {
    return value_type_info<T>::signature;
  }
}

// pinterface({template iid};arg;...)
template <class... Args>
constexpr auto pinterface_signature(const GUID& template_iid) {
  return "pinterface(" + braced(template_iid) + ((";" + signature_of<Args>()) + ...) + ")";
}

// How a type argument travels through the ABI: classes as their default interface, interfaces
// as pointers, everything else by value.
template <class T>
constexpr auto abi_type_of() {
  if constexpr (requires { typename T::default_interface; }) {
    return static_cast<typename T::default_interface**>(nullptr);
  } else if constexpr (requires { T::iid; } || std::is_same_v<T, IInspectable>) {
    return static_cast<T**>(nullptr);
  } else {
    return static_cast<T*>(nullptr);
  }
}
template <class T>
using abi_t = std::remove_pointer_t<decltype(abi_type_of<T>())>;

#define VEXCAP_WINRT_VALUE_TYPE(type, abi_name, sig)        \
  template <>                                               \
  struct value_type_info<type> {                            \
    static constexpr fixed_string signature{sig};           \
    static constexpr fixed_string name{abi_name};           \
  }

VEXCAP_WINRT_VALUE_TYPE(HSTRING, "HSTRING", "string");
VEXCAP_WINRT_VALUE_TYPE(GUID, "GUID", "g16");
VEXCAP_WINRT_VALUE_TYPE(BYTE, "BYTE", "u1");
VEXCAP_WINRT_VALUE_TYPE(INT32, "INT32", "i4");
VEXCAP_WINRT_VALUE_TYPE(UINT32, "UINT32", "u4");
VEXCAP_WINRT_VALUE_TYPE(TimeSpan, "TimeSpan", "struct(Windows.Foundation.TimeSpan;i8)");
VEXCAP_WINRT_VALUE_TYPE(IInspectable, "IInspectable*", "cinterface(IInspectable)");

}  // namespace vexcap::windows::abi
