#include <algorithm>
#include <array>
#include <cstdio>

#include <apps/quorvel/Backup.h>
#include <apps/quorvel/Color.h>
#include <apps/quorvel/Help.h>
#include <apps/quorvel/Keychain.h>
#include <apps/quorvel/Operation.h>
#include <apps/quorvel/OptionWords.h>
#include <apps/quorvel/Search.h>
#include <apps/quorvel/Terminal.h>
#include <apps/quorvel/image/Gallery.h>
#include <apps/quorvel/image/Image.h>

#include <quorvel/Platform/Foundation/NSJSONSerialization.h>

namespace quorvel::command {

const char kUsage[] =
    "usage: quorvel COMMAND ...\n"
    "\n"
    "  search --reply FILE --text TERM   find and highlight messages in a reply\n"
    "  call FAMILY OPERATION ARG...      call an operation; arguments are JSON, the receiver first\n"
    "  call --batch                      call an operation for each line of standard input\n"
    "  keychain doctor|list|...          look after the keychain\n"
    "  backup list DIR                   what is excluded from backups, as backup tools take it\n"
    "  color COLOR... [--on BACKGROUND]  a colour's forms, its contrast, and a readable form of it\n"
    "  image ACTION ... FILE...          what picture files are, and pictures made of them\n"
    "  gallery OUTPUT.png                a picture that shows what the operations on images make\n"
    "  list [--family FAMILY]            all operations with their C++ signatures\n"
    "  help [NAME]                       an operation, a family or a command\n"
    "  --version                         the library's version\n";

namespace {

constexpr int kUsageError = 2;

constexpr char kCallUsage[] =
    "usage: quorvel call FAMILY OPERATION ARG...\n"
    "       quorvel call --batch\n"
    "\n"
    "Calls an operation (quorvel list shows all) and prints its result as a line of JSON, or {\"error\": \"...\"} "
    "with\n"
    "exit status 1. Each argument is JSON, the receiver first. OPERATION is the name in full, or its C++ name where\n"
    "the family has one of that name.\n"
    "\n"
    "With --batch each line of standard input is a call, {\"family\": ..., \"operation\": ..., \"args\": [...]}, and "
    "is\n"
    "answered by a line {\"result\": ...} or {\"error\": \"...\"}. After an error the stream goes on; the exit status "
    "is\n"
    "1 when there was one.\n"
    "\n"
    "What JSON lacks:\n"
    "  null                      nil; inside lists and dictionaries the null marker\n"
    "  {\"$null\": true}           the null marker\n"
    "  {\"$data\": \"AQID\"}         bytes, in Base64\n"
    "  {\"$date\": 1500000000000}  a date, in milliseconds since 1970-01-01 00:00:00 UTC\n"
    "  {\"$utf16\": [55357]}       text with an unpaired surrogate, as UTF-16 units\n"
    "  {\"$number\": \"inf\"}        inf, -inf or nan\n"
    "  {\"$entries\": [[1, \"a\"]]}  a dictionary with a key that is no text or begins with \"$\"\n"
    "  {\"$font\": \"name\"}         a font\n"
    "  [r, g, b, a]              a colour; {\"$color\": [r, g, b, a]} inside lists and dictionaries\n"
    "  [location, length]        a range\n"
    "  {\"text\": \"ab\", \"spans\": [[0, 2, {\"NSColor\": {\"$color\": [1, 0, 0, 1]}}]]}  attributed text\n";

constexpr char kListUsage[] =
    "usage: quorvel list [--family FAMILY]\n"
    "\n"
    "Family, operation and C++ signature of every operation, a line each, with tabs between.\n";

constexpr char kHelpUsage[] =
    "usage: quorvel help [NAME]\n"
    "\n"
    "NAME is an operation, in full or by its C++ name, a family or a command.\n";

struct CommandText {
  std::string_view name;
  const char* text;
};
const CommandText kCommands[] = {{"call", kCallUsage},         {"list", kListUsage},     {"help", kHelpUsage},
                                 {"keychain", kKeychainUsage}, {"backup", kBackupUsage}, {"image", kImageUsage},
                                 {"gallery", kGalleryUsage},   {"color", kColorUsage}};

bool isNamed(const Operation& operation, std::string_view name) {
  return operation.name == name || operation.family == name || operation.function == name ||
         functionName(operation) == name;
}

std::string jsonText(const Value& json) { return NSJSONSerialization::writeFragmentUTF8(json, 0).value_or(""); }

/// The example as a shell would call it, and what it answers; help changes no file and asks no device.
std::string exampleText(const Operation& operation) {
  const Value parsed = NSJSONSerialization::parseFragment(operation.example);
  const List arguments = parsed.asList() ? *parsed.asList() : List();
  std::string words = joined({shellWord(operation.family), " ", shellWord(operation.name)});
  for (const Value& argument : arguments) words.append(" ").append(shellWord(jsonText(argument)));
  if (operation.isOnDevice) return joined({"  quorvel call ", words, "\n"});
  std::string error;
  const auto result = operation.invoke(operation, {arguments.begin(), arguments.size()}, error);
  return joined({"  quorvel call ", words, "\n    -> ", result ? jsonText(*result) : error, "\n"});
}

std::string operationText(const Operation& operation) {
  return joined({operation.family, "  ", operation.name, "\n  ", operation.signature(operation), "\n  ",
                 operation.summary, "\n", exampleText(operation)});
}

}  // namespace

std::string shellWord(std::string_view word) {
  const auto isPlain = [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '-' ||
           c == '.' || c == ':' || c == '+';
  };
  if (!word.empty() && std::ranges::all_of(word, isPlain)) return std::string(word);
  std::string quoted;
  for (const char c : word) c == '\'' ? quoted.append("'\\''") : quoted.append(1, c);
  return joined({"'", quoted, "'"});
}

int runList(std::span<const std::string_view> given) {
  std::string_view family;
  constexpr std::string_view kOptions[] = {"--family="};
  OptionWords words(given, kOptions);
  while (words.next()) words.name.empty() ? words.refuse() : void(family = words.value);
  if (!words.error.empty()) {
    std::fprintf(stderr, "quorvel list: %s\n", plainText(words.error).c_str());
    return kUsageError;
  }
  std::string text;
  for (const Operation& operation : allOperations()) {
    if (!family.empty() && operation.family != family) continue;
    text.append(operation.family).append("\t").append(operation.name).append("\t");
    text.append(operation.signature(operation)).append("\n");
  }
  if (text.empty()) {
    std::fprintf(stderr, "quorvel list: no family is named '%s'\n", std::string(family).c_str());
    return kUsageError;
  }
  std::fputs(text.c_str(), stdout);
  return 0;
}

int runHelp(std::span<const std::string_view> words) {
  if (words.empty()) {
    std::fputs(kUsage, stdout);
    return 0;
  }
  const std::string_view name = words.front();
  if (name == "search") return runSearch(std::array<std::string_view, 1>{"--help"});
  for (const CommandText& command : kCommands) {
    if (command.name == name) {
      std::fputs(command.text, stdout);
      return 0;
    }
  }
  std::string text;
  for (const Operation& operation : allOperations()) {
    if (isNamed(operation, name)) text += joined({text.empty() ? "" : "\n", operationText(operation)});
  }
  if (text.empty()) {
    std::fprintf(stderr, "quorvel help: nothing is named '%s' (quorvel list)\n", std::string(name).c_str());
    return kUsageError;
  }
  std::fputs(text.c_str(), stdout);
  return 0;
}

}  // namespace quorvel::command
