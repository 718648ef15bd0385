// quorvel backup: the items below a folder that are excluded from backups, as backup tools take them.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quorvel::command {

extern const char kBackupUsage[];

/// `quorvel backup list DIR [--format FORMAT]`; the exit status.
int runBackup(std::span<const std::string_view> words);

// One line of an exclusion file without its line end; nothing where the tool has no way to write the path, which
// would then exclude too much or another item. `root` is absolute, `path` below it, bytes as the file system has them;
// an empty `path` is the root itself.

/// For `restic backup --exclude-file`: an absolute pattern; * ? [ \ escaped, $ doubled, white space at the end in
/// brackets. Not for names with a line feed.
[[nodiscard]] std::optional<std::string> resticPattern(std::string_view root, std::string_view path);
/// For `rsync --exclude-from` of `DIR/`: a pattern from the root of the transfer; wildcards escaped, and then the
/// reverse solidus too. Not for names with a line feed or carriage return.
[[nodiscard]] std::optional<std::string> rsyncPattern(std::string_view root, std::string_view path);
/// For `borg create --exclude-from`: a path prefix (pp:), or a regular expression (re:) for names with white space at
/// the end, control characters or bytes that are not UTF-8.
[[nodiscard]] std::optional<std::string> borgPattern(std::string_view root, std::string_view path);

}  // namespace quorvel::command
