// The k-th call of a kind fails, for every k that an operation comes to: it answers NO or nil and nothing crashes;
// without the failure the store is then sound, and its item wholly old or wholly new.
#include <algorithm>
#include <cstdlib>
#include <new>

#include <sys/mman.h>
#include <tests/keychain/FailingCalls.h>
#include <tests/keychain/Proof.h>

namespace quorvel::proof {
namespace {

constexpr char kHandedIn[] = "thirty-two bytes of key material";
constexpr std::size_t kOthers = 4;

/// What the child that meets the failure tells, in memory that both have.
struct Told {
  std::size_t calls;
  bool done;
  bool isProper;
  bool isError;
};

enum class State {
  Cold,    // the process has not come near a keychain
  Closed,  // the libraries under it are loaded
  Open,
};

struct Act {
  const char* name;
  bool isFresh;  // there is no store yet
  State state;   // when calls begin to fail
  bool (*run)(ErrorSlot& error, std::uint64_t& read);
  std::uint64_t before;  // the number of the value that the item holds, 0 for none
  std::uint64_t after;
};

constexpr std::uint64_t kOld = 1;
constexpr std::uint64_t kNew = 2;

/// Made before anything fails, since their making is not what is tried.
struct Prepared {
  Data old = dataOf(valueOf(kOld, 3000));
  Data fresh = dataOf(valueOf(kNew, 9000));
  Data masterKey = dataOf(kHandedIn);
  KeychainAccessor accessor;
};
const Prepared& prepared() {
  static const Prepared made;
  return made;
}

bool insertNew(ErrorSlot& error, std::uint64_t& /*read*/) {
  return prepared().accessor.insertKeychainValue(prepared().fresh, u"new", kGroup, &error);
}
bool updateItem(ErrorSlot& error, std::uint64_t& /*read*/) {
  return prepared().accessor.updateKeychainValue(prepared().fresh, u"item", kGroup, &error);
}
bool deleteItem(ErrorSlot& error, std::uint64_t& /*read*/) {
  return prepared().accessor.deleteKeychainValue(u"item", kGroup, &error);
}
bool selectItem(ErrorSlot& error, std::uint64_t& read) {
  const auto value = prepared().accessor.selectKeychainCopyMatching(u"item", kGroup, &error);
  if (value) read = std::ranges::equal(value->bytes(), prepared().old.bytes()) ? kOld : UINT64_MAX;
  return value.has_value();
}
bool rotate(ErrorSlot& /*error*/, std::uint64_t& /*read*/) { return Keychain::rotate() == errSecSuccess; }
bool doctor(ErrorSlot& /*error*/, std::uint64_t& /*read*/) { return Keychain::doctor().isSound(); }

constexpr Act kActs[] = {
    {"first insert", true, State::Closed, &insertNew, 0, kNew},
    {"insert", false, State::Open, &insertNew, 0, kNew},
    {"insert after opening", false, State::Closed, &insertNew, 0, kNew},
    {"update", false, State::Open, &updateItem, kOld, kNew},
    {"update after opening", false, State::Closed, &updateItem, kOld, kNew},
    {"delete", false, State::Open, &deleteItem, kOld, 0},
    {"delete after opening", false, State::Closed, &deleteItem, kOld, 0},
    {"select", false, State::Open, &selectItem, kOld, kOld},
    {"select as the first of all", false, State::Cold, &selectItem, kOld, kOld},
    {"rotate", false, State::Closed, &rotate, kOld, kOld},
    {"doctor", false, State::Closed, &doctor, kOld, kOld},
};

class Trial {
 public:
  Trial(const Act& act, Failing kind, const Scratch& scratch, Told& told, Faults& faults)
      : act_(act), kind_(kind), scratch_(scratch), told_(told), faults_(faults) {}

  /// How many failures were tried: each of the first calls, then every `step`-th (QUORVEL_STEP), alone and from there
  /// on for good.
  std::size_t run(std::size_t step) {
    attempt(0, 0);
    if (!told_.done) faults_.add(std::string(act_.name) + " fails without a failing call");
    std::size_t tried = 0;
    const std::size_t calls = told_.calls;
    for (std::size_t k = 1; k <= calls; k += step) {
      for (const std::size_t count : {std::size_t{1}, SIZE_MAX}) {
        attempt(k, count);
        ++tried;
      }
    }
    return tried;
  }

