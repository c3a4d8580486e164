#include "korvat/builder/EnumTransitionTable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/builder/TransitionTableChecks.h"

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

class EnumTransitionRow : public testing::TestWithParam<Transition> {};

TEST_P(EnumTransitionRow, TakesItsNextStateAndRunsItsAction) {
  expectRow<EnumTransitionTable>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(EnumTransitionTable, EnumTransitionRow, testing::ValuesIn(kRows),
                         [](const auto& info) {
                           return kStateNames[info.param.state] + "_" +
                                  kEventNames[info.param.event];
                         });

TEST(EnumTransitionTable, HasTheseRowsOnly) {
  EXPECT_EQ(kRows.size(), 9u);
  expectNoOtherRows<EnumTransitionTable>(kRows, kStateNames.size(), kEventNames.size());
}

TEST(EnumTransitionTable, NamesEveryStateEventAndActionAndNoOtherNumber) {
  expectNames(EnumTransitionTable::stateName, kStateNames, "(unknown PState)");
  expectNames(EnumTransitionTable::eventName, kEventNames, "(unknown PEvent)");
  expectNames(EnumTransitionTable::actionName, kActionNames, "(unknown PAction)");
}

}  // namespace
}  // namespace zavri::korvat::builder
