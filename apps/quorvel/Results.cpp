#include <apps/quorvel/Results.h>

namespace quorvel::command {
namespace {

constexpr char32_t kScalarEnd = 0x110000;

/// The scalars for which `isListed` holds.
template <class Predicate>
String charactersOf(Predicate isListed) {
  StringBuilder text;
  for (char32_t scalar = 0; scalar < kScalarEnd; ++scalar) {
    if (scalar == 0xD800) scalar = 0xE000;
    if (isListed(scalar)) text.appendScalar(scalar);
  }
  return text.finish();
}

}  // namespace

std::optional<Value> resultToWire(const UIColor& color) { return toWire(colorComponents(color)); }

std::optional<Value> resultToWire(NSRange range) { return Value(List{range.location, range.length}); }

std::optional<Value> resultToWire(const NSCharacterSet& set) {
  String members = charactersOf([&set](char32_t scalar) { return set.contains(scalar); });
  if (members.size() < kScalarEnd / 2) return Value(Dictionary{{u"$characters", std::move(members)}});
  return Value(Dictionary{{u"$excluded", charactersOf([&set](char32_t scalar) { return !set.contains(scalar); })}});
}

}  // namespace quorvel::command
