#include <algorithm>
#include <array>
#include <bit>
#include <chrono>
#include <cstdio>
#include <thread>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Security/KeychainStore.h>

namespace quorvel {
namespace {

constexpr const char* kNewFile = "keychain.db.new";
constexpr const char* kKeyTable =
    "CREATE TABLE data_key(source INTEGER PRIMARY KEY, master BLOB NOT NULL, sealed BLOB NOT NULL)";
constexpr const char* kItemTable = "CREATE TABLE item(identity INTEGER PRIMARY KEY, sealed BLOB NOT NULL)";
constexpr int kApplication = 0x51764B43;
constexpr int kFormat = 1;
constexpr std::chrono::seconds kBusyPatience{10};

/// Beside the file itself, what SQLite may make or read.
constexpr const char* kFiles[] = {"keychain.db", "keychain.db-wal", "keychain.db-shm", "keychain.db-journal"};

OSStatus statusOf(int code) {
  if (code == SQLITE_CONSTRAINT_PRIMARYKEY || code == SQLITE_CONSTRAINT_ROWID) return errSecDuplicateItem;
  if (code == SQLITE_IOERR_NOMEM) return errSecAllocate;
  switch (code & 0xFF) {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE:
      return errSecSuccess;
    case SQLITE_NOMEM:
      return errSecAllocate;
    case SQLITE_IOERR:
    case SQLITE_FULL:
      return errSecIO;
    case SQLITE_TOOBIG:
      return errSecParam;
    default:
      return errSecNotAvailable;
  }
}

ConstBytes blobAt(sqlite3_stmt* statement, int column) {
  const void* const bytes = sqlite3_column_blob(statement, column);
  return {static_cast<const std::uint8_t*>(bytes), static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
}

/// Each wait is short: writers hold the lock for about one fsync.
int waitWhileBusy(void* /*unused*/, int tries) {
  thread_local std::chrono::steady_clock::time_point giveUp;
  const auto now = std::chrono::steady_clock::now();
  if (tries == 0) giveUp = now + kBusyPatience;
  if (now >= giveUp) return 0;
  std::this_thread::sleep_for(std::chrono::microseconds(100 + 200 * std::min(tries, 20)));
  return 1;
}

}  // namespace

/// A connection with the statements that it keeps.
class KeychainStore::Connection {
 public:
  enum Kept { Insert, Find, Replace, Remove, Each, Begin, Commit, Rollback, KeptCount };

  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() {
    for (sqlite3_stmt* statement : kept_) sqlite3_finalize(statement);
    sqlite3_close_v2(database_);
  }

