// Texts to measure on, and registration under names that the table of results reads: topic/case/size/who.
#pragma once

#include <string>

#include <benchmark/benchmark.h>

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel::bench {

inline constexpr std::size_t kSizes[] = {8, 64, 1024, 65536};

enum class Script { Latin, Korean, Mixed };
inline constexpr std::pair<Script, const char*> kScripts[] = {
    {Script::Latin, "latin"}, {Script::Korean, "korean"}, {Script::Mixed, "mixed"}};

/// Text of exactly `size` units that no branch predictor learns: words of changing length in the script.
[[nodiscard]] inline String text(Script script, std::size_t size) {
  std::uint64_t state = 0x9E3779B97F4A7C15;
  const auto next = [&state](std::uint64_t below) {
    state = state * 6364136223846793005 + 1442695040888963407;
    return (state >> 33) % below;
  };
  std::u16string out;
  std::uint64_t left = 3;
  while (out.size() < size) {
    if (left-- == 0) {
      out += u' ';
      left = 2 + next(7);
      continue;
    }
    const bool korean = script == Script::Korean || (script == Script::Mixed && next(2) == 0);
    if (script == Script::Mixed && next(16) == 0 && out.size() + 2 <= size) {
      out += u"\U0001F600";
    } else {
      out += static_cast<char16_t>(korean ? 0xAC00 + next(11172) : (next(8) == 0 ? u'A' : u'a') + next(26));
    }
  }
  return String(out);
}

/// Measures `run()`; what it returns is kept from being optimised away.
template <class Run>
void add(const std::string& topicCase, std::size_t size, const char* who, Run run) {
  benchmark::RegisterBenchmark((topicCase + "/" + std::to_string(size) + "/" + who).c_str(),
                               [run](benchmark::State& state) mutable {
                                 for (auto _ : state) {
                                   auto result = run();
                                   benchmark::DoNotOptimize(result);
                                 }
                               });
}

/// What has been registered, as the words of the command line say; what main answers.
inline int run(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

}  // namespace quorvel::bench
