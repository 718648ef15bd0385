// LinkScanner: where links stand in free text, in one pass from left to right. Included by sources only.
// Not here: their URLs (NSDataDetector.h).
#pragma once

#include <optional>
#include <string>

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel::links {

/// A link's units, and its host's among them.
struct Link {
  enum class Form { Whole, BareHost, BareMail };
  Form form = Form::Whole;  // what its URL lacks: nothing, "http://" or "mailto:"
  std::size_t start = 0;
  std::size_t end = 0;
  std::size_t hostStart = 0;
  std::size_t hostEnd = 0;
  std::string host;  // in ASCII; empty when no host needs to be told from the rest
};

/// A link has a ":", a "." or an "@": each of them that is not inside a link already is looked at once, with the run of
/// characters around it, so that the time is linear in the text.
class LinkScanner {
 public:
  explicit LinkScanner(StringView text) : text_(text) {}

  /// The next link, or nothing at the text's end.
  [[nodiscard]] std::optional<Link> next();

 private:
  // Each looks at one of the characters, and moves `position_` behind what need not be looked at again.
  [[nodiscard]] std::optional<Link> linkAtColon(std::size_t colon);
  [[nodiscard]] std::optional<Link> linkAtDot(std::size_t dot);
  [[nodiscard]] std::optional<Link> linkAtSign(std::size_t at);

  [[nodiscard]] std::optional<Link> telephone(std::size_t colon) const;
  [[nodiscard]] bool findAuthorityHost(Link& link, std::size_t from) const;
  [[nodiscard]] std::size_t schemeStart(std::size_t colon) const;
  [[nodiscard]] std::size_t labelStart(std::size_t dot) const;
  [[nodiscard]] bool isMailbox(std::size_t from) const;
  [[nodiscard]] bool needsMore(const Link& link) const;

  [[nodiscard]] std::size_t endOfPort(std::size_t hostEnd) const;
  [[nodiscard]] std::size_t endOfPath(std::size_t from) const;
  [[nodiscard]] std::size_t endOfPortAndPath(std::size_t hostEnd) const;

  [[nodiscard]] char16_t unitAt(std::size_t index) const { return index < text_.size() ? text_[index] : u'\0'; }
  [[nodiscard]] StringView piece(std::size_t from, std::size_t to) const { return text_.sub(from, to - from); }

  StringView text_;
  std::size_t floor_ = 0;     // the end of the link before
  std::size_t position_ = 0;  // where the next ":", "." or "@" is looked for
};

}  // namespace quorvel::links
