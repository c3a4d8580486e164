#include "korvat/builder/ItemBuilder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korvat/types/EnumType.h"
#include "tests/LogCapture.h"
#include "tests/builder/BuilderDriver.h"

namespace zavri::korvat::builder {
namespace {

using base::Logger;
using test::LogCapture;

// Gives the services of the base class to the tests.
class PlainBuilder : public ItemBuilder {
 public:
  void onElement(const std::string&, const AttributeMap&) override {}
  void onElementEnd(const std::string&) override {}
  void onValue(const std::string&, const std::string&) override {}

  using ItemBuilder::lookupString;
  using ItemBuilder::passItemToMaster;
  using ItemBuilder::reportDone;
  using ItemBuilder::setIdAndIndex;
  using ItemBuilder::skipElement;
};

// Tells when it is destroyed.
class WatchedType : public EnumType {
 public:
  explicit WatchedType(bool& isDestroyed) : _isDestroyed(isDestroyed) {}
  ~WatchedType() override { _isDestroyed = true; }

 private:
  bool& _isDestroyed;
};

TEST(ItemBuilder, ReadsIdAndIndex) {
  const AttributeMap attributes = {{"id", "occup_t"}, {"idx", "12"}};
  EnumType item;
  LogCapture log(Logger::Warning);
  PlainBuilder::setIdAndIndex(item, &attributes);
  EXPECT_EQ(item.getName(), "occup_t");
  EXPECT_EQ(item.getIndex(), 12);
  EXPECT_EQ(item.getFlags(), 0u);
  EXPECT_TRUE(log.lines().empty());
}

TEST(ItemBuilder, FlagsTheEnumerationOfCharacterEncodings) {
  const AttributeMap attributes = {{"id", "char_encoding_t"}, {"idx", "1"}};
  EnumType item;
  PlainBuilder::setIdAndIndex(item, &attributes);
  EXPECT_EQ(item.getFlags(), 0x10u);
}

TEST(ItemBuilder, FlagsNoNameThatOnlyResemblesIt) {
  for (const char* id : {"char_encoding", "char_encoding_t2", "Char_encoding_t", ""}) {
    SCOPED_TRACE(id);
    const AttributeMap attributes = {{"id", id}, {"idx", "1"}};
    EnumType item;
    PlainBuilder::setIdAndIndex(item, &attributes);
    EXPECT_EQ(item.getFlags(), 0u);
  }
}

TEST(ItemBuilder, WarnsOfMissingAttributesOnce) {
  EnumType item;
  LogCapture log(Logger::Warning);
  PlainBuilder::setIdAndIndex(item, nullptr);
  EXPECT_EQ(log.texts(Logger::Warning),
            std::vector<std::string>{"[ItemBuilder] missing attributes in member\n"});
  EXPECT_EQ(item.getName(), "");
  EXPECT_EQ(item.getIndex(), -1);
}

TEST(ItemBuilder, WarnsOfAMissingIndexAndLeavesItUnset) {
  const AttributeMap attributes = {{"id", "occup_t"}};
  EnumType item;
  LogCapture log(Logger::Warning);
  PlainBuilder::setIdAndIndex(item, &attributes);
  EXPECT_EQ(log.texts(Logger::Warning),
            std::vector<std::string>{"[ItemBuilder] missing attribute 'idx' in item\n"});
  EXPECT_EQ(item.getName(), "occup_t");
  EXPECT_EQ(item.getIndex(), -1);
}

TEST(ItemBuilder, WarnsOfAMissingIdAndStillReadsTheIndex) {
  const AttributeMap attributes = {{"idx", "7"}};
  EnumType item;
  LogCapture log(Logger::Warning);
  PlainBuilder::setIdAndIndex(item, &attributes);
  EXPECT_EQ(log.texts(Logger::Warning),
            std::vector<std::string>{"[ItemBuilder] missing attribute 'id' in item\n"});
  EXPECT_EQ(item.getName(), "");
  EXPECT_EQ(item.getIndex(), 7);
}

TEST(ItemBuilder, ReadsAnIndexAsTheNumberConversionDoes) {
  const std::vector<std::pair<std::string, int>> cases = {
      {" 42 ", 42}, {"-3", -3}, {"none", 0}, {"12x", 12}, {"99999999999", 2147483647}};
  for (const auto& [text, index] : cases) {
    SCOPED_TRACE(text);
    const AttributeMap attributes = {{"id", "x"}, {"idx", text}};
    EnumType item;
    PlainBuilder::setIdAndIndex(item, &attributes);
    EXPECT_EQ(item.getIndex(), index);
  }
}

TEST(ItemBuilder, AsksItsMaster) {
  PlainBuilder builder;
  BuilderDriver master(builder);
  master.strings["u_1"] = "meters";

  builder.passItemToMaster(std::make_unique<EnumType>());
  builder.reportDone();
  builder.skipElement();
  EXPECT_EQ(master.items.size(), 1u);
  EXPECT_EQ(master.calls, (std::vector<std::string>{"addItem", "onItemBuildDone", "skipElement"}));
  ASSERT_NE(builder.lookupString("u_1"), nullptr);
  EXPECT_EQ(*builder.lookupString("u_1"), "meters");
  EXPECT_EQ(builder.lookupString("u_2"), nullptr);
}

TEST(ItemBuilder, DestroysAFinishedItemWithoutAMaster) {
  PlainBuilder builder;
  bool isDestroyed = false;
  builder.passItemToMaster(std::make_unique<WatchedType>(isDestroyed));
  EXPECT_TRUE(isDestroyed);
}

TEST(ItemBuilder, DoesWithoutAMaster) {
  PlainBuilder builder;
  builder.reportDone();
  builder.skipElement();
  builder.reset();
  EXPECT_EQ(builder.lookupString("u_1"), nullptr);
}

TEST(ItemBuilder, KeepsTheNameOfTheFileSet) {
  PlainBuilder builder;
  EXPECT_EQ(builder.getFileSetName(), "");
  builder.setFileSetName("8000010128000000-4");
  EXPECT_EQ(builder.getFileSetName(), "8000010128000000-4");
}

}  // namespace
}  // namespace zavri::korvat::builder
