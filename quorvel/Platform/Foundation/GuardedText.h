// GuardedText: a text that an expression reads in small pieces and that runs dry at a deadline. Back-references compare
// long stretches between two of the moments at which ICU asks whether to go on; only the text itself can stop them.
#pragma once

#include <quorvel/Platform/Foundation/String.h>

struct UText;

namespace quorvel {

class GuardedText {
 public:
  /// Asked at every piece; after it has answered true the pieces hold noise, so that what was read is of no use.
  using IsOver = bool (*)(void* context);

  /// Borrows the text, which is longer than a few pieces, and the context.
  GuardedText(StringView text, IsOver isOver, void* context);
  GuardedText(const GuardedText&) = delete;
  GuardedText& operator=(const GuardedText&) = delete;
  ~GuardedText();

  /// For ICU; lives as long as this.
  [[nodiscard]] UText* text() { return text_; }

  struct Pieces;

 private:
  StringView units_;
  IsOver isOver_;
  void* context_;
  bool odd_ = false;
  UText* text_ = nullptr;
};

}  // namespace quorvel
