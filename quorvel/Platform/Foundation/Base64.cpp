#include <array>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include <quorvel/Platform/Foundation/Base64.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

constexpr std::uint8_t kNoDigit = 0xFF;

struct Tables {
  std::array<char, 64> digits{};
  std::array<std::uint8_t, 256> values{};
};

constexpr Tables makeTables(char digit62, char digit63) {
  Tables tables;
  tables.values.fill(kNoDigit);
  for (unsigned i = 0; i < 64; ++i) {
    const unsigned digit = i < 26 ? 'A' + i : i < 52 ? 'a' + (i - 26) : '0' + (i - 52);
    tables.digits[i] = i == 62 ? digit62 : i == 63 ? digit63 : static_cast<char>(digit);
    tables.values[static_cast<unsigned char>(tables.digits[i])] = static_cast<std::uint8_t>(i);
  }
  return tables;
}

constexpr Tables kTables[] = {makeTables('+', '/'), makeTables('-', '_')};

constexpr const Tables& tablesOf(Base64Alphabet alphabet) { return kTables[static_cast<std::size_t>(alphabet)]; }

#if defined(__x86_64__)

constexpr std::size_t kGroupBytes = 24;  // what one turn of the kernel encodes, as 32 characters
constexpr std::size_t kLoadBytes = 28;   // what it reads

[[gnu::target("avx2")]] inline void store(__m256i characters, char* out) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), characters);
}
[[gnu::target("avx2")]] inline void store(__m256i characters, char16_t* out) {
  auto* to = reinterpret_cast<__m256i*>(out);
  _mm256_storeu_si256(to, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(characters)));
  _mm256_storeu_si256(to + 1, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(characters, 1)));
}

/// In each 32-bit lane the three bytes b0 b1 b2 of a group as b1 b0 b2 b1, so that two multiplications move all four
/// fields of six bits into bytes of their own.
[[gnu::target("avx2")]] inline __m256i sixBitFields(const std::uint8_t* in) {
  const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
  const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + 12));
  const __m256i order = _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10,  //
                                         1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
  const __m256i groups = _mm256_shuffle_epi8(_mm256_set_m128i(high, low), order);
  const __m256i even = _mm256_and_si256(groups, _mm256_set1_epi32(0x0FC0FC00));
  const __m256i odd = _mm256_and_si256(groups, _mm256_set1_epi32(0x003F03F0));
  return _mm256_or_si256(_mm256_mulhi_epu16(even, _mm256_set1_epi32(0x04000040)),
                         _mm256_mullo_epi16(odd, _mm256_set1_epi32(0x01000010)));
}

/// What is added to a field to give its character, by the field's kind: 0 for a-z, 1 to 10 for 0-9, 11 and 12 for the
/// two last digits, 13 for A-Z.
[[gnu::target("avx2")]] inline __m256i characterOffsets(const Tables& tables) {
  const auto offset62 = static_cast<char>(tables.digits[62] - 62);
  const auto offset63 = static_cast<char>(tables.digits[63] - 63);
  return _mm256_broadcastsi128_si256(
      _mm_setr_epi8(71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, offset62, offset63, 65, 0, 0));
}

/// Encodes whole turns of the kernel as long as a load stays within the input; answers how many bytes that were.
template <class Unit>
[[gnu::target("avx2")]] std::size_t encodeVectors(std::span<const std::uint8_t> bytes, Unit* out,
                                                  const Tables& tables) {
  const __m256i offsets = characterOffsets(tables);
  std::size_t done = 0;
  for (; bytes.size() - done >= kLoadBytes; done += kGroupBytes, out += 32) {
    const __m256i fields = sixBitFields(bytes.data() + done);
    const __m256i isCapital = _mm256_cmpgt_epi8(_mm256_set1_epi8(26), fields);
    const __m256i kind = _mm256_or_si256(_mm256_subs_epu8(fields, _mm256_set1_epi8(51)),
                                         _mm256_and_si256(isCapital, _mm256_set1_epi8(13)));
    store(_mm256_add_epi8(fields, _mm256_shuffle_epi8(offsets, kind)), out);
  }
  return done;
}

bool hasVectors() { return __builtin_cpu_supports("avx2"); }

#else

template <class Unit>
std::size_t encodeVectors(std::span<const std::uint8_t>, Unit*, const Tables&) {
  return 0;
}
bool hasVectors() { return false; }

