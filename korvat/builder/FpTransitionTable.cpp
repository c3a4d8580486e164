#include "korvat/builder/FpTransitionTable.h"

namespace zavri::korvat::builder {

namespace {

using Table = FpTransitionTable;

constexpr std::array<const char*, 8> kStateNames{
    "PS_Begin", "PS_Item", "PS_Inherit", "PS_InheritRef", "PS_Dps", "PS_Dp", "PS_Ref", "PS_End",
};
static_assert(kStateNames.size() == Table::PS_End + 1);

constexpr std::array<const char*, 25> kEventNames{
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
static_assert(kEventNames.size() == Table::PE_fpt_end + 1);

constexpr std::array<const char*, 18> kActionNames{
    "PA_none",          "PA_skipElement", "PA_createFPT", "PA_setObsolete", "PA_rememberRefBase",
    "PA_setInheritRef", "PA_pushNv",      "PA_pushCp",    "PA_setMember",   "PA_setMandatory",
    "PA_setDirection",  "PA_setMin",      "PA_setMax",    "PA_setDefault",  "PA_setArray",
    "PA_setAppliesTo",  "PA_setRef",      "PA_callDone",
};
static_assert(kActionNames.size() == Table::PA_callDone + 1);

}  // namespace

const char* FpTransitionTable::stateName(std::uint32_t state) {
  return findName(kStateNames, state, "(unknown PState)");
}

const char* FpTransitionTable::eventName(std::uint32_t event) {
  return findName(kEventNames, event, "(unknown PEvent)");
}

const char* FpTransitionTable::actionName(std::uint32_t action) {
  return findName(kActionNames, action, "(unknown PAction)");
}

}  // namespace zavri::korvat::builder
