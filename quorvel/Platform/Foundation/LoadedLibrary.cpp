#include <dlfcn.h>

#include <quorvel/Platform/Foundation/LoadedLibrary.h>

namespace quorvel {

LoadedLibrary::LoadedLibrary(const char* fileName)
    : handle_(::dlopen(fileName, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE)), isComplete_(handle_ != nullptr) {}

void* LoadedLibrary::symbol(const char* name) {
  void* const found = handle_ ? ::dlsym(handle_, name) : nullptr;
  isComplete_ = isComplete_ && found != nullptr;
  return found;
}

}  // namespace quorvel
