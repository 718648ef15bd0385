#include <algorithm>

#include <quorvel/Extensions/Foundation/NSString+Additions+Cleaning.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>
#include <quorvel/Platform/Foundation/StringOperations.h>
#include <quorvel/Platform/Foundation/UnitScan.h>

namespace quorvel {
namespace {

using vector::Units;

/// The first place at or after `from` of a unit of the class, or the text's size.
template <class Class>
std::size_t findOf(StringView text, std::size_t from = 0) {
  for (; from + vector::kLanes <= text.size(); from += vector::kLanes) {
    const Units found = Class::has(Units::load(text.data() + from));
    if (!found.noneSet()) return from + found.lanesSet().first();
  }
  while (from < text.size() && !Class::has(text[from])) ++from;
  return from;
}

struct EmojiUnit {
  static constexpr char16_t kFirst = 0xD800;
  static constexpr char16_t kLast = 0xEFFF;
  static bool has(char16_t unit) { return unit >= kFirst && unit <= kLast; }
  static Units has(Units units) { return vector::inRange(units, kFirst, kLast - kFirst); }
};

/// What the JSON writer may not write as it is.
struct ScriptUnit {
  static bool has(char16_t unit) {
    return unit < 0x20 || unit == u'"' || unit == u'\\' || unit == u'/' || unicode::isSurrogate(unit);
  }
  static Units has(Units units) {
    return atMost(units, Units::splat(0x1F)) | equal(units, Units::splat(u'"')) | equal(units, Units::splat(u'\\')) |
           equal(units, Units::splat(u'/')) | vector::inRange(units, 0xD800, 0x7FF);
  }
};

/// The characters that markup reads: & < >. The last two differ in one bit.
struct MarkupUnit {
  static bool has(char16_t unit) { return unit == u'&' || (unit | 2) == u'>'; }
  static Units has(Units units) {
    return equal(units, Units::splat(u'&')) | equal(units | Units::splat(2), Units::splat(u'>'));
  }
};

struct Entity {
  char16_t unit;
  StringView text;
};
constexpr Entity kEntities[] = {{u'&', u"&amp;"}, {u'<', u"&lt;"}, {u'>', u"&gt;"}};

StringView entityFor(char16_t unit) {
  for (const Entity& entity : kEntities) {
    if (entity.unit == unit) return entity.text;
  }
  return u"";
}

/// How many units longer the text is when it is escaped.
std::size_t markupGrowth(StringView text) {
  std::size_t growth = 0;
  std::size_t i = 0;
  for (; i + vector::kLanes <= text.size(); i += vector::kLanes) {
    const Units units = Units::load(text.data() + i);
    const Units found = MarkupUnit::has(units);
    if (found.noneSet()) continue;
    growth += 3 * found.lanesSet().count() + equal(units, Units::splat(u'&')).lanesSet().count();
  }
  for (; i < text.size(); ++i) growth += text[i] == u'&' ? 4U : MarkupUnit::has(text[i]) ? 3U : 0U;
  return growth;
}

/// Writes the escaped text. A block is stored before it is looked at: as much room is left as there are units to come.
char16_t* writeMarkup(StringView text, char16_t* out) {
  for (std::size_t i = 0; i < text.size();) {
    if (i + vector::kLanes <= text.size()) {
      const Units units = Units::load(text.data() + i);
      units.store(out);
      const Units found = MarkupUnit::has(units);
      const std::size_t plain = found.noneSet() ? vector::kLanes : found.lanesSet().first();
      i += plain;
      out += plain;
      if (plain == vector::kLanes) continue;
    }
    const char16_t unit = text[i++];
    if (MarkupUnit::has(unit)) {
      out = std::copy_n(entityFor(unit).data(), entityFor(unit).size(), out);
    } else {
      *out++ = unit;
    }
  }
  return out;
}

/// The entity that the text begins with; its text is nil when there is none.
Entity leadingEntity(StringView text) {
  for (const Entity& entity : kEntities) {
    if (text.sub(0, entity.text.size()) == entity.text) return entity;
  }
  return {0, nil};
}

}  // namespace

String stringByRemovingNewLineCharacters(const String& text) {
  const std::size_t first = unicode::findUnit(text, u'\n');
  if (first == unicode::kInvalid) return text;
  return String::build(text.size(), [&](char16_t* out) {
    std::memcpy(out, text.data(), first * sizeof(char16_t));
    const char16_t* const units = text.data();
    const std::size_t size = text.size();
    for (std::size_t i = first; i < size; ++i) out[i] = units[i] == u'\n' ? u' ' : units[i];
    return size;
  });
}

StringView stringByTrimmingWhitespaces(StringView text) { return trimmedOfWhitespace(text); }

String stringByRemovingEmojiCharacters(const String& text) {
  const std::size_t first = findOf<EmojiUnit>(text);
  if (first == text.size()) return text;
  return String::build(text.size(), [&](char16_t* out) {
    std::memcpy(out, text.data(), first * sizeof(char16_t));
    std::size_t size = first;
    for (std::size_t i = first; i < text.size(); ++i) {
      out[size] = text[i];
      size += EmojiUnit::has(text[i]) ? 0U : 1U;
    }
    return size;
  });
}

String truncatedStringWithMaxLength(const String& text, std::uint64_t max) {
  if (text.size() <= max) return text;
  const StringView kept = StringView(text).sub(0, max);
  return String::build(kept.size() + 3, [&](char16_t* out) {
    std::memcpy(out, kept.data(), kept.size() * sizeof(char16_t));
    std::fill_n(out + kept.size(), 3, u'.');
    return kept.size() + 3;
  });
}

String qv_stringEscapedForJavasacript(const String& text) {
  if (findOf<ScriptUnit>(text) == text.size()) return text;
  const std::optional<String> json = NSJSONSerialization::write(List{text}, 0);
  return json ? String(StringView(*json).sub(2, json->size() - 4)) : text;
}

String qv_appendToEscapedSymbol(const String& text) {
  const std::size_t growth = markupGrowth(text);
  if (growth == 0) return text;
  return String::build(text.size() + growth,
                       [&](char16_t* out) { return static_cast<std::size_t>(writeMarkup(text, out) - out); });
}

String qv_removeToEscapedSymbol(const String& text) {
  const StringView view = text;
  const std::size_t first = unicode::findUnit(view, u'&');
  if (first == unicode::kInvalid) return text;
  const String result = String::build(text.size(), [&](char16_t* out) {
    char16_t* const begin = out;
    for (std::size_t i = 0; i < view.size();) {
      const std::size_t mark = std::min(unicode::findUnit(view, u'&', i), view.size());
      out = std::copy_n(view.data() + i, mark - i, out);
      i = mark;
      if (i == view.size()) break;
      const Entity entity = leadingEntity(view.sub(i));
      *out++ = entity.text.isNil() ? u'&' : entity.unit;
      i += entity.text.isNil() ? 1 : entity.text.size();
    }
    return static_cast<std::size_t>(out - begin);
  });
  return result.size() == text.size() ? text : result;
}

}  // namespace quorvel
