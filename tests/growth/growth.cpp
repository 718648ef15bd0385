// usage: quorvel-growth [WORD]
// How the time of every operation of the table grows with its texts: each text among its example's arguments is
// replaced by texts of n, 2n and 4n units, of many kinds, and no doubling may take more than 2.3 times as long. The
// texts stay within the caches, beyond which each unit takes longer; quick operations are called as often as fills a
// millisecond of CPU time for n units. WORD keeps the operations whose names hold it.
#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <limits>
#include <string>
#include <vector>

#include <apps/quorvel/Operation.h>
#include <malloc.h>

#include <quorvel/Extensions/Foundation/NSString+TextSearch.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>

namespace quorvel {
namespace {

using command::Operation;

constexpr double kMostGrowth = 2.3;
constexpr double kLeastSeconds = 0.001;
constexpr std::size_t kUnits = 1 << 13;
constexpr std::size_t kMostCalls = 4096;  // what is over in a quarter of a microsecond looks at no text
constexpr double kLongSeconds = 0.1;
constexpr int kRetries = 12;

/// What is repeated, after a beginning and before an end that stand once.
struct Kind {
  const char* name;
  std::u16string_view piece;
  std::u16string_view first = {};
  std::u16string_view last = {};
};

constexpr Kind kKinds[] = {
    {"Latin", u"Plain words of Latin text, "},
    {"Korean", u"\uD55C\uAE00 \uD14D\uC2A4\uD2B8 "},
    {"bare letters", u"\u3131"},
    {"jamo", u"\u1100\u1161\u11A8"},
    {"leading jamo", u"\u1100"},
    {"one letter with marks", u"\u0301", u"a"},
    {"marks out of order", u"\u0301\u0323\u0345", u"a"},
    {"letters with marks", u"e\u0301\u0323"},
    {"Japanese", u"\u304B\u3099\u6F22\u5B57"},
    {"an emoji chain", u"\u200D\xD83D\xDC69", u"\xD83D\xDC69"},
    {"flags", u"\xD83C\xDDF0"},
    {"halves of pairs", u"\xD83D"},
    {"letters that grow in lower case", u"\u0130"},
    {"sharp s", u"\u00DFs"},
    {"sigmas and full stops", u".", u"\u03A3"},
    {"sigmas", u"\u03A3\u0301"},
    {"one letter", u"a"},
    {"one letter, another at the end", u"a", {}, u"b"},
    {"spaces", u" "},
    {"spaces with a letter at the end", u" ", {}, u"x"},
    {"line feeds", u"\n"},
    {"controls", u"\u0001\u00AD"},
    {"no-break spaces", u"\u00A0x"},
    {"zeros", std::u16string_view(u"\0", 1)},
    {"digits", u"9"},
    {"percent signs", u"%"},
    {"escapes", u"%ED%95%9C"},
    {"escaped lead bytes", u"%F0"},
    {"ampersands", u"&=&"},
    {"pairs", u"k=v&"},
    {"pairs of their own", u"&a=\u3131b"},
    {"markup", u"<&>\"'"},
    {"entities", u"&amp;lt;"},
    {"reverse solidi", u"\\"},
    {"solidi", u"/"},
    {"path segments", u"a/../"},
    {"full stops", u"."},
    {"version", u"1.0."},
    {"numbered names", u" (1).txt"},
    {"opened parentheses", u"("},
    {"opened lists", u"["},
    {"opened records", u"{\"a\":"},
    {"a list", u"1,", u"[", u"1]"},
    {"a list of texts", u"\"\\u00e9\",", u"[", u"1]"},
    {"a record", u"\"a\":1,", u"{", u"\"b\":1}"},
    {"an unfinished text", u"x", u"[\""},
    {"schemes", u"http://"},
    {"hosts", u"a.com "},
    {"one long host", u"a.", u"http://", u"com"},
    {"labels", u"a-"},
    {"mail signs", u"a@"},
    {"brackets in an address", u"(", u"http://a.com/"},
    {"closed brackets in an address", u")", u"http://a.com/"},
    {"placeholders", u"%@"},
    {"numbered placeholders", u"%1$@"},
    {"dollars", u"$1"},
    {"commas", u", "},
    {"hexadecimal digits", u"f"},
    {"hyphens", u"zh-Hant-"},
};

String repeated(const Kind& kind, std::size_t size) {
  std::u16string text(kind.first);
  while (text.size() + kind.piece.size() + kind.last.size() <= size) text += kind.piece;
  text += kind.last;
  return String(text);
}

double cpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <class Work>
double secondsOf(Work work) {
  const double before = cpuSeconds();
  work();
  return cpuSeconds() - before;
}

bool isAttributed(const Value& argument) {
  const Dictionary* members = argument.asDictionary();
  return members && (*members)[u"text"].isString();
}

/// The arguments of an operation's example with one of its texts, or all of them, replaced.
class Case {
 public:
  static constexpr std::size_t kAll = SIZE_MAX;

  Case(const Operation& operation, List example, std::size_t place, const Kind& kind)
      : operation_(&operation), example_(std::move(example)), place_(place), kind_(kind), piece_(kind.piece) {}

  /// Of `calls` calls with texts of `size` units.
  [[nodiscard]] double seconds(std::size_t size, std::size_t calls) const {
    std::vector<Value> arguments(example_.begin(), example_.end());
    std::size_t length = size;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
      if (place_ != i && (place_ != kAll || !(arguments[i].isString() || isAttributed(arguments[i])))) continue;
      arguments[i] = repeated({kind_.name, piece_, kind_.first, kind_.last}, length);
      length = std::max<std::size_t>(length / 4, 1);  // what is looked for is shorter than where
    }
    std::string error;
    return secondsOf([&] {
      for (std::size_t i = 0; i < calls; ++i) static_cast<void>(operation_->invoke(*operation_, arguments, error));
    });
  }
  [[nodiscard]] std::string name() const {
    return std::string(operation_->family) + " " + std::string(operation_->name) + ", " +
           (place_ == kAll ? "all texts" : "text " + std::to_string(place_ + 1)) + " of " + kind_.name;
  }

