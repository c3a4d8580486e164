#include "korvat/convert/PlanCache.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "korvat/types/NvType.h"
#include "tests/members/MemberTree.h"

namespace zavri::korvat {
namespace {

const std::string kDevice = "8000010128000000-3";

TypeId nv(const std::string& prefix, const std::string& name) {
  return TypeId(ResourceType::Nv, prefix, name);
}

class PlanCacheTest : public testing::Test {
 protected:
  PlanCacheTest() {
    type.setMember(test::makeScalar(""));
    odd.setMember(std::make_unique<test::OddMember>(0));
  }

  void add(const TypeId& id, const VarType& variable, bool isLoaded = true) {
    cache.add(
        id, variable, [](const TypeId&) { return nullptr; }, isLoaded);
  }

  NvType type;
  NvType odd;  // has no plan
  PlanCache cache;
};

TEST_F(PlanCacheTest, IsEmptyAtFirst) {
  EXPECT_EQ(cache.find(nv("", "_a")), nullptr);
}

TEST_F(PlanCacheTest, FindsThePlanOfAType) {
  add(nv("", "_a"), type);
  const PlanCache::Entry* entry = cache.find(nv("", "_a"));
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->type, &type);
  EXPECT_NE(entry->plan, nullptr);
  EXPECT_EQ(cache.find(nv("", "_b")), nullptr);
  EXPECT_EQ(cache.find(TypeId(ResourceType::Cp, "", "_a")), nullptr);
}

TEST_F(PlanCacheTest, KeepsTheFirstOfTwoTypes) {
  add(nv("", "_a"), type);
  const PlanCache::Entry* entry = cache.find(nv("", "_a"));
  add(nv("", "_a"), odd);
  EXPECT_EQ(cache.find(nv("", "_a")), entry);
}

TEST_F(PlanCacheTest, NotesATypeWithoutAPlanOnceAllThatItNeedsIsLoaded) {
  add(nv("", "_odd"), odd, false);
  EXPECT_EQ(cache.find(nv("", "_odd")), nullptr);
  add(nv("", "_odd"), odd, true);
  ASSERT_NE(cache.find(nv("", "_odd")), nullptr);
  EXPECT_EQ(cache.find(nv("", "_odd"))->plan, nullptr);
}

TEST_F(PlanCacheTest, NotesAPlanThatNeededNothingElse) {
  add(nv("", "_a"), type, false);
  EXPECT_NE(cache.find(nv("", "_a")), nullptr);
}

TEST_F(PlanCacheTest, TellsPrefixesApart) {
  const std::vector<std::string> prefixes = {"", kDevice, "8000010128000000-4",
                                             "9000010128000000-3"};
  std::vector<std::unique_ptr<NvType>> types;
  for (const std::string& prefix : prefixes) {
    types.push_back(std::make_unique<NvType>());
    types.back()->setMember(test::makeScalar(""));
    EXPECT_EQ(cache.find(nv(prefix, "_a")), nullptr) << prefix;
    add(nv(prefix, "_a"), *types.back());
  }
  for (std::size_t i = 0; i < prefixes.size(); ++i) {
    const PlanCache::Entry* entry = cache.find(nv(prefixes[i], "_a"));
    ASSERT_NE(entry, nullptr) << prefixes[i];
    EXPECT_EQ(entry->type, types[i].get()) << prefixes[i];
  }
}

// Scope 3 counts the manufacturer alone, which is the first three bytes.
TEST_F(PlanCacheTest, TakesPrefixesThatDifferWhereTheScopeDoesNotLookForOne) {
  add(nv("8000010128000000-3", "_a"), type);
  EXPECT_NE(cache.find(nv("80000101280000FF-3", "_a")), nullptr);
}

TEST_F(PlanCacheTest, HasNothingForAPrefixThatIsNotValid) {
  const TypeId broken = nv("no prefix", "_a");
  ASSERT_FALSE(broken.isPrefixValid());
  add(broken, type);
  EXPECT_EQ(cache.find(broken), nullptr);
  add(nv("", "_a"), type);
  EXPECT_EQ(cache.find(broken), nullptr);
}

TEST_F(PlanCacheTest, FindsEachOfMany) {
  for (int i = 0; i < 1000; ++i) add(nv("", "_" + std::to_string(i)), type);
  for (int i = 0; i < 1000; ++i) {
    const TypeId id = nv("", "_" + std::to_string(i));
    ASSERT_NE(cache.find(id), nullptr) << i;
    EXPECT_EQ(cache.find(id)->id, id) << i;
  }
  EXPECT_EQ(cache.find(nv("", "_1000")), nullptr);
}

}  // namespace
}  // namespace zavri::korvat
