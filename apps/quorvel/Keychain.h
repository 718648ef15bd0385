// `quorvel keychain`: looks after the keychain from the shell. Of its answers only `get` is a secret.
#pragma once

#include <span>
#include <string_view>

namespace quorvel::command {

extern const char kKeychainUsage[];

/// The exit status: 0, 1 when the keychain says no, 2 when the words are no command.
int runKeychain(std::span<const std::string_view> words);

}  // namespace quorvel::command
