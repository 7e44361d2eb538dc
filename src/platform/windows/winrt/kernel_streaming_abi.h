// The two kernel-streaming interfaces a Media Foundation device source answers: classic COM,
// declared here (the MinGW headers lack IKsTopologyInfo and bring IKsControl only with all of
// ks.h) so that the ABI test checks them with the others. Property requests stay raw bytes:
// the core builds KSPROPERTY / KSP_NODE itself.
#pragma once

#include "platform/windows/winrt/abi_base.h"

namespace vexcap::windows::abi {

struct IKsControl : IUnknown {
  static constexpr GUID iid = {0x28f54685, 0x06fd, 0x11d2, {0xb2, 0x7a, 0x00, 0xa0, 0xc9, 0x22, 0x31, 0x96}};
  virtual HRESULT STDMETHODCALLTYPE KsProperty(void* property, ULONG property_length, void* data,
                                               ULONG data_length, ULONG* bytes_returned) = 0;
  virtual HRESULT STDMETHODCALLTYPE KsMethod(void* method, ULONG method_length, void* data,
                                             ULONG data_length, ULONG* bytes_returned) = 0;
  virtual HRESULT STDMETHODCALLTYPE KsEvent(void* event, ULONG event_length, void* data,
                                            ULONG data_length, ULONG* bytes_returned) = 0;
};

struct IKsTopologyInfo : IUnknown {
  static constexpr GUID iid = {0x720d4ac0, 0x7533, 0x11d0, {0xa5, 0xd6, 0x28, 0xdb, 0x04, 0xc1, 0x00, 0x00}};
  virtual HRESULT STDMETHODCALLTYPE get_NumCategories(DWORD* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Category(DWORD index, GUID* category) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NumConnections(DWORD* count) = 0;
  // KSTOPOLOGY_CONNECTION*: four ULONGs.
  virtual HRESULT STDMETHODCALLTYPE get_ConnectionInfo(DWORD index, void* connection) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NodeName(DWORD node, WCHAR* name, DWORD buffer_size,
                                                 DWORD* name_length) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_NodeType(DWORD node, GUID* type) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD node, REFIID interface_id, void** object) = 0;
};

}  // namespace vexcap::windows::abi
