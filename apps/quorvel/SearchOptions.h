// What the words after `quorvel search` ask for.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel::command {

enum class ColorChoice : std::uint8_t { Auto, Always, Never };

struct SearchOptions {
  std::string reply;  // a path, or "-" for standard input
  String text;
  std::string list = "list";
  std::string field = "text";
  std::string url;
  std::uint64_t limit = 20;  // 0 for all
  bool json = false;
  bool typing = false;  // the text is half typed
  bool help = false;
  ColorChoice color = ColorChoice::Auto;
};

extern const char kSearchUsage[];

/// The options, or why the words are not understood.
[[nodiscard]] std::variant<SearchOptions, std::string> parseSearchOptions(std::span<const std::string_view> arguments);

}  // namespace quorvel::command
