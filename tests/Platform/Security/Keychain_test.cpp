#include <sqlite3.h>
#include <sys/sysmacros.h>
#include <tests/Platform/Security/KeychainFixture.h>

namespace quorvel::test {
namespace {

namespace fs = std::filesystem;

using KeychainKeeping = KeychainTest;

constexpr char kHandedIn[] = "0123456789abcdef0123456789abcdef";

TEST_F(KeychainKeeping, FilesAreOursAloneUnderAnyUmask) {
  for (const mode_t mask : {0000U, 0077U, 0022U}) {
    const mode_t before = ::umask(mask);
    const OSStatus added = add(u"kim", "v");
    std::size_t files = 0;
    for (const auto& entry : fs::directory_iterator(folder())) {
      EXPECT_EQ(modeOf(entry.path()), 0600) << entry.path() << " under " << mask;
      ++files;
    }
    ::umask(before);
    EXPECT_EQ(added, errSecSuccess);
    EXPECT_EQ(files, 6) << "lock, key-source, master key, store, its log and index";
    EXPECT_EQ(modeOf(folder()), 0700);
    Keychain::close();
    fs::remove_all(folder());
  }
}

TEST_F(KeychainKeeping, NeverTurnsToAnotherSource) {
  open(KeySource::HandedIn, kHandedIn);
  ASSERT_EQ(add(u"kim", "v"), errSecSuccess);
  const std::string stored = bytesOf(folder() / "key-source");
  EXPECT_EQ(stored, "handed-in\n");
  open(KeySource::File);
  EXPECT_EQ(read(u"kim"), "status -25291") << "no bytes handed in";
  open(KeySource::HandedIn, "another key of more than sixteen bytes");
  EXPECT_EQ(read(u"kim"), "status -25291");
  EXPECT_EQ(Keychain::doctor().key, KeyState::Wrong);
  for (const std::string_view text : {"file\n", "", "file", "handed-in", "nonsense\n", "handed-in\n\n"}) {
    writeBytes(folder() / "key-source", text);
    open(KeySource::HandedIn, kHandedIn);
    EXPECT_EQ(read(u"kim"), "status -25291") << text;
  }
  fs::remove(folder() / "key-source");
  EXPECT_EQ(read(u"kim"), "status -25291") << "nothing says which source";
  writeBytes(folder() / "key-source", stored);
  fs::permissions(folder() / "key-source", fs::perms(0600));
  EXPECT_EQ(read(u"kim"), "v");
  EXPECT_EQ(masterFile(), fs::path()) << "no key was made meanwhile";
}

TEST_F(KeychainKeeping, RefusesHandedInKeysThatAreTooShort) {
  for (const std::string_view key : {"", "fifteen bytes..", "sixteen bytes..."}) {
    open(KeySource::HandedIn, key);
    EXPECT_EQ(add(u"kim", "v"), key.size() >= kLeastMasterKeyBytes ? errSecSuccess : errSecNotAvailable) << key;
    EXPECT_EQ(fs::exists(store()), key.size() >= kLeastMasterKeyBytes) << key;
  }
}

TEST_F(KeychainKeeping, AnswersAtOnceWhateverStandsAtItsNames) {
  ASSERT_EQ(add(u"kim", "v"), errSecSuccess);
  Keychain::close();
  const std::string master = masterFile().filename();
  constexpr auto kAtOnce = std::chrono::milliseconds(50);
  using Plant = void (*)(const fs::path& at, const fs::path& original);
  const std::pair<Plant, const char*> plants[] = {
      {[](const fs::path& at, const fs::path& original) { fs::create_symlink(original, at); }, "link to the original"},
      {[](const fs::path& at, const fs::path&) { fs::create_symlink("/nowhere", at); }, "dangling link"},
      {[](const fs::path& at, const fs::path&) { ::mkfifo(at.c_str(), 0600); }, "FIFO"},
      {[](const fs::path& at, const fs::path&) { fs::create_directory(at); }, "directory"},
      {[](const fs::path& at, const fs::path& original) { fs::create_hard_link(original, at); }, "second hard link"},
      {[](const fs::path& at, const fs::path& original) {
         fs::copy_file(original, at);
         fs::permissions(at, fs::perms(0644));
       },
       "readable by others"},
      {[](const fs::path& at, const fs::path&) { (void)::mknod(at.c_str(), S_IFCHR | 0600, makedev(1, 5)); }, "device"},
  };
  for (const std::string& name : {std::string("keychain.db"), std::string("key-source"), master}) {
    for (const auto& [plant, why] : plants) {
      const fs::path original = root_ / "original";
      fs::rename(folder() / name, original);
      plant(folder() / name, original);
      // The best of a few: a machine may be busy, what waits for a FIFO or a lock is slow each time.
      auto best = std::chrono::steady_clock::duration::max();
      for (int attempt = 0; attempt < 5 && best >= kAtOnce; ++attempt) {
        Keychain::close();
        const auto start = std::chrono::steady_clock::now();
        if (fs::exists(fs::symlink_status(folder() / name))) {  // devices need a privilege
          EXPECT_EQ(read(u"kim"), "status -25291") << name << ": " << why;
        }
        best = std::min(best, std::chrono::steady_clock::now() - start);
      }
      EXPECT_LT(best, kAtOnce) << name << ": " << why;
      Keychain::close();
      fs::remove_all(folder() / name);
      fs::rename(original, folder() / name);
      EXPECT_EQ(read(u"kim"), "v") << name << ": " << why << " is gone";
      Keychain::close();
    }
  }
  // Names that only SQLite opens, and the lock, which is needed only where a store is made.
  for (const char* name : {"keychain.db-wal", "keychain.db-shm", "keychain.db-journal"}) {
    fs::create_symlink(root_ / "victim", folder() / name);
    EXPECT_EQ(read(u"kim"), "status -25291") << name;
    EXPECT_FALSE(fs::exists(root_ / "victim")) << name;
    fs::remove(folder() / name);
  }
  EXPECT_EQ(read(u"kim"), "v");
}

TEST_F(KeychainKeeping, RefusesFoldersThatOthersMayWriteTo) {
  fs::create_directory(folder());
  for (const auto& [mode, status] :
       {std::pair{0777, errSecNotAvailable}, {0770, errSecNotAvailable}, {0755, errSecSuccess}}) {
    fs::permissions(folder(), fs::perms(static_cast<unsigned>(mode)));
    EXPECT_EQ(add(u"kim", "v"), status) << mode;
  }
  Keychain::close();
  fs::rename(folder(), root_ / "real");
  fs::create_directory_symlink(root_ / "real", folder());
  EXPECT_EQ(read(u"kim"), "status -25291") << "the folder itself is a link";
  Keychain::configure({"relative/keychain", std::vector<String>{kGroup}, KeySource::File, {}});
  EXPECT_EQ(add(u"kim", "v"), errSecNotAvailable) << "a relative path";
}

TEST_F(KeychainKeeping, RotatesAndMigratesWithoutRewritingItems) {
  ASSERT_EQ(add(u"kim", "v"), errSecSuccess);
  const std::string firstKey = bytesOf(masterFile());
  const fs::path firstFile = masterFile();

  ASSERT_EQ(Keychain::rotate(), errSecSuccess);
  EXPECT_NE(bytesOf(masterFile()), firstKey);
  EXPECT_FALSE(fs::exists(firstFile)) << "the old key is gone";
  EXPECT_EQ(read(u"kim"), "v");

  ASSERT_EQ(Keychain::migrate(KeySource::HandedIn, dataOf(kHandedIn)), errSecSuccess);
  EXPECT_EQ(bytesOf(folder() / "key-source"), "handed-in\n");
  EXPECT_EQ(masterFile(), fs::path());
  EXPECT_EQ(read(u"kim"), "v") << "the program goes on with the key that it handed in";
  open();
  EXPECT_EQ(read(u"kim"), "status -25291");
  open(KeySource::File, kHandedIn);
  EXPECT_EQ(Keychain::rotate(dataOf("short")), errSecParam);
  ASSERT_EQ(Keychain::rotate(dataOf("another key of more than sixteen bytes")), errSecSuccess);
  EXPECT_EQ(read(u"kim"), "v");
  open(KeySource::HandedIn, kHandedIn);
  EXPECT_EQ(read(u"kim"), "status -25291") << "the old key opens it no longer";
  open(KeySource::HandedIn, "another key of more than sixteen bytes");
  ASSERT_EQ(Keychain::migrate(KeySource::File), errSecSuccess);
  open();
  EXPECT_EQ(read(u"kim"), "v");
  const KeychainReport report = Keychain::doctor();
  EXPECT_TRUE(report.isSound());
  EXPECT_EQ(report.items, 1);
  EXPECT_EQ(report.source, KeySource::File);
}

TEST_F(KeychainKeeping, AMigrationThatFailsLeavesTheStoreAsItWas) {
  ASSERT_EQ(add(u"kim", "v"), errSecSuccess);
  const std::string key = bytesOf(masterFile());
  ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus", 1);
  EXPECT_EQ(Keychain::migrate(KeySource::SecretService), errSecNotAvailable);
  EXPECT_EQ(Keychain::migrate(KeySource::HandedIn, dataOf("short")), errSecParam);
  EXPECT_EQ(bytesOf(folder() / "key-source"), "file\n");
  EXPECT_EQ(bytesOf(masterFile()), key);
  EXPECT_EQ(read(u"kim"), "v");
}

TEST_F(KeychainKeeping, DoctorMakesNothing) {
  EXPECT_EQ(Keychain::doctor().status, errSecNotAvailable);
  std::vector<KeychainItem> items;
  EXPECT_EQ(Keychain::list(items), errSecNotAvailable);
  EXPECT_EQ(Keychain::rotate(), errSecNotAvailable);
  EXPECT_FALSE(fs::exists(folder()));
}

TEST_F(KeychainKeeping, AStoreThatIsReplacedWhileOpenIsOpenedAnew) {
  ASSERT_EQ(add(u"kim", "old"), errSecSuccess);
  fs::rename(folder(), root_ / "away");
  ASSERT_EQ(add(u"kim", "new"), errSecSuccess) << "a new, empty store";
  Keychain::close();
  fs::remove_all(folder());
  fs::rename(root_ / "away", folder());
  EXPECT_EQ(read(u"kim"), "old");
}

TEST_F(KeychainKeeping, RowsThatChangePlacesDoNotOpen) {
  ASSERT_EQ(add(u"kim", "first"), errSecSuccess);
  ASSERT_EQ(add(u"lee", "other"), errSecSuccess);
  Keychain::close();
  // Both rows now hold what was sealed for the first.
  sqlite3* database = nullptr;
  ASSERT_EQ(sqlite3_open(store().c_str(), &database), SQLITE_OK);
  constexpr const char* kChange = "UPDATE item SET sealed = (SELECT sealed FROM item ORDER BY identity LIMIT 1)";
  EXPECT_EQ(sqlite3_exec(database, kChange, nullptr, nullptr, nullptr), SQLITE_OK);
  sqlite3_close(database);
  const std::string kim = read(u"kim");
  const std::string lee = read(u"lee");
  EXPECT_TRUE((kim == "first" && lee == "status -26275") || (kim == "status -26275" && lee == "other")) << kim << lee;
  EXPECT_EQ(Keychain::doctor().unreadable, 1);
}

}  // namespace
}  // namespace quorvel::test
