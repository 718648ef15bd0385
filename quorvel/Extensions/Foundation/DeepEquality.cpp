#include <quorvel/Extensions/Foundation/DeepEquality.h>

namespace quorvel {

bool NSArrayAdditions::isEqualArray(const std::optional<List>& first, const std::optional<List>& second) {
  return first == second;
}

bool NSDictionaryAddtion::isEqualDictionary(const std::optional<Dictionary>& first,
                                            const std::optional<Dictionary>& second) {
  return first == second;
}

}  // namespace quorvel
