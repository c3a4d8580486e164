#include "korvat/builder/FpTransitionTable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/builder/TransitionTableChecks.h"

namespace zavri::korvat::builder {
namespace {

using enum FpTransitionTable::State;
using enum FpTransitionTable::Event;
using enum FpTransitionTable::Action;

// clang-format off
const std::vector<Transition> kRows = {
    // in state, on event, go to, and do
    {PS_Begin,      PE_fpt,             PS_Item,       PA_createFPT},
    {PS_Item,       PE_obsolete_VALUE,  PS_Item,       PA_setObsolete},
    {PS_Item,       PE_inherit,         PS_Inherit,    PA_none},
    {PS_Item,       PE_nvs,             PS_Dps,        PA_none},
    {PS_Item,       PE_cps,             PS_Dps,        PA_none},
    {PS_Item,       PE_fpt_end,         PS_End,        PA_callDone},
    {PS_Inherit,    PE_ref,             PS_InheritRef, PA_rememberRefBase},
    {PS_Inherit,    PE_inherit_end,     PS_Item,       PA_none},
    {PS_InheritRef, PE_ref_VALUE,       PS_InheritRef, PA_setInheritRef},
    {PS_InheritRef, PE_ref_end,         PS_Inherit,    PA_none},
    {PS_Dps,        PE_nv,              PS_Dp,         PA_pushNv},
    {PS_Dps,        PE_cp,              PS_Dp,         PA_pushCp},
    {PS_Dps,        PE_nvs_end,         PS_Item,       PA_none},
    {PS_Dps,        PE_cps_end,         PS_Item,       PA_none},
    {PS_Dp,         PE_member_VALUE,    PS_Dp,         PA_setMember},
    {PS_Dp,         PE_mandatory_VALUE, PS_Dp,         PA_setMandatory},
    {PS_Dp,         PE_dir_VALUE,       PS_Dp,         PA_setDirection},
    {PS_Dp,         PE_min_VALUE,       PS_Dp,         PA_setMin},
    {PS_Dp,         PE_max_VALUE,       PS_Dp,         PA_setMax},
    {PS_Dp,         PE_default_VALUE,   PS_Dp,         PA_setDefault},
    {PS_Dp,         PE_array_VALUE,     PS_Dp,         PA_setArray},
    {PS_Dp,         PE_applies_VALUE,   PS_Dp,         PA_setAppliesTo},
    {PS_Dp,         PE_ref,             PS_Ref,        PA_rememberRefBase},
    {PS_Dp,         PE_nv_end,          PS_Dps,        PA_none},
    {PS_Dp,         PE_cp_end,          PS_Dps,        PA_none},
    {PS_Ref,        PE_ref_VALUE,       PS_Ref,        PA_setRef},
    {PS_Ref,        PE_ref_end,         PS_Dp,         PA_none},
};
// clang-format on

const std::vector<std::string> kStateNames = {
    "PS_Begin", "PS_Item", "PS_Inherit", "PS_InheritRef", "PS_Dps", "PS_Dp", "PS_Ref", "PS_End",
};

const std::vector<std::string> kEventNames = {
    "PE_None",
    "PE_fpt",
    "PE_obsolete_VALUE",
    "PE_inherit",
    "PE_ref",
    "PE_ref_VALUE",
    "PE_ref_end",
    "PE_inherit_end",
    "PE_nvs",
    "PE_cps",
    "PE_nv",
    "PE_cp",
    "PE_member_VALUE",
    "PE_mandatory_VALUE",
    "PE_dir_VALUE",
    "PE_min_VALUE",
    "PE_max_VALUE",
    "PE_default_VALUE",
    "PE_array_VALUE",
    "PE_applies_VALUE",
    "PE_nv_end",
    "PE_cp_end",
    "PE_nvs_end",
    "PE_cps_end",
    "PE_fpt_end",
};

const std::vector<std::string> kActionNames = {
    "PA_none",          "PA_skipElement", "PA_createFPT", "PA_setObsolete", "PA_rememberRefBase",
    "PA_setInheritRef", "PA_pushNv",      "PA_pushCp",    "PA_setMember",   "PA_setMandatory",
    "PA_setDirection",  "PA_setMin",      "PA_setMax",    "PA_setDefault",  "PA_setArray",
    "PA_setAppliesTo",  "PA_setRef",      "PA_callDone",
};

class FpTransitionRow : public testing::TestWithParam<Transition> {};

TEST_P(FpTransitionRow, TakesItsNextStateAndRunsItsAction) {
  expectRow<FpTransitionTable>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(FpTransitionTable, FpTransitionRow, testing::ValuesIn(kRows),
                         [](const auto& info) {
                           return kStateNames[info.param.state] + "_" +
                                  kEventNames[info.param.event];
                         });

TEST(FpTransitionTable, HasTheseRowsOnly) {
  EXPECT_EQ(kRows.size(), 27u);
  expectNoOtherRows<FpTransitionTable>(kRows, kStateNames.size(), kEventNames.size());
}

TEST(FpTransitionTable, NamesEveryStateEventAndActionAndNoOtherNumber) {
  EXPECT_EQ(kStateNames.size(), 8u);
  EXPECT_EQ(kEventNames.size(), 25u);
  EXPECT_EQ(kActionNames.size(), 18u);
  expectNames(FpTransitionTable::stateName, kStateNames, "(unknown PState)");
  expectNames(FpTransitionTable::eventName, kEventNames, "(unknown PEvent)");
  expectNames(FpTransitionTable::actionName, kActionNames, "(unknown PAction)");
}

}  // namespace
}  // namespace zavri::korvat::builder
