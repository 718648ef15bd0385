#include <cstdio>
#include <filesystem>

#include <apps/quorvel/Backup.h>
#include <apps/quorvel/Operation.h>
#include <apps/quorvel/OptionWords.h>

#include <quorvel/Platform/Foundation/BackupExclusion.h>

namespace quorvel::command {

const char kBackupUsage[] =
    "usage: quorvel backup list DIR [--format restic|rsync|borg]\n"
    "\n"
    "The items in and below DIR that are excluded from backups, a line each: those with the extended attribute\n"
    "user.xdg.robots.backup=false, with the nodump flag, and folders with a CACHEDIR.TAG. Links are not followed.\n"
    "\n"
    "  --format restic   for restic backup --exclude-file FILE (the default)\n"
    "  --format rsync    for rsync --exclude-from FILE DIR/ ...\n"
    "  --format borg     for borg create --exclude-from FILE\n"
    "\n"
    "The exit status is 1 when something could not be read, or has a name that the tool cannot take; standard error\n"
    "tells what.\n";

namespace {

using Pattern = std::optional<std::string> (*)(std::string_view root, std::string_view path);

constexpr int kIncomplete = 1;
constexpr int kUsageError = 2;

struct Format {
  std::string_view name;
  Pattern pattern;
};
constexpr Format kFormats[] = {{"restic", resticPattern}, {"rsync", rsyncPattern}, {"borg", borgPattern}};

bool has(std::string_view text, std::string_view any) { return text.find_first_of(any) != text.npos; }

std::string whole(std::string_view root, std::string_view path) {
  if (path.empty()) return std::string(root);
  return joined({root == "/" ? "" : root, "/", path});
}

/// The text with `mark` before each of the characters `any`.
std::string escaped(std::string_view text, std::string_view any, char mark) {
  std::string result;
  for (const char character : text) {
    if (any.find(character) != any.npos) result += mark;
    result += character;
  }
  return result;
}

/// Where white space begins that runs to the end: of ASCII, and U+0085, U+00A0 and the other spaces of Unicode, which
/// are taken as white space when a line is read.
std::size_t trailingSpace(std::string_view text) {
  constexpr std::string_view kSpaces[] = {" ",
                                          "\t",
                                          "\n",
                                          "\v",
                                          "\f",
                                          "\r",
                                          "\x1C",
                                          "\x1D",
                                          "\x1E",
                                          "\x1F",
                                          "\xC2\x85",
                                          "\xC2\xA0",
                                          "\xE1\x9A\x80",
                                          "\xE2\x80\x80",
                                          "\xE2\x80\x81",
                                          "\xE2\x80\x82",
                                          "\xE2\x80\x83",
                                          "\xE2\x80\x84",
                                          "\xE2\x80\x85",
                                          "\xE2\x80\x86",
                                          "\xE2\x80\x87",
                                          "\xE2\x80\x88",
                                          "\xE2\x80\x89",
                                          "\xE2\x80\x8A",
                                          "\xE2\x80\xA8",
                                          "\xE2\x80\xA9",
                                          "\xE2\x80\xAF",
                                          "\xE2\x81\x9F",
                                          "\xE3\x80\x80"};
  for (bool found = true; found;) {
    found = false;
    for (const std::string_view space : kSpaces) {
      if (!text.ends_with(space)) continue;
      text.remove_suffix(space.size());
      found = true;
    }
  }
  return text.size();
}

constexpr char hexDigit(unsigned value) { return "0123456789abcdef"[value & 15]; }

/// The text as a regular expression for just that text, in plain ASCII: letters, digits, "/" and what is not special
/// stay, other characters are \x, \u and \U escapes. A byte that is not UTF-8 is the surrogate that Python decodes it
/// to.
std::string asRegularExpression(std::string_view bytes) {
  std::string result;
  const auto append = [&](char kind, int digits, std::uint32_t scalar) {
    result.append("\\").append(1, kind);
    for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) result += hexDigit(scalar >> shift);
  };
  for (std::size_t i = 0; i < bytes.size();) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    const std::size_t length = byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
    const auto text = byte < 0x80 ? std::nullopt : String::fromUTF8(bytes.substr(i, length));
    const bool isPlain = (byte >= '0' && byte <= '9') || ((byte | 0x20) >= 'a' && (byte | 0x20) <= 'z') || byte == '/';
    if (isPlain) {
      result += bytes[i];
    } else if (byte < 0x80) {
      append('x', 2, byte);
    } else if (!text) {
      append('u', 4, 0xDC00U + byte);
    } else if (text->size() == 1) {
      append('u', 4, (*text)[0]);
    } else {
      append('U', 8, 0x10000U + ((((*text)[0] & 0x3FFU) << 10) | ((*text)[1] & 0x3FFU)));
    }
    i += text ? length : 1;
  }
  return result;
}

