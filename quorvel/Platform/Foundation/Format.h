// Formatting with printf-style formats from callers, without the C library's printf and without its locale.
#pragma once

#include <span>

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// `stringWithFormat:` where every argument is an object. "%@" and "%1$@" print an argument's description ('(null)' for
/// nil and for a position past the arguments), "%%" one percent sign; every other conversion prints nothing and takes
/// no argument, its flags, width and precision included. A "%" that no ASCII letter, "@" or "%" ends (as in "100%") is
/// no conversion and prints itself. "%@" honours width and precision, in UTF-16 units; a precision splits no
/// surrogate pair. nil format gives an empty text. At most about `limits::kFormatLength` units are written.
[[nodiscard]] String formatObjects(StringView format, std::span<const Value> arguments);

/// `String(format:arguments:)`: besides objects the number conversions d i u x X o c f F e E g G a A s p and their
/// flags, width, precision, length and position are honoured, each reading its argument's number (0 where it is none;
/// %s and %S print an argument's text). Integers are as wide as their length says; without one a number that fits 32
/// bits has 32, a larger one 64, so that no digit is lost. "*" reads an argument. %n and unknown conversions print
/// nothing and take no argument. Width and precision are bounded by `limits::kFormatWidth`.
[[nodiscard]] String formatValues(StringView format, std::span<const Value> arguments);

}  // namespace quorvel