#endif

template <class Unit>
void encode(std::span<const std::uint8_t> bytes, Unit* out, Base64Alphabet alphabet) {
  const Tables& tables = tablesOf(alphabet);
  const auto digit = [&](std::uint32_t bits) { return static_cast<Unit>(tables.digits[bits & 0x3F]); };
  std::size_t i = hasVectors() ? encodeVectors(bytes, out, tables) : 0;
  out += i / 3 * 4;
  for (; bytes.size() - i >= 3; i += 3) {
    const std::uint32_t bits = std::uint32_t{bytes[i]} << 16 | std::uint32_t{bytes[i + 1]} << 8 | bytes[i + 2];
    *out++ = digit(bits >> 18);
    *out++ = digit(bits >> 12);
    *out++ = digit(bits >> 6);
    *out++ = digit(bits);
  }
  const std::size_t rest = bytes.size() - i;
  if (rest == 0) return;
  const std::uint32_t bits = std::uint32_t{bytes[i]} << 16 | (rest == 2 ? std::uint32_t{bytes[i + 1]} << 8 : 0U);
  *out++ = digit(bits >> 18);
  *out++ = digit(bits >> 12);
  *out++ = rest == 2 ? digit(bits >> 6) : Unit{'='};
  *out++ = Unit{'='};
}

/// Reads `count` digits; the highest byte of the result is not 0 when one of them is none.
std::uint32_t readDigits(const char16_t* text, std::size_t count, const Tables& tables) {
  std::uint32_t bits = 0;
  std::uint32_t invalid = 0;
  for (std::size_t k = 0; k < count; ++k) {
    const std::uint32_t value = tables.values[text[k] & 0xFF];
    invalid |= (value & 0x80) | static_cast<std::uint32_t>(text[k] >> 8);
    bits = bits << 6 | (value & 0x3F);
  }
  return bits | (invalid ? 0xFF000000U : 0U);
}

}  // namespace

String base64EncodedString(std::span<const std::uint8_t> bytes, Base64Alphabet alphabet) {
  const std::size_t length = base64Length(bytes.size());
  return String::build(length, [&](char16_t* out) {
    encode(bytes, out, alphabet);
    return length;
  });
}

void encodeBase64(std::span<const std::uint8_t> bytes, char* out, Base64Alphabet alphabet) {
  encode(bytes, out, alphabet);
}

std::optional<String> base64EncodedUTF8(StringView text) {
  if (text.isNil()) return nil;
  const std::optional<std::string> bytes = unicode::toUTF8(text);
  if (!bytes) return nil;
  return base64EncodedString({reinterpret_cast<const std::uint8_t*>(bytes->data()), bytes->size()});
}

std::optional<std::vector<std::uint8_t>> decodeBase64(StringView text, Base64Alphabet alphabet) {
  if (text.size() % 4 != 0) return nil;
  std::size_t digits = text.size();
  while (digits > 0 && text.size() - digits < 2 && text[digits - 1] == u'=') --digits;
  const Tables& tables = tablesOf(alphabet);
  const std::size_t rest = digits % 4;  // 0, 2 or 3, since at most two characters are padding
  std::vector<std::uint8_t> bytes(digits / 4 * 3 + (rest ? rest - 1 : 0));
  std::uint8_t* out = bytes.data();
  std::uint32_t invalid = 0;
  std::size_t i = 0;
  for (; i + 4 <= digits; i += 4) {
    const std::uint32_t bits = readDigits(text.data() + i, 4, tables);
    invalid |= bits;
    *out++ = static_cast<std::uint8_t>(bits >> 16);
    *out++ = static_cast<std::uint8_t>(bits >> 8);
    *out++ = static_cast<std::uint8_t>(bits);
  }
  if (rest != 0) {
    const std::uint32_t bits = readDigits(text.data() + i, rest, tables);
    const unsigned unusedBits = rest == 2 ? 4 : 2;
    if ((bits & ((1U << unusedBits) - 1)) != 0) return nil;
    invalid |= bits;
    if (rest == 3) *out++ = static_cast<std::uint8_t>(bits >> 10);
    *out = static_cast<std::uint8_t>(bits >> unusedBits);
  }
  if (invalid >> 24 != 0) return nil;
  return bytes;
}

}  // namespace quorvel
