#include <algorithm>
#include <utility>

#include <apps/quorvel/Operation.h>
#include <apps/quorvel/OptionWords.h>

namespace quorvel::command {

bool OptionWords::next() {
  if (words_.empty() || !error.empty()) return false;
  const std::string_view word = words_.front();
  words_ = words_.subspan(1);
  if (takesOptions_ && word == "--") {
    takesOptions_ = false;
    return next();
  }
  if (takesOptions_ && word.starts_with("--")) return readOption(word);
  name = {};
  value = word;
  return true;
}

void OptionWords::refuse() { error = joined({"unexpected '", value, "'"}); }

bool OptionWords::readOption(std::string_view word) {
  const std::size_t equals = word.find('=');
  const bool hasValue = equals != word.npos;
  name = word.substr(0, equals);
  value = hasValue ? word.substr(equals + 1) : std::string_view();
  const bool isFlag = std::ranges::find(known_, name) != known_.end();
  const bool takesValue = std::ranges::find(known_, joined({name, "="})) != known_.end();
  if (!isFlag && !takesValue) return error = joined({"unknown option '", name, "'"}), false;
  if (isFlag && hasValue) return error = joined({name, " takes no value"}), false;
  if (isFlag || hasValue) return true;
  if (words_.empty()) return error = joined({name, " needs a value"}), false;
  value = words_.front();
  words_ = words_.subspan(1);
  return true;
}

}  // namespace quorvel::command
