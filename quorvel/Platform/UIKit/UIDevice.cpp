#include <mutex>

#include <sys/utsname.h>

#include <quorvel/Platform/Foundation/Nil.h>
#include <quorvel/Platform/UIKit/UIDevice.h>

namespace quorvel {
namespace {

struct ToldMachine {
  std::mutex mutex;
  std::optional<String> machine;
};

ToldMachine& toldMachine() {
  static ToldMachine told;
  return told;
}

}  // namespace

std::optional<String> UIDevice::machine() const {
  {
    ToldMachine& told = toldMachine();
    const std::lock_guard guard(told.mutex);
    if (told.machine) return told.machine;
  }
  utsname record{};
  return ::uname(&record) == 0 ? String::fromUTF8(record.machine) : nil;
}

void UIDevice::setMachine(const std::optional<String>& machine) {
  ToldMachine& told = toldMachine();
  const std::lock_guard guard(told.mutex);
  told.machine = machine;
}

}  // namespace quorvel
