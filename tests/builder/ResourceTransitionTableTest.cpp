#include "korvat/builder/ResourceTransitionTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace zavri::korvat::builder {
namespace {

using Table = ResourceTransitionTable;

// State, event, next state and action as their numbers stand in traces and look-ups.
struct Row {
  std::string name;
  std::uint32_t state;
  std::uint32_t event;
  std::uint32_t nextState;
  std::uint32_t action;
};

const std::vector<Row> kRows = {
    {"Root", 0, 1, 1, 0},        {"Control", 1, 2, 2, 0},    {"Items", 1, 5, 3, 0},
    {"Strings", 1, 12, 5, 0},    {"RootEnd", 1, 17, 7, 9},   {"Folder", 2, 3, 2, 1},
    {"ControlEnd", 2, 4, 1, 0},  {"ItemsEnd", 3, 11, 1, 0},  {"Enumeration", 3, 6, 4, 2},
    {"Variable", 3, 7, 4, 3},    {"Property", 3, 8, 4, 4},   {"Profile", 3, 9, 4, 5},
    {"ItemEnd", 4, 10, 3, 0},    {"String", 5, 13, 6, 6},    {"StringsEnd", 5, 16, 1, 0},
    {"StringText", 6, 14, 6, 7}, {"StringEnd", 6, 15, 5, 0},
};

class ResourceTransitionRow : public testing::TestWithParam<Row> {};

TEST_P(ResourceTransitionRow, IsFoundByItsStateAndEvent) {
  const Row& expected = GetParam();
  const Transition* row = findTransition(Table::kTransitions, expected.state, expected.event);
  ASSERT_NE(row, nullptr);
  EXPECT_EQ(row->nextState, expected.nextState);
  EXPECT_EQ(row->action, expected.action);
}

INSTANTIATE_TEST_SUITE_P(ResourceTransitionTable, ResourceTransitionRow, testing::ValuesIn(kRows),
                         [](const auto& info) { return info.param.name; });

TEST(ResourceTransitionTable, HasTheseRowsOnly) {
  EXPECT_EQ(kRows.size(), 17u);
  EXPECT_EQ(Table::kTransitions.size(), 17u);
}

TEST(ResourceTransitionTable, NamesEveryStateAndEvent) {
  const std::vector<std::string> states = {"PS_Begin",  "PS_Top",     "PS_Control",  "PS_Items",
                                           "PS_InItem", "PS_Strings", "PS_InString", "PS_End"};
  for (std::uint32_t i = 0; i < states.size(); ++i) EXPECT_EQ(Table::stateName(i), states[i]);

  const std::vector<std::string> events = {
      "PE_None",       "PE_ldrf",        "PE_control",  "PE_folder_value", "PE_control_end",
      "PE_items",      "PE_enumt",       "PE_nvt",      "PE_cpt",          "PE_fpt",
      "PE_item_end",   "PE_items_end",   "PE_strings",  "PE_string",       "PE_string_value",
      "PE_string_end", "PE_strings_end", "PE_ldrf_end",
  };
  for (std::uint32_t i = 0; i < events.size(); ++i) EXPECT_EQ(Table::eventName(i), events[i]);
}

TEST(ResourceTransitionTable, NamesAnyOtherNumberUnknown) {
  EXPECT_STREQ(Table::stateName(8), "(unknown PState)");
  EXPECT_STREQ(Table::eventName(18), "(unknown PEvent)");
  EXPECT_STREQ(Table::stateName(0xFFFFFFFF), "(unknown PState)");
  EXPECT_STREQ(Table::eventName(0xFFFFFFFF), "(unknown PEvent)");
}

}  // namespace
}  // namespace zavri::korvat::builder
