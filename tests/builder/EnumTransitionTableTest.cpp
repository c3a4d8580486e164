#include "korvat/builder/EnumTransitionTable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace zavri::korvat::builder {
namespace {

using enum EnumTransitionTable::State;
using enum EnumTransitionTable::Event;
using enum EnumTransitionTable::Action;

// clang-format off
const std::vector<Transition> kRows = {
    // in state, on event, go to, and do
    {PS_Begin,    PE_enum,        PS_Item,     PA_setIdAndIndex},
    {PS_Item,     PE_members,     PS_Members,  PA_none},
    {PS_Item,     PE_refs,        PS_Item,     PA_skipElement},
    {PS_Item,     PE_enum_end,    PS_End,      PA_callDone},
    {PS_Members,  PE_member,      PS_InMember, PA_setActEnumString},
    {PS_Members,  PE_members_end, PS_Item,     PA_none},
    {PS_InMember, PE_value_value, PS_InMember, PA_addEnumMember},
    {PS_InMember, PE_comment,     PS_InMember, PA_skipElement},
    {PS_InMember, PE_member_end,  PS_Members,  PA_none},
};
// clang-format on

const std::vector<std::string> kStateNames = {
    "PS_Begin", "PS_Item", "PS_Members", "PS_InMember", "PS_End",
};

const std::vector<std::string> kEventNames = {
    "PE_None",       "PE_enum",        "PE_members", "PE_member", "PE_value_value",
    "PE_member_end", "PE_members_end", "PE_comment", "PE_refs",   "PE_enum_end",
};

const std::vector<std::string> kActionNames = {
    "PA_none",          "PA_setIdAndIndex", "PA_setActEnumString",
    "PA_addEnumMember", "PA_skipElement",   "PA_callDone",
};

// Records the action that runs and leaves the state to the table.
class RecordingTable : public EnumTransitionTable {
 public:
  using EnumTransitionTable::setState;

  void processAction(std::uint32_t number, const AttributeMap*, const std::string*) override {
    action = number;
  }

  std::uint32_t action = PA_none;
};

class EnumTransitionRow : public testing::TestWithParam<Transition> {};

TEST_P(EnumTransitionRow, TakesItsNextStateAndRunsItsAction) {
  const Transition& row = GetParam();
  RecordingTable table;
  table.setState(row.state);
  table.processEvent(row.event, nullptr, nullptr);
  EXPECT_EQ(table.getState(), row.nextState);
  EXPECT_EQ(table.action, row.action);
}

INSTANTIATE_TEST_SUITE_P(EnumTransitionTable, EnumTransitionRow, testing::ValuesIn(kRows),
                         [](const auto& info) {
                           return kStateNames[info.param.state] + "_" +
                                  kEventNames[info.param.event];
                         });

TEST(EnumTransitionTable, HasTheseRowsOnly) {
  EXPECT_EQ(kRows.size(), 9u);
  EXPECT_EQ(EnumTransitionTable::kTransitions.size(), 9u);
  for (std::uint32_t state = 0; state <= kStateNames.size(); ++state) {
    for (std::uint32_t event = 0; event <= kEventNames.size(); ++event) {
      const bool isListed = std::any_of(kRows.begin(), kRows.end(), [=](const Transition& row) {
        return row.state == state && row.event == event;
      });
      if (isListed) continue;

      SCOPED_TRACE(std::to_string(state) + " " + std::to_string(event));
      RecordingTable table;
      table.setState(state);
      table.processEvent(event, nullptr, nullptr);
      EXPECT_EQ(table.getState(), state);
      EXPECT_EQ(table.action, 0u);
    }
  }
}

TEST(EnumTransitionTable, NamesEveryStateEventAndAction) {
  for (std::uint32_t i = 0; i < kStateNames.size(); ++i) {
    EXPECT_EQ(EnumTransitionTable::stateName(i), kStateNames[i]);
  }
  for (std::uint32_t i = 0; i < kEventNames.size(); ++i) {
    EXPECT_EQ(EnumTransitionTable::eventName(i), kEventNames[i]);
  }
  for (std::uint32_t i = 0; i < kActionNames.size(); ++i) {
    EXPECT_EQ(EnumTransitionTable::actionName(i), kActionNames[i]);
  }
}

TEST(EnumTransitionTable, NamesAnyOtherNumberUnknown) {
  EXPECT_STREQ(EnumTransitionTable::stateName(5), "(unknown PState)");
  EXPECT_STREQ(EnumTransitionTable::eventName(10), "(unknown PEvent)");
  EXPECT_STREQ(EnumTransitionTable::actionName(6), "(unknown PAction)");
  EXPECT_STREQ(EnumTransitionTable::stateName(0xFFFFFFFF), "(unknown PState)");
  EXPECT_STREQ(EnumTransitionTable::eventName(0xFFFFFFFF), "(unknown PEvent)");
  EXPECT_STREQ(EnumTransitionTable::actionName(0xFFFFFFFF), "(unknown PAction)");
}

}  // namespace
}  // namespace zavri::korvat::builder
