#include <algorithm>
#include <array>

#include <unicode/utext.h>

#include <quorvel/Platform/Foundation/GuardedText.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

constexpr std::int64_t kPiece = 128;

constexpr std::array<char16_t, kPiece + 2> filledWith(char16_t unit) {
  std::array<char16_t, kPiece + 2> units{};
  for (char16_t& each : units) each = unit;
  return units;
}

// Two kinds in turn, so that two places of the text do not look alike.
constexpr auto kNoise = filledWith(0xFFFF);
constexpr auto kOtherNoise = filledWith(0xFFFE);

}  // namespace

/// The functions of a UText over a GuardedText.
struct GuardedText::Pieces {
  static GuardedText& of(const UText* text) { return *static_cast<GuardedText*>(const_cast<void*>(text->context)); }

  /// Where a piece begins, moved off the middle of a pair.
  static std::int64_t border(StringView units, std::int64_t index) {
    const auto at = static_cast<std::size_t>(std::min(index, static_cast<std::int64_t>(units.size())));
    const bool inPair =
        at > 0 && at < units.size() && unicode::isLowSurrogate(units[at]) && unicode::isHighSurrogate(units[at - 1]);
    return static_cast<std::int64_t>(at + (inPair ? 1 : 0));
  }

  static UBool access(UText* text, std::int64_t index, UBool forward) {
    GuardedText& self = of(text);
    const auto size = static_cast<std::int64_t>(self.units_.size());
    index = std::clamp(index, std::int64_t{0}, size);
    const bool isInside = forward ? index < size : index > 0;
    const std::int64_t wanted = std::clamp(forward ? index : index - 1, std::int64_t{0}, size - 1);
    std::int64_t start = border(self.units_, wanted / kPiece * kPiece);
    if (start > wanted) start = border(self.units_, (wanted / kPiece - 1) * kPiece);
    const std::int64_t end = border(self.units_, (start / kPiece + 1) * kPiece);
    text->chunkContents = self.units_.data() + start;
    if (self.isOver_(self.context_)) {
      self.odd_ = !self.odd_;
      text->chunkContents = self.odd_ ? kNoise.data() : kOtherNoise.data();
    }
    text->chunkNativeStart = start;
    text->chunkNativeLimit = end;
    text->chunkLength = static_cast<std::int32_t>(end - start);
    text->nativeIndexingLimit = text->chunkLength;
    text->chunkOffset = static_cast<std::int32_t>(index - start);
    return isInside;
  }
  static std::int64_t length(UText* text) { return static_cast<std::int64_t>(of(text).units_.size()); }
  static std::int32_t extract(UText*, std::int64_t, std::int64_t, char16_t*, std::int32_t, UErrorCode* status) {
    *status = U_UNSUPPORTED_ERROR;
    return 0;
  }
  static UText* clone(UText* to, const UText* from, UBool, UErrorCode* status) { return open(to, of(from), status); }

  static UText* open(UText* to, GuardedText& self, UErrorCode* status) {
    static constexpr UTextFuncs kFunctions = {sizeof(UTextFuncs),
                                              0,
                                              0,
                                              0,
                                              clone,
                                              length,
                                              access,
                                              extract,
                                              nullptr,
                                              nullptr,
                                              nullptr,
                                              nullptr,
                                              nullptr,
                                              nullptr,
                                              nullptr,
                                              nullptr};
    UText* result = utext_setup(to, 0, status);
    if (U_FAILURE(*status)) return result;
    result->pFuncs = &kFunctions;
    result->context = &self;
    access(result, 0, 1);
    return result;
  }
};

GuardedText::GuardedText(StringView text, IsOver isOver, void* context)
    : units_(text), isOver_(isOver), context_(context) {
  UErrorCode status = U_ZERO_ERROR;
  text_ = Pieces::open(nullptr, *this, &status);
}

GuardedText::~GuardedText() {
  if (text_) utext_close(text_);
}

}  // namespace quorvel
