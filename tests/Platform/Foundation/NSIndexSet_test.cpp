#include <random>
#include <set>

#include <gtest/gtest.h>

#include <quorvel/Platform/Foundation/NSIndexPath.h>
#include <quorvel/Platform/Foundation/NSIndexSet.h>

namespace quorvel {

TEST(NSIndexSet, IsTheSetOfItsIndexes) {
  std::mt19937 random(3);
  for (int round = 0; round < 300; ++round) {
    std::vector<std::uint64_t> indexes;
    for (std::size_t left = random() % 40; left > 0; --left) indexes.push_back(random() % 50);
    const std::set<std::uint64_t> expected(indexes.begin(), indexes.end());
    const NSIndexSet set(indexes);
    ASSERT_EQ(set.count(), expected.size());
    for (std::uint64_t index = 0; index < 60; ++index) ASSERT_EQ(set.contains(index), expected.contains(index));
    for (std::size_t i = 1; i < set.ranges().size(); ++i) {
      ASSERT_GT(set.ranges()[i].location, set.ranges()[i - 1].end()) << "neighbours are one run";
    }
  }
  EXPECT_EQ(NSIndexSet({2, 1, 0}), NSIndexSet::inRange({0, 3}));
  EXPECT_EQ(NSIndexSet::inRange({7, 0}), NSIndexSet());
  EXPECT_TRUE(NSIndexSet({kNotFound - 1}).contains(kNotFound - 1));
  EXPECT_EQ(NSIndexSet::inRange({0, kNotFound}).count(), kNotFound);
}

TEST(NSIndexPath, IsAValue) {
  const Value value = NSIndexPath{1, -3};
  EXPECT_EQ(value, Value(NSIndexPath{1, -3}));
  EXPECT_EQ(value.hash(), Value(NSIndexPath{1, -3}).hash());
  EXPECT_NE(value, Value(NSIndexPath{-3, 1}));
  EXPECT_LT((NSIndexPath{1, 9}), (NSIndexPath{2, 0}));
  EXPECT_EQ((NSIndexPath{1, -3}.description()), u"{length = 2, path = 1 - -3}");
}

}  // namespace quorvel
