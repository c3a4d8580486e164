#include "korvat/types/ResourceGroup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "korvat/types/EnumType.h"
#include "korvat/types/NvType.h"
#include "tests/LogCapture.h"

namespace zavri::korvat {
namespace {

using base::Logger;
using test::LogCapture;

// Notes its name in a list when it is deleted.
class NotedType : public BaseType {
 public:
  NotedType(const std::string& name, std::int32_t index, std::vector<std::string>& deleted,
            std::uint32_t flags = 0)
      : BaseType(ResourceType::Nv), _deleted(deleted) {
    getTypeId().setId(name);
    setIndex(index);
    addFlags(flags);
  }
  ~NotedType() override { _deleted.push_back(getName() + "#" + std::to_string(getIndex())); }

 private:
  std::vector<std::string>& _deleted;
};

class ResourceGroupTest : public testing::Test {
 protected:
  // The type, now in the group; null when it was dropped.
  const BaseType* add(const std::string& name, std::int32_t index, std::uint32_t flags = 0) {
    auto type = std::make_unique<NotedType>(name, index, _deleted, flags);
    const BaseType* added = type.get();
    return _group.internalAddType(std::move(type)) ? added : nullptr;
  }

  std::vector<std::string> _deleted;  // outlives the group
  TResourceGroup<NvType> _group{nullptr};
};

TEST_F(ResourceGroupTest, StartsEmpty) {
  EXPECT_EQ(_group.getType("_temp"), nullptr);
  EXPECT_EQ(_group.getTypeByIndex(39), nullptr);
  EXPECT_TRUE(_group.getTypesByName().empty());
  EXPECT_TRUE(_group.getTypesByIndex().empty());
}

TEST_F(ResourceGroupTest, FindsATypeByNameAndByNumber) {
  LogCapture log;
  const BaseType* temp = add("_temp", 39);
  const BaseType* flow = add("_flow", 15);
  EXPECT_EQ(_group.getType("_temp"), temp);
  EXPECT_EQ(_group.getType("_flow"), flow);
  EXPECT_EQ(_group.getTypeByIndex(39), temp);
  EXPECT_EQ(_group.getTypeByIndex(15), flow);
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(ResourceGroupTest, LooksUpExactly) {
  add("_temp", 39);
  for (const char* name : {"_Temp", "temp", "_temp_p", "_tem", "SNVT_temp", ""}) {
    EXPECT_EQ(_group.getType(name), nullptr) << name;
  }
  EXPECT_EQ(_group.getTypeByIndex(38), nullptr);
  EXPECT_EQ(_group.getTypeByIndex(-1), nullptr);
}

TEST_F(ResourceGroupTest, DropsATypeWithoutAName) {
  EXPECT_EQ(add("", 39), nullptr);
  EXPECT_EQ(_deleted, std::vector<std::string>{"#39"});
  EXPECT_EQ(_group.getTypeByIndex(39), nullptr);
  EXPECT_TRUE(_group.getTypesByName().empty());
}

TEST_F(ResourceGroupTest, IgnoresANullType) {
  EXPECT_FALSE(_group.internalAddType(nullptr));
  EXPECT_TRUE(_group.getTypesByName().empty());
}

TEST_F(ResourceGroupTest, KeepsBothTypesOfOneNumberByName) {
  const BaseType* old = add("_old", 5);
  LogCapture log;
  const BaseType* late = add("_late", 5);
  EXPECT_EQ(_group.getTypeByIndex(5), late);
  EXPECT_EQ(_group.getType("_old"), old);
  EXPECT_EQ(_group.getType("_late"), late);
  EXPECT_TRUE(_deleted.empty());
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(log.lines()[0].level, Logger::Debug);
  EXPECT_EQ(log.lines()[0].text,
            "[ResourceGroup::internalAddType] replacing type index 5 (_old->_late)\n");
}

TEST_F(ResourceGroupTest, ReplacesANumberSilentlyBelowTheDebugLevel) {
  add("_old", 5);
  LogCapture log(Logger::Info);
  add("_late", 5);
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(ResourceGroupTest, DeletesATypeOfTheSameName) {
  add("_temp", 39);
  const BaseType* late = add("_temp", 39);
  EXPECT_EQ(_deleted, std::vector<std::string>{"_temp#39"});
  EXPECT_EQ(_group.getType("_temp"), late);
  EXPECT_EQ(_group.getTypeByIndex(39), late);
  EXPECT_EQ(_group.getTypesByName().size(), 1u);
}

TEST_F(ResourceGroupTest, ForgetsTheNumberOfAReplacedType) {
  add("_temp", 39);
  const BaseType* late = add("_temp", 40);
  EXPECT_EQ(_group.getTypeByIndex(39), nullptr);
  EXPECT_EQ(_group.getTypeByIndex(40), late);
}

TEST_F(ResourceGroupTest, KeepsANumberThatAnotherTypeTook) {
  add("_temp", 39);
  const BaseType* other = add("_other", 39);
  add("_temp", 40);
  EXPECT_EQ(_group.getTypeByIndex(39), other);
  EXPECT_EQ(_deleted, std::vector<std::string>{"_temp#39"});
}

TEST_F(ResourceGroupTest, HidesADerivedTypeFromTheNumbers) {
  const BaseType* plain = add("_temp", 39);
  LogCapture log;
  const BaseType* derived = add("_temp-US", 39, BaseType::kDerivedFormat | BaseType::kObsolete);
  EXPECT_EQ(_group.getType("_temp-US"), derived);
  EXPECT_EQ(_group.getTypeByIndex(39), plain);
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(ResourceGroupTest, DoesNotFindADerivedTypeAloneByItsNumber) {
  add("_temp-US", 39, BaseType::kDerivedFormat);
  EXPECT_EQ(_group.getTypeByIndex(39), nullptr);
}

TEST_F(ResourceGroupTest, ForgetsTheNumberOfATypeThatADerivedOneReplaces) {
  add("_temp", 39);
  const BaseType* derived = add("_temp", 39, BaseType::kDerivedFormat);
  EXPECT_EQ(_group.getType("_temp"), derived);
  EXPECT_EQ(_group.getTypeByIndex(39), nullptr);
}

TEST_F(ResourceGroupTest, EntersATypeWithoutANumberUnderMinusOne) {
  const BaseType* type = add("_temp", -1);
  EXPECT_EQ(_group.getTypeByIndex(-1), type);
}

TEST_F(ResourceGroupTest, ListsItsTypesInOrder) {
  add("b", 1);
  add("a", 3);
  add("c", 2);
  std::string names;
  for (const auto& [name, type] : _group.getTypesByName()) names += name;
  EXPECT_EQ(names, "abc");
  std::string numbers;
  for (const auto& [index, type] : _group.getTypesByIndex()) numbers += type->getName();
  EXPECT_EQ(numbers, "bca");
}

TEST(ResourceGroup, DeletesEachTypeOnce) {
  std::vector<std::string> deleted;
  {
    TResourceGroup<EnumType> group(nullptr);
    group.internalAddType(std::make_unique<NotedType>("a", 1, deleted));
    group.internalAddType(std::make_unique<NotedType>("b", 1, deleted));
    EXPECT_TRUE(deleted.empty());
  }
  EXPECT_THAT(deleted, testing::UnorderedElementsAre("a#1", "b#1"));
}

TEST(ResourceGroup, CannotBeCopied) {
  EXPECT_FALSE(std::is_copy_constructible_v<ResourceGroup>);
  EXPECT_FALSE(std::is_copy_assignable_v<ResourceGroup>);
}

}  // namespace
}  // namespace zavri::korvat
