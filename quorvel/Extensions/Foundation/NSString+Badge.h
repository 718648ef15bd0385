// NSString(Badge): the text of a small counter badge.
#pragma once

#include <optional>

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// `badgeValue`: 'N' and '!' themselves; nil when the receiver's `integerValue` is below 1, '99+' when it is above 99,
/// otherwise the receiver as it is ('007' stays).
[[nodiscard]] std::optional<String> badgeValue(const String& text);

}  // namespace quorvel
