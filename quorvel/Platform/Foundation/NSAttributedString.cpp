#include <algorithm>

#include <quorvel/Platform/Foundation/Description.h>
#include <quorvel/Platform/Foundation/NSAttributedString.h>

namespace quorvel {
namespace {

/// Appends a span, or lengthens the last one when it has the same attributes.
void appendSpan(std::vector<Span>& spans, NSRange range, const Attributes& attributes) {
  if (range.length == 0) return;
  if (!spans.empty() && spans.back().attributes == attributes) {
    spans.back().range.length += range.length;
  } else {
    spans.push_back({range, attributes});
  }
}

/// Gives some attributes to ranges of spans. Neighbouring spans often share one dictionary, so that of the last span
/// is kept beside its result.
class Painter {
 public:
  explicit Painter(const Attributes& added) : added_(added) {}

  /// Appends the spans to `out` with the attributes added inside the ranges, which ascend and lie inside the text.
  void paint(const std::vector<Span>& spans, const std::vector<NSRange>& ranges, std::vector<Span>& out) {
    out.reserve(spans.size() + 2 * ranges.size());
    auto range = ranges.begin();
    for (const Span& span : spans) {
      std::uint64_t at = span.range.location;
      const std::uint64_t end = span.range.end();
      while (at < end) {
        while (range != ranges.end() && range->end() <= at) ++range;
        const bool isInside = range != ranges.end() && range->location <= at;
        const std::uint64_t border = range == ranges.end() ? end : isInside ? range->end() : range->location;
        const std::uint64_t next = std::min(border, end);
        appendSpan(out, {at, next - at}, isInside ? painted(span.attributes) : span.attributes);
        at = next;
      }
    }
  }

 private:
  const Attributes& painted(const Attributes& attributes) {
    if (hasLast_ && attributes.isSameAs(last_)) return painted_;
    last_ = attributes;
    hasLast_ = true;
    painted_ = attributes;
    for (const Entry& entry : added_) painted_.set(entry.key, entry.value);
    return painted_;
  }

  const Attributes& added_;
  Attributes last_;
  Attributes painted_;
  bool hasLast_ = false;
};

/// The ranges in ascending order, without what leaves the text and without gaps or overlaps between neighbours: all of
/// them get the same attributes, so that neither order nor overlap matters.
std::vector<NSRange> joinedRanges(const std::vector<NSRange>& ranges, std::size_t length) {
  std::vector<NSRange> inside;
  inside.reserve(ranges.size());
  for (const NSRange range : ranges) {
    const NSRange clipped = range.clippedTo(length);
    if (clipped.length > 0) inside.push_back(clipped);
  }
  const auto before = [](NSRange a, NSRange b) { return a.location < b.location; };
  if (!std::is_sorted(inside.begin(), inside.end(), before)) std::sort(inside.begin(), inside.end(), before);
  std::vector<NSRange> joined;
  joined.reserve(inside.size());
  for (const NSRange range : inside) {
    if (!joined.empty() && range.location <= joined.back().end()) {
      joined.back().length = std::max(joined.back().end(), range.end()) - joined.back().location;
    } else {
      joined.push_back(range);
    }
  }
  return joined;
}

}  // namespace

NSAttributedString::NSAttributedString(String text, Attributes attributes) : text_(std::move(text)) {
  if (!text_.isEmpty()) spans_.push_back({{0, text_.size()}, std::move(attributes)});
}

const Attributes& NSAttributedString::attributesAt(std::size_t index) const {
  static const Attributes none;
  const auto next = std::upper_bound(spans_.begin(), spans_.end(), index,
                                     [](std::size_t at, const Span& span) { return at < span.range.location; });
  return index < length() ? std::prev(next)->attributes : none;
}

String NSAttributedString::description() const {
  StringBuilder out;
  for (const Span& span : spans_) {
    out.append(StringView(text_).sub(span.range.location, span.range.length));
    out.append(quorvel::description(Value(span.attributes)));
  }
  return out.finish();
}

void NSMutableAttributedString::addAttribute(StringView name, const Value& value, NSRange range) {
  addAttributes(Attributes{{name, value}}, range);
}

void NSMutableAttributedString::addAttributes(const Attributes& attributes, NSRange range) {
  addAttributes(attributes, std::vector<NSRange>{range});
}

void NSMutableAttributedString::addAttributes(const Attributes& attributes, const std::vector<NSRange>& ranges) {
  const std::vector<NSRange> joined = joinedRanges(ranges, length());
  if (joined.empty() || attributes.isEmpty()) return;
  std::vector<Span> spans;
  Painter(attributes).paint(spans_, joined, spans);
  spans_ = std::move(spans);
}

void NSMutableAttributedString::append(const NSAttributedString& other) {
  const std::uint64_t offset = length();
  // `other` may be this text. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
  const std::vector<Span> added = other.spans();
  StringBuilder text;
  text.reserve(length() + other.length());
  text.append(text_);
  text.append(other.string());
  text_ = text.finish();
  for (const Span& span : added) appendSpan(spans_, {offset + span.range.location, span.range.length}, span.attributes);
}

}  // namespace quorvel
