// ApplicationFolders: where the files of this user and of this application are (XDG base directories and
// xdg-user-dirs). Read from the environment at each call; nothing is made.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quorvel::folders {

/// HOME; without that variable the home folder of the user's account. nil when neither is an absolute path.
[[nodiscard]] std::optional<std::string> home();
/// XDG_CONFIG_HOME, or ".config" in the home folder; a relative value counts as none.
[[nodiscard]] std::optional<std::string> configuration();
/// XDG_DATA_HOME, or ".local/share" in the home folder.
[[nodiscard]] std::optional<std::string> data();
/// XDG_DOCUMENTS_DIR of user-dirs.dirs in the configuration folder, or "Documents" in the home folder.
[[nodiscard]] std::optional<std::string> documents();

/// The value of NAME="value" in the text of a user-dirs.dirs, the last one counts: an absolute path, or "$HOME" alone
/// or with a path behind it. A reverse solidus makes the next character stand for itself. Other lines are passed over.
[[nodiscard]] std::optional<std::string> userDirectory(std::string_view text, std::string_view name,
                                                       std::string_view home);

/// The name under which the application's stores are kept: the main bundle's CFBundleIdentifier, else the executable's
/// file name; always one that `isStoreName` accepts.
[[nodiscard]] std::string applicationName();
/// True for a name that stays in its folder and clashes with no file of ours: not empty, at most 200 bytes, without
/// "/" and NUL, not beginning with ".".
[[nodiscard]] bool isStoreName(std::string_view name);

}  // namespace quorvel::folders
