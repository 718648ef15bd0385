// Seeded hashing: the seed is drawn once for each process, so that nobody can prepare colliding keys.
#pragma once

#include <cstddef>
#include <cstdint>

namespace quorvel::hashing {

[[nodiscard]] std::uint64_t seed();

/// Folds the 128-bit product of the two, each mixed with the seed.
[[nodiscard]] std::uint64_t mix(std::uint64_t a, std::uint64_t b);

[[nodiscard]] std::uint64_t bytes(const void* data, std::size_t size);

}  // namespace quorvel::hashing
