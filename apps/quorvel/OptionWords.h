// OptionWords: what stands behind a command, its options told from the rest in one way for all commands.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace quorvel::command {

/// Words one by one. An option begins with "--"; its value is what follows its "=", or the next word. Behind "--" no
/// word is an option.
///
///     OptionWords words(given, {"--json", "--on="});
///     while (words.next()) {
///       if (words.name == "--json") ...            // an option without a value
///       else if (words.name == "--on") ...         // words.value
///       else ...                                   // no option: words.name is empty, words.value the word
///     }
///     if (!words.error.empty()) ...
class OptionWords {
 public:
  /// `known` are the options that there are, those that take a value with a "=" behind them.
  OptionWords(std::span<const std::string_view> words, std::span<const std::string_view> known)
      : words_(words), known_(known) {}

  /// False at the end, and where `error` says what is not understood.
  [[nodiscard]] bool next();
  /// Takes the word that was given last for one too many.
  void refuse();

  std::string_view name{};
  std::string_view value{};
  std::string error{};

 private:
  bool readOption(std::string_view word);

  std::span<const std::string_view> words_;
  std::span<const std::string_view> known_;
  bool takesOptions_ = true;
};

}  // namespace quorvel::command
