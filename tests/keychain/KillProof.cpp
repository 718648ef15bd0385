// Two processes insert, update and delete the same items until SIGKILL ends them at moments that nobody chose. What
// they began and what was acknowledged comes through pipes, with the time of each.
#include <array>
#include <cstring>
#include <thread>

#include <signal.h>
#include <tests/keychain/Proofs.h>
#include <unistd.h>

namespace quorvel::proof {
namespace {

constexpr std::size_t kItems = 10;
constexpr std::uint64_t kAbsent = 0;

enum class Kind : std::uint8_t { Insert, Update, Delete, Rotate, Kinds };

/// One operation, as its worker tells it: when it begins, and again when it was answered.
struct Note {
  std::int64_t began = 0;
  std::int64_t ended = 0;    // 0: not yet
  std::uint64_t number = 0;  // of the value; kAbsent for a deletion
  std::uint32_t item = 0;
  Kind kind = Kind::Insert;
  bool done = false;
  bool isCut = false;  // its worker was killed before the answer
  bool isUnavailable = false;
};

std::int64_t now() { return Clock::now().time_since_epoch().count(); }

class Worker {
 public:
  Worker(std::uint64_t round, std::uint64_t which, int pipe)
      : random_(seed() * 7919 + round * 2 + which), number_((round * 2 + which + 1) << 24), pipe_(pipe) {}

  [[noreturn]] void run() {
    for (;;) {
      Note note;
      note.item = static_cast<std::uint32_t>(random_() % kItems);
      note.kind = random_() % 64 == 0 ? Kind::Rotate : static_cast<Kind>(random_() % 3);
      if (note.kind != Kind::Delete) note.number = ++number_;
      const std::size_t size = random_() % 8 == 0 ? random_() % 30'000 : 8 + random_() % 200;
      const Data value = dataOf(valueOf(note.number, size));
      note.began = now();
      tell(note);
      ErrorSlot error;
      note.done = perform(note, value, error);
      note.isUnavailable = error.has_value();
      note.ended = now();
      tell(note);
    }
  }

 private:
  static bool perform(const Note& note, const Data& value, ErrorSlot& error) {
    const KeychainAccessor accessor;
    const String identifier = identifierOf("item ", note.item);
    switch (note.kind) {
      case Kind::Insert:
        return accessor.insertKeychainValue(value, identifier, kGroup, &error);
      case Kind::Update:
        return accessor.updateKeychainValue(value, identifier, kGroup, &error);
      case Kind::Delete:
        return accessor.deleteKeychainValue(identifier, kGroup, &error);
      default:
        return Keychain::rotate() == errSecSuccess;
    }
  }
  void tell(const Note& note) const {
    if (::write(pipe_, &note, sizeof note) != sizeof note) ::_exit(kFails);
  }

  std::mt19937_64 random_;
  std::uint64_t number_;
  int pipe_;
};

struct Crew {
  std::array<pid_t, 2> workers{};
  std::array<int, 2> pipes{};
};

Crew startCrew(std::uint64_t round) {
  Crew crew;
  for (std::size_t which = 0; which < 2; ++which) {
    int ends[2];
    if (::pipe(ends) != 0) std::exit(kFails);
    crew.workers[which] = start([&]() -> int { Worker(round, which, ends[1]).run(); });
    ::close(ends[1]);
    crew.pipes[which] = ends[0];
  }
  return crew;
}

void killCrew(const Crew& crew, std::mt19937_64& random) {
  const std::size_t first = random() % 2;
  for (const std::size_t which : {first, 1 - first}) {
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 9000));
    if (crew.workers[which] > 0) ::kill(crew.workers[which], SIGKILL);  // -1 would be everybody
    (void)finish(crew.workers[which]);
  }
}

/// Every operation that was told; those without an answer ended when their worker did.
std::vector<Note> notesOf(const Crew& crew) {
  std::vector<Note> notes;
  for (const int pipe : crew.pipes) {
    const std::size_t from = notes.size();
    Note note;
    while (::read(pipe, &note, sizeof note) == sizeof note) {
      if (note.ended != 0 && notes.size() > from) {
        notes.back() = note;
      } else {
        notes.push_back(note);
      }
    }
    ::close(pipe);
    if (notes.size() > from && notes.back().ended == 0) {
      notes.back().ended = now();
      notes.back().isCut = true;
    }
  }
  return notes;
}

class Round {
 public:
  Round(std::array<std::uint64_t, kItems>& before, const std::vector<Note>& notes, Faults& faults)
      : before_(before), notes_(notes), faults_(faults) {}

  void check() {
    for (std::uint32_t item = 0; item < kItems; ++item) checkItem(item);
  }

 private:
  /// What an item holds came from an operation that no acknowledged one followed.
  void checkItem(std::uint32_t item) {
    ErrorSlot error;
    const std::string name = "item " + std::to_string(item);
    const auto data = KeychainAccessor().selectKeychainCopyMatching(identifierOf("item ", item), kGroup, &error);
    if (error) return faults_.add(name + ": not available after a kill");
    std::uint64_t found = kAbsent;
    if (data) {
      const auto number = numberOf({reinterpret_cast<const char*>(data->bytes().data()), data->bytes().size()});
      if (!number) return faults_.add(name + ": neither wholly old nor wholly new");
      found = *number;
    }
    bool explained = found == before_[item] && !isFollowed(item, 0);
    for (const Note& note : notes_) {
      const bool mayHaveWritten = note.kind != Kind::Rotate && note.item == item && (note.done || note.isCut);
      explained = explained || (mayHaveWritten && note.number == found && !isFollowed(item, note.ended));
    }
    if (!explained) faults_.add(name + ": an acknowledged write is lost");
    before_[item] = found;
  }

  [[nodiscard]] bool isFollowed(std::uint32_t item, std::int64_t ended) const {
    for (const Note& note : notes_) {
      if (note.done && note.kind != Kind::Rotate && note.item == item && note.began > ended) return true;
    }
    return false;
  }

  std::array<std::uint64_t, kItems>& before_;
  const std::vector<Note>& notes_;
  Faults& faults_;
};

}  // namespace

Outcome proveKilled() {
  const std::size_t rounds = roundsOr(200);
  const Scratch scratch;
  use(scratch.keychain());
  std::mt19937_64 random(seed());
  std::array<std::uint64_t, kItems> items{};
  Faults faults;
  std::size_t acknowledged = 0;
  std::size_t cut = 0;
  for (std::size_t round = 0; round < rounds; ++round) {
    Keychain::close();
    if (round % 10 == 0) {  // so that some are killed while they make the store
      fs::remove_all(scratch.keychain());
      items.fill(kAbsent);
    }
    const Crew crew = startCrew(round);
    killCrew(crew, random);
    const std::vector<Note> notes = notesOf(crew);
    for (const Note& note : notes) {
      if (note.isUnavailable)
        faults.add("round " + std::to_string(round) + ": -25291 beside a process that was killed");
      acknowledged += note.done;
      cut += note.isCut;
    }
    Round(items, notes, faults).check();
    const KeychainReport report = Keychain::doctor();
    if (!report.isSound()) faults.add("round " + std::to_string(round) + ": doctor is not content");
  }
  return faults.conclude(std::to_string(rounds) + " rounds, " + std::to_string(acknowledged) +
                         " writes acknowledged, " + std::to_string(cut) + " cut off");
}

}  // namespace quorvel::proof
