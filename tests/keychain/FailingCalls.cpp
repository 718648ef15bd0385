#include <cerrno>
#include <cstdarg>
#include <cstdint>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <tests/keychain/FailingCalls.h>
#include <unistd.h>

// AddressSanitizer has an allocator of its own, which is left to it.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define QUORVEL_FAILING_MEMORY 1
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
}
#endif

namespace quorvel::proof {
namespace {

struct Plan {
  bool isArmed = false;
  Failing kind = Failing::Files;
  std::size_t calls = 0;
  std::size_t first = 0;
  std::size_t count = 0;
};
thread_local constinit Plan plan;

bool fails(Failing kind) {
  if (!plan.isArmed || plan.kind != kind) return false;
  ++plan.calls;
  return plan.first != 0 && plan.calls >= plan.first && plan.calls - plan.first < plan.count;
}

bool fails(Failing kind, int error) {
  if (!fails(kind)) return false;
  errno = error;
  return true;
}

/// What the program would have called without us.
template <class Function>
Function* next(const char* name, Function* /*type*/) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

mode_t modeOf(int flags, va_list rest) { return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0; }

}  // namespace

void armCalls(Failing kind, std::size_t first, std::size_t count) {
  plan = {false, kind, 0, first, count};
  plan.isArmed = true;
}

std::size_t disarmCalls() {
  plan.isArmed = false;
  return plan.calls;
}

}  // namespace quorvel::proof

using quorvel::proof::Failing;
using quorvel::proof::fails;
using quorvel::proof::next;

#define QUORVEL_NEXT(name) static auto* const real = next(#name, static_cast<decltype(&::name)>(nullptr))
#define QUORVEL_OPEN(name)                                               \
  int name(const char* path, int flags, ...) {                           \
    QUORVEL_NEXT(name);                                                  \
    va_list rest;                                                        \
    va_start(rest, flags);                                               \
    const mode_t mode = quorvel::proof::modeOf(flags, rest);             \
    va_end(rest);                                                        \
    return fails(Failing::Files, EMFILE) ? -1 : real(path, flags, mode); \
  }
#define QUORVEL_OPENAT(name)                                                     \
  int name(int folder, const char* path, int flags, ...) {                       \
    QUORVEL_NEXT(name);                                                          \
    va_list rest;                                                                \
    va_start(rest, flags);                                                       \
    const mode_t mode = quorvel::proof::modeOf(flags, rest);                     \
    va_end(rest);                                                                \
    return fails(Failing::Files, EMFILE) ? -1 : real(folder, path, flags, mode); \
  }

extern "C" {

QUORVEL_OPEN(open)
QUORVEL_OPEN(open64)
QUORVEL_OPENAT(openat)
QUORVEL_OPENAT(openat64)

ssize_t write(int file, const void* bytes, std::size_t size) {
  QUORVEL_NEXT(write);
  return fails(Failing::Files, ENOSPC) ? -1 : real(file, bytes, size);
}
/// Half of it gets to the disk before that is full.
ssize_t pwrite64(int file, const void* bytes, std::size_t size, off64_t at) {
  QUORVEL_NEXT(pwrite64);
  if (!fails(Failing::Files)) return real(file, bytes, size, at);
  (void)!real(file, bytes, size / 2, at);
  errno = EIO;
  return -1;
}
ssize_t pwrite(int file, const void* bytes, std::size_t size, off_t at) {
  QUORVEL_NEXT(pwrite);
  return fails(Failing::Files, ENOSPC) ? -1 : real(file, bytes, size, at);
}
int fsync(int file) {
  QUORVEL_NEXT(fsync);
  return fails(Failing::Files, EIO) ? -1 : real(file);
}
int fdatasync(int file) {
  QUORVEL_NEXT(fdatasync);
  return fails(Failing::Files, EIO) ? -1 : real(file);
}
int ftruncate64(int file, off64_t size) {
  QUORVEL_NEXT(ftruncate64);
  return fails(Failing::Files, EIO) ? -1 : real(file, size);
}
int ftruncate(int file, off_t size) noexcept {
  QUORVEL_NEXT(ftruncate);
  return fails(Failing::Files, EIO) ? -1 : real(file, size);
}
int renameat(int from, const char* old, int to, const char* fresh) noexcept {
  QUORVEL_NEXT(renameat);
  return fails(Failing::Files, EIO) ? -1 : real(from, old, to, fresh);
}
int renameat2(int from, const char* old, int to, const char* fresh, unsigned flags) noexcept {
  QUORVEL_NEXT(renameat2);
  return fails(Failing::Files, EIO) ? -1 : real(from, old, to, fresh, flags);
}
int mkdirat(int folder, const char* path, mode_t mode) noexcept {
  QUORVEL_NEXT(mkdirat);
  return fails(Failing::Files, ENOSPC) ? -1 : real(folder, path, mode);
}

#ifdef QUORVEL_FAILING_MEMORY
void* malloc(std::size_t size) { return fails(Failing::Memory, ENOMEM) ? nullptr : __libc_malloc(size); }
void* calloc(std::size_t count, std::size_t size) {
  return fails(Failing::Memory, ENOMEM) ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* memory, std::size_t size) {
  return fails(Failing::Memory, ENOMEM) ? nullptr : __libc_realloc(memory, size);
}
#endif

}  // extern "C"
