#include "controls/device_source_attributes.h"

#include "controls/ks_ids.h"
#include "log/log.h"

namespace vexcap::controls {

namespace {

constexpr std::uint32_t kInfraredReader = 1;

hresult create_store(platform::Platform& platform,
                     std::shared_ptr<platform::Attributes>& attributes) {
  attributes.reset();
  const hresult result = platform.create_attributes(2, attributes);
  return succeeded(result) && !attributes ? HR_POINTER : result;
}

unsigned bits(hresult value) { return static_cast<unsigned>(value); }

}  // namespace

hresult create_enumeration_attributes(platform::Platform& platform, std::uint32_t reader_kind,
                                      std::shared_ptr<platform::Attributes>& attributes) {
  hresult result = create_store(platform, attributes);
  if (failed(result)) {
    VXLOG('E', "MFCreateAttributes failed: %08x\n", bits(result));
    return result;
  }
  result = attributes->set_guid(ids::kSourceType, ids::kSourceTypeVidcap);
  if (failed(result)) {
    VXLOG('E', "MF_DEVSOURCE_ATTRIBUTE_SOURCE_TYPE failed: %08x\n", bits(result));
    return result;
  }
  const platform::Guid& category =
      reader_kind == kInfraredReader ? ids::kCategorySensorCamera : ids::kCategoryVideoCamera;
  result = attributes->set_guid(ids::kVidcapCategory, category);
  if (failed(result)) {
    VXLOG('E', "MF_DEVSOURCE_ATTRIBUTE_SOURCE_TYPE_VIDCAP_CATEGORY failed: %08x\n", bits(result));
    return result;
  }
  return HR_OK;
}

hresult create_selection_attributes(platform::Platform& platform, const std::wstring& link,
                                    std::shared_ptr<platform::Attributes>& attributes) {
  hresult result = create_store(platform, attributes);
  if (failed(result)) {
    VXLOG('E', "Failed creating source attributes for '%ls': %08x", link.c_str(), bits(result));
    return result;
  }
  result = attributes->set_guid(ids::kSourceType, ids::kSourceTypeVidcap);
  if (failed(result)) {
    VXLOG('E', "Failed setting source type for '%ls': %08x", link.c_str(), bits(result));
    return result;
  }
  result = attributes->set_string(ids::kVidcapSymbolicLink, link);
  if (failed(result)) {
    VXLOG('W', "Failed setting source symbolic link to '%ls': %08x", link.c_str(), bits(result));
    return result;
  }
  return HR_OK;
}

}  // namespace vexcap::controls
