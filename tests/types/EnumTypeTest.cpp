#include "korvat/types/EnumType.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace zavri::korvat {
namespace {

TEST(EnumType, IsAnEnumerationWithoutNumber) {
  const EnumType type;
  EXPECT_EQ(type.getTypeId().getType(), ResourceType::Enum);
  EXPECT_EQ(type.getIndex(), -1);
  EXPECT_EQ(type.getFlags(), 0u);
  EXPECT_TRUE(type.getItemsByValue().empty());
  EXPECT_TRUE(type.getItemsByName().empty());
}

TEST(EnumType, FindsItemsByValueAndByName) {
  EnumType type;
  type.addItem(1, "OC_UNOCCUPIED");
  type.addItem(0, "OC_OCCUPIED");
  EXPECT_EQ(type.getName(0), "OC_OCCUPIED");
  EXPECT_EQ(type.getName(1), "OC_UNOCCUPIED");
  EXPECT_EQ(type.getValue("OC_OCCUPIED"), 0);
  EXPECT_EQ(type.getValue("OC_UNOCCUPIED"), 1);
}

TEST(EnumType, FindsNamesExactly) {
  EnumType type;
  type.addItem(3, "OC_BYPASS");
  for (const char* name : {"oc_bypass", "OC_BYPAS", "OC_BYPASS ", ""}) {
    EXPECT_FALSE(type.hasName(name)) << name;
    EXPECT_EQ(type.getValue(name), -1) << name;
  }
}

TEST(EnumType, ReturnsAnEmptyTextThatStaysForAnUnknownValue) {
  const std::string* unknown = nullptr;
  {
    EnumType type;
    type.addItem(0, "A");
    unknown = &type.getName(1);
  }
  EXPECT_EQ(*unknown, "");
  EXPECT_EQ(&EnumType().getName(5), unknown);
}

TEST(EnumType, TellsMinusOneFromAMissingName) {
  EnumType type;
  type.addItem(-1, "OC_NUL");
  EXPECT_EQ(type.getValue("OC_NUL"), -1);
  EXPECT_TRUE(type.hasName("OC_NUL"));
  EXPECT_EQ(type.getValue("missing"), -1);
  EXPECT_FALSE(type.hasName("missing"));
  EXPECT_EQ(type.getName(-1), "OC_NUL");
}

TEST(EnumType, TakesTheWholeRangeOfASignedByte) {
  EnumType type;
  for (int value = -128; value <= 127; ++value) {
    type.addItem(static_cast<std::int8_t>(value), "V" + std::to_string(value));
  }
  EXPECT_EQ(type.getItemsByValue().size(), 256u);
  EXPECT_EQ(type.getName(-128), "V-128");
  EXPECT_EQ(type.getName(127), "V127");
  EXPECT_EQ(type.getValue("V-128"), -128);
  EXPECT_EQ(type.getValue("V127"), 127);
}

TEST(EnumType, KeepsTheFirstNameOfAValue) {
  EnumType type;
  type.addItem(1, "FIRST");
  type.addItem(1, "SECOND");
  EXPECT_EQ(type.getName(1), "FIRST");
  EXPECT_EQ(type.getValue("FIRST"), 1);
  EXPECT_EQ(type.getValue("SECOND"), 1);
}

TEST(EnumType, KeepsTheFirstValueOfAName) {
  EnumType type;
  type.addItem(1, "SAME");
  type.addItem(2, "SAME");
  EXPECT_EQ(type.getValue("SAME"), 1);
  EXPECT_EQ(type.getName(1), "SAME");
  EXPECT_EQ(type.getName(2), "SAME");
}

TEST(EnumType, TakesAnItemTwice) {
  EnumType type;
  type.addItem(4, "A");
  type.addItem(4, "A");
  EXPECT_EQ(type.getItemsByValue(), (std::map<std::int8_t, std::string>{{4, "A"}}));
  EXPECT_EQ(type.getItemsByName(), (std::map<std::string, std::int8_t>{{"A", 4}}));
}

TEST(EnumType, ListsItemsInBothOrders) {
  EnumType type;
  type.addItem(2, "b");
  type.addItem(-1, "z");
  type.addItem(0, "B");

  std::string byValue;
  for (const auto& [value, name] : type.getItemsByValue()) {
    byValue += std::to_string(value) + name + " ";
  }
  EXPECT_EQ(byValue, "-1z 0B 2b ");
  std::string byName;
  for (const auto& [name, value] : type.getItemsByName()) {
    byName += name + std::to_string(value) + " ";
  }
  EXPECT_EQ(byName, "B0 b2 z-1 ");
}

TEST(EnumType, AnswersItsOwnNameToo) {
  EnumType type;
  type.getTypeId().setId("occup_t");
  EXPECT_EQ(type.getName(), "occup_t");
}

}  // namespace
}  // namespace zavri::korvat
