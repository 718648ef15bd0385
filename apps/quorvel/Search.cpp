#include <algorithm>
#include <chrono>
#include <cstdio>
#include <iterator>

#include <apps/quorvel/Hit.h>
#include <apps/quorvel/Progress.h>
#include <apps/quorvel/Reply.h>
#include <apps/quorvel/Search.h>
#include <apps/quorvel/SearchOptions.h>
#include <apps/quorvel/Terminal.h>
#include <unistd.h>

#include <quorvel/Extensions/Foundation/NSDictionary+Addtion.h>
#include <quorvel/Extensions/Foundation/NSDictionary+URL.h>
#include <quorvel/Extensions/Foundation/NSString+TextSearch.h>
#include <quorvel/Platform/Foundation/NSRegularExpression.h>
#include <quorvel/Platform/Foundation/StringOperations.h>
#include <quorvel/Utility/TextMatch.h>

namespace quorvel::command {
namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;
constexpr std::size_t kProgressFromBytes = 8 << 20;

using Clock = std::chrono::steady_clock;

int complain(const std::string& message, int status) {
  std::fprintf(stderr, "quorvel search: %s\n", message.c_str());
  return status;
}

/// The keywords between commas and spaces, as the highlighting splits them.
std::vector<StringView> keywordsOf(StringView text) {
  std::vector<StringView> keywords = componentsSeparatedBy(text, NSCharacterSet::withCharactersIn(u", "));
  std::erase_if(keywords, [](StringView keyword) { return keyword.isEmpty(); });
  return keywords;
}

/// The text in its searchable form, or nil when it never becomes searchable. What is matched while it is typed needs
/// no complete last letter.
std::optional<String> searchableText(const String& typed, bool typing) {
  using NSStringTextSearch::isSearchableString;
  if (typing) return keywordsOf(typed).empty() ? std::nullopt : std::optional<String>(trimmedOfWhitespace(typed));
  String cleaned = isSearchableString(typed) ? String(trimmedOfWhitespace(typed))
                                             : NSStringTextSearch::removeInvaildSearchStr(typed).value_or(typed);
  if (!isSearchableString(cleaned) || keywordsOf(cleaned).empty()) return nil;
  return cleaned;
}

/// The query, or with a base the whole address: behind a query that the base has already, before its fragment.
std::string requestText(const SearchOptions& options, const String& text) {
  Dictionary request{{u"text", text}};
  if (options.limit > 0) request.set(u"limit", options.limit);
  std::string query = queryString(request).value_or(String()).toUTF8Replacing();
  if (options.url.empty()) return query;
  const std::size_t fragment = std::min(options.url.find('#'), options.url.size());
  const std::string base = options.url.substr(0, fragment);
  if (base.find('?') != std::string::npos) query.front() = '&';
  return base + query + options.url.substr(fragment);
}

/// Finds the keywords, literally or, with --typing, as they are being typed.
class Matcher {
 public:
  Matcher(StringView text, bool typing) : text_(text) {
    for (const StringView keyword : keywordsOf(text)) {
      if (typing) {
        typed_.emplace_back(keyword, MatchOptions{.ignoresCase = true, .partialHangul = true});
      } else if (auto expression =
                     NSRegularExpression::withPattern(keyword, RegularExpressionOptions::CaseInsensitiveLiteral)) {
        expressions_.push_back(std::move(*expression));
      }
    }
  }
  [[nodiscard]] bool matches(StringView text) const {
    const auto hasMatch = [text](const auto& matcher) { return matcher.hasMatch(text); };
    return std::ranges::any_of(expressions_, hasMatch) || std::ranges::any_of(typed_, hasMatch);
  }
  [[nodiscard]] NSAttributedString marked(StringView text) const {
    if (typed_.empty()) return highlighted(text, text_);
    std::vector<NSRange> ranges;
    for (const TextMatcher& matcher : typed_) std::ranges::copy(matcher.ranges(text), std::back_inserter(ranges));
    return highlighted(text, ranges);
  }

