#include <algorithm>
#include <mutex>

#include <unicode/uregex.h>

#include <quorvel/Platform/Foundation/GuardedText.h>
#include <quorvel/Platform/Foundation/Hash.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/LiteralSearch.h>
#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Platform/Foundation/NSRegularExpression.h>
#include <quorvel/Platform/Foundation/PatternTraits.h>
#include <quorvel/Platform/Foundation/ReplacementTemplate.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

using Clock = std::chrono::steady_clock;

/// Backtracking memory that an idle matcher may keep.
constexpr std::int32_t kIdleBytes = 32 * 1024;
constexpr std::size_t kIdleMatchers = 4;
/// Texts up to this size are compared with themselves fast enough for every back-reference.
constexpr std::size_t kShortText = 1024;

struct CloseExpression {
  void operator()(URegularExpression* expression) const { uregex_close(expression); }
};
using ICUExpression = std::unique_ptr<URegularExpression, CloseExpression>;

bool isLiteral(RegularExpressionOptions options) { return (static_cast<std::uint32_t>(options) & 4U) != 0; }

/// ICU counts an error's place in lines and characters; callers think in units.
std::uint64_t unitOffset(StringView pattern, const UParseError& place) {
  std::int32_t line = 1;
  std::int32_t column = 0;
  std::size_t i = 0;
  char32_t last = 0;
  while (i < pattern.size() && (line < place.line || (line == place.line && column < place.offset))) {
    const char32_t scalar = unicode::nextScalar(pattern, i);
    if (scalar == u'\r' || scalar == 0x85 || scalar == 0x2028 || (scalar == u'\n' && last != u'\r')) {
      ++line;
      column = 0;
    } else if (scalar != u'\n') {
      ++column;
    }
    last = scalar;
  }
  return i;
}

/// The time that one public call has, all its matches together. ICU asks now and then whether to go on.
class Deadline {
 public:
  void start() { end_ = Clock::now() + limits::kRegularExpressionTime; }
  [[nodiscard]] bool isOver() {
    expired_ = expired_ || Clock::now() >= end_;
    return expired_;
  }
  /// True once any of the questions was answered so.
  [[nodiscard]] bool wasOver() const { return expired_; }
  /// The same at every sixteenth call, for loops whose steps are short.
  [[nodiscard]] bool isOverNowAndThen() { return ++calls_ % 16 == 0 ? isOver() : expired_; }

  static UBool whileMatching(const void* context, std::int32_t) { return !of(context).isOver(); }
  static bool whileReading(void* context) { return of(context).isOverNowAndThen(); }
  static UBool whileFinding(const void* context, std::int64_t) { return !of(context).isOverNowAndThen(); }

 private:
  static Deadline& of(const void* context) { return *static_cast<Deadline*>(const_cast<void*>(context)); }

  Clock::time_point end_{};
  std::uint32_t calls_ = 0;
  bool expired_ = false;
};

}  // namespace

/// A pattern and the matchers made for it. A matcher serves one call at a time; idle ones wait for the next, because a
/// new one costs more than most searches.
struct NSRegularExpression::Compiled {
  String pattern;
  Options options;
  std::size_t groupCount = 0;
  bool hasBackReference = false;
  std::optional<LiteralSearch> literal;  // then there is no `master`
  std::optional<LiteralSearch> prefix;   // what every match begins with
  ICUExpression master;

  [[nodiscard]] ICUExpression take() const {
    const std::scoped_lock lock(mutex);
    if (idle.empty()) return nullptr;
    ICUExpression matcher = std::move(idle.back());
    idle.pop_back();
    return matcher;
  }
  void giveBack(ICUExpression matcher) const {
    const std::scoped_lock lock(mutex);
    if (idle.size() < kIdleMatchers) idle.push_back(std::move(matcher));
  }

  mutable std::mutex mutex;
  mutable std::vector<ICUExpression> idle;

  static std::shared_ptr<const Compiled> ofLiteral(StringView pattern, Options options) {
    auto compiled = std::make_shared<Compiled>();
    compiled->pattern = pattern;
    compiled->options = options;
    compiled->literal.emplace(pattern, options == Options::CaseInsensitiveLiteral);
    return compiled;
  }
  static std::shared_ptr<const Compiled> compile(StringView pattern, Options options, PatternError& error);
  class Cache;
  class Search;
};

