// NSBundle: the string tables and the information of the application's resources.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// A folder of resources: NAME.strings tables at its top and in its LANGUAGE.lproj folders. Cheap to copy; each table
/// is read once, on its first use, by whichever thread comes first.
class NSBundle {
 public:
  /// `mainBundle`: the folder that `setMain` named, else the one in the environment's QUORVEL_BUNDLE, else the folder
  /// of the executable. Not the library's own.
  [[nodiscard]] static NSBundle main();
  static void setMain(const NSBundle& bundle);
  /// A bundle over a folder; what is missing there reads as empty.
  [[nodiscard]] static NSBundle at(std::string_view path);
  /// `bundlePath`: the folder as it was given.
  [[nodiscard]] std::string_view path() const;

  /// `localizedStringForKey:value:table:`: the text of `key` in the table (nil: "Localizable"); without an entry
  /// `value`, or the key itself when `value` is nil or empty. The table in the folder of the first preferred
  /// localisation is asked first, then the one at the top. A table that cannot be read or parsed, that is no regular
  /// file or larger than `limits::kResourceFileBytes`, and a name with a slash count as empty. A table may be a
  /// property list too.
  [[nodiscard]] String localizedString(StringView key, StringView value, StringView table) const;

  /// `infoDictionary`: Info.plist, in XML or binary form; empty when there is none that can be read.
  [[nodiscard]] Dictionary infoDictionary() const;
  /// `localizedInfoDictionary`: the same overlaid with InfoPlist.strings of the first preferred localisation.
  [[nodiscard]] Dictionary localizedInfoDictionary() const;

  /// The names of the LANGUAGE.lproj folders, sorted.
  [[nodiscard]] std::vector<String> localizations() const;
  /// The localisations that are used, best first: for each of the user's languages the localisation that fits best by
  /// likely subtags, scripts never mixed; else the first localisation. The languages are those of LANGUAGE, then the
  /// first of LC_ALL, LC_MESSAGES and LANG that is set; LANGUAGE is passed over when that one is C or POSIX. Read once
  /// for each bundle. 'Base' is never chosen.
  [[nodiscard]] std::vector<String> preferredLocalizations() const;

 private:
  struct Contents;
  explicit NSBundle(std::shared_ptr<Contents> contents) : contents_(std::move(contents)) {}
  std::shared_ptr<Contents> contents_;
};

/// The entries of a `.strings` table (UTF-8, or UTF-16 with a byte-order mark): "key" = "value"; pairs with comments
/// and the escapes \" \\ \n \r \t \0 to \777 and \Uxxxx (another escaped character stands for itself); keys and values
/// may be unquoted words of letters, digits and _ $ / : . -; `key;` alone maps to itself; a later pair replaces an
/// earlier one of the same key. nil when the text breaks that form, with the line, counted from 1, in `errorLine`; 0
/// there when the bytes are no text. A text with an unpaired surrogate breaks the form.
[[nodiscard]] std::optional<Dictionary> parseStringsTable(std::string_view bytes, std::size_t* errorLine = nullptr);

}  // namespace quorvel