bool isPlainUTF8(std::string_view path) {
  for (const char character : path) {
    if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F) return false;
  }
  return String::fromUTF8(path).has_value();
}

struct Request {
  std::string folder;
  Pattern pattern = resticPattern;
};

const Format* formatNamed(std::string_view name) {
  for (const Format& format : kFormats) {
    if (format.name == name) return &format;
  }
  return nullptr;
}

/// False, and why in `error`.
bool readRequest(std::span<const std::string_view> given, Request& request, std::string& error) {
  constexpr std::string_view kOptions[] = {"--format="};
  OptionWords words(given, kOptions);
  while (words.next()) {
    if (words.name.empty()) {
      if (!request.folder.empty() || words.value.empty()) words.refuse();
      request.folder = words.value;
      continue;
    }
    const Format* const format = formatNamed(words.value);
    if (!format) return error = joined({"no format is named '", words.value, "'"}), false;
    request.pattern = format->pattern;
  }
  error = words.error.empty() && request.folder.empty() ? "expected a folder" : words.error;
  return error.empty();
}

/// A name from the file system for a terminal.
std::string printable(std::string_view text) {
  std::string result;
  for (const char c : text) result += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? '?' : c;
  return result;
}

int runBackupList(const Request& request) {
  std::error_code failure;
  // As backup tools do it: made absolute, links in it kept.
  std::string root = std::filesystem::absolute(request.folder, failure).lexically_normal().string();
  while (root.size() > 1 && root.ends_with('/')) root.pop_back();
  int status = failure ? kIncomplete : 0;
  const auto fail = [&](const std::string& path, std::string_view reason) {
    std::fprintf(stderr, "quorvel backup: %s: %s\n", printable(whole(root, path)).c_str(), std::string(reason).c_str());
    status = kIncomplete;
  };
  const auto print = [&](const std::string& path) {
    const auto line = request.pattern(root, path);
    if (!line) return fail(path, "the name cannot be written in this format");
    std::fwrite(line->data(), 1, line->size(), stdout);
    std::fputc('\n', stdout);
  };
  backup::visit(request.folder, {print, [&](const std::string& path, FileError error) {
                                   fail(path, error.description().toUTF8Replacing());
                                 }});
  return status;
}

}  // namespace

std::optional<std::string> resticPattern(std::string_view root, std::string_view path) {
  const std::string item = whole(root, path);
  if (has(item, "\n")) return std::nullopt;
  const std::size_t end = trailingSpace(item);
  std::string pattern = escaped(escaped(std::string_view(item).substr(0, end), "*?[\\", '\\'), "$", '$');
  if (end < item.size()) {
    // A class around the last space keeps the reader from trimming it and what is before it.
    std::size_t last = item.size() - 1;
    while (last > end && (static_cast<unsigned char>(item[last]) & 0xC0) == 0x80) --last;
    pattern += item.substr(end, last - end) + "[" + item.substr(last) + "]";
  }
  return pattern;
}

std::optional<std::string> rsyncPattern(std::string_view, std::string_view path) {
  if (has(path, "\r\n")) return std::nullopt;
  if (path.empty()) return "/*";
  // Without a wildcard in the pattern the reverse solidus stands for itself.
  return "/" + (has(path, "*?[") ? escaped(path, "*?[\\", '\\') : std::string(path));
}

std::optional<std::string> borgPattern(std::string_view root, std::string_view path) {
  const std::string item = whole(root, path);
  const std::string_view stored = std::string_view(item).substr(1);  // archives hold no leading slash
  if (stored.empty()) return "re:.";
  const bool isPlain = isPlainUTF8(stored) && trailingSpace(stored) == stored.size();
  if (isPlain) return joined({"pp:", item});
  return joined({"re:^", asRegularExpression(stored), "(?:/|$)"});
}

int runBackup(std::span<const std::string_view> words) {
  std::string error;
  Request request;
  if (words.empty() || words[0] != "list") {
    error = "expected list";
  } else if (readRequest(words.subspan(1), request, error)) {
    return runBackupList(request);
  }
  std::fprintf(stderr, "quorvel backup: %s (quorvel help backup)\n", error.c_str());
  return kUsageError;
}

}  // namespace quorvel::command
