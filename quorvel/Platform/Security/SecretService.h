// Keys in the desktop's Secret Service. The library that speaks to it is loaded on the first call and never linked: a
// program that keeps its keys elsewhere loads nothing. Each call answers within three seconds and asks the user nothing
// when the collection is locked.
#pragma once

#include <string>

#include <quorvel/Platform/Security/KeySource.h>

namespace quorvel {

/// The key of this name; written there in Base64, since services differ in what bytes they keep.
[[nodiscard]] KeyState readFromSecretService(const std::string& name, SecretBytes& key);
/// Stores it in the default collection, in place of one of the same name.
[[nodiscard]] KeyState writeToSecretService(const std::string& name, const SecretBytes& key);
void removeFromSecretService(const std::string& name);

}  // namespace quorvel
