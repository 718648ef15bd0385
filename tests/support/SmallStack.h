// Runs a walk over deep values where recursion would show: on a thread with a small stack.
#pragma once

#include <gtest/gtest.h>
#include <pthread.h>

namespace quorvel::test {

/// Runs `walk` to its end on a stack of 256 KiB.
inline void onSmallStack(void (*walk)()) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 256 * 1024);
  const auto run = [](void* argument) -> void* {
    (*static_cast<void (**)()>(argument))();
    return nullptr;
  };
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &walk), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

}  // namespace quorvel::test
