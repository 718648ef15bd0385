// SmallStack: a stack for walks over nested values; its first frames need no allocation.
#pragma once

#include <cstddef>
#include <type_traits>
#include <vector>

namespace quorvel::detail {

template <class Frame, std::size_t kInline = 16>
class SmallStack {
  static_assert(std::is_trivially_copyable_v<Frame>);

 public:
  [[nodiscard]] bool isEmpty() const { return size_ == 0; }
  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] Frame& top() { return size_ <= kInline ? inline_[size_ - 1] : more_[size_ - 1 - kInline]; }
  void push(const Frame& frame) {
    if (size_ < kInline) {
      inline_[size_] = frame;
    } else {
      more_.push_back(frame);
    }
    ++size_;
  }
  void pop() {
    if (size_ > kInline) more_.pop_back();
    --size_;
  }

 private:
  Frame inline_[kInline];
  std::vector<Frame> more_;
  std::size_t size_ = 0;
};

}  // namespace quorvel::detail
