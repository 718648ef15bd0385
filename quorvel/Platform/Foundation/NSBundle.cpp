#include <algorithm>
#include <cstdlib>
#include <map>
#include <mutex>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <quorvel/Platform/Foundation/LanguageMatch.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Platform/Foundation/NSBundle.h>
#include <quorvel/Platform/Foundation/PropertyList.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

constexpr std::string_view kFolderSuffix = ".lproj";

/// An open file, closed at the end.
class File {
 public:
  /// Does not wait for a FIFO's other end. A resource may be a symbolic link.
  explicit File(const std::string& path)
      : descriptor_(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY)) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }

  [[nodiscard]] bool isSmallRegularFile() const {
    struct stat status{};
    return descriptor_ >= 0 && ::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode) &&
           static_cast<std::uint64_t>(status.st_size) <= limits::kResourceFileBytes;
  }

  /// nil when reading fails or the file has grown beyond the limit meanwhile.
  [[nodiscard]] std::optional<std::string> readAll() const {
    std::string bytes;
    char buffer[16384];
    while (bytes.size() <= limits::kResourceFileBytes) {
      const ssize_t count = ::read(descriptor_, buffer, sizeof buffer);
      if (count == 0) return bytes;
      if (count < 0 && errno == EINTR) continue;
      if (count < 0) return nil;
      bytes.append(buffer, static_cast<std::size_t>(count));
    }
    return nil;
  }

 private:
  int descriptor_;
};

/// A property list whose top is a dictionary, or a string table as text.
Dictionary readTable(const std::string& path) {
  const File file(path);
  if (!file.isSmallRegularFile()) return {};
  const std::optional<std::string> bytes = file.readAll();
  if (!bytes) return {};
  if (isPropertyList(*bytes)) {
    const std::optional<Value> value = parsePropertyList(*bytes);
    if (value && value->isDictionary()) return *value->asDictionary();
    log(LogLevel::Warning, "NSBundle: " + path + ": no property list with a dictionary");
    return {};
  }
  std::size_t line = 0;
  std::optional<Dictionary> table = parseStringsTable(*bytes, &line);
  if (!table) log(LogLevel::Warning, "NSBundle: " + path + ":" + std::to_string(line) + ": no string table");
  return table.value_or(Dictionary());
}

std::vector<String> localizationsIn(const std::string& path) {
  std::vector<String> names;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(path.c_str()), ::closedir);
  if (!folder) return names;
  while (const dirent* entry = ::readdir(folder.get())) {
    const std::string_view name = entry->d_name;
    if (!name.ends_with(kFolderSuffix) || name.size() == kFolderSuffix.size()) continue;
    const std::optional<String> text = String::fromUTF8(name.substr(0, name.size() - kFolderSuffix.size()));
    if (text) names.push_back(*text);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string_view environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

std::vector<String> preferredOf(const std::vector<String>& localizations) {
  std::string_view locale;
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    if (locale.empty()) locale = environment(name);
  }
  std::vector<String> preferred =
      detail::matchLocalizations(detail::userLanguages(environment("LANGUAGE"), locale), localizations);
  if (!preferred.empty()) return preferred;
  const auto first =
      std::find_if(localizations.begin(), localizations.end(), [](const String& name) { return name != u"Base"; });
  if (first != localizations.end()) preferred.push_back(*first);
  return preferred;
}

std::string executableFolder() {
  char path[4096];
  const ssize_t size = ::readlink("/proc/self/exe", path, sizeof path);
  const std::string_view whole(path, size > 0 ? static_cast<std::size_t>(size) : 0);
  const std::size_t slash = whole.rfind('/');
  return std::string(slash == whole.npos ? "." : slash == 0 ? "/" : whole.substr(0, slash));
}

}  // namespace

struct NSBundle::Contents {
  explicit Contents(std::string_view folder)
      : path(folder), localizations(localizationsIn(path)), preferred(preferredOf(localizations)) {}

  /// The table of a file below the bundle, read by the first who asks; the others wait.
  Dictionary table(const std::string& name) {
    const std::lock_guard guard(mutex);
    const auto known = tables.find(name);
    if (known != tables.end()) return known->second;
    return tables.emplace(name, readTable(path + "/" + name)).first->second;
  }

  /// The same of a file in the folder of the first preferred localisation.
  Dictionary localizedTable(const std::string& file) {
    if (preferred.empty()) return {};
    return table(preferred.front().toUTF8Replacing() + std::string(kFolderSuffix) + "/" + file);
  }

  const std::string path;
  const std::vector<String> localizations;
  const std::vector<String> preferred;
  std::mutex mutex;
  std::map<std::string, Dictionary> tables;
};

namespace {

struct MainBundle {
  std::mutex mutex;
  std::optional<NSBundle> bundle;
};

MainBundle& mainBundle() {
  static MainBundle holder;
  return holder;
}

}  // namespace

NSBundle NSBundle::main() {
  MainBundle& holder = mainBundle();
  const std::lock_guard guard(holder.mutex);
  if (!holder.bundle) {
    const std::string_view named = environment("QUORVEL_BUNDLE");
    holder.bundle = named.empty() ? at(executableFolder()) : at(named);
  }
  return *holder.bundle;
}

void NSBundle::setMain(const NSBundle& bundle) {
  MainBundle& holder = mainBundle();
  const std::lock_guard guard(holder.mutex);
  holder.bundle = bundle;
}

NSBundle NSBundle::at(std::string_view path) { return NSBundle(std::make_shared<Contents>(path)); }

std::string_view NSBundle::path() const { return contents_->path; }

String NSBundle::localizedString(StringView key, StringView value, StringView table) const {
  const std::optional<std::string> name = String(table.isEmpty() ? StringView(u"Localizable") : table).toUTF8();
  if (name && name->find_first_of(std::string_view("/\0", 2)) == std::string::npos) {
    const std::string file = *name + ".strings";
    for (const Dictionary& entries : {contents_->localizedTable(file), contents_->table(file)}) {
      if (const String* text = entries[key].asString()) return *text;
    }
  }
  return value.isEmpty() ? key : value;
}

Dictionary NSBundle::infoDictionary() const { return contents_->table("Info.plist"); }

Dictionary NSBundle::localizedInfoDictionary() const {
  Dictionary result = infoDictionary();
  for (const auto& [key, value] : contents_->localizedTable("InfoPlist.strings")) result.set(key, value);
  return result;
}

std::vector<String> NSBundle::localizations() const { return contents_->localizations; }

std::vector<String> NSBundle::preferredLocalizations() const { return contents_->preferred; }

}  // namespace quorvel