 private:
  const Operation* operation_;
  List example_;
  std::size_t place_;
  Kind kind_;
  std::u16string piece_;
};

/// The least times of n, 2n and 4n units.
struct Growth {
  std::size_t calls = 1;
  std::array<double, 3> seconds{};

  explicit Growth(const Case& measured) {
    for (double taken = 0; calls < kMostCalls; calls *= taken < kLeastSeconds / 16 ? 8U : 2U) {
      taken = measured.seconds(kUnits, calls);
      if (taken >= kLeastSeconds) break;
    }
    seconds.fill(std::numeric_limits<double>::infinity());
    repeat(measured);
    const int retries = seconds[2] < kLongSeconds ? kRetries : 1;  // noise is not long
    for (int i = 0; i < retries && !isLinear(); ++i) repeat(measured);
  }
  void repeat(const Case& measured) {
    std::size_t units = kUnits;
    for (double& least : seconds) {
      least = std::min(least, measured.seconds(units, calls));
      units *= 2;
    }
  }
  [[nodiscard]] double step(std::size_t i) const { return seconds[i + 1] / seconds[i]; }
  [[nodiscard]] bool isLinear() const { return step(0) * step(1) <= kMostGrowth * kMostGrowth; }
};

struct Total {
  int cases = 0;
  std::vector<Case> suspects;  // which are measured again when all else is done
  int faults = 0;
};

/// What goes through a text at the memory's speed is seen to grow where the text leaves a cache, and settles there:
/// three more doublings then take what three doublings may. The square of the length does not settle.
bool settles(const Case& measured, const Growth& growth) {
  if (growth.seconds[2] >= kLongSeconds) return false;
  std::array<double, 2> least{};
  least.fill(std::numeric_limits<double>::infinity());
  for (int i = 0; i < 5; ++i) {
    least[0] = std::min(least[0], measured.seconds(kUnits * 8, growth.calls));
    least[1] = std::min(least[1], measured.seconds(kUnits * 64, growth.calls));
  }
  return least[1] / least[0] <= kMostGrowth * kMostGrowth * kMostGrowth;
}

bool isLinear(const Case& measured, bool tells) {
  const Growth growth(measured);
  if (growth.isLinear() || settles(measured, growth)) return true;
  if (tells) {
    std::printf("growth: %s: %.1f us at %zu units, then %.2f and %.2f times\n", measured.name().c_str(),
                growth.seconds[0] * 1e6 / static_cast<double>(growth.calls), kUnits, growth.step(0), growth.step(1));
  }
  return false;
}

void measure(const Case& measured, Total& total) {
  ++total.cases;
  if (!isLinear(measured, false)) total.suspects.push_back(measured);
}

/// What a busy machine made long is not long every time.
void measureSuspects(Total& total) {
  for (int round = 0; round < 3; ++round) {
    std::erase_if(total.suspects, [round](const Case& suspect) { return isLinear(suspect, round == 2); });
  }
  total.faults += static_cast<int>(total.suspects.size());
}

void measure(const Operation& operation, Total& total) {
  const Value parsed = NSJSONSerialization::parseFragment(operation.example, nullptr);
  const List example = *parsed.asList();
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < example.size(); ++i) {
    if (example[i].isString() || isAttributed(example[i])) places.push_back(i);
  }
  if (places.size() > 1) places.push_back(Case::kAll);
  for (const std::size_t place : places) {
    for (const Kind& kind : kKinds) measure(Case(operation, example, place, kind), total);
    for (const std::size_t other : places) {  // texts full of the example's own, and of what it looks for
      if (other == Case::kAll || !example[other].isString() || example[other].text().isEmpty()) continue;
      const std::u16string piece(example[other].text().units().begin(), example[other].text().units().end());
      measure(Case(operation, example, place, {"the example's own", piece}), total);
    }
  }
}

/// Every prefix of a search term of bare letters is asked for; a million of them must not be felt.
void measureMillionLetters(Total& total) {
  const String letters = repeated({"bare letters", u"\u3131"}, 1'000'000);
  double least = std::numeric_limits<double>::infinity();
  for (int i = 0; i < 10; ++i) {
    least = std::min(least, secondsOf([&] { static_cast<void>(NSStringTextSearch::removeInvaildSearchStr(letters)); }));
  }
  ++total.cases;
  if (least < 0.05) return;
  ++total.faults;
  std::printf("growth: removeInvaildSearchStr: takes %.1f ms for a million letters\n", least * 1000);
}

int run(std::string_view word) {
  // Pages that are given back and taken anew cost more than most operations.
  mallopt(M_MMAP_THRESHOLD, 1 << 25);  // the most that it takes
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
  Total total;
  for (const Operation& operation : command::allOperations()) {
    if (operation.name.find(word) != std::string_view::npos) measure(operation, total);
  }
  measureSuspects(total);
  measureMillionLetters(total);
  std::printf("growth: %d cases, %d beyond %.1f a doubling\n", total.cases, total.faults, kMostGrowth);
  return total.faults || total.cases < 2 ? 1 : 0;
}

}  // namespace
}  // namespace quorvel

int main(int argc, char** argv) { return quorvel::run(argc > 1 ? argv[1] : ""); }
