#include <string>
#include <vector>

#include <quorvel/Platform/Foundation/Description.h>
#include <quorvel/Platform/Foundation/FirstDifference.h>
#include <quorvel/Platform/Foundation/ValueComparison.h>

namespace quorvel {
namespace {

using detail::ValueComparison;

void appendToken(std::u16string& pointer, StringView token) {
  pointer += u'/';
  for (const char16_t unit : token) {
    if (unit == u'~') {
      pointer += u"~0";
    } else if (unit == u'/') {
      pointer += u"~1";
    } else {
      pointer += unit;
    }
  }
}

String pointerTo(detail::SmallStack<ValueComparison::Frame>& path) {
  std::vector<Value> tokens;
  for (; !path.isEmpty(); path.pop()) {
    const Value* key = ValueComparison::lastChildren(path.top()).key;
    tokens.push_back(key ? *key : Value(path.top().next - 1));
  }
  std::u16string pointer;
  for (std::size_t left = tokens.size(); left-- > 0;) appendToken(pointer, description(tokens[left]));
  return pointer;
}

Value valueOrNil(const Value* value) { return value ? *value : Value(nil); }

}  // namespace

std::optional<Difference> firstDifference(const Value& a, const Value& b) {
  ValueComparison comparison(ValueComparison::Sizes::LookInside);
  if (comparison.run(a, b)) return nil;
  if (comparison.path().isEmpty()) return Difference{{}, a, b};
  const ValueComparison::Children children = ValueComparison::lastChildren(comparison.path().top());
  Difference difference{{}, valueOrNil(children.a), valueOrNil(children.b)};
  difference.pointer = pointerTo(comparison.path());
  return difference;
}

}  // namespace quorvel
