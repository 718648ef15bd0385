#include <cmath>
#include <cstdio>
#include <vector>

#include <apps/quorvel/Color.h>
#include <apps/quorvel/Operation.h>
#include <apps/quorvel/OptionWords.h>
#include <apps/quorvel/Terminal.h>

#include <quorvel/Extensions/UIKit/UIColor+Common.h>
#include <quorvel/Extensions/UIKit/UIColor+Companions.h>
#include <quorvel/Extensions/UIKit/UIColor+HSL.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>
#include <quorvel/Platform/Foundation/NumberText.h>

namespace quorvel::command {

const char kColorUsage[] =
    "usage: quorvel color COLOR... [--on BACKGROUND] [--json]\n"
    "\n"
    "For each colour a line: its hexadecimal forms (#RRGGBB, #RRGGBBAA, #AARRGGBB), hue, saturation and lightness,\n"
    "its contrast to the background by WCAG 2.1 (white unless BACKGROUND is given), and the colour nearest to it by\n"
    "lightness alone whose contrast is 4.5; where none has that, the one with the most.\n"
    "\n"
    "COLOR and BACKGROUND are colours as CSS writes them ('#f80', 'rgb(255 128 0 / 50%)', 'hsl(30, 100%, 50%)',\n"
    "orange) or a name of the palette (brandGreenColor).\n"
    "\n"
    "  --on BACKGROUND   the background; counts as opaque\n"
    "  --json            a JSON object on each line\n"
    "\n"
    "What is no colour is told on standard error, or as {\"text\": ..., \"error\": ...} with --json; the others are\n"
    "shown, and the exit status is 1.\n";

namespace {

constexpr int kNoColor = 1;
constexpr int kUsageError = 2;
constexpr char kRefusal[] = "neither a CSS colour nor a name of the palette";

struct Request {
  std::vector<std::string_view> colors;
  std::string_view background = "white";
  bool json = false;
};

/// False, and why in `error`.
bool readRequest(std::span<const std::string_view> given, Request& request, std::string& error) {
  constexpr std::string_view kOptions[] = {"--json", "--on="};
  OptionWords words(given, kOptions);
  while (words.next()) {
    if (words.name == "--json") {
      request.json = true;
    } else if (words.name == "--on") {
      request.background = words.value;
    } else {
      request.colors.push_back(words.value);
    }
  }
  error = words.error.empty() && request.colors.empty() ? "expected a colour" : words.error;
  return error.empty();
}

std::optional<UIColor> colorNamed(std::string_view text) {
  for (const auto& [name, color] : UIColor::Common::all()) {
    if (text == name) return color;
  }
  return colorFromCSS(String::fromUTF8(text));
}

struct Report {
  UIColor color;
  UIColor background;
  double hue = 0;
  double saturation = 0;
  double lightness = 0;
  double contrast;
  UIColor readable;

  Report(const UIColor& c, const UIColor& under)
      : color(c), background(under), contrast(contrastRatio(c, under)), readable(readableOn(c, under)) {
    getHue(color, &hue, &saturation, &lightness, nullptr);
  }
};

std::string tenths(double value) { return fixedText(value, 1).toUTF8Replacing(); }
/// Two decimals, cut: 4.499 does not show as 4.50.
std::string hundredths(double value) { return fixedText(std::floor(value * 100) / 100, 2).toUTF8Replacing(); }
/// The alpha is written where there is one.
String shortHex(const UIColor& color) { return color.alpha() < 1 ? hexTextRGBA(color) : hexTextRGB(color); }
std::string column(const std::string& text, std::size_t width) {
  return text + std::string(text.size() < width ? width - text.size() : 0, ' ');
}

/// As it looks on the background.
UIColor overBackground(const UIColor& color, const UIColor& background) {
  const auto mixed = [&color](double over, double under) { return over * color.alpha() + under * (1 - color.alpha()); };
  return {mixed(color.red(), background.red()), mixed(color.green(), background.green()),
          mixed(color.blue(), background.blue()), 1};
}

void printLine(std::string_view text, const Report& report, bool showsColor) {
  std::string line;
  const auto swatch = [&](const UIColor& color) {
    if (showsColor) appendSwatch(line, overBackground(color, report.background)), line += ' ';
  };
  swatch(report.color);
  line += column(plainText(text), 16) + "  " + hexTextRGB(report.color).toUTF8Replacing();
  line += "  RGBA " + hexTextRGBA(report.color).toUTF8Replacing();
  line += "  ARGB " + hexTextARGB(report.color).toUTF8Replacing();
  line += "  hsl " + column(joined({tenths(report.hue * 360), " ", tenths(report.saturation * 100), "% ",
                                    tenths(report.lightness * 100), "%"}),
                            19);
  line += "  contrast " + column(hundredths(report.contrast), 5) + "  readable ";
  swatch(report.readable);
  line += shortHex(report.readable).toUTF8Replacing() + "\n";
  std::fwrite(line.data(), 1, line.size(), stdout);
}

void printJSON(const Dictionary& record) {
  const std::string line = NSJSONSerialization::writeFragmentUTF8(record, 0).value_or("") + "\n";
  std::fwrite(line.data(), 1, line.size(), stdout);
}

void printRecord(std::string_view text, const Report& report) {
  Dictionary record;
  record.set(u"text", String::fromUTF8Replacing(text));
  record.set(u"rgb", hexTextRGB(report.color));
  record.set(u"rgba", hexTextRGBA(report.color));
  record.set(u"argb", hexTextARGB(report.color));
  record.set(u"hue", report.hue);
  record.set(u"saturation", report.saturation);
  record.set(u"lightness", report.lightness);
  record.set(u"alpha", report.color.alpha());
  record.set(u"contrast", report.contrast);
  record.set(u"readable", shortHex(report.readable));
  record.set(u"readableContrast", contrastRatio(report.readable, report.background));
  printJSON(record);
}

void refuse(std::string_view text, bool json) {
  if (!json) {
    std::fprintf(stderr, "quorvel color: '%s' is %s\n", plainText(text).c_str(), kRefusal);
    return;
  }
  Dictionary record;
  record.set(u"text", String::fromUTF8Replacing(text));
  record.set(u"error", String::fromASCII(kRefusal));
  printJSON(record);
}

int show(const Request& request, const UIColor& background) {
  const bool showsColor = !request.json && outputTakesColor();
  int status = 0;
  for (const std::string_view text : request.colors) {
    const auto color = colorNamed(text);
    if (!color) {
      refuse(text, request.json);
      status = kNoColor;
      continue;
    }
    const Report report(*color, background);
    request.json ? printRecord(text, report) : printLine(text, report, showsColor);
  }
  return status;
}

}  // namespace

int runColor(std::span<const std::string_view> words) {
  std::string error;
  Request request;
  if (readRequest(words, request, error)) {
    if (const auto background = colorNamed(request.background)) return show(request, *background);
    error = joined({"the background '", plainText(request.background), "' is ", kRefusal});
  }
  std::fprintf(stderr, "quorvel color: %s (quorvel help color)\n", error.c_str());
  return kUsageError;
}

}  // namespace quorvel::command
