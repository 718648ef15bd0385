// String extension: JSON text to a record.
// Not here: lists at the top (NSString+ConvertJSON.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// `jsonObject`: the record that the text is (RFC 8259). nil for text that is no JSON, for a list or anything else at
/// the top, and for text with an unpaired surrogate.
///
///     jsonObject(u"{\"a\":1}")   // {a = 1}
///     jsonObject(u"[1,2]")       // nil
[[nodiscard]] std::optional<Dictionary> jsonObject(StringView text);

}  // namespace quorvel
