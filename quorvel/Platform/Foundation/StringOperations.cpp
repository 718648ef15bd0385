#include <algorithm>

#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Platform/Foundation/PlainUnits.h>
#include <quorvel/Platform/Foundation/StringOperations.h>

namespace quorvel {
namespace {

using vector::Units;

/// Calls `piece(view)` for each piece between members of the set.
template <class Piece>
void forEachPiece(StringView text, const NSCharacterSet& set, Piece piece) {
  std::size_t start = 0;
  while (true) {
    std::size_t length = 0;
    const std::size_t found = set.find(text, start, length);
    piece(text.sub(start, found - start));
    if (found == text.size()) return;
    start = found + length;
  }
}

String ownedOr(const String* owner, StringView text) { return owner ? *owner : String(text); }

/// Lower case where it is one unit for one and has no conditions.
struct PlainLower {
  static constexpr bool kKeepsSmall = true;  // ASCII but for its capitals, syllables and ideographs
  template <class UnitOrUnits>
  [[nodiscard]] static UnitOrUnits map(UnitOrUnits units) {
    return plain::SimpleFold::fold(units);
  }
  [[nodiscard]] static bool has(char16_t unit) { return unit < 0x100 || plain::isInPlainRanges(unit); }
  [[nodiscard]] static Units has(Units units) {
    const Units latin = atMost(units, Units::splat(0xFF));
    return latin.lanesSet().all() ? latin : plain::orInPlainRanges(latin, units);
  }
  /// Maps all scalars at the start that are not plain.
  [[nodiscard]] static std::size_t mapOthers(StringView text, StringBuilder& out) {
    std::size_t end = 0;
    while (end < text.size() && !has(text[end])) {
      const char32_t scalar = unicode::nextScalar(text, end);
      if (scalar == 0x130) {  // the one small form of two units, without regard to a final sigma
        out.append(u"i\u0307");
      } else {
        out.appendScalar(static_cast<char32_t>(u_tolower(static_cast<UChar32>(scalar))));
      }
    }
    return end;
  }
};

/// Upper case where it is one unit for one.
struct PlainUpper {
  static constexpr bool kKeepsSmall = false;
  [[nodiscard]] static char16_t map(char16_t unit) { return plain::SimpleFold::other(unit); }
  [[nodiscard]] static Units map(Units units) {
    const Units by20 = vector::inRange(units, u'a', 25) | vector::inRange(units, 0x430, 0x1F) |
                       (vector::inRange(units, 0xE0, 0x1E) - equal(units, Units::splat(0xF7)));
    return units - (by20 & Units::splat(0x20)) - (vector::inRange(units, 0x450, 0x0F) & Units::splat(0x50));
  }
  [[nodiscard]] static bool has(char16_t unit) { return plain::Caseless::has(unit) && unit != 0xFF; }
  [[nodiscard]] static Units has(Units units) {
    const Units latin = atMost(units, Units::splat(0x7F));
    if (latin.lanesSet().all()) return latin;
    return plain::Caseless::has(units) - equal(units, Units::splat(0xFF));
  }
  [[nodiscard]] static std::size_t mapOthers(StringView text, StringBuilder& out) {
    std::size_t end = 0;
    while (end < text.size() && !has(text[end])) static_cast<void>(unicode::nextScalar(text, end));
    contract(end <= INT32_MAX / 3, "uppercased", "a text of more than 2^29 units");
    const std::size_t start = out.size();
    char16_t* place = out.extend(end * 3);  // no scalar has more than three capitals
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t size = u_strToUpper(place, static_cast<std::int32_t>(end * 3), text.data(),
                                           static_cast<std::int32_t>(end), "", &status);
    out.truncate(start + static_cast<std::size_t>(size));
    return end;
  }
};

/// Maps plain units up to the first that is none; their number.
template <class Map>
std::size_t mapPlain(StringView text, StringBuilder& out) {
  char16_t* place = out.extend(text.size());
  std::size_t i = 0;
  for (; i + vector::kLanes <= text.size(); i += vector::kLanes) {
    const Units units = Units::load(text.data() + i);
    if (!Map::has(units).lanesSet().all()) break;
    Map::map(units).store(place + i);
  }
  for (; i < text.size() && Map::has(text[i]); ++i) place[i] = Map::map(text[i]);
  out.truncate(out.size() - (text.size() - i));
  return i;
}

template <class Map>
String mapCase(StringView text, const String* owner) {
  const bool isWide = Map::kKeepsSmall && text.size() >= wide::kWorthwhile && wide::isAvailable();
  const std::size_t lower = isWide ? wide::leadingCommon(text.data(), text.size(), true) : 0;
  const std::size_t same =
      lower + unitscan::leading(
                  text.sub(lower), [](Units units) { return Map::has(units) & equal(Map::map(units), units); },
                  [](char16_t unit) { return Map::has(unit) && Map::map(unit) == unit; });
  if (same == text.size()) return ownedOr(owner, text);
  StringBuilder out;
  out.reserve(text.size());
  out.append(text.sub(0, same));
  for (std::size_t done = same; done < text.size();) {
    done += mapPlain<Map>(text.sub(done), out);
    done += Map::mapOthers(text.sub(done), out);
  }
  return out.finish();
}

/// Lower case with regard to what stands around a capital sigma, whose small form differs at the end of a word.
String lowercasedWithSigma(StringView text) {
  contract(text.size() <= INT32_MAX / 2, "lowercased", "a text of more than 2^30 units");
  const std::size_t capacity = text.size() * 2;
  return String::build(capacity, [&](char16_t* out) {
    UErrorCode status = U_ZERO_ERROR;
    return static_cast<std::size_t>(u_strToLower(out, static_cast<std::int32_t>(capacity), text.data(),
                                                 static_cast<std::int32_t>(text.size()), "", &status));
  });
}

/// Units that are no part of a larger cluster where two of them stand side by side (UAX #29): their property
/// Grapheme_Cluster_Break is Other, Control, LV or LVT.
struct ClusterAlone {
  static constexpr plain::UnitRange kRanges[] = {{0x400, 0x482},   {0x2010, 0x2027}, {0x3000, 0x3029},
                                                 {0x3030, 0x3098}, {0x309B, 0xA4CF}, {0xAC00, 0xD7A3}};

