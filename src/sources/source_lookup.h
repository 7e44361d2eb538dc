// Which source group and which frame source a capture session reads: shared by a client's own
// initialization and the RGB-stopped worker's probing sessions.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/port.h"

namespace vexcap::sources {

// The first group, in enumeration order, that has a source of `kind` and whose id equals `id`
// exactly (case-sensitive); null when none does.
std::shared_ptr<platform::SourceGroup> find_group_with_kind(
    const std::vector<std::shared_ptr<platform::SourceGroup>>& groups, const std::wstring& id,
    platform::SourceKind kind);

// Readers read a source's preview stream when the session offers one of the wanted kind, else
// its record stream.
platform::StreamType default_stream_type(const std::vector<std::shared_ptr<platform::FrameSource>>& sources,
                                         platform::SourceKind kind);

// The stream a source is read from: USB cameras always from their record stream.
platform::StreamType stream_type_to_read(const platform::SourceInfo& info, platform::StreamType default_type);

}  // namespace vexcap::sources
