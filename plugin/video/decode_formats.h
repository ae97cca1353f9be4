// Which host formats one video can be decoded into. Asked once per opened file, on the thread that describes
// it; the session that asks is separate from the one that later decodes. Never logs, and builds no text for a
// refused format.
#pragma once

#include <vector>

#include "video/format_tables.h"
#include "video/orvantis_codec.h"

namespace orvantis {

/// What the codec library is asked to produce for a row.
OrvantisFrameFormat outputFormatOf(const FormatInfo& info) noexcept;

/// The rows into which a video with this format data can be decoded, in table order, narrowed to the
/// sub-type's preferred formats when any of those is accepted. Opens a codec session of its own. Throws
/// OrvantisError, and UnknownCodedType when the library now tells a type that no row has.
std::vector<FormatInfo> buildDecodeFormats(FormatData format);

}  // namespace orvantis
