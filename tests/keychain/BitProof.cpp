// One bit is flipped in the file of a small store. Then the same in its write-ahead log, where an older state of the
// store may come back, since a log whose end does not hold is one that was never written to its end.
#include <tests/keychain/Proofs.h>

namespace quorvel::proof {
namespace {

constexpr std::size_t kItems = 12;

std::string oldValue(std::size_t item) { return valueOf(item + 1, 24 + item * 50); }
std::string newValue(std::size_t item) { return valueOf(item + 1001, 24 + item * 60); }

struct Tally {
  std::size_t tries = 0;
  std::size_t unanswered = 0;  // tries after which some item was not answered
  std::size_t older = 0;       // tries after which some item was answered as it had been before
};

class Bits {
 public:
  Bits(fs::path whole, fs::path folder, std::string file, bool mayBeOlder, Faults& faults)
      : whole_(std::move(whole)),
        folder_(std::move(folder)),
        file_(std::move(file)),
        mayBeOlder_(mayBeOlder),
        faults_(faults) {}

  Tally run(std::size_t tries, std::mt19937_64& random) {
    const std::string bytes = bytesOf(whole_ / file_);
    copyFolder(whole_, folder_);
    check(file_ + ", no bit");
    if (tally_.older + tally_.unanswered > 0) faults_.add(file_ + ": not answered without a flip");
    for (tally_.tries = 0; tally_.tries < tries; ++tally_.tries) {
      Keychain::close();
      copyFolder(whole_, folder_);
      const std::size_t bit = random() % (bytes.size() * 8);
      std::string damaged = bytes;
      damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << (bit % 8)));
      writeBytes(folder_ / file_, damaged);
      check(file_ + ", bit " + std::to_string(bit));
    }
    Keychain::close();
    return tally_;
  }

 private:
  void check(const std::string& where) {
    std::size_t answered = 0;
    bool isOlder = false;
    for (std::size_t item = 0; item < kItems; ++item) {
      ErrorSlot error;
      const std::string value = select(identifierOf("account ", item), &error);
      if (!isProper(error)) faults_.add(where + ": another error than the one there is");
      if (value == "nil") continue;
      ++answered;
      if (value == newValue(item)) continue;
      isOlder = true;
      if (!mayBeOlder_ || value != oldValue(item)) faults_.add(where + ": a wrong value");
    }
    tally_.older += isOlder;
    if (answered == kItems) return;
    ++tally_.unanswered;
    const KeychainReport report = Keychain::doctor();
    // A store that went back in time whole is one that was sound then.
    if (report.isSound() && !(mayBeOlder_ && report.items < kItems)) faults_.add(where + ": doctor sees nothing");
  }

  fs::path whole_;
  fs::path folder_;
  std::string file_;
  bool mayBeOlder_;
  Faults& faults_;
  Tally tally_;
};

void fill(std::size_t item, bool exists, const std::string& value) {
  const KeychainAccessor accessor;
  const String identifier = identifierOf("account ", item);
  const bool done = exists ? accessor.updateKeychainValue(dataOf(value), identifier, kGroup)
                           : accessor.insertKeychainValue(dataOf(value), identifier, kGroup);
  if (!done) std::exit(kFails);
}

}  // namespace

Outcome proveBits() {
  const std::size_t tries = roundsOr(2000);
  const Scratch scratch;
  Faults faults;
  std::mt19937_64 random(seed());
  use(scratch.keychain());
  for (std::size_t item = 0; item < kItems; ++item) fill(item, false, oldValue(item));
  Keychain::close();  // which writes the log into the file
  for (std::size_t item = 0; item < kItems; ++item) fill(item, true, newValue(item));
  copyFolder(scratch.keychain(), scratch.path() / "with-log");
  Keychain::close();
  copyFolder(scratch.keychain(), scratch.path() / "whole");

  const fs::path damaged = scratch.path() / "damaged";
  use(damaged);
  const Tally file = Bits(scratch.path() / "whole", damaged, "keychain.db", false, faults).run(tries, random);
  const Tally log = Bits(scratch.path() / "with-log", damaged, "keychain.db-wal", true, faults).run(tries / 5, random);
  if (file.unanswered < tries / 20) faults.add("the flips hit nothing");
  return faults.conclude(std::to_string(file.tries) + " flips in the store: no wrong value, nil or -25291 after " +
                         std::to_string(file.unanswered) + "; " + std::to_string(log.tries) +
                         " in its log: nil after " + std::to_string(log.unanswered) + ", an older state after " +
                         std::to_string(log.older));
}

}  // namespace quorvel::proof
