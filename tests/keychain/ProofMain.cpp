#include <cstdio>
#include <cstring>

#include <tests/keychain/Proof.h>

int main(int count, char** arguments) {
  using namespace quorvel::proof;
  (void)seed();  // before there are children, which would each choose their own
  for (const Proof& proof : proofs()) {
    if (count == 2 && std::strcmp(arguments[1], proof.name) == 0) return proof.run();
    if (count != 2) std::printf("%s\n", proof.name);
  }
  if (count == 2) std::printf("no such proof: %s\n", arguments[1]);
  return kFails;
}