  [[nodiscard]] static bool has(char16_t unit) {
    if (unit < 0x300) return unit != u'\r' && unit != u'\n';
    return std::ranges::any_of(kRanges, [unit](auto range) { return unit >= range.first && unit <= range.last; });
  }
  [[nodiscard]] static Units has(Units units) {
    const Units breaks = equal(units, Units::splat(u'\r')) | equal(units, Units::splat(u'\n'));
    Units result = (atMost(units, Units::splat(0x2FF)) - breaks) | unitscan::syllablesOrIdeographs(units);
    if (result.lanesSet().all()) return result;
    for (const auto [first, last] : kRanges) {
      result = result | vector::inRange(units, first, static_cast<char16_t>(last - first));
    }
    return result;
  }
};

/// The end of the part at the start that is given to the iterator: before it and after it stand units alone, enough of
/// them for the switch to pay.
std::size_t endOfClusters(StringView text) {
  constexpr std::size_t kWorthwhile = 16;
  std::size_t alone = 0;
  std::size_t end = 0;
  while (end < text.size() && alone < kWorthwhile) alone = ClusterAlone::has(text[end++]) ? alone + 1 : 0;
  return end < text.size() ? end - 1 : end;
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

namespace {

/// Calls `found(place)` for every place of the unit.
template <class Found>
void forEachPlace(StringView text, char16_t unit, Found found) {
  std::size_t block = 0;
  for (; block + vector::kBlock <= text.size(); block += vector::kBlock) {
    for (std::uint32_t places = vector::placesInBlock(text.data() + block, unit); places != 0; places &= places - 1) {
      found(block + static_cast<std::size_t>(std::countr_zero(places)));
    }
  }
  for (; block < text.size(); ++block) {
    if (text[block] == unit) found(block);
  }
}

std::size_t countOfUnit(StringView text, char16_t unit) {
  std::size_t count = 0;
  std::size_t block = 0;
  for (; block + vector::kBlock <= text.size(); block += vector::kBlock) {
    count += static_cast<std::size_t>(std::popcount(vector::placesInBlock(text.data() + block, unit)));
  }
  return count + static_cast<std::size_t>(std::count(text.begin() + block, text.end(), unit));
}

std::vector<StringView> componentsSeparatedByUnit(StringView text, char16_t unit) {
  std::vector<StringView> pieces;
  pieces.reserve(countOfUnit(text, unit) + 1);
  std::size_t start = 0;
  forEachPlace(text, unit, [&](std::size_t place) {
    pieces.push_back(text.sub(start, place - start));
    start = place + 1;
  });
  pieces.push_back(text.sub(start));
  return pieces;
}

}  // namespace

std::vector<StringView> componentsSeparatedBy(StringView text, StringView separator) {
  if (separator.size() == 1 && !text.isNil()) return componentsSeparatedByUnit(text, separator[0]);
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
      if (i > 0) out = unitscan::copyUnits(out, separator);
      out = unitscan::copyUnits(out, pieces[i]);
    }
    return size;
  });
}

String detail::replacingOccurrences(StringView text, const String* owner, StringView target, StringView replacement) {
  std::size_t found = target.isEmpty() ? unicode::kInvalid : unicode::findLiteral(text, target);
  if (found == unicode::kInvalid) return ownedOr(owner, text);
  StringBuilder out;
  out.reserve(text.size());
  std::size_t start = 0;
  for (; found != unicode::kInvalid; found = unicode::findLiteral(text, target, start)) {
    const std::size_t kept = found - start;
    char16_t* place = out.extend(kept + replacement.size());
    unitscan::copyUnits(unitscan::copyUnits(place, text.sub(start, kept)), replacement);
    start = found + target.size();
  }
  out.append(text.sub(start));
  return out.finish();
}

String replacingOccurrences(StringView text, StringView target, StringView replacement) {
  return detail::replacingOccurrences(text, nullptr, target, replacement);
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

String detail::lowercased(StringView text, const String* owner) {
  constexpr char16_t kCapitalSigma = 0x3A3;
  if (unitscan::hasInRange(text, kCapitalSigma, 0)) return lowercasedWithSigma(text);
  return mapCase<PlainLower>(text, owner);
}
String detail::uppercased(StringView text, const String* owner) { return mapCase<PlainUpper>(text, owner); }

String lowercased(StringView text) { return detail::lowercased(text, nullptr); }
String uppercased(StringView text) { return detail::uppercased(text, nullptr); }

std::size_t countOfClusters(StringView text) {
  contract(text.size() <= INT32_MAX, "countOfClusters", "a text of more than 2^31 units");
  std::size_t clusters = 0;
  while (!text.isEmpty()) {
    const std::size_t alone = plain::leading<ClusterAlone>(text);
    if (alone == text.size()) return clusters + alone;
    // The last of them may be the base of what follows.
    const std::size_t sure = alone > 0 ? alone - 1 : 0;
    const StringView rest = text.sub(sure);
    const std::size_t end = endOfClusters(rest);
    clusters += sure + countByIterator(rest.sub(0, end));
    text = rest.sub(end);
  }
  return clusters;
}

}  // namespace quorvel
