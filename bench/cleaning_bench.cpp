// Markup, paths and links of messages: Qt, GLib and the standard library beside us, where they have the like; for links
// an expression of ICU that finds less is the floor of what finding them by expressions takes.
#include <filesystem>
#include <vector>

#include <bench/Cases.h>
#include <bench/QtText.h>

#include <quorvel/Extensions/Foundation/NSString+Additions+Cleaning.h>
#include <quorvel/Extensions/Foundation/NSString+Additions+FileNames.h>
#include <quorvel/Extensions/Foundation/NSString+Additions+Links.h>
#include <quorvel/Extensions/Foundation/String+Paths.h>

#if QUORVEL_HAVE_QT
#include <QDir>
#include <QFileInfo>
#include <QString>
#endif
#if QUORVEL_HAVE_GLIB
#include <glib.h>
#endif
#include <unicode/uregex.h>

namespace quorvel::bench {
namespace {

/// The text with every `gap`-th space replaced.
String sprinkled(const String& text, std::u16string_view piece, int gap) {
  std::u16string out;
  int left = gap;
  for (const char16_t unit : text) {
    if (unit == u' ' && --left == 0) {
      out += piece;
      left = gap;
    } else {
      out += unit;
    }
  }
  return String(out);
}

void addMarkup(const std::string& script, std::size_t size, const String& text) {
  const String message = sprinkled(text, u" <&> ", 8);
  const String escaped = qv_appendToEscapedSymbol(message);
  add("markup/escape/" + script, size, "ours", [message] { return qv_appendToEscapedSymbol(message); });
  add("markup/unescape/" + script, size, "ours", [escaped] { return qv_removeToEscapedSymbol(escaped); });
#if QUORVEL_HAVE_QT
  const QString q = qt(message);
  add("markup/escape/" + script, size, "qt", [q] { return q.toHtmlEscaped(); });
#endif
#if QUORVEL_HAVE_GLIB
  const std::string utf8 = message.toUTF8Replacing();
  add("markup/escape/" + script, size, "glib", [utf8] {
    char* const out = g_markup_escape_text(utf8.data(), static_cast<gssize>(utf8.size()));
    const char first = *out;
    g_free(out);
    return first;
  });
#endif
}

/// Matches of the expression in the text, by ICU with the expression and the text set once.
std::size_t matchesByICU(URegularExpression* expression) {
  UErrorCode status = U_ZERO_ERROR;
  std::size_t found = 0;
  uregex_reset(expression, 0, &status);
  while (uregex_findNext(expression, &status)) ++found;
  return found;
}

void addLinks(const std::string& script, std::size_t size, const String& text) {
  for (const auto& [name, gap] : {std::pair("links/find/", 8), std::pair("links/none/", 1 << 30)}) {
    const String message = sprinkled(text, u" https://example.com/a?q=1 ", gap);
    add(name + script, size, "ours", [message] { return qv_linkDetector().matches(message); });
    UErrorCode status = U_ZERO_ERROR;
    constexpr std::u16string_view kAddress = u"https?://[^\\s]+";
    URegularExpression* const expression =
        uregex_open(kAddress.data(), static_cast<std::int32_t>(kAddress.size()), 0, nullptr, &status);
    add(name + script, size, "floor:icu, http only", [message, expression] {
      UErrorCode set = U_ZERO_ERROR;
      uregex_setText(expression, message.data(), static_cast<std::int32_t>(message.size()), &set);
      return matchesByICU(expression);
    });
  }
}

void addPaths() {
  const String path = u"/home/user/photos/2024/summer.holiday.jpeg";
  const std::string utf8 = path.toUTF8Replacing();
  const std::filesystem::path standard(utf8);
  add("paths/extension", path.size(), "ours", [path] { return pathExtension(path); });
  add("paths/extension", path.size(), "std", [standard] { return standard.extension(); });
  add("paths/last component", path.size(), "ours", [path] { return lastPathComponent(path); });
  add("paths/last component", path.size(), "std", [standard] { return standard.filename(); });
  add("paths/append", path.size(), "ours", [path] { return stringByAppendingPathComponent(path, u"a.txt"); });
  add("paths/append", path.size(), "std", [standard] { return standard / "a.txt"; });
  add("paths/new name", 12, "ours", [name = String(u"photo (9).jpg")] { return createNewFileName(name); });
  add("paths/valid name", 12, "ours", [name = String(u"photo (9).jpg")] { return checkFileNameValidity(name); });
#if QUORVEL_HAVE_QT
  const QString q = qt(path);
  add("paths/extension", path.size(), "qt", [q] { return QFileInfo(q).suffix(); });
  add("paths/last component", path.size(), "qt", [q] { return QFileInfo(q).fileName(); });
  add("paths/append", path.size(), "qt", [q] { return QDir(q).filePath(QStringLiteral("a.txt")); });
#endif
}

void addAll() {
  for (const auto& [script, name] : kScripts) {
    for (const std::size_t size : kSizes) {
      const String sample = text(script, size);
      addMarkup(name, size, sample);
      addLinks(name, size, sample);
    }
  }
  addPaths();
}

const bool kRegistered = (addAll(), true);

}  // namespace
}  // namespace quorvel::bench
