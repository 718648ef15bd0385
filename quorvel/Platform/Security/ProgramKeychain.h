// The program's open keychain, behind SecItem.h and Keychain.h.
#pragma once

#include <quorvel/Platform/Security/KeychainSession.h>

namespace quorvel {

/// Runs `work` on the program's keychain, opened first where that is needed. No operation of another thread runs
/// meanwhile. errSecAllocate when memory runs out, whatever was undone by then.
[[nodiscard]] OSStatus withKeychain(FunctionView<OSStatus(KeychainSession&)> work);

}  // namespace quorvel
