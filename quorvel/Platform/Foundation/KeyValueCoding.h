// Key-value lookup: reading a value by key and by a path of keys.
// Not here: coercing getters (NSDictionary+Addtion.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// `valueForKey:`: of a dictionary the entry of the key; a key that begins with '@' names, without the '@', one of its
/// own properties: count, allKeys, allValues, description. Of a list a list of the elements' answers, the null marker
/// standing for missing ones, and '@count' its count. Of the null marker itself. Anything else has the key 'self'
/// alone, which is itself. nil when there is nothing. The key is not split at dots.
[[nodiscard]] Value valueForKey(const Value& receiver, StringView key);

/// `valueForKeyPath:`: follows the keys between the dots of `path`.
[[nodiscard]] Value valueForKeyPath(const Value& receiver, StringView path);

}  // namespace quorvel
