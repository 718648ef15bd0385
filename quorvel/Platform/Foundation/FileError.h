// FileError: why a file operation failed, as the system's number.
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

struct FileError {
  int number = 0;  // errno; 0 when nothing failed

  [[nodiscard]] explicit operator bool() const { return number != 0; }
  /// The system's English words for the number, whatever the locale.
  [[nodiscard]] String description() const;
  friend constexpr bool operator==(FileError, FileError) = default;
};

}  // namespace quorvel