/// One call of a compiled expression on a text that it borrows.
class NSRegularExpression::Compiled::Search {
 public:
  Search(const Compiled& compiled, StringView text, NSRange range)
      : compiled_(compiled), text_(text.sub(0, range.end())), literal_{range.location, 0} {
    if (compiled.literal) return;
    if (compiled.prefix) {
      // Most texts do not hold what every match begins with, and ICU need not be asked.
      candidate_ = compiled.prefix->next(text_, range.location);
      if (!candidate_) return;
      byPrefix_ = range == NSRange{0, text.size()};
    }
    matcher_ = text.size() <= INT32_MAX ? compiled.take() : nullptr;
    if (!matcher_ && text.size() <= INT32_MAX) matcher_ = clone();
    if (!matcher_) {
      status_ = U_MEMORY_ALLOCATION_ERROR;
      return;
    }
    URegularExpression* matcher = matcher_.get();
    deadline_.start();
    uregex_setStackLimit(matcher, limits::kRegularExpressionBytes, &status_);
    uregex_setMatchCallback(matcher, Deadline::whileMatching, &deadline_, &status_);
    uregex_setFindProgressCallback(matcher, Deadline::whileFinding, &deadline_, &status_);
    if (compiled.hasBackReference && text.size() > kShortText) {
      guarded_.emplace(text, Deadline::whileReading, &deadline_);
      uregex_setUText(matcher, guarded_->text(), &status_);
    } else {
      uregex_setText(matcher, text.isEmpty() ? u"" : text.data(), static_cast<std::int32_t>(text.size()), &status_);
    }
    if (range != NSRange{0, text.size()}) {
      uregex_setRegion64(matcher, static_cast<std::int64_t>(range.location), static_cast<std::int64_t>(range.end()),
                         &status_);
    }
  }
  Search(const Search&) = delete;
  Search& operator=(const Search&) = delete;
  ~Search() {
    if (!matcher_ || failed()) return;
    UErrorCode status = U_ZERO_ERROR;
    uregex_setText(matcher_.get(), u"", 0, &status);
    uregex_setMatchCallback(matcher_.get(), nullptr, nullptr, &status);
    uregex_setFindProgressCallback(matcher_.get(), nullptr, nullptr, &status);
    uregex_setStackLimit(matcher_.get(), kIdleBytes, &status);
    if (U_SUCCESS(status)) compiled_.giveBack(std::move(matcher_));
  }

  /// False at the end and when a limit was reached.
  [[nodiscard]] bool next() {
    if (compiled_.literal) return nextLiteral();
    if ((compiled_.prefix && !candidate_) || failed()) return false;
    if (deadline_.isOverNowAndThen()) return stop();
    if (byPrefix_) return nextByPrefix();
    const bool found = uregex_findNext(matcher_.get(), &status_) != 0;
    if (deadline_.wasOver()) return stop();
    return found && !failed();
  }
  [[nodiscard]] NSRange group(std::size_t number) {
    if (compiled_.literal) return literal_;
    const auto index = static_cast<std::int32_t>(number);
    const std::int64_t start = uregex_start64(matcher_.get(), index, &status_);
    const std::int64_t end = uregex_end64(matcher_.get(), index, &status_);
    if (start < 0 || end < start) return NSRange::notFound();
    return {static_cast<std::uint64_t>(start), static_cast<std::uint64_t>(end - start)};
  }
  [[nodiscard]] bool failed() const { return U_FAILURE(status_) != 0; }
  /// Gives up, as if ICU had.
  bool stop() {
    status_ = U_REGEX_STOPPED_BY_CALLER;
    return false;
  }

  /// Says how the call ended, and logs a limit once. True when complete.
  bool report(Outcome* outcome) const {
    if (outcome) *outcome = failed() ? Outcome::LimitReached : Outcome::Complete;
    if (!failed()) return true;
    log(LogLevel::Warning, std::string("NSRegularExpression: no match, a limit was reached: ") + u_errorName(status_));
    return false;
  }

