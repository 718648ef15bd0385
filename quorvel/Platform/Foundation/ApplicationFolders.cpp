#include <cstdlib>

#include <pwd.h>
#include <unistd.h>

#include <quorvel/Platform/Foundation/ApplicationFolders.h>
#include <quorvel/Platform/Foundation/GuardedFile.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/NSBundle.h>

namespace quorvel::folders {
namespace {

constexpr std::size_t kStoreNameBytes = 200;

std::optional<std::string> absolute(std::string path) {
  if (!path.starts_with('/')) return nil;
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

std::optional<std::string> accountHome() {
  char buffer[16384];
  passwd entry{};
  passwd* found = nullptr;
  if (::getpwuid_r(::geteuid(), &entry, buffer, sizeof buffer, &found) != 0 || !found) return nil;
  return absolute(found->pw_dir);
}

std::string below(const std::string& folder, std::string_view path) {
  return (folder == "/" ? "" : folder) + "/" + std::string(path);
}

std::optional<std::string> ofVariable(const char* variable, std::string_view pathInHome) {
  const char* value = std::getenv(variable);
  if (const auto path = absolute(value ? value : "")) return path;
  const auto folder = home();
  return folder ? std::optional(below(*folder, pathInHome)) : nil;
}

/// Takes white space off the front, then `word`; false when it does not begin with that.
bool take(std::string_view& text, std::string_view word) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  if (!text.starts_with(word)) return false;
  text.remove_prefix(word.size());
  return true;
}

/// The text up to the closing quotation mark; nil when there is none.
std::optional<std::string> unquoted(std::string_view text) {
  std::string value;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') return value;
    if (text[i] == '\\') ++i;
    if (i == text.size()) return nil;
    value += text[i];
  }
  return nil;
}

std::optional<std::string> valueOfLine(std::string_view line, std::string_view name, std::string_view home) {
  if (!take(line, name) || !take(line, "=") || !take(line, "\"")) return nil;
  constexpr std::string_view kHome = "$HOME";
  const bool isInHome = line.starts_with(kHome);
  if (isInHome) line.remove_prefix(kHome.size());
  const auto value = unquoted(line);
  if (!value || value->find('\0') != value->npos) return nil;
  if (!isInHome) return absolute(*value);
  if (!value->empty() && !value->starts_with('/')) return nil;
  return absolute(std::string(home == "/" ? "" : home) + *value + (home == "/" && value->empty() ? "/" : ""));
}

std::string executableName() {
  char path[4096];
  const ssize_t size = ::readlink("/proc/self/exe", path, sizeof path);
  const std::string_view whole(path, size > 0 ? static_cast<std::size_t>(size) : 0);
  return std::string(whole.substr(whole.rfind('/') + 1));
}

}  // namespace

std::optional<std::string> home() {
  const char* value = std::getenv("HOME");
  return value ? absolute(value) : accountHome();
}

std::optional<std::string> configuration() { return ofVariable("XDG_CONFIG_HOME", ".config"); }

std::optional<std::string> data() { return ofVariable("XDG_DATA_HOME", ".local/share"); }

std::optional<std::string> documents() {
  const auto folder = home();
  if (!folder) return nil;
  const FileDescriptor file =
      files::openRegularFile(below(configuration().value_or(*folder), "user-dirs.dirs"), files::Links::Followed);
  const auto text = file.isOpen() ? files::readAll(file, limits::kResourceFileBytes) : nil;
  const auto named = text ? userDirectory(*text, "XDG_DOCUMENTS_DIR", *folder) : nil;
  return named ? named : below(*folder, "Documents");
}

std::optional<std::string> userDirectory(std::string_view text, std::string_view name, std::string_view home) {
  std::optional<std::string> found;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    if (auto value = valueOfLine(text.substr(0, end), name, home)) found = std::move(value);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return found;
}

std::string applicationName() {
  const Value identifier = NSBundle::main().infoDictionary()[u"CFBundleIdentifier"];
  const auto name = identifier.isString() ? identifier.asString()->toUTF8() : nil;
  if (name && isStoreName(*name)) return *name;
  const std::string executable = executableName();
  return isStoreName(executable) ? executable : "application";
}

bool isStoreName(std::string_view name) {
  return !name.empty() && name.size() <= kStoreNameBytes && name.front() != '.' &&
         name.find_first_of(std::string_view("/\0", 2)) == name.npos;
}

}  // namespace quorvel::folders
