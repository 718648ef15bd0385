// The program's open keychain, behind SecItem.h and Keychain.h.
#pragma once

#include <quorvel/Platform/Security/KeychainSession.h>

namespace quorvel {

/// What an operation is about to do: whoever changes something first makes sure that the open file is still the one at
/// the path; whoever reads looks now and then.
enum class Purpose { Read, Change };

/// Runs `work` on the program's keychain, opened first where that is needed. No operation of another thread runs
/// meanwhile. errSecAllocate when memory runs out, whatever was undone by then.
[[nodiscard]] OSStatus withKeychain(Purpose purpose, FunctionView<OSStatus(KeychainSession&)> work);

}  // namespace quorvel
