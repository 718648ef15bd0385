// The keychain beside SQLite with the same rows in the clear at the same durability: what sealing, matching and the
// attribute dictionaries cost. Each case runs on a store of 10,000 items, and on 500 in the Secret Service, which
// writes all of them anew at each change. All figures are wall time: most of a change is waiting for the disk.
#include <chrono>
#include <cstdlib>
#include <filesystem>

#include <bench/Cases.h>
#include <sqlite3.h>

#include <quorvel/Platform/Security/Keychain.h>
#include <quorvel/Utility/KeychainAccessor.h>

#if QUORVEL_HAVE_LIBSECRET
#include <libsecret/secret.h>
#include <tests/keychain/DesktopSession.h>
#endif

namespace quorvel::bench {
namespace {

constexpr char16_t kGroup[] = u"T1.example.shared";
constexpr int kItems = 10'000;

std::string nameOf(int i) { return "user" + std::to_string(i) + "@example.org"; }
Data secret(std::uint8_t first) {
  std::vector<std::uint8_t> bytes(64, 0x5A);
  bytes[0] = first;
  return Data(bytes);
}

/// A folder that goes with the program; where the machine's disk is, unless QUORVEL_BENCH_FOLDER says elsewhere.
const std::filesystem::path& scratch() {
  static const std::filesystem::path folder = [] {
    const char* const base = std::getenv("QUORVEL_BENCH_FOLDER");
    std::string name = std::string(base ? base : "/var/tmp") + "/quorvel-bench-XXXXXX";
    return std::filesystem::path(::mkdtemp(name.data()));
  }();
  return folder;
}

/// The floor: one table with the item's columns as they are, statements kept.
class Plain {
 public:
  Plain() {
    sqlite3_open((scratch() / "plain.db").c_str(), &database_);
    run("PRAGMA journal_mode=WAL");
    run("PRAGMA synchronous=FULL");
    run("PRAGMA secure_delete=ON");
    run("CREATE TABLE item(service TEXT, account TEXT, grp TEXT, accessible INTEGER, generic BLOB, value BLOB, "
        "PRIMARY KEY(service, account, grp)) WITHOUT ROWID");
    select_ = prepare(
        "SELECT value FROM item WHERE service='TKLogin' AND account=?1 AND grp='T1.example.shared' "
        "AND generic=?1");
    insert_ = prepare("INSERT INTO item VALUES('TKLogin', ?1, 'T1.example.shared', 2, ?1, ?2)");
    update_ = prepare(
        "UPDATE item SET value=?2, accessible=2 WHERE service='TKLogin' AND account=?1 AND "
        "grp='T1.example.shared' AND generic=?1");
    delete_ = prepare(
        "DELETE FROM item WHERE service='TKLogin' AND account=?1 AND grp='T1.example.shared' "
        "AND generic=?1");
    run("BEGIN");
    for (int i = 0; i < kItems; ++i) (void)insert(nameOf(i), secret(0));
    run("COMMIT");
  }
  Plain(const Plain&) = delete;
  Plain& operator=(const Plain&) = delete;
  ~Plain() {
    for (sqlite3_stmt* statement : {select_, insert_, update_, delete_}) sqlite3_finalize(statement);
    sqlite3_close(database_);
  }

  Data select(const std::string& account) {
    bind(select_, account);
    Data found;
    if (sqlite3_step(select_) == SQLITE_ROW) {
      found = Data({static_cast<const std::uint8_t*>(sqlite3_column_blob(select_, 0)),
                    static_cast<std::size_t>(sqlite3_column_bytes(select_, 0))});
    }
    sqlite3_reset(select_);
    return found;
  }
  bool insert(const std::string& account, const Data& value) { return change(insert_, account, value); }
  bool update(const std::string& account, const Data& value) { return change(update_, account, value); }
  bool remove(const std::string& account) { return change(delete_, account, {}); }

 private:
  void run(const char* text) { sqlite3_exec(database_, text, nullptr, nullptr, nullptr); }
  sqlite3_stmt* prepare(const char* text) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v3(database_, text, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    return statement;
  }
  static void bind(sqlite3_stmt* statement, const std::string& account) {
    sqlite3_bind_text(statement, 1, account.data(), static_cast<int>(account.size()), SQLITE_STATIC);
  }
  static bool change(sqlite3_stmt* statement, const std::string& account, const Data& value) {
    bind(statement, account);
    const auto bytes = value.bytes();
    if (!bytes.empty()) sqlite3_bind_blob(statement, 2, bytes.data(), static_cast<int>(bytes.size()), SQLITE_STATIC);
    const bool done = sqlite3_step(statement) == SQLITE_DONE;
    sqlite3_reset(statement);
    return done;
  }

  sqlite3* database_ = nullptr;
  sqlite3_stmt* select_ = nullptr;
  sqlite3_stmt* insert_ = nullptr;
  sqlite3_stmt* update_ = nullptr;
  sqlite3_stmt* delete_ = nullptr;
};

Plain& plain() {
  static Plain floor;
  return floor;
}

void openKeychain() {
  Keychain::configure({(scratch() / "keychain").string(), std::vector<String>{kGroup}, KeySource::File, {}});
}

void fill() {
  openKeychain();
  const KeychainAccessor accessor;
  for (int i = 0; i < kItems; ++i) {
    if (!accessor.insertKeychainValue(secret(0), String::fromASCII(nameOf(i)), kGroup)) std::abort();
  }
}

/// Numbers in no order that a cache learns.
class Names {
 public:
  int next() { return static_cast<int>((state_ = state_ * 1103515245 + 12345) >> 16); }

