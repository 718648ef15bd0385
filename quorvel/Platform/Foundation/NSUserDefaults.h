// NSUserDefaults: named settings of the user, a store for each suite, shared by all processes that name it.
#pragma once

#include <quorvel/Platform/Foundation/JSONStore.h>

namespace quorvel {

/// The file SUITE.json in "quorvel/defaults" of the configuration folder (ApplicationFolders.h), mode 0600 in folders
/// of mode 0700. Nothing is cached: every question reads the file, every change replaces it, so that threads and
/// processes that change different keys at once lose nothing. Cheap to copy.
class NSUserDefaults {
 public:
  /// `standardUserDefaults`: the application's own store (`folders::applicationName`).
  [[nodiscard]] static NSUserDefaults standardUserDefaults();
  /// `initWithSuiteName:`: a nil name is the application's own store. nil for a name that would leave the folder or
  /// clash with files of ours (`folders::isStoreName`) and for one with an unpaired surrogate.
  [[nodiscard]] static std::optional<NSUserDefaults> withSuiteName(StringView name);

  /// `objectForKey:`: nil when there is none, for a nil key and when the store cannot be read.
  [[nodiscard]] Value objectForKey(StringView key) const;
  /// `setObject:forKey:`: a nil value removes the key. True when the change is on the disk. False, and nothing changed,
  /// for a nil key, a value that holds anything but texts, finite numbers, dates, data, lists and dictionaries with
  /// text keys, nesting beyond `limits::kJSONDepth`, an unpaired surrogate, and when the store cannot be written (which
  /// the log tells).
  bool setObject(const Value& value, StringView key) const;
  /// `removeObjectForKey:`: true when the key is not there any more.
  bool removeObjectForKey(StringView key) const { return setObject(nil, key); }
  /// `dictionaryRepresentation`: all entries.
  [[nodiscard]] Dictionary dictionaryRepresentation() const;

  /// The name of the store.
  [[nodiscard]] const std::string& suiteName() const { return name_; }

 private:
  explicit NSUserDefaults(std::string name);

  std::string name_;
  JSONStore store_;
};

namespace detail {

/// A value as the JSON that stores hold: dates as {"$date": seconds}, data as {"$data": Base64}, a dictionary that
/// looks like one of these as {"$dictionary": ...}. Only values without the null marker, objects, non-finite numbers
/// and keys that are no texts have a form; nil for others.
[[nodiscard]] Value toStoredForm(Value value);
/// The value of such JSON; what has no meaning stays as it is.
[[nodiscard]] Value fromStoredForm(Value stored);

}  // namespace detail
}  // namespace quorvel
