#include "korvat/types/ResourceGroupFp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "korvat/types/EnumType.h"
#include "tests/LogCapture.h"

namespace zavri::korvat {
namespace {

using base::Logger;
using test::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;

// Notes its name in a list when it is deleted.
class NotedProfile : public FpType {
 public:
  explicit NotedProfile(std::vector<std::string>& deleted) : _deleted(deleted) {}
  ~NotedProfile() override { _deleted.push_back(getName() + "#" + std::to_string(getKey())); }

 private:
  std::vector<std::string>& _deleted;
};

class ResourceGroupFpTest : public testing::Test {
 protected:
  // The profile, now in the group; null when it was dropped.
  const FpType* add(const std::string& name, std::int32_t index, std::optional<std::int32_t> key) {
    auto profile = std::make_unique<NotedProfile>(_deleted);
    profile->getTypeId().setId(name);
    profile->setIndex(index);
    if (key) profile->setKey(*key);
    const FpType* added = profile.get();
    return _group.internalAddType(std::move(profile)) ? added : nullptr;
  }

  std::vector<std::string> _deleted;  // outlives the group
  ResourceGroupFp _group{nullptr};
};

TEST_F(ResourceGroupFpTest, StartsEmpty) {
  EXPECT_EQ(_group.findByKey(0), nullptr);
  EXPECT_EQ(_group.findByKey(-1), nullptr);
  EXPECT_EQ(_group.getType(""), nullptr);
  EXPECT_EQ(_group.getTypeByIndex(-1), nullptr);
}

TEST_F(ResourceGroupFpTest, FindsAProfileByNameNumberAndKey) {
  LogCapture log;
  const FpType* node = add("nodeObject", 1, 0);
  const FpType* lamp = add("lampActuator", 16, 3040);
  const ResourceGroup& group = _group;
  EXPECT_EQ(group.getType("nodeObject"), node);
  EXPECT_EQ(group.getTypeByIndex(16), lamp);
  EXPECT_EQ(_group.findByKey(0), node);
  EXPECT_EQ(_group.findByKey(3040), lamp);
  EXPECT_EQ(_group.findByKey(16), nullptr);
  EXPECT_EQ(_group.findByKey(3041), nullptr);
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_F(ResourceGroupFpTest, FindsAProfileWithoutAKeyByNameOnly) {
  const FpType* profile = add("draft", 7, std::nullopt);
  EXPECT_EQ(_group.getType("draft"), profile);
  EXPECT_EQ(_group.getTypeByIndex(7), profile);
  EXPECT_EQ(_group.findByKey(-1), nullptr);
}

TEST_F(ResourceGroupFpTest, FindsANegativeKeyLikeAnyOther) {
  const FpType* profile = add("odd", 7, -1);
  EXPECT_TRUE(profile->hasKey());
  EXPECT_EQ(_group.findByKey(-1), profile);
}

TEST_F(ResourceGroupFpTest, FindsTheLaterOfTwoProfilesWithOneKey) {
  const FpType* old = add("old", 1, 20001);
  LogCapture log;
  const FpType* late = add("late", 2, 20001);
  EXPECT_EQ(_group.findByKey(20001), late);
  EXPECT_EQ(_group.getType("old"), old);
  EXPECT_THAT(_deleted, IsEmpty());
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_F(ResourceGroupFpTest, FindsTheLaterOfTwoProfilesWithOneName) {
  add("same", 1, 20001);
  const FpType* late = add("same", 1, 20001);
  EXPECT_THAT(_deleted, ElementsAre("same#20001"));
  EXPECT_EQ(_group.getType("same"), late);
  EXPECT_EQ(_group.findByKey(20001), late);
}

TEST_F(ResourceGroupFpTest, ForgetsTheKeyAndTheNumberOfAReplacedProfile) {
  add("same", 1, 20001);
  const FpType* late = add("same", 2, 20002);
  EXPECT_THAT(_deleted, ElementsAre("same#20001"));
  EXPECT_EQ(_group.findByKey(20001), nullptr);
  EXPECT_EQ(_group.getTypeByIndex(1), nullptr);
  EXPECT_EQ(_group.findByKey(20002), late);
  EXPECT_EQ(_group.getTypeByIndex(2), late);
}

TEST_F(ResourceGroupFpTest, ForgetsTheKeyOfAProfileThatOneWithoutAKeyReplaces) {
  add("same", 1, 20001);
  add("same", 1, std::nullopt);
  EXPECT_EQ(_group.findByKey(20001), nullptr);
}

TEST_F(ResourceGroupFpTest, KeepsAKeyThatAnotherProfileTook) {
  add("same", 1, 20001);
  const FpType* other = add("other", 2, 20001);
  const FpType* late = add("same", 3, 20002);
  EXPECT_THAT(_deleted, ElementsAre("same#20001"));
  EXPECT_EQ(_group.findByKey(20001), other);
  EXPECT_EQ(_group.findByKey(20002), late);
}

TEST_F(ResourceGroupFpTest, DropsAProfileWithoutAName) {
  EXPECT_EQ(add("", 1, 20001), nullptr);
  EXPECT_THAT(_deleted, ElementsAre("#20001"));
  EXPECT_EQ(_group.findByKey(20001), nullptr);
  EXPECT_FALSE(_group.internalAddType(nullptr));
}

TEST_F(ResourceGroupFpTest, HasNoKeyForATypeOfAnotherClass) {
  add("same", 1, 20001);
  auto stranger = std::make_unique<EnumType>();
  stranger->getTypeId().setId("same");
  EXPECT_TRUE(_group.internalAddType(std::move(stranger)));
  EXPECT_EQ(_group.findByKey(20001), nullptr);
  const FpType* late = add("same", 1, 20003);
  EXPECT_EQ(_group.findByKey(20003), late);
}

TEST_F(ResourceGroupFpTest, AddsThroughItsBase) {
  ResourceGroup& group = _group;
  auto profile = std::make_unique<FpType>();
  profile->getTypeId().setId("lamp");
  profile->setKey(3040);
  const FpType* added = profile.get();
  EXPECT_TRUE(group.internalAddType(std::move(profile)));
  EXPECT_EQ(_group.findByKey(3040), added);
}

TEST_F(ResourceGroupFpTest, ReportsAReplacedNumberLikeEveryGroup) {
  add("old", 5, 1);
  LogCapture log;
  add("late", 5, 2);
  EXPECT_THAT(log.texts(Logger::Debug),
              ElementsAre("[ResourceGroup::internalAddType] replacing type index 5 (old->late)\n"));
  EXPECT_EQ(_group.findByKey(1)->getName(), "old");
}

}  // namespace
}  // namespace zavri::korvat
