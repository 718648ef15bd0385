#include <tests/keychain/Proofs.h>

namespace quorvel::proof {

std::vector<Proof> proofs() {
  return {{"killed", &proveKilled},
          {"crowd", &proveCrowd},
          {"bits", &proveBits},
          {"stranger", &proveStranger},
          {"canary", &proveCanary},
          {"values-file", [] { return proveValues(KeySource::File); }},
          {"values-handed-in", [] { return proveValues(KeySource::HandedIn); }},
          {"values-secret-service", [] { return proveValues(KeySource::SecretService); }},
          {"service", &proveService}};
}

}  // namespace quorvel::proof
