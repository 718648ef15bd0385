// JSON text of either encoding, and what is wrong with it. Included by sources of the platform alone.
// Not here: strings (JSONText.h), keys (JSONKeys.h), numbers (JSONNumber.h), the tree (JSONReader.cpp).
//
// A read function takes the place where it begins and answers the place where it ended, or nullptr with the failure
// noted. So the place stays in a register; kept in the reader it would go through memory at every step.
#pragma once

#include <quorvel/Platform/Foundation/NSJSONSerialization.h>

namespace quorvel::json {

namespace reason {
inline constexpr const char* kEnded = "the text ends too early";
inline constexpr const char* kUnexpected = "unexpected character";
inline constexpr const char* kNoContainer = "no list or dictionary at the top";
inline constexpr const char* kAfterEnd = "text after the end";
inline constexpr const char* kTooDeep = "nested too deeply";
inline constexpr const char* kTooLong = "too long";
inline constexpr const char* kControl = "control character in a string";
inline constexpr const char* kEscape = "invalid escape";
inline constexpr const char* kUnpaired = "unpaired surrogate";
inline constexpr const char* kUTF8 = "invalid UTF-8";
inline constexpr const char* kDigit = "a digit is missing";
inline constexpr const char* kRange = "number out of range";
}  // namespace reason

/// `Unit` is char for UTF-8 and char16_t for UTF-16.
template <class Unit>
struct Source {
  const Unit* start;
  const Unit* end;
  JSONError error;

  std::nullptr_t fail(const Unit* at, const char* why) {
    error = {static_cast<std::size_t>(at - start), why};
    return nullptr;
  }
  /// What stands here is not what must come: an end of the text, or a character.
  std::nullptr_t unexpected(const Unit* at, const char* why = reason::kUnexpected) {
    return fail(at, at == end ? reason::kEnded : why);
  }

  [[nodiscard]] std::size_t left(const Unit* at) const { return static_cast<std::size_t>(end - at); }
  [[nodiscard]] bool isAt(const Unit* at, char ascii) const { return at != end && *at == static_cast<Unit>(ascii); }
  [[nodiscard]] bool isDigitAt(const Unit* at) const { return at != end && *at >= Unit{'0'} && *at <= Unit{'9'}; }
  [[nodiscard]] const Unit* skipSpace(const Unit* at) const {
    if (at == end || static_cast<char16_t>(*at) > u' ') [[likely]]
      return at;
    while (at != end && (*at == Unit{' '} || *at == Unit{'\n'} || *at == Unit{'\r'} || *at == Unit{'\t'})) ++at;
    return at;
  }
};

}  // namespace quorvel::json
