// A place in JSON text of either encoding, and what is wrong with the text. Included by sources of the platform alone.
// Not here: strings (JSONText.h), numbers (JSONNumber.h), the tree (JSONReader.cpp).
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
struct Cursor {
  const Unit* start;
  const Unit* at;
  const Unit* end;
  JSONError error;

  bool fail(const Unit* place, const char* why) {
    error = {static_cast<std::size_t>(place - start), why};
    return false;
  }
  /// What stands here is not what must come: an end of the text, or a character.
  bool unexpected(const char* why = reason::kUnexpected) { return fail(at, at == end ? reason::kEnded : why); }

  [[nodiscard]] std::size_t left() const { return static_cast<std::size_t>(end - at); }
  [[nodiscard]] bool isAt(char ascii) const { return at != end && *at == static_cast<Unit>(ascii); }
  [[nodiscard]] bool isAtDigit() const { return at != end && *at >= Unit{'0'} && *at <= Unit{'9'}; }
  bool take(char ascii) {
    const bool there = isAt(ascii);
    at += there;
    return there;
  }
  void skipSpace() {
    while (at != end && *at <= Unit{' '} &&
           (*at == Unit{' '} || *at == Unit{'\n'} || *at == Unit{'\r'} || *at == Unit{'\t'})) {
      ++at;
    }
  }
};

}  // namespace quorvel::json
