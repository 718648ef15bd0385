#include <apps/quorvel/operations/Tables.h>

namespace quorvel::command {

std::span<const Operation> colorOperations() { return {}; }

}  // namespace quorvel::command
