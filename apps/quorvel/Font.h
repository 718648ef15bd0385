// The font that attributed text carries through the command: a name and nothing else.
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel::command {

struct Font {
  String name;
  friend bool operator==(const Font& a, const Font& b) = default;

  [[nodiscard]] static String className() { return u"UIFont"; }
  [[nodiscard]] String description() const { return name; }
  [[nodiscard]] std::uint64_t hash() const { return Value(name).hash(); }
};

}  // namespace quorvel::command
