// The proofs of quorvel-keychain-proofs, each in a file of its own.
#pragma once

#include <tests/keychain/Proof.h>

namespace quorvel::proof {

[[nodiscard]] Outcome proveKilled();
[[nodiscard]] Outcome proveCrowd();
[[nodiscard]] Outcome proveBits();
[[nodiscard]] Outcome proveStranger();
[[nodiscard]] Outcome proveCanary();
[[nodiscard]] Outcome proveValues(KeySource source);
[[nodiscard]] Outcome proveService();

}  // namespace quorvel::proof
