#include "korvat/base/OrderMap.h"

#include <chrono>
#include <cstdint>
#include <functional>
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

// --- Keys that were chosen to collide ---

// Undoes std::hash as libstdc++ has it (MurmurHash64A with a fixed seed) for texts of eight bytes.
std::string textWithStandardHash(std::uint64_t hash) {
  constexpr std::uint64_t kFactor = 0xC6A4A7935BD1E995;
  constexpr std::uint64_t kSeed = 0xC70F6907;
  const auto mix = [](std::uint64_t value) { return value ^ (value >> 47); };  // undoes itself
  std::uint64_t inverse = kFactor;  // of the factor, modulo 2^64; each step doubles the right bits
  for (int i = 0; i < 6; ++i) inverse *= 2 - kFactor * inverse;

  const std::uint64_t mixed = mix(mix(hash) * inverse) * inverse;
  const std::uint64_t word = mix((mixed ^ kSeed ^ (8 * kFactor)) * inverse) * inverse;
  std::string text;
  for (int i = 0; i < 8; ++i) text += static_cast<char>(word >> (8 * i));
  return text;
}

double secondsToFill(const std::vector<std::string>& keys) {
  const auto start = std::chrono::steady_clock::now();
  Map map;
  for (const std::string& key : keys) map[key] = 1;
  EXPECT_EQ(map.size(), keys.size());
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(TOrderMap, IsNotSlowedDownByKeysThatCollideInTheStandardHash) {
  std::vector<std::string> colliding;
  std::vector<std::string> plain;
  for (std::uint64_t i = 0; i < 30'000; ++i) {
    colliding.push_back(textWithStandardHash(i << 32));  // any mask of an index keeps 0 of that
    plain.push_back("key" + std::to_string(10'000 + i));
  }
  if (std::hash<std::string>()(colliding[5]) != std::uint64_t{5} << 32) {
    GTEST_SKIP() << "this standard library has another hash";
  }
  // One by one they would be compared with each other: half a thousand million times, seconds.
  const double plainTime = secondsToFill(plain);
  EXPECT_LT(secondsToFill(colliding), 0.2 + 10 * plainTime);
}

TEST(TOrderMap, KeepsTheOrderOfInsertionWhateverTheHash) {
  std::vector<std::string> keys;
  Map map;
  for (std::uint64_t i = 0; i < 1000; ++i) {
    keys.push_back(textWithStandardHash(i << 32));
    map[keys.back()] = static_cast<int>(i);
  }
  EXPECT_EQ(keysOf(map), keys);
  EXPECT_EQ(*map.find(keys[777]), 777);
}

}  // namespace
}  // namespace zavri::base
