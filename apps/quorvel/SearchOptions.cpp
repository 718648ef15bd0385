#include <algorithm>
#include <charconv>
#include <utility>

#include <apps/quorvel/OptionWords.h>
#include <apps/quorvel/SearchOptions.h>

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel::command {

const char kSearchUsage[] =
    "usage: quorvel search --reply FILE.json|- --text 'TERM' [option ...]\n"
    "  --reply FILE   the reply to search: a JSON record that holds a list of records; - for standard input\n"
    "  --text TERM    the search text as it is typed; keywords are separated by commas or spaces\n"
    "  --list NAME    the key (or dotted key path) of the list in the reply (list)\n"
    "  --field NAME   the key of a record's text (text)\n"
    "  --url BASE     print the whole address of the request, not the query alone\n"
    "  --limit N      show at most N hits (20); 0 shows all\n"
    "  --typing       match the keywords as they are typed in Korean: 'ㅎㄱ' and '한ㄱ' find '한글'\n"
    "  --json         one JSON object a hit and line on standard output, nothing else there\n"
    "  --color WHEN   auto, always or never (auto)\n";

namespace {

bool parseCount(std::string_view text, std::uint64_t& count) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  return error == std::errc() && end == text.data() + text.size();
}

bool parseColor(std::string_view text, ColorChoice& color) {
  constexpr std::pair<std::string_view, ColorChoice> kChoices[] = {
      {"auto", ColorChoice::Auto}, {"always", ColorChoice::Always}, {"never", ColorChoice::Never}};
  const auto* choice = std::ranges::find(kChoices, text, &std::pair<std::string_view, ColorChoice>::first);
  if (choice == std::end(kChoices)) return false;
  color = choice->second;
  return true;
}

constexpr std::pair<std::string_view, std::string SearchOptions::*> kPlainOptions[] = {
    {"--reply", &SearchOptions::reply},
    {"--list", &SearchOptions::list},
    {"--field", &SearchOptions::field},
    {"--url", &SearchOptions::url},
};

/// Stores the value of an option; an error text, or an empty one.
std::string store(SearchOptions& options, std::string_view name, std::string_view value) {
  for (const auto& [plain, member] : kPlainOptions) {
    if (name == plain) {
      options.*member = value;
      return {};
    }
  }
  const std::string given = ", not '" + std::string(value) + "'";
  if (name == "--limit") return parseCount(value, options.limit) ? "" : "--limit takes a number from 0 up" + given;
  if (name == "--color") return parseColor(value, options.color) ? "" : "--color takes auto, always or never" + given;
  const std::optional<String> text = String::fromUTF8(value);
  if (!text) return "--text is not valid UTF-8";
  options.text = *text;
  return {};
}

}  // namespace

std::variant<SearchOptions, std::string> parseSearchOptions(std::span<const std::string_view> arguments) {
  constexpr std::string_view kOptions[] = {
      "--json", "--typing", "--help", "--reply=", "--text=", "--list=", "--field=", "--url=", "--limit=", "--color="};
  SearchOptions options;
  bool hasText = false;
  OptionWords words(arguments, kOptions);
  while (words.next()) {
    if (words.name == "--help" || (words.name.empty() && words.value == "-h")) {
      options.help = true;
      return options;
    }
    if (words.name == "--json" || words.name == "--typing") {
      (words.name == "--json" ? options.json : options.typing) = true;
    } else if (words.name.empty()) {
      words.refuse();
    } else if (std::string error = store(options, words.name, words.value); !error.empty()) {
      return error;
    }
    hasText = hasText || words.name == "--text";
  }
  if (!words.error.empty()) return words.error;
  if (options.reply.empty()) return "--reply is missing";
  if (!hasText) return "--text is missing";
  return options;
}

}  // namespace quorvel::command
