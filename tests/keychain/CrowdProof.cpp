// Eight processes come to a keychain that is not there yet, and each inserts its own identifiers.
#include <algorithm>

#include <tests/keychain/Proofs.h>
#include <unistd.h>

namespace quorvel::proof {
namespace {

constexpr std::size_t kProcesses = 8;

/// How many it could not insert, up to what an exit code holds.
int insertAll(std::size_t process, std::size_t identifiers) {
  const KeychainAccessor accessor;
  int refused = 0;
  for (std::size_t i = 0; i < identifiers; ++i) {
    const std::size_t number = process * identifiers + i;
    refused += !accessor.insertKeychainValue(dataOf(valueOf(number, 40)), identifierOf("item ", number), kGroup);
  }
  return std::min(refused, 255);
}

}  // namespace

Outcome proveCrowd() {
  const std::size_t each = roundsOr(500);
  const Scratch scratch;
  use(scratch.keychain());
  Faults faults;
  int gate[2];
  if (::pipe(gate) != 0) return kFails;
  std::vector<pid_t> children;
  for (std::size_t process = 0; process < kProcesses; ++process) {
    children.push_back(start([&]() -> int {
      char nothing = 0;
      ::close(gate[1]);
      (void)!::read(gate[0], &nothing, 1);  // ends for all at once
      return insertAll(process, each);
    }));
  }
  ::close(gate[0]);
  ::close(gate[1]);
  for (const pid_t child : children) {
    if (const int refused = finish(child); refused != 0) faults.add("a process answers " + std::to_string(refused));
  }
  std::size_t present = 0;
  for (std::size_t number = 0; number < kProcesses * each; ++number) {
    present += select(identifierOf("item ", number)) == valueOf(number, 40);
  }
  if (present != kProcesses * each) faults.add("some are missing");
  if (!Keychain::doctor().isSound()) faults.add("doctor is not content");
  return faults.conclude("8 processes x " + std::to_string(each) + " identifiers: " + std::to_string(present) + " of " +
                         std::to_string(kProcesses * each) + " present");
}

}  // namespace quorvel::proof
