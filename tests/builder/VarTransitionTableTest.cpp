#include "korvat/builder/VarTransitionTable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/builder/TransitionTableChecks.h"

namespace zavri::korvat::builder {
namespace {

using enum VarTransitionTable::State;
using enum VarTransitionTable::Event;
using enum VarTransitionTable::Action;

// clang-format off
const std::vector<Transition> kRows = {
    // in state, on event, go to, and do
    {PS_Begin,     PE_nvt,                  PS_Item,      PA_createNVT},
    {PS_Begin,     PE_cpt,                  PS_Item,      PA_createCPT},
    {PS_Item,      PE_default_VALUE,        PS_Item,      PA_setDefault},
    {PS_Item,      PE_obsolete_VALUE,       PS_Item,      PA_setObsolete},
    {PS_Item,      PE_size_VALUE,           PS_Item,      PA_setSize},
    {PS_Item,      PE_p_name_VALUE,         PS_Item,      PA_setProgName},
    {PS_Item,      PE_unit,                 PS_Item,      PA_setUnit},
    {PS_Item,      PE_ref,                  PS_Ref,       PA_pushRef},
    {PS_Item,      PE_scalar,               PS_Scalar,    PA_pushScalar},
    {PS_Item,      PE_float,                PS_Float,     PA_pushFloat},
    {PS_Item,      PE_bitfield,             PS_Bitfield,  PA_pushBitfield},
    {PS_Item,      PE_enum,                 PS_Enum,      PA_pushEnum},
    {PS_Item,      PE_aggregate,            PS_Aggregate, PA_pushAggregate},
    {PS_Item,      PE_formats,              PS_Formats,   PA_none},
    {PS_Item,      PE_refs,                 PS_Item,      PA_skipElement},
    {PS_Item,      PE_nvt_end,              PS_End,       PA_callDone},
    {PS_Item,      PE_cpt_end,              PS_End,       PA_callDone},
    {PS_Formats,   PE_format,               PS_Format,    PA_rememberIdAttr},
    {PS_Formats,   PE_formats_end,          PS_Item,      PA_none},
    {PS_Format,    PE_format_VALUE,         PS_Format,    PA_addFormat},
    {PS_Format,    PE_format_end,           PS_Formats,   PA_none},
    {PS_Ref,       PE_ref_VALUE,            PS_Ref,       PA_setRefValue},
    {PS_Ref,       PE_ref_end,              PS_Ref,       PA_checkPop},
    {PS_Scalar,    PE_nc_type_VALUE,        PS_Scalar,    PA_setNcType},
    {PS_Scalar,    PE_min_VALUE,            PS_Scalar,    PA_setMin},
    {PS_Scalar,    PE_max_VALUE,            PS_Scalar,    PA_setMax},
    {PS_Scalar,    PE_invalid_VALUE,        PS_Scalar,    PA_setInvalid},
    {PS_Scalar,    PE_scaling,              PS_Scaling,   PA_none},
    {PS_Scalar,    PE_array_min_size_VALUE, PS_Scalar,    PA_setArrayMinSize},
    {PS_Scalar,    PE_array_size_VALUE,     PS_Scalar,    PA_setArraySize},
    {PS_Scalar,    PE_scalar_end,           PS_Scalar,    PA_checkPop},
    {PS_Float,     PE_nc_type_VALUE,        PS_Float,     PA_setNcType},
    {PS_Float,     PE_min_VALUE,            PS_Float,     PA_setMin},
    {PS_Float,     PE_max_VALUE,            PS_Float,     PA_setMax},
    {PS_Float,     PE_invalid_VALUE,        PS_Float,     PA_setInvalid},
    {PS_Float,     PE_scaling,              PS_Scaling,   PA_none},
    {PS_Float,     PE_array_min_size_VALUE, PS_Float,     PA_setArrayMinSize},
    {PS_Float,     PE_array_size_VALUE,     PS_Float,     PA_setArraySize},
    {PS_Float,     PE_float_end,            PS_Float,     PA_checkPop},
    {PS_Bitfield,  PE_signed_VALUE,         PS_Bitfield,  PA_setBitfieldSigned},
    {PS_Bitfield,  PE_width_VALUE,          PS_Bitfield,  PA_setBitfieldWidth},
    {PS_Bitfield,  PE_offset_VALUE,         PS_Bitfield,  PA_setBitfieldOffset},
    {PS_Bitfield,  PE_min_VALUE,            PS_Bitfield,  PA_setMin},
    {PS_Bitfield,  PE_max_VALUE,            PS_Bitfield,  PA_setMax},
    {PS_Bitfield,  PE_invalid_VALUE,        PS_Bitfield,  PA_setInvalid},
    {PS_Bitfield,  PE_scaling,              PS_Scaling,   PA_none},
    {PS_Bitfield,  PE_array_min_size_VALUE, PS_Bitfield,  PA_setArrayMinSize},
    {PS_Bitfield,  PE_array_size_VALUE,     PS_Bitfield,  PA_setArraySize},
    {PS_Bitfield,  PE_bitfield_end,         PS_Bitfield,  PA_checkPop},
    {PS_Scaling,   PE_scaling_a_VALUE,      PS_Scaling,   PA_setScalingA},
    {PS_Scaling,   PE_scaling_b_VALUE,      PS_Scaling,   PA_setScalingB},
    {PS_Scaling,   PE_scaling_c_VALUE,      PS_Scaling,   PA_setScalingC},
    {PS_Scaling,   PE_scaling_s_VALUE,      PS_Scaling,   PA_setScalingS},
    {PS_Scaling,   PE_scaling_end,          PS_Scaling,   PA_setState},
    {PS_Enum,      PE_ref,                  PS_Enum,      PA_handleEnumRef},
    {PS_Enum,      PE_ref_VALUE,            PS_Enum,      PA_setRefValue},
    {PS_Enum,      PE_array_min_size_VALUE, PS_Enum,      PA_setArrayMinSize},
    {PS_Enum,      PE_array_size_VALUE,     PS_Enum,      PA_setArraySize},
    {PS_Enum,      PE_enum_end,             PS_Enum,      PA_checkPop},
    {PS_Aggregate, PE_members,              PS_Members,   PA_none},
    {PS_Aggregate, PE_array_min_size_VALUE, PS_Aggregate, PA_setArrayMinSize},
    {PS_Aggregate, PE_array_size_VALUE,     PS_Aggregate, PA_setArraySize},
    {PS_Aggregate, PE_aggregate_end,        PS_Aggregate, PA_checkPop},
    {PS_Members,   PE_member,               PS_Member,    PA_none},
    {PS_Members,   PE_members_end,          PS_Aggregate, PA_callBuildLookup},
    {PS_Member,    PE_p_name_VALUE,         PS_Member,    PA_setProgName},
    {PS_Member,    PE_ref,                  PS_Ref,       PA_pushRef},
    {PS_Member,    PE_scalar,               PS_Scalar,    PA_pushScalar},
    {PS_Member,    PE_float,                PS_Float,     PA_pushFloat},
    {PS_Member,    PE_bitfield,             PS_Bitfield,  PA_pushBitfield},
    {PS_Member,    PE_enum,                 PS_Enum,      PA_pushEnum},
    {PS_Member,    PE_aggregate,            PS_Aggregate, PA_pushAggregate},
    {PS_Member,    PE_unit,                 PS_Member,    PA_setUnit},
    {PS_Member,    PE_array_min_size_VALUE, PS_Member,    PA_setArrayMinSize},
    {PS_Member,    PE_array_size_VALUE,     PS_Member,    PA_setArraySize},
    {PS_Member,    PE_member_end,           PS_Members,   PA_pop},
};
// clang-format on

const std::vector<std::string> kStateNames = {
    "PS_Begin",   "PS_Item",     "PS_Ref",    "PS_Scalar",    "PS_Float",
    "PS_Scaling", "PS_Bitfield", "PS_Enum",   "PS_Aggregate", "PS_Members",
    "PS_Member",  "PS_Formats",  "PS_Format", "PS_End",
};

const std::vector<std::string> kEventNames = {
    "PE_None",
    "PE_nvt",
    "PE_cpt",
    "PE_default_VALUE",
    "PE_obsolete_VALUE",
    "PE_size_VALUE",
    "PE_ref",
    "PE_ref_VALUE",
    "PE_ref_end",
    "PE_scalar",
    "PE_nc_type_VALUE",
    "PE_min_VALUE",
    "PE_max_VALUE",
    "PE_invalid_VALUE",
    "PE_scaling",
    "PE_scaling_a_VALUE",
    "PE_scaling_b_VALUE",
    "PE_scaling_c_VALUE",
    "PE_scaling_s_VALUE",
    "PE_scaling_end",
    "PE_scalar_end",
    "PE_float",
    "PE_float_end",
    "PE_bitfield",
    "PE_signed_VALUE",
    "PE_width_VALUE",
    "PE_offset_VALUE",
    "PE_bitfield_end",
    "PE_enum",
    "PE_enum_end",
    "PE_aggregate",
    "PE_members",
    "PE_member",
    "PE_array_min_size_VALUE",
    "PE_array_size_VALUE",
    "PE_member_end",
    "PE_members_end",
    "PE_aggregate_end",
    "PE_p_name_VALUE",
    "PE_unit",
    "PE_formats",
    "PE_format",
    "PE_format_VALUE",
    "PE_format_end",
    "PE_formats_end",
    "PE_refs",
    "PE_nvt_end",
    "PE_cpt_end",
};

const std::vector<std::string> kActionNames = {
    "PA_none",
    "PA_skipElement",
    "PA_createNVT",
    "PA_createCPT",
    "PA_setDefault",
    "PA_setObsolete",
    "PA_setSize",
    "PA_setArrayMinSize",
    "PA_setArraySize",
    "PA_setProgName",
    "PA_pushRef",
    "PA_setRefValue",
    "PA_pushScalar",
    "PA_setNcType",
    "PA_pushFloat",
    "PA_pushBitfield",
    "PA_pushEnum",
    "PA_pushAggregate",
    "PA_checkPop",
    "PA_pop",
    "PA_rememberIdAttr",
    "PA_addFormat",
    "PA_setMin",
    "PA_setMax",
    "PA_setInvalid",
    "PA_setScalingA",
    "PA_setScalingB",
    "PA_setScalingC",
    "PA_setScalingS",
    "PA_setState",
    "PA_setBitfieldSigned",
    "PA_setBitfieldWidth",
    "PA_setBitfieldOffset",
    "PA_handleEnumRef",
    "PA_setUnit",
    "PA_callBuildLookup",
    "PA_callDone",
};

class VarTransitionRow : public testing::TestWithParam<Transition> {};

TEST_P(VarTransitionRow, TakesItsNextStateAndRunsItsAction) {
  expectRow<VarTransitionTable>(GetParam());
}

INSTANTIATE_TEST_SUITE_P(VarTransitionTable, VarTransitionRow, testing::ValuesIn(kRows),
                         [](const auto& info) {
                           return kStateNames[info.param.state] + "_" +
                                  kEventNames[info.param.event];
                         });

TEST(VarTransitionTable, HasTheseRowsOnly) {
  EXPECT_EQ(kRows.size(), 76u);
  expectNoOtherRows<VarTransitionTable>(kRows, kStateNames.size(), kEventNames.size());
}

TEST(VarTransitionTable, NamesEveryStateEventAndActionAndNoOtherNumber) {
  expectNames(VarTransitionTable::stateName, kStateNames, "(unknown PState)");
  expectNames(VarTransitionTable::eventName, kEventNames, "(unknown PEvent)");
  expectNames(VarTransitionTable::actionName, kActionNames, "(unknown PAction)");
}

}  // namespace
}  // namespace zavri::korvat::builder
