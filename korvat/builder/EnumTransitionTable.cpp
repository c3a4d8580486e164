#include "korvat/builder/EnumTransitionTable.h"

namespace zavri::korvat::builder {

namespace {

using Table = EnumTransitionTable;

constexpr std::array<const char*, 5> kStateNames{
    "PS_Begin", "PS_Item", "PS_Members", "PS_InMember", "PS_End",
};
static_assert(kStateNames.size() == Table::PS_End + 1);

constexpr std::array<const char*, 10> kEventNames{
    "PE_None",       "PE_enum",        "PE_members", "PE_member", "PE_value_value",
    "PE_member_end", "PE_members_end", "PE_comment", "PE_refs",   "PE_enum_end",
};
static_assert(kEventNames.size() == Table::PE_enum_end + 1);

constexpr std::array<const char*, 6> kActionNames{
    "PA_none",          "PA_setIdAndIndex", "PA_setActEnumString",
    "PA_addEnumMember", "PA_skipElement",   "PA_callDone",
};
static_assert(kActionNames.size() == Table::PA_callDone + 1);

}  // namespace

const char* EnumTransitionTable::stateName(std::uint32_t state) {
  return findName(kStateNames, state, "(unknown PState)");
}

const char* EnumTransitionTable::eventName(std::uint32_t event) {
  return findName(kEventNames, event, "(unknown PEvent)");
}

const char* EnumTransitionTable::actionName(std::uint32_t action) {
  return findName(kActionNames, action, "(unknown PAction)");
}

}  // namespace zavri::korvat::builder
