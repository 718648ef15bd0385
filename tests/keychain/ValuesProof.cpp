// Values of every kind come back byte for byte, whichever source the key has, and after its service was restarted.
#include <algorithm>

#include <tests/keychain/DesktopSession.h>
#include <tests/keychain/Proofs.h>

namespace quorvel::proof {
namespace {

constexpr char kHandedIn[] = "thirty-two bytes of key material";
constexpr std::size_t kLongest = 1 << 20;

std::string randomValue(std::size_t number) {
  std::mt19937_64 random(seed() * 31 + number);
  const std::size_t size = number % 50 == 1 ? random() % (kLongest + 1) : random() % 3000;
  std::string value(size, '\0');
  for (char& byte : value) byte = static_cast<char>(random());
  constexpr const char* kEndings[] = {"\n", "\xC0\x80", "\xED\xA0\x80", "\xFF\xFE", "\r\n"};
  switch (number % 10) {
    case 0:
      return {};
    case 1:
      return number % 100 == 51 ? std::string(kLongest, '\xFF') : value;
    case 2:
      return std::string(size, '\0');
    case 3:
      return '\0' + value + '\0';
    default:
      return number % 10 < 9 ? kEndings[number % 5] + value + kEndings[number % 5] : value;
  }
}

class Values {
 public:
  Values(std::size_t count, Faults& faults) : count_(count), faults_(faults) {}

  void insert(std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < to; ++i) {
      ErrorSlot error;
      const bool done =
          accessor_.insertKeychainValue(dataOf(randomValue(i)), identifierOf("value ", i), kGroup, &error);
      if (!done) faults_.add("value " + std::to_string(i) + " is refused" + (error ? " with -25291" : ""));
    }
  }
  [[nodiscard]] std::size_t countRight(std::size_t to) {
    std::size_t right = 0;
    for (std::size_t i = 0; i < to; ++i) {
      const auto value = accessor_.selectKeychainCopyMatching(identifierOf("value ", i), kGroup);
      const Data wanted = dataOf(randomValue(i));
      right += value && std::ranges::equal(value->bytes(), wanted.bytes());
    }
    if (right != to) faults_.add(std::to_string(to - right) + " values are not as they were");
    return right;
  }
  [[nodiscard]] std::size_t count() const { return count_; }

 private:
  std::size_t count_;
  Faults& faults_;
  KeychainAccessor accessor_;
};

}  // namespace

Outcome proveValues(KeySource source) {
  const Scratch scratch;
  DesktopSession session(scratch.path());
  if (source == KeySource::SecretService && !session.start()) return session.missing();
  Faults faults;
  Values values(roundsOr(1000), faults);
  const Data key = source == KeySource::HandedIn ? dataOf(kHandedIn) : Data();
  const std::size_t half = values.count() / 2;
  use(scratch.keychain(), source, key);
  // By another process, which is gone when its values are read.
  const int code = finish(start([&] {
    values.insert(0, half);
    return values.countRight(half) == half ? kHolds : kFails;
  }));
  if (code != kHolds) faults.add("the first process answers " + std::to_string(code));
  if (source == KeySource::SecretService) session.restartService();
  (void)values.countRight(half);
  values.insert(half, values.count());
  if (source == KeySource::SecretService) session.restartService();
  use(scratch.keychain(), source, key);  // which asks for the key again
  const std::size_t right = values.countRight(values.count());
  return faults.conclude(std::string(nameOf(source)) + ": " + std::to_string(right) + " of " +
                         std::to_string(values.count()) + " values byte for byte");
}

}  // namespace quorvel::proof
