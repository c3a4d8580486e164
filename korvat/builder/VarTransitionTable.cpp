#include "korvat/builder/VarTransitionTable.h"

namespace zavri::korvat::builder {

namespace {

using Table = VarTransitionTable;

constexpr std::array<const char*, 14> kStateNames{
    "PS_Begin",   "PS_Item",     "PS_Ref",    "PS_Scalar",    "PS_Float",
    "PS_Scaling", "PS_Bitfield", "PS_Enum",   "PS_Aggregate", "PS_Members",
    "PS_Member",  "PS_Formats",  "PS_Format", "PS_End",
};
static_assert(kStateNames.size() == Table::PS_End + 1);

constexpr std::array<const char*, 48> kEventNames{
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
static_assert(kEventNames.size() == Table::PE_cpt_end + 1);

constexpr std::array<const char*, 37> kActionNames{
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
static_assert(kActionNames.size() == Table::PA_callDone + 1);

}  // namespace

const char* VarTransitionTable::stateName(std::uint32_t state) {
  return findName(kStateNames, state, "(unknown PState)");
}

const char* VarTransitionTable::eventName(std::uint32_t event) {
  return findName(kEventNames, event, "(unknown PEvent)");
}

const char* VarTransitionTable::actionName(std::uint32_t action) {
  return findName(kActionNames, action, "(unknown PAction)");
}

}  // namespace zavri::korvat::builder
