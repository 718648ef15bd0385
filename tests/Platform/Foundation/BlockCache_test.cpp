#include <algorithm>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <pthread.h>

#include <quorvel/Platform/Foundation/BlockCache.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>
#include <quorvel/Platform/Foundation/String.h>
#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {
namespace {

TEST(BlockCache, GivesEveryRequestABlockThatHoldsIt) {
  for (std::size_t bytes = 0; bytes <= 400; ++bytes) {
    const auto sizeClass = blockcache::classFor(bytes);
    if (sizeClass == blockcache::kLarge) {
      EXPECT_GT(bytes, blockcache::bytesOf(blockcache::kClasses - 1));
      continue;
    }
    EXPECT_GE(blockcache::bytesOf(sizeClass), bytes);
    EXPECT_TRUE(sizeClass == 0 || blockcache::bytesOf(sizeClass - 1) < bytes) << bytes << ": a smaller class holds it";
  }
}

String textOf(std::size_t size, char16_t unit) {
  return String::build(size, [&](char16_t* out) {
    std::fill_n(out, size, unit);
    return size;
  });
}

bool holds(const String& text, std::size_t size, char16_t unit) {
  return text.size() == size && std::ranges::all_of(StringView(text).units(), [unit](char16_t u) { return u == unit; });
}

// Blocks change their thread, their class and their length; none is ever in two hands.
TEST(BlockCache, TextsThatOneThreadMakesAndAnotherDropsStayWhole) {
  constexpr std::size_t kSizes = 200;
  for (int round = 0; round < 20; ++round) {
    std::vector<String> texts;
    for (std::size_t size = 0; size < kSizes; ++size)
      texts.push_back(textOf(size, static_cast<char16_t>(u'a' + round)));
    std::thread([&texts] {
      std::vector<String> others;
      for (std::size_t i = 0; i < kSizes; i += 2) texts[i] = textOf(kSizes - i, u'z');
      for (std::size_t i = 0; i < kSizes; ++i) others.push_back(textOf(i, u'y'));
      for (std::size_t i = 0; i < kSizes; ++i) EXPECT_TRUE(holds(others[i], i, u'y'));
    }).join();
    for (std::size_t i = 0; i < kSizes; ++i) {
      EXPECT_TRUE(i % 2 ? holds(texts[i], i, static_cast<char16_t>(u'a' + round)) : holds(texts[i], kSizes - i, u'z'));
    }
  }
}

// Texts that die after the cache has been cleared: keys made later end later.
TEST(BlockCache, TextsMayOutliveTheCacheOfTheirThread) {
  static_cast<void>(textOf(30, u'f'));  // makes the cache's key
  using Texts = std::vector<String>;
  pthread_key_t late;
  const auto end = [](void* kept) {
    const std::unique_ptr<Texts> texts(static_cast<Texts*>(kept));
    for (const String& text : *texts) EXPECT_TRUE(holds(text, 30, u'l'));
    texts->clear();
    EXPECT_TRUE(holds(textOf(30, u'n'), 30, u'n'));
  };
  ASSERT_EQ(pthread_key_create(&late, end), 0);
  std::thread([&late] {
    auto texts = std::make_unique<Texts>();
    for (int i = 0; i < 100; ++i) texts->push_back(textOf(30, u'l'));
    for (int i = 0; i < 100; ++i) static_cast<void>(textOf(static_cast<std::size_t>(8 + i), u'x'));
    ASSERT_EQ(pthread_setspecific(late, texts.release()), 0);
  }).join();
  pthread_key_delete(late);
}

TEST(BlockCache, ABuilderThatGrowsAndShrinksKeepsItsUnits) {
  for (const std::size_t size : {1U, 8U, 119U, 120U, 121U, 124U, 125U, 240U, 5000U}) {
    StringBuilder builder;
    for (std::size_t i = 0; i < size; ++i) builder.append(static_cast<char16_t>(i + 1));
    builder.truncate(size / 2);
    const String text = builder.finish();
    ASSERT_EQ(text.size(), size / 2);
    for (std::size_t i = 0; i < text.size(); ++i) EXPECT_EQ(text[i], i + 1);
  }
}

// What a reader made in pages: parts outlive the rest, grow, and die on another thread.
TEST(BlockPages, PartsOfAReplyOutliveIt) {
  std::string reply = "[";
  for (int i = 0; i < 2000; ++i) {
    reply += R"({"sender":"a longer name )" + std::to_string(i) + R"(","list":["one more text",)" + std::to_string(i) +
             R"(],"text":")" + std::string(static_cast<std::size_t>(i) % 3000, 'x') + "\"},";
  }
  reply.back() = ']';
  List lists;
  Dictionary last;
  std::vector<String> senders;
  {
    const Value value = NSJSONSerialization::parse(reply);
    ASSERT_TRUE(value.isList());
    for (const Value& record : *value.asList()) {
      senders.push_back(String((*record.asDictionary())[u"sender"].text()));
      lists.append((*record.asDictionary())[u"list"]);
      last = *record.asDictionary();
    }
  }
  for (int i = 0; i < 40; ++i) last.set(String::fromASCII("key " + std::to_string(i)), i);
  EXPECT_EQ(last.size(), 43U);
  EXPECT_EQ(last[u"text"].text().size(), 1999U);
  std::thread([&senders, &lists] {
    for (std::size_t i = 0; i < lists.size(); ++i) {
      List list = *lists[i].asList();
      list.append(u"grown");
      EXPECT_EQ(list, (List{u"one more text", static_cast<int>(i), u"grown"}));
      EXPECT_EQ(senders[i], String::fromASCII("a longer name " + std::to_string(i)));
    }
    lists = List();
    senders.clear();
  }).join();
}

}  // namespace
}  // namespace quorvel
