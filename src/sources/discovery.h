// The discovery queries: what the system's camera source groups are, without opening one.
// Every query enumerates afresh; nothing is cached.
#pragma once

#include <cstdint>
#include <string>

#include "common/hresult.h"
#include "platform/port.h"

namespace vexcap::sources {

// Sets capabilities[kind class] to 1 for every source of the group whose id equals `group_id`
// (classes: 0 colour, 1 infrared, 2 depth, 3 other). Never clears a byte. 0x80000016 when no
// group matches.
hresult query_device_capabilities(platform::Platform& platform, const std::wstring& group_id,
                                  std::uint8_t* capabilities);

// 1 software device ("SWD#" anywhere wins), 2 USB, 3 a colour or infrared group without either
// marker; 0 and 0x800710DF when nothing is found.
hresult query_source_group_type(platform::Platform& platform, std::uint32_t* type);

// The same for the groups holding a source whose id contains both texts (never 3).
hresult query_source_group_type_for_vid_pid(platform::Platform& platform, const std::wstring& vid,
                                            const std::wstring& pid, std::uint32_t* type);

// True when the group `group_id` holds a source whose id contains both texts.
hresult query_vid_pid_used(platform::Platform& platform, const std::wstring& group_id,
                           const std::wstring& vid, const std::wstring& pid, bool* used);

// Sets locations[panel] to 1 for every source whose device id contains `id_text`, compared
// without regard to case; a source without an enclosure location counts as panel 0 (unknown).
// Never clears a byte. 0 when at least one source matched, else 0x800710DF.
hresult query_device_locations(platform::Platform& platform, const std::wstring& id_text,
                               std::uint8_t* locations);

// The enclosure panel of the first colour or infrared source that has a location; the value
// is left as it was when none has. Always 0.
hresult query_targeted_location(platform::Platform& platform, std::uint32_t* panel);

}  // namespace vexcap::sources
