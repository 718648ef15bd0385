#include <algorithm>
#include <vector>

#include <quorvel/Platform/Foundation/Description.h>
#include <quorvel/Platform/Foundation/KeyValueCoding.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

bool namesProperty(StringView key) { return !key.isEmpty() && key.front() == u'@'; }

Value propertyOf(const Dictionary& dictionary, StringView name) {
  if (name == u"count") return dictionary.size();
  if (name == u"description") return description(dictionary);
  const bool keys = name == u"allKeys";
  if (!keys && name != u"allValues") return nil;
  List result;
  result.reserve(dictionary.size());
  for (const Entry& entry : dictionary) result.append(keys ? entry.key : entry.value);
  return result;
}

/// The answer of everything but a list.
Value answerOf(const Value& receiver, StringView key) {
  if (receiver.isNull()) return receiver;
  const Dictionary* dictionary = receiver.asDictionary();
  if (!dictionary) return key == u"self" ? receiver : Value(nil);
  return namesProperty(key) ? propertyOf(*dictionary, key.sub(1)) : (*dictionary)[key];
}

/// Lists in lists are mapped by a stack of their own, however deep they are nested.
List mapList(const List& list, StringView key) {
  struct Level {
    const List* source;
    List answers;
  };
  std::vector<Level> levels;
  levels.push_back({&list, {}});
  while (true) {
    Level& level = levels.back();
    const std::size_t index = level.answers.size();
    if (index < level.source->size()) {
      const Value& element = (*level.source)[index];
      if (const List* inner = element.asList(); inner && !namesProperty(key)) {
        levels.push_back({inner, {}});
        continue;
      }
      const Value answer = valueForKey(element, key);
      level.answers.append(answer.isNil() ? Value(null) : answer);
      continue;
    }
    List finished = std::move(level.answers);
    levels.pop_back();
    if (levels.empty()) return finished;
    levels.back().answers.append(Value(std::move(finished)));
  }
}

}  // namespace

Value valueForKey(const Value& receiver, StringView key) {
  const List* list = receiver.asList();
  if (!list) return answerOf(receiver, key);
  if (!namesProperty(key)) return mapList(*list, key);
  return key == u"@count" ? Value(list->size()) : Value(nil);
}

Value valueForKeyPath(const Value& receiver, StringView path) {
  Value value = receiver;
  for (std::size_t start = 0; start <= path.size() && !value.isNil();) {
    const std::size_t end = std::min(unicode::findUnit(path, u'.', start), path.size());
    value = valueForKey(value, path.sub(start, end - start));
    start = end + 1;
  }
  return value;
}

}  // namespace quorvel
