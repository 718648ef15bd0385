#include <algorithm>
#include <memory>

#include <libpsl.h>
#include <unicode/uchar.h>
#include <unicode/uidna.h>

#include <quorvel/Platform/Foundation/LinkText.h>
#include <quorvel/Platform/Foundation/UnitScan.h>

namespace quorvel::links {
namespace {

constexpr std::size_t kHostLength = 253;  // RFC 1035, section 2.3.4, without the root's dot
constexpr std::size_t kLabelLength = 63;
constexpr std::size_t kParticleSyllables = 8;

constexpr StringView kParticles[] = {
    u"은",   u"는",     u"이",   u"가",   u"을",   u"를",   u"의",   u"에",   u"도",     u"만",     u"로",     u"와",
    u"과",   u"랑",     u"나",   u"고",   u"인",   u"라",   u"야",   u"요",   u"란",     u"든",     u"에서",   u"에게",
    u"으로", u"까지",   u"부터", u"한테", u"이랑", u"이나", u"라고", u"라는", u"이고",   u"이며",   u"이라",   u"인데",
    u"처럼", u"보다",   u"마다", u"조차", u"밖에", u"이란", u"예요", u"에요", u"이야",   u"이다",   u"로서",   u"로써",
    u"하고", u"입니다", u"이며", u"인가", u"인지", u"께서", u"에선", u"로는", u"입니까", u"이라고", u"이라는",
};

bool hasCategory(char32_t scalar, std::uint32_t categories) {
  return (U_GET_GC_MASK(static_cast<UChar32>(scalar)) & categories) != 0;
}

bool isHostUnitASCII(char16_t unit) { return isAlphanumeric(unit) || unit == u'-' || unit == u'_'; }

/// Labels of at most 63 ASCII letters, digits, "-" and "_", no "-" at their ends; `host` is ASCII.
bool hasValidLabels(std::string_view host) {
  while (true) {
    const std::size_t dot = std::min(host.find('.'), host.size());
    const std::string_view label = host.substr(0, dot);
    if (label.empty() || label.size() > kLabelLength || label.front() == '-' || label.back() == '-') return false;
    if (!std::all_of(label.begin(), label.end(),
                     [](char byte) { return isHostUnitASCII(static_cast<unsigned char>(byte)); })) {
      return false;
    }
    if (dot == host.size()) return true;
    host.remove_prefix(dot + 1);
  }
}

std::optional<std::string> punycode(StringView host) {
  UErrorCode status = U_ZERO_ERROR;
  static const UIDNA* const idna = [] {
    UErrorCode opened = U_ZERO_ERROR;
    return uidna_openUTS46(UIDNA_NONTRANSITIONAL_TO_ASCII | UIDNA_CHECK_CONTEXTJ | UIDNA_CHECK_BIDI, &opened);
  }();
  UChar units[kHostLength + 3];
  UIDNAInfo info = UIDNA_INFO_INITIALIZER;
  const std::int32_t size = uidna_nameToASCII(idna, host.data(), static_cast<std::int32_t>(host.size()), units,
                                              static_cast<std::int32_t>(std::size(units)), &info, &status);
  if (U_FAILURE(status) || info.errors != 0 || size < 0) return std::nullopt;
  std::string ascii;
  for (const char16_t unit : std::u16string_view(units, static_cast<std::size_t>(size))) {
    if (unit > 0x7F) return std::nullopt;
    ascii += static_cast<char>(unit);
  }
  return ascii;
}

/// Whether the public suffix list has the name itself; it is asked in lower case.
bool isPublicSuffix(std::string name) {
  for (char& byte : name) byte = static_cast<char>(unitscan::foldASCII(static_cast<unsigned char>(byte)));
  return psl_is_public_suffix2(psl_builtin(), name.c_str(), PSL_TYPE_ICANN | PSL_TYPE_NO_STAR_RULE) != 0;
}

bool isTopLevelName(StringView label) {
  if (label.size() < 2 || label.size() > kLabelLength || isDigit(label.back())) return false;
  const std::optional<std::string> ascii = asciiHost(label);
  return ascii && isPublicSuffix(*ascii);
}

bool isAllEastAsian(StringView label) {
  for (std::size_t i = 0; i < label.size();) {
    if (!isEastAsian(unicode::nextScalar(label, i))) return false;
  }
  return true;
}

std::size_t leadingASCII(StringView label) {
  std::size_t size = 0;
  while (size < label.size() && label[size] < 0x80) ++size;
  return size;
}

/// How much of the label is a top-level name that something is written behind; 0 when nothing is.
std::size_t topLevelPart(StringView label) {
  const std::size_t ascii = leadingASCII(label);
  if (ascii > 0) {
    std::size_t next = ascii;
    const bool isFollowed = ascii < label.size() && isEastAsian(unicode::nextScalar(label, next));
    return isFollowed && isTopLevelName(label.sub(0, ascii)) ? ascii : 0;
  }
  const std::size_t start = startOfSyllables(label, 0, label.size());
  for (std::size_t size = std::max<std::size_t>(start, 1); size < label.size(); ++size) {
    if (areParticles(label.sub(size)) && isTopLevelName(label.sub(0, size))) return size;
  }
  return 0;
}

/// The end of the host without particles that follow ASCII directly.
std::size_t withoutParticles(StringView text, std::size_t from, std::size_t end) {
  const std::size_t start = startOfSyllables(text, from, end);
  const bool follows = start > from && start < end && isAlphanumeric(text[start - 1]);
  return follows && areParticles(text.sub(start, end - start)) ? start : end;
}

}  // namespace

bool isEastAsian(char32_t scalar) {
  if (scalar < 0x1100) return false;
  return unitscan::isSyllableOrIdeograph(scalar) || scalar <= 0x11FF || (scalar >= 0x3040 && scalar <= 0x318F) ||
         (scalar >= 0x3400 && scalar <= 0x4DBF) || (scalar >= 0xF900 && scalar <= 0xFAFF) ||
         (scalar >= 0x20000 && scalar <= 0x3FFFF);
}

bool isHostScalar(char32_t scalar) {
  if (scalar < 0x80) return isHostUnitASCII(static_cast<char16_t>(scalar));
  if (unitscan::isSyllableOrIdeograph(scalar)) return true;
  return hasCategory(scalar, U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK);
}

bool isPathScalar(char32_t scalar) {
  constexpr std::u16string_view kNever = u"\"<>\\^`{|}\x7F";
  if (scalar < 0x80) return scalar > u' ' && kNever.find(static_cast<char16_t>(scalar)) == kNever.npos;
  if (unitscan::isSyllableOrIdeograph(scalar) || scalar == 0x200D) return true;
  return hasCategory(scalar, U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK | U_GC_S_MASK);
}

std::size_t endOfLabels(StringView text, std::size_t from) {
  std::size_t end = from;
  while (end < text.size()) {
    std::size_t next = end + (text[end] == u'.' && end > from ? 1 : 0);
    if (next == text.size() || !isHostScalar(unicode::nextScalar(text, next))) break;
    end = next;
  }
  return end;
}

std::size_t endOfHost(StringView text, std::size_t from, std::size_t end, Suffix suffix) {
  if (end - from > kHostLength) return from;
  for (std::size_t last = end;;) {
    const std::size_t dot = text.sub(from, last - from).units().rfind(u'.');
    if (dot == std::u16string_view::npos) break;
    const StringView label = text.sub(from + dot + 1, last - from - dot - 1);
    if (isTopLevelName(label)) return last;
    if (const std::size_t part = topLevelPart(label)) return last - label.size() + part;
    if (!isAllEastAsian(label)) break;
    last = from + dot;
  }
  return suffix == Suffix::Known ? from : withoutParticles(text, from, end);
}

std::optional<std::string> asciiHost(StringView host) {
  if (host.isEmpty() || host.size() > kHostLength) return std::nullopt;
  if (leadingASCII(host) < host.size()) {
    std::optional<std::string> ascii = punycode(host);
    return ascii && hasValidLabels(*ascii) ? ascii : std::nullopt;
  }
  std::string ascii;
  for (const char16_t unit : host) ascii += static_cast<char>(unit);
  return hasValidLabels(ascii) ? std::optional(std::move(ascii)) : std::nullopt;
}

bool isRegistrable(const std::string& asciiHost) {
  return asciiHost.find('.') != std::string::npos && !isPublicSuffix(asciiHost);
}

bool isIPv4(StringView host) {
  int numbers = 0;
  for (std::size_t i = 0; i <= host.size(); ++i) {
    int value = 0;
    const std::size_t start = i;
    while (i < host.size() && isDigit(host[i]) && i - start < 3) value = value * 10 + (host[i++] - u'0');
    if (i == start || value > 255 || (i < host.size() && host[i] != u'.')) return false;
    ++numbers;
  }
  return numbers == 4;
}

bool areParticles(StringView text) {
  if (text.isEmpty() || text.size() > kParticleSyllables) return false;
  std::uint32_t reached = 1;  // bit n: the first n syllables are particles
  for (std::size_t i = 0; i < text.size(); ++i) {
    if ((reached >> i & 1) == 0) continue;
    for (const StringView particle : kParticles) {
      if (text.sub(i, particle.size()) == particle) reached |= 1U << (i + particle.size());
    }
  }
  return (reached >> text.size() & 1) != 0;
}

std::size_t startOfSyllables(StringView text, std::size_t from, std::size_t end) {
  const std::size_t least = end - from > kParticleSyllables ? end - kParticleSyllables - 1 : from;
  std::size_t start = end;
  while (start > least && text[start - 1] >= 0xAC00 && text[start - 1] <= 0xD7A3) --start;
  return start;
}

}  // namespace quorvel::links
