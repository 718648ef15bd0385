#include <cerrno>
#include <cstdio>

#include <quorvel/Platform/Foundation/FileReplacer.h>
#include <quorvel/Platform/Foundation/JSONStore.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>

namespace quorvel {
namespace {

struct Read {
  FileError error;
  std::optional<Dictionary> entries;  // nil without an error: a file that is no store

  [[nodiscard]] bool isDamaged() const { return !error && !entries; }
};

Read readEntries(const FileDescriptor& folder, const std::string& name) {
  Read result;
  const FileDescriptor file = files::openRegularFile(folder, name, &result.error);
  const auto bytes = file.isOpen() ? files::readAll(file, limits::kStoreFileBytes, &result.error) : nil;
  if (result.error.number == ENOENT) return {{}, Dictionary()};
  if (result.error.number == EFBIG) return {};
  if (!bytes) return result;
  const Value value = NSJSONSerialization::parse(*bytes);
  if (value.isDictionary()) result.entries = *value.asDictionary();
  return result;
}

}  // namespace

JSONStore::JSONStore(std::string base, std::vector<std::string> folders, std::string name)
    : base_(std::move(base)), folders_(std::move(folders)), name_(std::move(name)) {}

std::optional<Dictionary> JSONStore::read(FileError* error) const {
  FileError failure;
  const FileDescriptor folder = files::openPrivateFolder(base_, folders_, files::Missing::Refused, &failure);
  if (!folder.isOpen()) {
    if (failure.number == ENOENT && !base_.empty()) return Dictionary();
    if (error) *error = failure;
    return nil;
  }
  Read result = readEntries(folder, name_);
  if (error) *error = result.error;
  if (result.isDamaged()) log(LogLevel::Warning, name_ + ": no JSON dictionary, taken as empty");
  return result.isDamaged() ? Dictionary() : std::move(result.entries);
}

FileError JSONStore::change(const std::function<bool(Dictionary& entries)>& change) const {
  FileError error;
  const FileDescriptor folder = files::openPrivateFolder(base_, folders_, files::Missing::Made, &error);
  if (!folder.isOpen()) return error;
  const FileDescriptor lock = files::lock(folder, "." + name_ + ".lock", &error);
  if (!lock.isOpen()) return error;
  const Read read = readEntries(folder, name_);
  if (read.error) return read.error;
  Dictionary entries = read.entries.value_or(Dictionary());
  if (!change(entries)) return {};
  const auto text = NSJSONSerialization::writeFragmentUTF8(entries, NSJSONSerialization::kPrettyPrinted);
  if (!text) return {EINVAL};
  if (text->size() >= limits::kStoreFileBytes) return {EFBIG};
  if (read.isDamaged()) {
    const std::string aside = name_ + ".damaged";
    log(LogLevel::Warning, name_ + ": no JSON dictionary, kept as " + aside);
    if (::renameat(folder.number(), name_.c_str(), folder.number(), aside.c_str()) != 0) return {errno};
  }
  return replaceFile(folder, name_, *text + "\n", {});
}

}  // namespace quorvel