  OSStatus open(const std::string& path) {
    constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_NOMUTEX |
                           SQLITE_OPEN_PRIVATECACHE | SQLITE_OPEN_EXRESCODE;
    const int code = sqlite3_open_v2(path.c_str(), &database_, kFlags, nullptr);
    if (code != SQLITE_OK) return statusOf(code);
    sqlite3_busy_handler(database_, &waitWhileBusy, nullptr);
    sqlite3_limit(database_, SQLITE_LIMIT_LENGTH, static_cast<int>(2 * limits::kKeychainValueBytes));
    // The file may come from anywhere: no trigger, view or function in it may run.
    sqlite3_db_config(database_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(database_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(database_, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
    sqlite3_db_config(database_, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
    path_ = path;
    return run(
        "PRAGMA cell_size_check=ON; PRAGMA temp_store=MEMORY; PRAGMA secure_delete=ON; PRAGMA mmap_size=0;"
        "PRAGMA cache_size=-16384;"
        "PRAGMA synchronous=FULL");
  }

  OSStatus run(const char* statements) {
    return statusOf(sqlite3_exec(database_, statements, nullptr, nullptr, nullptr));
  }

  /// The first column of each row of a statement that needs no values.
  OSStatus texts(const char* statement, std::vector<std::string>& out) {
    sqlite3_stmt* prepared = nullptr;
    int code = sqlite3_prepare_v2(database_, statement, -1, &prepared, nullptr);
    while (code == SQLITE_OK || code == SQLITE_ROW) {
      code = sqlite3_step(prepared);
      if (code != SQLITE_ROW) break;
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(prepared, 0));
      out.emplace_back(text ? text : "");
    }
    sqlite3_finalize(prepared);
    return statusOf(code);
  }

  /// The prepared statement, bound to nothing; nullptr with the reason in `status`.
  sqlite3_stmt* kept(Kept which, OSStatus& status) {
    constexpr const char* kTexts[KeptCount] = {
        "INSERT INTO item(identity, sealed) VALUES(?1, ?2)",
        "SELECT sealed FROM item WHERE identity = ?1",
        "UPDATE item SET identity = ?1, sealed = ?2 WHERE identity = ?3",
        "DELETE FROM item WHERE identity = ?1",
        "SELECT identity, sealed FROM item",
        "BEGIN IMMEDIATE",
        "COMMIT",
        "ROLLBACK",
    };
    if (!kept_[which]) {
      status =
          statusOf(sqlite3_prepare_v3(database_, kTexts[which], -1, SQLITE_PREPARE_PERSISTENT, &kept_[which], nullptr));
    }
    return kept_[which];
  }

  /// Runs a statement that answers no rows: ?1 is an identity, ?2 a blob, ?3 another identity, as far as they are
  /// given.
  OSStatus change(Kept which, const Identity* identity = nullptr, const ConstBytes* sealed = nullptr,
                  const Identity* where = nullptr) {
    OSStatus status = errSecSuccess;
    sqlite3_stmt* const statement = kept(which, status);
    if (!statement) return status;
    int code = SQLITE_OK;
    if (identity) code = bind(statement, 1, *identity);
    if (code == SQLITE_OK && sealed) code = bind(statement, 2, *sealed);
    if (code == SQLITE_OK && where) code = bind(statement, 3, *where);
    if (code == SQLITE_OK) code = sqlite3_step(statement);
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
    return statusOf(code);
  }

  static int bind(sqlite3_stmt* statement, int place, const Identity& identity) {
    return sqlite3_bind_int64(statement, place, std::bit_cast<sqlite3_int64>(identity));
  }
  static Identity identityAt(sqlite3_stmt* statement, int column) {
    return std::bit_cast<Identity>(static_cast<sqlite3_int64>(sqlite3_column_int64(statement, column)));
  }
  static int bind(sqlite3_stmt* statement, int place, ConstBytes value) {
    return sqlite3_bind_blob64(statement, place, value.data(), value.size(), SQLITE_STATIC);
  }

  [[nodiscard]] bool isStillAtPath() const {
    struct stat status{};
    return ::lstat(path_.c_str(), &status) == 0 && status.st_ino == inode_ && status.st_dev == device_;
  }
  bool noteFile() {
    struct stat status{};
    if (::lstat(path_.c_str(), &status) != 0) return false;
    inode_ = status.st_ino;
    device_ = status.st_dev;
    return true;
  }

  [[nodiscard]] sqlite3* database() const { return database_; }
  [[nodiscard]] int changes() const { return sqlite3_changes(database_); }

 private:
  sqlite3* database_ = nullptr;
  std::array<sqlite3_stmt*, KeptCount> kept_{};
  std::string path_;
  ino_t inode_ = 0;
  dev_t device_ = 0;
};

KeychainStore::KeychainStore(std::unique_ptr<Connection> connection) : connection_(std::move(connection)) {}
KeychainStore::~KeychainStore() = default;

FileState KeychainStore::stateIn(const FileDescriptor& folder) {
  // Only looked at, never opened: closing a descriptor of ours would drop the locks that SQLite holds in this process.
  for (const char* name : kFiles) {
    if (stateOf(folder, name) == FileState::Refused) return FileState::Refused;
  }
  return stateOf(folder, kFileName);
}

OSStatus KeychainStore::create(const FileDescriptor& folder, const std::string& path, KeySource source,
                               const WrappedKey& key) {
  for (const char* suffix : {"", "-journal", "-wal", "-shm"}) {
    (void)::unlinkat(folder.number(), (kNewFile + std::string(suffix)).c_str(), 0);
  }
  if (!createPrivate(folder, kNewFile, {})) return errSecIO;
  char numbers[96];
  std::snprintf(numbers, sizeof numbers, "PRAGMA application_id=%d; PRAGMA user_version=%d;", kApplication, kFormat);
  OSStatus status = errSecSuccess;
  {
    KeychainStore store(std::make_unique<Connection>());
    Connection& connection = *store.connection_;
    status = connection.open(path + "/" + kNewFile);
    if (status == errSecSuccess) {
      // A half-written file is thrown away, so that no journal has to be on the disk.
      status = connection.run(
          (std::string("PRAGMA journal_mode=MEMORY;") + numbers + "BEGIN;" + kKeyTable + ";" + kItemTable + ";COMMIT")
              .c_str());
    }
    if (status == errSecSuccess) status = store.setWrappedKey(source, key);
    // Before anyone else can open it: of several that turn it to a log at once, SQLite lets only one wait.
    if (status == errSecSuccess) status = connection.run("PRAGMA journal_mode=WAL");
  }
  if (status == errSecSuccess &&
      (::renameat2(folder.number(), kNewFile, folder.number(), kFileName, RENAME_NOREPLACE) != 0 ||
       ::fsync(folder.number()) != 0)) {
    status = errSecIO;
  }
  if (status != errSecSuccess) (void)::unlinkat(folder.number(), kNewFile, 0);
  return status;
}

OSStatus KeychainStore::open(const FileDescriptor& folder, const std::string& path,
                             std::unique_ptr<KeychainStore>& store) {
  if (stateIn(folder) != FileState::Private) return errSecNotAvailable;
  auto connection = std::make_unique<Connection>();
  OSStatus status = connection->open(path + "/" + kFileName);
  if (status != errSecSuccess) return status;
  if (!connection->noteFile()) return errSecNotAvailable;
  std::vector<std::string> found;
  for (const char* question : {"PRAGMA application_id", "PRAGMA user_version", "PRAGMA journal_mode=WAL",
                               "SELECT sql FROM sqlite_schema ORDER BY name"}) {
    if (status == errSecSuccess) status = connection->texts(question, found);
  }
  if (status != errSecSuccess) return status;
  const std::vector<std::string> wanted = {std::to_string(kApplication), std::to_string(kFormat), "wal", kKeyTable,
                                           kItemTable};
  if (found != wanted) return errSecNotAvailable;
  store.reset(new KeychainStore(std::move(connection)));
  return errSecSuccess;
}

bool KeychainStore::isCurrent() const { return connection_->isStillAtPath(); }

OSStatus KeychainStore::insert(const Row& row) {
  return connection_->change(Connection::Insert, &row.identity, &row.sealed);
}

OSStatus KeychainStore::find(const Identity& identity, Visitor visit) {
  OSStatus status = errSecSuccess;
  sqlite3_stmt* const statement = connection_->kept(Connection::Find, status);
  if (!statement) return status;
  int code = Connection::bind(statement, 1, identity);
  if (code == SQLITE_OK) code = sqlite3_step(statement);
  if (code == SQLITE_ROW) {
    status = visit({identity, blobAt(statement, 0)});
  } else {
    status = code == SQLITE_DONE ? errSecItemNotFound : statusOf(code);
  }
  sqlite3_reset(statement);
  return status;
}

OSStatus KeychainStore::forEach(Visitor visit) {
  OSStatus status = errSecSuccess;
  sqlite3_stmt* const statement = connection_->kept(Connection::Each, status);
  if (!statement) return status;
  int code = sqlite3_step(statement);
  while (code == SQLITE_ROW && status == errSecSuccess) {
    status = visit({Connection::identityAt(statement, 0), blobAt(statement, 1)});
    if (status == errSecSuccess) code = sqlite3_step(statement);
  }
  sqlite3_reset(statement);
  return status == errSecSuccess ? statusOf(code) : status;
}

OSStatus KeychainStore::replace(const Identity& identity, const Row& row) {
  const OSStatus status = connection_->change(Connection::Replace, &row.identity, &row.sealed, &identity);
  return status == errSecSuccess && connection_->changes() == 0 ? errSecItemNotFound : status;
}

OSStatus KeychainStore::remove(const Identity& identity) {
  const OSStatus status = connection_->change(Connection::Remove, &identity);
  return status == errSecSuccess && connection_->changes() == 0 ? errSecItemNotFound : status;
}

OSStatus KeychainStore::inTransaction(FunctionView<OSStatus()> work) {
  OSStatus status = connection_->change(Connection::Begin);
  if (status != errSecSuccess) return status;
  try {
    status = work();
  } catch (...) {
    (void)connection_->change(Connection::Rollback);
    throw;
  }
  if (status == errSecSuccess) status = connection_->change(Connection::Commit);
  // Some failures have undone it already.
  if (sqlite3_get_autocommit(connection_->database()) == 0) (void)connection_->change(Connection::Rollback);
  return status;
}

OSStatus KeychainStore::wrappedKey(KeySource source, WrappedKey& key) {
  sqlite3_stmt* statement = nullptr;
  int code = sqlite3_prepare_v2(connection_->database(), "SELECT master, sealed FROM data_key WHERE source = ?1", -1,
                                &statement, nullptr);
  if (code == SQLITE_OK) code = sqlite3_bind_int(statement, 1, static_cast<int>(source));
  if (code == SQLITE_OK) code = sqlite3_step(statement);
  OSStatus status = code == SQLITE_DONE ? errSecItemNotFound : statusOf(code);
  if (code == SQLITE_ROW) {
    const ConstBytes master = blobAt(statement, 0);
    const ConstBytes sealed = blobAt(statement, 1);
    if (master.size() == key.master.size()) std::copy(master.begin(), master.end(), key.master.begin());
    key.sealed.assign(sealed.begin(), sealed.end());
    if (master.size() != key.master.size()) status = errSecNotAvailable;
  }
  sqlite3_finalize(statement);
  return status;
}

OSStatus KeychainStore::setWrappedKey(KeySource source, const WrappedKey& key) {
  sqlite3_stmt* statement = nullptr;
  int code = sqlite3_prepare_v2(connection_->database(),
                                "INSERT OR REPLACE INTO data_key(source, master, sealed) VALUES(?1, ?2, ?3)", -1,
                                &statement, nullptr);
  if (code == SQLITE_OK) code = sqlite3_bind_int(statement, 1, static_cast<int>(source));
  if (code == SQLITE_OK) code = Connection::bind(statement, 2, key.master);
  if (code == SQLITE_OK) code = Connection::bind(statement, 3, key.sealed);
  if (code == SQLITE_OK) code = sqlite3_step(statement);
  sqlite3_finalize(statement);
  return statusOf(code);
}

OSStatus KeychainStore::removeWrappedKey(KeySource source) {
  const std::string text = "DELETE FROM data_key WHERE source = " + std::to_string(static_cast<int>(source));
  return connection_->run(text.c_str());
}

OSStatus KeychainStore::check(std::vector<std::string>& faults) {
  std::vector<std::string> lines;
  const OSStatus status = connection_->texts("PRAGMA integrity_check(20)", lines);
  for (const std::string& line : lines) {
    if (line != "ok") faults.push_back(line);
  }
  return status;
}

}  // namespace quorvel
