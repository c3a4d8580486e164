#pragma once

#include <array>
#include <cstdint>

#include "korvat/builder/TStateMachine.h"

namespace zavri::korvat::builder {

// The grammar of a resource directory file, apart from its items.
struct ResourceTransitionTable {
  enum State : std::uint32_t {
    PS_Begin,
    PS_Top,
    PS_Control,
    PS_Items,
    PS_InItem,
    PS_Strings,
    PS_InString,
    PS_End,
  };

  enum Event : std::uint32_t {
    PE_None,
    PE_ldrf,
    PE_control,
    PE_folder_value,
    PE_control_end,
    PE_items,
    PE_enumt,
    PE_nvt,
    PE_cpt,
    PE_fpt,
    PE_item_end,
    PE_items_end,
    PE_strings,
    PE_string,
    PE_string_value,
    PE_string_end,
    PE_strings_end,
    PE_ldrf_end,
  };

  enum Action : std::uint32_t {
    PA_none,
    PA_setFolderValue,
    PA_handleEnum,
    PA_handleNv,
    PA_handleCp,
    PA_handleFp,
    PA_setActStringId,
    PA_addToDictionary,
    PA_checkDone,  // of no row
    PA_verify,
  };

  // clang-format off
  static constexpr std::array<Transition, 17> kTransitions{{
      // in state   on event          go to        and do
      {PS_Begin,    PE_ldrf,          PS_Top,      PA_none},
      {PS_Top,      PE_control,       PS_Control,  PA_none},
      {PS_Top,      PE_items,         PS_Items,    PA_none},
      {PS_Top,      PE_strings,       PS_Strings,  PA_none},
      {PS_Top,      PE_ldrf_end,      PS_End,      PA_verify},
      {PS_Control,  PE_folder_value,  PS_Control,  PA_setFolderValue},
      {PS_Control,  PE_control_end,   PS_Top,      PA_none},
      {PS_Items,    PE_items_end,     PS_Top,      PA_none},
      {PS_Items,    PE_enumt,         PS_InItem,   PA_handleEnum},
      {PS_Items,    PE_nvt,           PS_InItem,   PA_handleNv},
      {PS_Items,    PE_cpt,           PS_InItem,   PA_handleCp},
      {PS_Items,    PE_fpt,           PS_InItem,   PA_handleFp},
      {PS_InItem,   PE_item_end,      PS_Items,    PA_none},
      {PS_Strings,  PE_string,        PS_InString, PA_setActStringId},
      {PS_Strings,  PE_strings_end,   PS_Top,      PA_none},
      {PS_InString, PE_string_value,  PS_InString, PA_addToDictionary},
      {PS_InString, PE_string_end,    PS_Strings,  PA_none},
  }};
  // clang-format on

  // The enumerator's name; "(unknown PState)" or "(unknown PEvent)" for any other number.
  static const char* stateName(std::uint32_t state);
  static const char* eventName(std::uint32_t event);
};

static_assert(everyPairIsUnique(ResourceTransitionTable::kTransitions));

}  // namespace zavri::korvat::builder
