// JSONStore: a dictionary kept as one private JSON file, which threads and processes read and change at once.
// Not here: what the entries mean (NSUserDefaults.h, NSHTTPCookieStorage.h).
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <quorvel/Platform/Foundation/FileError.h>

namespace quorvel {

/// The file is replaced whole, so a reader needs no lock; a change locks, reads, changes and replaces, so that none is
/// lost. Files have mode 0600, the folders `folders` 0700; nothing that was planted there is followed.
class JSONStore {
 public:
  /// The file `base`/`folders`.../`name`. An empty `base` stands for a store that cannot be reached.
  JSONStore(std::string base, std::vector<std::string> folders, std::string name);

  /// Empty when there is no file yet, or one that is no JSON dictionary. nil, and why, when it cannot be read.
  [[nodiscard]] std::optional<Dictionary> read(FileError* error = nullptr) const;

  /// Lets `change` change the entries, and writes them when it answers true. A file that is no JSON dictionary is
  /// kept as NAME.damaged first. EINVAL when the entries cannot be written as JSON, EFBIG when they would take more
  /// than `limits::kStoreFileBytes`; nothing is written then.
  [[nodiscard]] FileError change(const std::function<bool(Dictionary& entries)>& change) const;

 private:
  std::string base_;
  std::vector<std::string> folders_;
  std::string name_;
};

}  // namespace quorvel