 private:
  void attempt(std::size_t first, std::size_t count) {
    const fs::path folder = scratch_.keychain();
    where_ = std::string(act_.name) + ", call " + std::to_string(first) + (count > 1 ? " and later" : "");
    fs::remove_all(folder);
    if (!act_.isFresh) copyFolder(scratch_.path() / "template", folder);
    told_ = {};
    const int code = finish(start([&] { return meet(first, count); }));
    if (code != 0) return faults_.add(where_ + ": the process answers " + std::to_string(code));
    if (!told_.isProper) faults_.add(where_ + ": the error slot");
    if (told_.done && told_.isError) faults_.add(where_ + ": done and an error");
    // The program itself never opens the keychain: what comes first in a process comes first in every child.
    const int found = finish(start([&] {
      const std::size_t before = faults_.count();
      check();
      return static_cast<int>(faults_.count() - before);
    }));
    if (found != 0) faults_.add(where_ + ": " + std::to_string(found) + " faults afterwards");
  }

  int meet(std::size_t first, std::size_t count) {
    ErrorSlot error;
    std::uint64_t read = 0;
    if (act_.state != State::Cold) (void)Keychain::doctor();
    if (act_.state == State::Open) (void)select(u"other 0");
    armCalls(kind_, first, count);
    const bool done = act_.run(error, read);
    told_.calls = disarmCalls();
    told_.done = done;
    told_.isError = error.has_value();
    told_.isProper = isProper(error) && (!done || act_.run != &selectItem || read == kOld);
    return 0;
  }

  /// As a program finds it to which nothing fails.
  void check() {
    const StringView name = act_.run == &insertNew ? StringView(u"new") : StringView(u"item");
    ErrorSlot error;
    const std::string value = select(name, &error);
    if (error) return faults_.add(where_ + ": the keychain does not open any more");
    std::uint64_t holds = 0;
    if (value != "nil") holds = numberOf(value).value_or(UINT64_MAX);
    if (holds != act_.after && (told_.done || holds != act_.before)) {
      faults_.add(where_ + ": the item is neither wholly old nor wholly new");
    }
    for (std::size_t i = 0; i < kOthers && !act_.isFresh; ++i) {
      if (select(identifierOf("other ", i)) != valueOf(100 + i, 500)) faults_.add(where_ + ": another item");
    }
    if (!Keychain::doctor().isSound()) faults_.add(where_ + ": doctor is not content");
  }

  const Act& act_;
  Failing kind_;
  const Scratch& scratch_;
  Told& told_;
  Faults& faults_;
  std::string where_;
};

bool makeTemplate(const Scratch& scratch) {
  use(scratch.path() / "template");
  const KeychainAccessor& accessor = prepared().accessor;
  bool done = accessor.insertKeychainValue(prepared().old, u"item", kGroup);
  for (std::size_t i = 0; i < kOthers; ++i) {
    done = done && accessor.insertKeychainValue(dataOf(valueOf(100 + i, 500)), identifierOf("other ", i), kGroup);
  }
  Keychain::close();
  return done;
}

/// Every call fails once, or with QUORVEL_STEP only every so many.
Outcome proveFailing(Failing kind, const char* what) {
  if (kind == Failing::Memory && !kHasSystemAllocator) return skipUnderSanitizer();
  const char* const given = std::getenv("QUORVEL_STEP");
  const std::size_t step = std::max<std::size_t>(given ? std::strtoull(given, nullptr, 10) : 1, 1);
  const Scratch scratch;
  void* const shared = ::mmap(nullptr, sizeof(Told), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  Faults faults;
  (void)prepared();
  // In a child, so that the keychain's first opening of this process is the one to which calls fail.
  if (finish(start([&] { return makeTemplate(scratch) ? kHolds : kFails; })) != kHolds) return kFails;
  use(scratch.keychain());
  std::size_t tried = 0;
  for (const Act& act : kActs) {
    tried += Trial(act, kind, scratch, *new (shared) Told{}, faults).run(step);
  }
  return faults.conclude(std::to_string(tried) + " failures of " + what + ", every " + std::to_string(step) +
                         ". call," + " in " + std::to_string(std::size(kActs)) + " operations");
}

}  // namespace

std::vector<Proof> proofs() {
  return {{"failing-calls", [] { return proveFailing(Failing::Files, "file calls"); }},
          {"failing-memory", [] { return proveFailing(Failing::Memory, "allocations"); }}};
}

}  // namespace quorvel::proof
