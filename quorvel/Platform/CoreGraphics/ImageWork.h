// ImageWork: how a long operation on pixels is stopped and tells how far it is.
// Not here: threads; the operation runs where it is called, and so does the callback.
#pragma once

#include <functional>
#include <stop_token>
#include <utility>

namespace quorvel {

struct ImageWork {
  /// Asked between bands of rows. A stopped operation answers that it failed; its destination is then unspecified.
  std::stop_token stop{};
  /// Called between bands of rows with the part that is done, rising from above 0 to 1.
  std::function<void(double)> progress{};

  /// Tells the part that is done; false when the operation is to stop.
  [[nodiscard]] bool goesOn(double done) const {
    if (stop.stop_requested()) return false;
    if (progress) progress(done);
    return true;
  }
};

}  // namespace quorvel
