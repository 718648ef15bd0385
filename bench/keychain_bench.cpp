// The keychain beside SQLite with the same rows in the clear at the same durability: what sealing, matching and the
// attribute dictionaries cost. Each case runs on a store of 10,000 items.
#include <chrono>
#include <cstdlib>
#include <filesystem>

#include <bench/Cases.h>
#include <sqlite3.h>

#include <quorvel/Platform/Security/Keychain.h>
#include <quorvel/Utility/KeychainAccessor.h>

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

/// Accounts of the store, in no order that a cache learns.
class Names {
 public:
  std::string next() { return nameOf(static_cast<int>((state_ = state_ * 1103515245 + 12345) >> 16) % kItems); }

 private:
  std::uint32_t state_ = 1;
};

void addSelect() {
  add("keychain/select", kItems, "ours", [names = Names(), accessor = KeychainAccessor()]() mutable {
    return accessor.selectKeychainCopyMatching(String::fromASCII(names.next()), kGroup);
  });
  add("keychain/select", kItems, "floor:SQLite", [names = Names()]() mutable { return plain().select(names.next()); });
}

void addUpdate() {
  add("keychain/update", kItems, "ours", [names = Names(), accessor = KeychainAccessor(), n = 0]() mutable {
    return accessor.updateKeychainValue(secret(static_cast<std::uint8_t>(++n)), String::fromASCII(names.next()),
                                        kGroup);
  });
  add("keychain/update", kItems, "floor:SQLite", [names = Names(), n = 0]() mutable {
    return plain().update(names.next(), secret(static_cast<std::uint8_t>(++n)));
  });
}

/// One insertion and one deletion, which leave the store as it was.
void addInsertAndDelete() {
  add("keychain/insert and delete", kItems, "ours", [accessor = KeychainAccessor(), n = kItems]() mutable {
    const String account = String::fromASCII(nameOf(++n));
    const bool inserted = accessor.insertKeychainValue(secret(1), account, kGroup);
    return inserted && accessor.deleteKeychainValue(account, kGroup);
  });
  add("keychain/insert and delete", kItems, "floor:SQLite", [n = kItems]() mutable {
    const std::string account = nameOf(++n);
    return plain().insert(account, secret(1)) && plain().remove(account);
  });
}

void addOpen() {
  add("keychain/open and select", kItems, "ours", [accessor = KeychainAccessor()] {
    Keychain::close();
    return accessor.selectKeychainCopyMatching(u"user1@example.org", kGroup);
  });
}

}  // namespace
}  // namespace quorvel::bench

int main(int argc, char** argv) {
  using namespace quorvel::bench;
  fill();
  addSelect();
  addUpdate();
  addInsertAndDelete();
  addOpen();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  quorvel::Keychain::close();
  std::filesystem::remove_all(scratch());
  return 0;
}