 private:
  [[nodiscard]] ICUExpression clone() const {
    UErrorCode status = U_ZERO_ERROR;
    ICUExpression result(uregex_clone(compiled_.master.get(), &status));
    return U_SUCCESS(status) ? std::move(result) : nullptr;
  }

  bool nextLiteral() {
    const std::optional<NSRange> match = compiled_.literal->next(text_, literal_.end());
    if (match) literal_ = *match;
    return match.has_value();
  }

  /// Tries the places of the prefix only.
  bool nextByPrefix() {
    for (std::uint64_t from = 0; candidate_; candidate_ = compiled_.prefix->next(text_, from)) {
      if (deadline_.isOverNowAndThen()) return stop();
      const auto place = static_cast<std::int64_t>(candidate_->location);
      const bool found = uregex_lookingAt64(matcher_.get(), place, &status_) != 0;
      if (deadline_.wasOver()) return stop();
      if (failed()) return false;
      if (found) {
        candidate_ = compiled_.prefix->next(text_, static_cast<std::size_t>(uregex_end64(matcher_.get(), 0, &status_)));
        return true;
      }
      from = candidate_->location + 1;
    }
    return false;
  }

  const Compiled& compiled_;
  StringView text_;
  NSRange literal_;                   // the match of a literal
  std::optional<NSRange> candidate_;  // the next place of the prefix
  bool byPrefix_ = false;
  Deadline deadline_;
  std::optional<GuardedText> guarded_;
  ICUExpression matcher_;
  UErrorCode status_ = U_ZERO_ERROR;
};

/// The patterns compiled last, for all threads. The most recently used stands first.
class NSRegularExpression::Compiled::Cache {
 public:
  static Cache& shared() {
    static Cache cache;
    return cache;
  }

  [[nodiscard]] std::shared_ptr<const Compiled> find(std::uint64_t hash, StringView wanted, Options how) {
    const std::scoped_lock lock(mutex_);
    const auto place = std::find_if(entries_.begin(), entries_.end(), [&](const Kept& entry) {
      return entry.hash == hash && entry.compiled->options == how && StringView(entry.compiled->pattern) == wanted;
    });
    if (place == entries_.end()) return nullptr;
    std::rotate(entries_.begin(), place, place + 1);
    return entries_.front().compiled;
  }
  void insert(std::uint64_t hash, std::shared_ptr<const Compiled> compiled) {
    Kept dropped{hash, std::move(compiled)};  // what leaves is destroyed after the lock
    const std::scoped_lock lock(mutex_);
    if (entries_.size() < limits::kRegularExpressionCache) entries_.emplace_back();
    std::rotate(entries_.begin(), entries_.end() - 1, entries_.end());
    std::swap(entries_.front(), dropped);
  }

 private:
  struct Kept {
    std::uint64_t hash = 0;
    std::shared_ptr<const Compiled> compiled;
  };

  std::mutex mutex_;
  std::vector<Kept> entries_;
};

std::shared_ptr<const NSRegularExpression::Compiled> NSRegularExpression::Compiled::compile(StringView pattern,
                                                                                            Options options,
                                                                                            PatternError& error) {
  UParseError place{};
  UErrorCode status = U_ZERO_ERROR;
  const std::uint32_t flags = options == Options::CaseInsensitive ? std::uint32_t{UREGEX_CASE_INSENSITIVE} : 0U;
  ICUExpression master(uregex_open(pattern.data(), static_cast<std::int32_t>(pattern.size()), flags, &place, &status));
  if (U_FAILURE(status)) {
    error = {unitOffset(pattern, place), u_errorName(status)};
    return nullptr;
  }
  auto compiled = std::make_shared<Compiled>();
  compiled->pattern = pattern;
  compiled->options = options;
  compiled->groupCount = static_cast<std::size_t>(uregex_groupCount(master.get(), &status));
  compiled->hasBackReference = PatternTraits(pattern).hasBackReference();
  compiled->master = std::move(master);
  const String prefix = literalPrefix(pattern);
  if (prefix.size() > 1) compiled->prefix.emplace(prefix, options == Options::CaseInsensitive);
  return compiled;
}

