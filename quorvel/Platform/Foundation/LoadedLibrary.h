// LoadedLibrary: a library that is loaded when it is first needed, and its functions by name. Included by sources only.
// Not here: libraries that the program links.
#pragma once

namespace quorvel {

/// A class over it names the functions that it wants, each by `QUORVEL_FUNCTION(name);`, a member that is called as
/// what it points at. The library stays loaded as long as the process lives.
class LoadedLibrary {
 public:
  /// True when the library was found and has every function.
  [[nodiscard]] bool isComplete() const { return isComplete_; }

 protected:
  explicit LoadedLibrary(const char* fileName);

  template <class Function>
  [[nodiscard]] Function* find(const char* name, Function* /*type*/) {
    return reinterpret_cast<Function*>(symbol(name));
  }

 private:
  [[nodiscard]] void* symbol(const char* name);

  void* handle_;
  bool isComplete_;
};

// NOLINTNEXTLINE(bugprone-macro-parentheses): a name cannot stand in parentheses
#define QUORVEL_FUNCTION(name) decltype(&::name) name = find(#name, static_cast<decltype(&::name)>(nullptr))

}  // namespace quorvel
