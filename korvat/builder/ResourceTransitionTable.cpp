#include "korvat/builder/ResourceTransitionTable.h"

namespace zavri::korvat::builder {

namespace {

using Table = ResourceTransitionTable;

constexpr std::array<const char*, 8> kStateNames{
    "PS_Begin",  "PS_Top",     "PS_Control",  "PS_Items",
    "PS_InItem", "PS_Strings", "PS_InString", "PS_End",
};
static_assert(kStateNames.size() == Table::PS_End + 1);

constexpr std::array<const char*, 18> kEventNames{
    "PE_None",       "PE_ldrf",        "PE_control",  "PE_folder_value", "PE_control_end",
    "PE_items",      "PE_enumt",       "PE_nvt",      "PE_cpt",          "PE_fpt",
    "PE_item_end",   "PE_items_end",   "PE_strings",  "PE_string",       "PE_string_value",
    "PE_string_end", "PE_strings_end", "PE_ldrf_end",
};
static_assert(kEventNames.size() == Table::PE_ldrf_end + 1);

}  // namespace

const char* ResourceTransitionTable::stateName(std::uint32_t state) {
  return findName(kStateNames, state, "(unknown PState)");
}

const char* ResourceTransitionTable::eventName(std::uint32_t event) {
  return findName(kEventNames, event, "(unknown PEvent)");
}

}  // namespace zavri::korvat::builder
