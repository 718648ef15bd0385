// The formatter on arbitrary formats: it ends, stays within its bounds and keeps plain text as it is.
#include <fuzz/FuzzInput.h>

#include <quorvel/Platform/Foundation/Description.h>
#include <quorvel/Platform/Foundation/Format.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/Unicode.h>

using namespace quorvel;
using fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const Value arguments[] = {input.text(), static_cast<int>(input.byte()), nil, 1e300, List{1, u"a b"}};
  const String format = input.rest();
  const String objects = formatObjects(format, arguments);
  const String values = formatValues(format, arguments);
  if (unicode::findUnit(format, u'%') == unicode::kInvalid) {
    require(objects == format && values == format, "a format without conversions is its own result");
  }
  const std::size_t bound = (format.size() + 1) * (limits::kFormatWidth * 2 + 1024);
  require(objects.size() <= bound && values.size() <= bound, "the result is bounded by the format's length");
  require(formatObjects(u"%@", std::span(arguments).first(1)) == *arguments[0].asString(), "%@ of a text is the text");
  return 0;
}
