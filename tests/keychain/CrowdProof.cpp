// Eight processes come to a keychain that is not there yet, and each inserts its own identifiers.
#include <algorithm>
#include <cstdio>

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
    ErrorSlot error;
    if (accessor.insertKeychainValue(dataOf(valueOf(number, 40)), identifierOf("item ", number), kGroup, &error))
      continue;
    std::printf("item %zu is refused%s\n", number, error ? " with -25291" : "");
    ++refused;
  }
  return std::min(refused, 255);
}

/// How many of the items are there afterwards.
std::size_t crowd(const fs::path& keychain, std::size_t each, Faults& faults) {
  use(keychain);
  int gate[2];
  if (::pipe(gate) != 0) std::exit(kFails);
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
  Keychain::close();
  return present;
}

}  // namespace

Outcome proveCrowd() {
  const std::size_t each = roundsOr(500);
  constexpr std::size_t kSmallCrowds = 200;
  const Scratch scratch;
  Faults faults;
  const std::size_t present = crowd(scratch.keychain(), each, faults);
  // Most of what can go wrong does so while the keychain is made.
  for (std::size_t i = 0; i < kSmallCrowds; ++i) {
    fs::remove_all(scratch.keychain());
    (void)crowd(scratch.keychain(), 3, faults);
  }
  return faults.conclude("8 processes x " + std::to_string(each) + " identifiers: " + std::to_string(present) + " of " +
                         std::to_string(kProcesses * each) + " present; " + std::to_string(kSmallCrowds) +
                         " times 8 processes x 3 in a keychain just made");
}

}  // namespace quorvel::proof