 private:
  std::uint32_t state_ = 1;
};

/// Measures `run()` by the clock, with `before()` and `after()` of each time left out.
template <class Before, class Run, class After>
void addTimed(const std::string& topicCase, std::size_t size, const std::string& who, Before before, Run run,
              After after) {
  const std::string name = topicCase + "/" + std::to_string(size) + "/" + who;
  const auto measure = [before, run, after](benchmark::State& state) mutable {
    for (auto _ : state) {
      before();
      const auto start = std::chrono::steady_clock::now();
      auto result = run();
      state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
      benchmark::DoNotOptimize(result);
      if (!result) state.SkipWithError("the store refused");
      after();
    }
  };
  benchmark::RegisterBenchmark(name.c_str(), measure)->UseManualTime();
}

/// The four operations of a store that holds the names up to `items`: one more is inserted, and deleted again.
template <class Select, class Update, class Insert, class Remove>
void addStore(std::size_t items, const std::string& who, Select select, Update update, Insert insert, Remove remove) {
  const auto nothing = [] {};
  const std::string fresh = nameOf(kItems);
  auto any = [items, names = Names()]() mutable { return nameOf(names.next() % static_cast<int>(items)); };
  addTimed("keychain/select", items, who, nothing, [any, select]() mutable { return select(any()); }, nothing);
  addTimed("keychain/update", items, who, nothing, [any, update]() mutable { return update(any()); }, nothing);
  const auto add = [insert, fresh] { return insert(fresh); };
  const auto drop = [remove, fresh] { return remove(fresh); };
  addTimed("keychain/insert", items, who, nothing, add, drop);
  addTimed("keychain/delete", items, who, add, drop, nothing);
}

void addOurs() {
  const KeychainAccessor accessor;
  const auto text = [](const std::string& name) { return String::fromASCII(name); };
  addStore(
      kItems, "ours",
      [=](const std::string& name) { return accessor.selectKeychainCopyMatching(text(name), kGroup).has_value(); },
      [=, n = 0](const std::string& name) mutable {
        return accessor.updateKeychainValue(secret(static_cast<std::uint8_t>(++n)), text(name), kGroup);
      },
      [=](const std::string& name) { return accessor.insertKeychainValue(secret(1), text(name), kGroup); },
      [=](const std::string& name) { return accessor.deleteKeychainValue(text(name), kGroup); });
}

void addFloor() {
  addStore(
      kItems, "floor:SQLite", [](const std::string& name) { return plain().select(name).bytes().size() == 64; },
      [n = 0](const std::string& name) mutable { return plain().update(name, secret(static_cast<std::uint8_t>(++n))); },
      [](const std::string& name) { return plain().insert(name, secret(1)); },
      [](const std::string& name) { return plain().remove(name); });
}

#if QUORVEL_HAVE_LIBSECRET
constexpr int kServiceItems = 500;

const SecretSchema& schema() {
  static const SecretSchema itemSchema = [] {
    SecretSchema made{};
    made.name = "org.example.Bench";
    made.attributes[0] = {"account", SECRET_SCHEMA_ATTRIBUTE_STRING};
    return made;
  }();
  return itemSchema;
}

bool storeInService(const std::string& name, char first) {
  const std::string value = std::string(1, first) + std::string(63, 'Z');
  return secret_password_store_sync(&schema(), SECRET_COLLECTION_DEFAULT, "bench", value.c_str(), nullptr, nullptr,
                                    "account", name.c_str(), nullptr) != 0;
}

bool isInService(const std::string& name) {
  char* const value = secret_password_lookup_sync(&schema(), nullptr, nullptr, "account", name.c_str(), nullptr);
  const bool found = value != nullptr;
  secret_password_free(value);
  return found;
}

/// With a bus and a service of its own, where they are installed.
void addService() {
  static proof::DesktopSession session(scratch() / "desktop");
  std::filesystem::create_directories(scratch() / "desktop");
  if (!session.start()) return;
  for (int i = 0; i < kServiceItems; ++i) (void)storeInService(nameOf(i), 'a');
  addStore(
      kServiceItems, "libsecret", &isInService,
      [n = 0](const std::string& name) mutable { return storeInService(name, static_cast<char>('a' + ++n % 26)); },
      [](const std::string& name) { return storeInService(name, 'a'); },
      [](const std::string& name) {
        return secret_password_clear_sync(&schema(), nullptr, nullptr, "account", name.c_str(), nullptr) != 0;
      });
}
#else
void addService() {}
#endif

void addOpen() {
  addTimed(
      "keychain/open and select", kItems, "ours", &Keychain::close,
      [accessor = KeychainAccessor()] {
        return accessor.selectKeychainCopyMatching(u"user1@example.org", kGroup).has_value();
      },
      [] {});
}

}  // namespace
}  // namespace quorvel::bench

int main(int argc, char** argv) {
  using namespace quorvel::bench;
  fill();
  addOurs();
  addFloor();
  addOpen();
  addService();
  run(argc, argv);
  quorvel::Keychain::close();
  std::filesystem::remove_all(scratch());
  return 0;
}
