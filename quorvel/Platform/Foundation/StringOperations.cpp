#include <algorithm>

#include <unicode/ubrk.h>
#include <unicode/ustring.h>

#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Platform/Foundation/StringOperations.h>
#include <quorvel/Platform/Foundation/UnitScan.h>

namespace quorvel {
namespace {

using unitscan::isSyllableOrIdeograph;
using vector::Units;

/// Calls `piece(begin, end)` for each piece between members of the set.
template <class Piece>
void forEachPiece(StringView text, const NSCharacterSet& set, Piece piece) {
  std::size_t start = 0;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t at = i;
    if (!set.contains(unicode::nextScalar(text, i))) continue;
    piece(text.sub(start, at - start));
    start = i;
  }
  piece(text.sub(start));
}

constexpr bool isASCII(char16_t unit) { return unit < 0x80; }

/// Maps ASCII letters and copies what has no case; the number of units done before the first that needs more.
template <char16_t kFirst>
std::size_t mapSimpleCase(StringView text, char16_t* out) {
  const auto map = [](char16_t unit) {
    const bool isLetter = unit >= kFirst && unit < kFirst + 26;
    return static_cast<char16_t>(isLetter ? unit ^ 0x20 : unit);
  };
  std::size_t i = 0;
  for (; i + vector::kLanes <= text.size(); i += vector::kLanes) {
    const Units units = Units::load(text.data() + i);
    const Units simple = atMost(units, Units::splat(0x7F)) | unitscan::syllablesOrIdeographs(units);
    if (!simple.lanesSet().all()) break;
    const Units flip = vector::inRange(units, kFirst, 25) & Units::splat(0x20);
    (kFirst == u'A' ? units + flip : units - flip).store(out + i);
  }
  for (; i < text.size() && (isASCII(text[i]) || isSyllableOrIdeograph(text[i])); ++i) out[i] = map(text[i]);
  return i;
}

using CaseMapping = int32_t (*)(UChar*, int32_t, const UChar*, int32_t, const char*, UErrorCode*);

String mapFullCase(StringView text, CaseMapping mapping) {
  UErrorCode status = U_ZERO_ERROR;
  const auto size = static_cast<int32_t>(text.size());
  const int32_t needed = mapping(nullptr, 0, text.data(), size, "", &status);
  return String::build(static_cast<std::size_t>(needed), [&](char16_t* out) {
    status = U_ZERO_ERROR;
    mapping(out, needed, text.data(), size, "", &status);
    return static_cast<std::size_t>(needed);
  });
}

template <char16_t kFirst>
String mapCase(StringView text, CaseMapping mapping, const char* operation) {
  std::size_t done = 0;
  String simple = String::build(text.size(), [&](char16_t* out) { return done = mapSimpleCase<kFirst>(text, out); });
  if (done == text.size()) return simple;
  contract(text.size() <= INT32_MAX, operation, "a text of more than 2^31 units");
  return mapFullCase(text, mapping);
}

/// Units between two of which there is always a cluster boundary (UAX #29): ASCII but CR and LF, syllables, ideographs.
constexpr bool isClusterAlone(char16_t unit) {
  return (isASCII(unit) && unit != u'\r' && unit != u'\n') || isSyllableOrIdeograph(unit);
}
Units areClustersAlone(Units units) {
  const Units breaks = equal(units, Units::splat(u'\r')) | equal(units, Units::splat(u'\n'));
  return (atMost(units, Units::splat(0x7F)) - breaks) | unitscan::syllablesOrIdeographs(units);
}

/// Each thread opens one iterator, on its first text that needs it.
class ClusterIterator {
 public:
  ClusterIterator() {
    UErrorCode status = U_ZERO_ERROR;
    iterator_ = ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status);
  }
  ClusterIterator(const ClusterIterator&) = delete;
  ClusterIterator& operator=(const ClusterIterator&) = delete;
  ~ClusterIterator() { ubrk_close(iterator_); }

  [[nodiscard]] std::size_t count(StringView text) {
    UErrorCode status = U_ZERO_ERROR;
    ubrk_setText(iterator_, text.data(), static_cast<int32_t>(text.size()), &status);
    std::size_t clusters = 0;
    while (ubrk_next(iterator_) != UBRK_DONE) ++clusters;
    return clusters;
  }

 private:
  UBreakIterator* iterator_ = nullptr;
};

std::size_t countByIterator(StringView text) {
  thread_local ClusterIterator iterator;
  return iterator.count(text);
}

}  // namespace

