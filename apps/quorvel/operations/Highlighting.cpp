#include <apps/quorvel/operations/Tables.h>

namespace quorvel::command {

std::span<const Operation> highlightingOperations() { return {}; }

}  // namespace quorvel::command
