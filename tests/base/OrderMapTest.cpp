#include "korvat/base/OrderMap.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zavri::base {
namespace {

using Map = TOrderMap<int>;

std::vector<std::string> keysOf(const Map& map) {
  std::vector<std::string> keys;
  for (const auto& [key, value] : map) keys.push_back(key);
  return keys;
}

std::string keyOf(int number) {
  return "key" + std::to_string(number);
}

Map makeMap(int size) {
  Map map;
  for (int i = 0; i < size; ++i) map[keyOf(i)] = i;
  return map;
}

TEST(TOrderMap, StartsEmpty) {
  const Map map;
  EXPECT_TRUE(map.empty());
  EXPECT_EQ(map.size(), 0u);
  EXPECT_EQ(map.begin(), map.end());
  EXPECT_EQ(map.find("a"), nullptr);
}

TEST(TOrderMap, KeepsTheOrderOfInsertion) {
  Map map;
  map["b"] = 1;
  map["a"] = 2;
  map["c"] = 3;
  map["a"] = 4;
  EXPECT_EQ(keysOf(map), (std::vector<std::string>{"b", "a", "c"}));
  ASSERT_NE(map.find("a"), nullptr);
  EXPECT_EQ(*map.find("a"), 4);
}

TEST(TOrderMap, MakesMissingValues) {
  Map map;
  EXPECT_EQ(map["new"], 0);
  EXPECT_EQ(map.size(), 1u);
}

TEST(TOrderMap, TakesTheEmptyKeyAndKeysWithZeroBytes) {
  Map map;
  map[""] = 1;
  map[std::string("a\0", 2)] = 2;
  map["a"] = 3;
  EXPECT_EQ(map.size(), 3u);
  EXPECT_EQ(*map.find(""), 1);
  EXPECT_EQ(*map.find(std::string("a\0", 2)), 2);
}

// Around the size from which on an index is kept, around its doublings, and far beyond.
class TOrderMapSizes : public testing::TestWithParam<int> {};

TEST_P(TOrderMapSizes, FindsEveryKeyInOrder) {
  const int size = GetParam();
  const Map map = makeMap(size);
  ASSERT_EQ(map.size(), static_cast<std::size_t>(size));
  int expected = 0;
  for (const auto& [key, value] : map) {
    EXPECT_EQ(key, keyOf(expected));
    EXPECT_EQ(value, expected);
    ++expected;
  }
  for (int i = 0; i < size; ++i) {
    const int* const found = map.find(keyOf(i));
    ASSERT_NE(found, nullptr) << i;
    EXPECT_EQ(*found, i);
  }
  EXPECT_EQ(map.find(keyOf(size)), nullptr);
}

TEST_P(TOrderMapSizes, CopiesAreIndependent) {
  const int size = GetParam();
  Map original = makeMap(size);
  Map copy = original;
  copy["more"] = 1;
  copy[keyOf(0)] = -1;
  EXPECT_EQ(original.find("more"), nullptr);
  EXPECT_EQ(*original.find(keyOf(0)), 0);
  EXPECT_EQ(*copy.find(keyOf(0)), -1);
  EXPECT_EQ(*copy.find(keyOf(size - 1)), size == 1 ? -1 : size - 1);
}

TEST_P(TOrderMapSizes, CanBeFilledAgainAfterClear) {
  Map map = makeMap(GetParam());
  map.clear();
  EXPECT_TRUE(map.empty());
  EXPECT_EQ(map.find(keyOf(0)), nullptr);
  map["x"] = 5;
  EXPECT_EQ(*map.find("x"), 5);
  EXPECT_EQ(map.size(), 1u);
}

TEST_P(TOrderMapSizes, CanBeFilledAgainAfterAMove) {
  Map map = makeMap(GetParam());
  const Map taken = std::move(map);
  map = Map();
  map["x"] = 5;
  EXPECT_EQ(*map.find("x"), 5);
  EXPECT_EQ(taken.size(), static_cast<std::size_t>(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Sizes, TOrderMapSizes,
                         testing::Values(1, 15, 16, 17, 31, 32, 33, 64, 65, 1000, 100000),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace zavri::base