StringView trimmed(StringView text, const NSCharacterSet& set) {
  std::size_t start = 0;
  while (start < text.size()) {
    std::size_t next = start;
    if (!set.contains(unicode::nextScalar(text, next))) break;
    start = next;
  }
  std::size_t end = text.size();
  while (end > start) {
    std::size_t before = end;
    if (!set.contains(unicode::previousScalar(text, before))) break;
    end = before;
  }
  return text.isNil() ? text : text.sub(start, end - start);
}

StringView trimmedOfWhitespace(StringView text) {
  if (text.isNil()) return text;
  std::size_t start = 0;
  std::size_t end = text.size();
  while (start < end && isWhitespaceOrNewline(text[start])) ++start;
  while (end > start && isWhitespaceOrNewline(text[end - 1])) --end;
  return text.sub(start, end - start);
}

bool isBlankText(StringView text) {
  return std::ranges::all_of(text.units(), [](char16_t unit) { return isWhitespaceOrNewline(unit); });
}

std::vector<StringView> componentsSeparatedBy(StringView text, const NSCharacterSet& set) {
  std::vector<StringView> pieces;
  forEachPiece(text, set, [&pieces](StringView piece) { pieces.push_back(piece); });
  return pieces;
}

std::vector<StringView> componentsSeparatedBy(StringView text, StringView separator) {
  std::vector<StringView> pieces;
  std::size_t start = 0;
  while (!separator.isEmpty()) {
    const std::size_t found = unicode::findLiteral(text, separator, start);
    if (found == unicode::kInvalid) break;
    pieces.push_back(text.sub(start, found - start));
    start = found + separator.size();
  }
  pieces.push_back(text.sub(start));
  return pieces;
}

String joined(const std::vector<StringView>& pieces, StringView separator) {
  if (pieces.empty()) return {};
  std::size_t size = separator.size() * (pieces.size() - 1);
  for (const StringView piece : pieces) size += piece.size();
  return String::build(size, [&](char16_t* out) {
    for (std::size_t i = 0; i < pieces.size(); ++i) {
      if (i > 0) out = std::ranges::copy(separator.units(), out).out;
      out = std::ranges::copy(pieces[i].units(), out).out;
    }
    return size;
  });
}

String replacingOccurrences(StringView text, StringView target, StringView replacement) {
  std::size_t found = target.isEmpty() ? unicode::kInvalid : unicode::findLiteral(text, target);
  if (found == unicode::kInvalid) return String(text);
  StringBuilder out;
  out.reserve(text.size());
  std::size_t start = 0;
  for (; found != unicode::kInvalid; found = unicode::findLiteral(text, target, start)) {
    out.append(text.sub(start, found - start));
    out.append(replacement);
    start = found + target.size();
  }
  out.append(text.sub(start));
  return out.finish();
}

String replacingCharacters(const String& text, const NSCharacterSet& set, StringView replacement) {
  StringBuilder out;
  bool first = true;
  forEachPiece(text, set, [&](StringView piece) {
    if (first && piece.size() == text.size()) return;  // nothing to replace, nothing to copy
    if (!std::exchange(first, false)) out.append(replacement);
    out.append(piece);
  });
  return first ? text : out.finish();
}

String lowercased(StringView text) { return mapCase<u'A'>(text, u_strToLower, "lowercased"); }
String uppercased(StringView text) { return mapCase<u'a'>(text, u_strToUpper, "uppercased"); }

std::size_t countOfClusters(StringView text) {
  contract(text.size() <= INT32_MAX, "countOfClusters", "a text of more than 2^31 units");
  std::size_t clusters = 0;
  while (!text.isEmpty()) {
    const std::size_t alone = unitscan::leading(text, areClustersAlone, isClusterAlone);
    if (alone == text.size()) return clusters + alone;
    // The last of them may be the base of what follows.
    const std::size_t sure = alone > 0 ? alone - 1 : 0;
    clusters += sure;
    text = text.sub(sure);
    // Up to the next two that stand alone side by side, between which there is a boundary.
    std::size_t end = std::min<std::size_t>(text.size(), 1);
    while (end < text.size() && !(isClusterAlone(text[end - 1]) && isClusterAlone(text[end]))) ++end;
    if (end < 2 && text.size() > 1) end = 2;
    while (end < text.size() && !(isClusterAlone(text[end - 1]) && isClusterAlone(text[end]))) ++end;
    clusters += countByIterator(text.sub(0, end));
    text = text.sub(end);
  }
  return clusters;
}

}  // namespace quorvel
