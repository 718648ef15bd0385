#include <apps/quorvel/Results.h>

#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel::command {
namespace {

constexpr char32_t kScalarEnd = 0x110000;

struct Run {
  char32_t from;
  char32_t end;
};

/// The runs of members and of all other scalars; surrogates, which are neither, part no run.
struct Runs {
  explicit Runs(const NSCharacterSet& set) {
    bool isMember = set.contains(0);
    char32_t from = 0;
    for (char32_t scalar = 1; scalar <= kScalarEnd; ++scalar) {
      if (scalar == 0xD800) scalar = 0xE000;
      if (scalar < kScalarEnd && set.contains(scalar) == isMember) continue;
      (isMember ? members : others).push_back({from, scalar});
      (isMember ? memberCount : otherCount) += scalar - from;
      from = scalar;
      isMember = !isMember;
    }
  }

  std::vector<Run> members;
  std::vector<Run> others;
  std::size_t memberCount = 0;
  std::size_t otherCount = 0;
};

String charactersOf(const std::vector<Run>& runs) {
  StringBuilder text;
  for (const Run& run : runs) {
    for (char32_t scalar = run.from; scalar < run.end; ++scalar) {
      if (!unicode::isSurrogate(scalar)) text.appendScalar(scalar);
    }
  }
  return text.finish();
}

Value characterSetToWire(const NSCharacterSet& set) {
  const Runs runs(set);
  if (runs.memberCount <= runs.otherCount) return Dictionary{{u"$characters", charactersOf(runs.members)}};
  return Dictionary{{u"$excluded", charactersOf(runs.others)}};
}

}  // namespace

std::optional<Value> resultToWire(const UIColor& color) { return toWire(colorComponents(color)); }

std::optional<Value> resultToWire(NSIndexPath path) { return Value(List{path.section, path.item}); }

std::optional<Value> resultToWire(const Difference& difference) {
  const std::optional<Value> pointer = toWire(difference.pointer);
  const std::optional<Value> first = toWire(difference.first);
  const std::optional<Value> second = toWire(difference.second);
  if (!pointer || !first || !second) return std::nullopt;
  return Value(Dictionary{{u"pointer", *pointer}, {u"first", *first}, {u"second", *second}});
}

std::optional<Value> resultToWire(const PatternResult& result) {
  static constexpr StringView kOutcomes[] = {u"match", u"no match", u"bad pattern", u"limit reached"};
  Dictionary wire{{u"outcome", kOutcomes[static_cast<std::size_t>(result.outcome)]}};
  if (result.outcome == PatternOutcome::BadPattern) {
    wire.set(u"offset", result.offset);
    wire.set(u"reason", String::fromUTF8Replacing(result.reason));
  }
  return Value(wire);
}

std::optional<Value> resultToWire(NSRange range) { return Value(List{range.location, range.length}); }

std::optional<Value> resultToWire(const NSURL& url) { return Value(url.absoluteString()); }

std::optional<Value> resultToWire(const NSCharacterSet& set) {
  // A million scalars are asked, so a set that comes again, as the standard ones do, is answered from memory.
  static thread_local std::optional<std::pair<NSCharacterSet, Value>> last;
  if (!last || last->first != set) last.emplace(set, characterSetToWire(set));
  return last->second;
}

}  // namespace quorvel::command
