#include <cmath>
#include <cstdlib>

#include <apps/quorvel/Terminal.h>
#include <unistd.h>

#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel::command {
namespace {

int byteOf(double component) { return static_cast<int>(std::lround(std::fmin(std::fmax(component, 0.0), 1.0) * 255)); }

/// `start` is how the sequence begins: what is to take the colour.
std::string colorSequence(std::string_view start, const UIColor& color) {
  return std::string(start) + std::to_string(byteOf(color.red())) + ";" + std::to_string(byteOf(color.green())) + ";" +
         std::to_string(byteOf(color.blue())) + "m";
}

/// Controls, and the marks that turn the direction of the text around them (UAX #9), which could disguise a name.
bool isDirectionMark(char32_t scalar) {
  return (scalar >= 0x202A && scalar <= 0x202E) || (scalar >= 0x2066 && scalar <= 0x2069);
}

void appendScalar(std::string& out, char32_t scalar, std::string_view indent) {
  if (scalar == u'\n') {
    out += '\n';
    out += indent;
  } else if (scalar < 0x20 && scalar != u'\t') {
    unicode::appendUTF8(out, 0x2400 + scalar);
  } else if (scalar == 0x7F) {
    unicode::appendUTF8(out, 0x2421);
  } else if ((scalar >= 0x80 && scalar < 0xA0) || unicode::isSurrogate(scalar) || isDirectionMark(scalar)) {
    unicode::appendUTF8(out, 0xFFFD);
  } else {
    unicode::appendUTF8(out, scalar);
  }
}

}  // namespace

bool outputTakesColor() {
  const char* term = std::getenv("TERM");
  const char* noColor = std::getenv("NO_COLOR");
  return ::isatty(STDOUT_FILENO) != 0 && !(noColor && *noColor) && !(term && std::string_view(term) == "dumb");
}

void appendSwatch(std::string& out, const UIColor& color) {
  out += colorSequence("\x1b[48;2;", color);
  out += "  \x1b[0m";
}

void appendPlain(std::string& out, StringView text, std::string_view indent) {
  for (std::size_t i = 0; i < text.size();) appendScalar(out, unicode::nextScalar(text, i), indent);
}

std::string plainText(std::string_view text) {
  std::string result;
  appendPlain(result, String::fromUTF8Replacing(text), "");
  return result;
}

void appendColored(std::string& out, const NSAttributedString& text, const UIColor& base, std::string_view indent) {
  for (const Span& span : text.spans()) {
    const StringView piece = StringView(text.string()).sub(span.range.location, span.range.length);
    const auto* color = span.attributes[kForegroundColorAttribute].as<UIColor>();
    if (!color || *color == base) {
      appendPlain(out, piece, indent);
      continue;
    }
    out += colorSequence("\x1b[1;38;2;", *color);
    appendPlain(out, piece, indent);
    out += "\x1b[0m";
  }
}

}  // namespace quorvel::command
