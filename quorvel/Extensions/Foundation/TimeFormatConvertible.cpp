#include <quorvel/Extensions/Foundation/TimeFormatConvertible.h>
#include <quorvel/Platform/Foundation/NumberText.h>

namespace quorvel {
namespace {

char* writePair(char* out, std::uint64_t number) {
  *out++ = static_cast<char>('0' + number / 10);
  *out++ = static_cast<char>('0' + number % 10);
  return out;
}

}  // namespace

namespace detail {

String clockText(std::uint64_t seconds) {
  char buffer[32];
  char* out = buffer;
  const std::uint64_t minutes = seconds / 60 % 60;
  if (seconds >= 3600) {
    const NumberBuffer hours = unsignedText(seconds / 3600);
    out += hours.ascii().copy(out, hours.ascii().size());
    *out++ = ':';
  }
  if (seconds >= 3600 || minutes > 9) {
    out = writePair(out, minutes);
  } else {
    *out++ = static_cast<char>('0' + minutes);
  }
  *out++ = ':';
  out = writePair(out, seconds % 60);
  return String::fromASCII({buffer, out});
}

String clockText(Number seconds) {
  if (seconds.kind() == Number::Kind::Unsigned) return clockText(seconds.bits());
  const std::int64_t value = seconds.longLongValue();
  const auto bits = static_cast<std::uint64_t>(value);
  return clockText(value < 0 ? 0 - bits : bits);
}

}  // namespace detail

String QVStringTimeIntervalInSeconds(double seconds) {
  if (!(seconds >= 0.0)) return {};
  return detail::clockText(seconds >= 2147483647.0 ? std::uint64_t{2147483647} : static_cast<std::uint64_t>(seconds));
}

}  // namespace quorvel
