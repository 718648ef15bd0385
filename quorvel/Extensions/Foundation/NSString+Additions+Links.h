// NSString(Additions): web addresses inside text.
// Not here: what counts as a link (NSDataDetector.h).
#pragma once

#include <quorvel/Platform/Foundation/NSDataDetector.h>

namespace quorvel {

/// `qv_linkDetector`: the one link detector of the process, made on first use; the receiver plays no part.
[[nodiscard]] const NSDataDetector& qv_linkDetector(StringView text = nil);

/// `qv_URL`: the URL of the first link in the receiver, else the whole receiver as a URL (NSURL.h); nil when it is
/// none.
///
///     qv_URL(u"see example.com/a, please")   // http://example.com/a
[[nodiscard]] std::optional<NSURL> qv_URL(StringView text);

}  // namespace quorvel
