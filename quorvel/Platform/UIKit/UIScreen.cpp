#include <mutex>

#include <quorvel/Platform/UIKit/UIScreen.h>

namespace quorvel {
namespace {

struct MainScreen {
  std::mutex mutex;
  UIScreen screen;
};

MainScreen& mainScreenHolder() {
  static MainScreen holder;
  return holder;
}

}  // namespace

UIScreen UIScreen::mainScreen() {
  MainScreen& holder = mainScreenHolder();
  const std::lock_guard guard(holder.mutex);
  return holder.screen;
}

void UIScreen::setMain(const UIScreen& screen) {
  MainScreen& holder = mainScreenHolder();
  const std::lock_guard guard(holder.mutex);
  holder.screen = screen;
}

}  // namespace quorvel