std::optional<NSRegularExpression> NSRegularExpression::withPattern(StringView pattern, Options options,
                                                                    PatternError* error) {
  PatternError ignored;
  PatternError& reason = error ? *error : ignored;
  if (pattern.isEmpty()) {
    reason = {0, pattern.isNil() ? "the pattern is nil" : "the pattern is empty"};
    return nil;
  }
  if (pattern.size() > limits::kRegularExpressionPattern) {
    reason = {limits::kRegularExpressionPattern, "the pattern is too long"};
    return nil;
  }
  if (isLiteral(options)) return NSRegularExpression(Compiled::ofLiteral(pattern, options));
  const std::uint64_t hash = hashing::bytes(pattern.data(), pattern.size() * sizeof(char16_t));
  auto compiled = Compiled::Cache::shared().find(hash, pattern, options);
  if (!compiled) {
    if (PatternTraits(pattern).isTooCostly()) {
      reason = {0, "the pattern is too costly"};
      return nil;
    }
    compiled = Compiled::compile(pattern, options, reason);
    if (!compiled) return nil;
    Compiled::Cache::shared().insert(hash, compiled);
  }
  return NSRegularExpression(std::move(compiled));
}

const String& NSRegularExpression::pattern() const { return compiled_->pattern; }
std::size_t NSRegularExpression::groupCount() const { return compiled_->groupCount; }

std::vector<NSRegularExpression::Match> NSRegularExpression::matches(StringView text, Outcome* outcome) const {
  std::vector<Match> result;
  Compiled::Search search(*compiled_, text, {0, text.size()});
  const std::size_t bytesOfMatch = sizeof(Match) + (groupCount() + 1) * sizeof(NSRange);
  const std::size_t most = limits::kRegularExpressionMatchBytes / bytesOfMatch;
  while (search.next()) {
    if (result.size() == most && !search.stop()) break;
    Match& match = result.emplace_back(groupCount() + 1);
    for (std::size_t i = 0; i < match.size(); ++i) match[i] = search.group(i);
  }
  if (!search.report(outcome)) result.clear();
  return result;
}

std::vector<NSRange> NSRegularExpression::matchRanges(StringView text, Outcome* outcome) const {
  return groupRanges(text, 0, outcome);
}

std::vector<NSRange> NSRegularExpression::groupRanges(StringView text, std::size_t group, Outcome* outcome) const {
  std::vector<NSRange> result;
  Compiled::Search search(*compiled_, text, {0, text.size()});
  while (search.next()) result.push_back(search.group(group));
  if (!search.report(outcome)) result.clear();
  return result;
}

bool NSRegularExpression::hasMatch(StringView text, Outcome* outcome) const {
  Compiled::Search search(*compiled_, text, {0, text.size()});
  const bool found = search.next();
  return search.report(outcome) && found;
}

std::optional<NSRange> NSRegularExpression::firstMatch(StringView text, NSRange range) const {
  Compiled::Search search(*compiled_, text, range.clippedTo(text.size()));
  const bool found = search.next();
  if (!search.report(nullptr) || !found) return nil;
  return search.group(0);
}

String NSRegularExpression::replacingMatches(StringView text, StringView replacementTemplate) const {
  const ReplacementTemplate expansion(replacementTemplate, groupCount());
  StringBuilder out;
  std::size_t from = 0;
  Compiled::Search search(*compiled_, text, {0, text.size()});
  while (search.next()) {
    const NSRange match = search.group(0);
    out.append(text.sub(from, match.location - from));
    expansion.expand(out, [&](std::size_t number) {
      const NSRange range = search.group(number);
      return range.isFound() ? text.sub(range.location, range.length) : StringView(u"");
    });
    from = match.end();
    if (out.size() > limits::kFormatLength && !search.stop()) break;
  }
  if (!search.report(nullptr) || (from == 0 && out.size() == 0)) return String(text);
  out.append(text.sub(from));
  return out.finish();
}

String NSRegularExpression::escapedPattern(StringView text) {
  static constexpr std::u16string_view kMetacharacters = u"*?+[(){}^$|\\./";
  StringBuilder out;
  out.reserve(text.size() + 8);
  for (const char16_t unit : text.units()) {
    if (unit < 128 && kMetacharacters.find(unit) != std::u16string_view::npos) out.append(u'\\');
    out.append(unit);
  }
  return out.finish();
}

}  // namespace quorvel