 private:
  StringView text_;
  std::vector<NSRegularExpression> expressions_;
  std::vector<TextMatcher> typed_;
};

bool wantsColor(const SearchOptions& options) {
  if (options.color != ColorChoice::Auto) return options.color == ColorChoice::Always;
  return outputTakesColor();
}

/// Writes the hits of the reply into `out` and answers how many there are.
std::uint64_t collectHits(const SearchOptions& options, const String& text, const Reply& reply, Progress& progress,
                          std::string& out) {
  const Matcher matcher(text, options.typing);
  const String field = String::fromUTF8Replacing(options.field);
  const bool colored = wantsColor(options);
  std::uint64_t hits = 0;
  for (std::size_t i = 0; i < reply.records.size(); ++i) {
    if (reply.byteCount >= kProgressFromBytes && i % 1024 == 0) {
      progress.show("searching", 100.0 * static_cast<double>(i) / static_cast<double>(reply.records.size()), "%");
    }
    const Dictionary& record = *reply.records[i].asDictionary();
    const std::optional<String> message = stringForKeyOrNil(record, field);
    if (!message || !matcher.matches(*message)) continue;
    ++hits;
    if (options.limit != 0 && hits > options.limit) continue;
    const NSAttributedString marked = matcher.marked(*message);
    options.json ? appendHitJSON(out, record, marked) : appendHit(out, record, marked, colored);
  }
  return hits;
}

std::string summary(std::uint64_t hits, const Reply& reply, std::uint64_t shown, Clock::time_point start) {
  const std::chrono::duration<double, std::milli> elapsed = Clock::now() - start;
  char milliseconds[32];
  std::snprintf(milliseconds, sizeof milliseconds, "%.1f ms", elapsed.count());
  std::string line = std::to_string(hits) + (hits == 1 ? " hit" : " hits");
  if (shown < hits) line += " (" + std::to_string(shown) + " shown)";
  return line + " in " + std::to_string(reply.records.size()) + " records, " + std::to_string(reply.byteCount) +
         " bytes, " + milliseconds + "\n";
}

int search(const SearchOptions& options) {
  const auto start = Clock::now();
  const std::optional<String> text = searchableText(options.text, options.typing);
  const std::string typed = options.text.toUTF8Replacing();
  if (!text) {
    const char* needs = options.typing ? "a letter" : "two letters and a complete last one";
    return complain("'" + typed + "' is no search text: it needs " + needs, kUsage);
  }

  // With --json standard output is for the hits alone.
  FILE* const notes = options.json ? stderr : stdout;
  Progress progress;
  const auto reply = readReply(options.reply, options.list, [&progress](std::size_t bytes) {
    if (bytes >= kProgressFromBytes) progress.show("reading", static_cast<double>(bytes) / (1 << 20), "MB");
  });
  if (const auto* reason = std::get_if<std::string>(&reply)) {
    progress.clear();
    return complain(*reason, kFailed);
  }
  const Reply& read = std::get<Reply>(reply);
  std::string out;
  const std::uint64_t hits = collectHits(options, *text, read, progress, out);
  progress.clear();

  if (*text != options.text)
    std::fprintf(notes, "search text: '%s', cleaned from '%s'\n", text->toUTF8Replacing().c_str(), typed.c_str());
  std::fprintf(notes, "request: %s\n", requestText(options, *text).c_str());
  if (!options.json) std::fputc('\n', stdout);
  std::fwrite(out.data(), 1, out.size(), stdout);
  const std::uint64_t shown = options.limit == 0 ? hits : std::min(hits, options.limit);
  std::fputs(summary(hits, read, shown, start).c_str(), notes);
  if (std::fflush(stdout) != 0) return complain("standard output cannot be written", kFailed);
  return 0;
}

}  // namespace

int runSearch(std::span<const std::string_view> arguments) {
  const auto options = parseSearchOptions(arguments);
  if (const auto* error = std::get_if<std::string>(&options))
    return complain(*error + " (quorvel search --help)", kUsage);
  if (std::get<SearchOptions>(options).help) {
    std::fputs(kSearchUsage, stdout);
    return 0;
  }
  return search(std::get<SearchOptions>(options));
}

}  // namespace quorvel::command
