#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "korvat/builder/AttributeMap.h"
#include "korvat/builder/TStateMachine.h"

namespace zavri::korvat::builder {

// Table side of FpBuilder: the grammar of an "fpt" element.
//
// The lists of network variables and of properties share a state: either element is taken in either
// list, and either end leaves it.
class FpTransitionTable : public TStateMachine<FpTransitionTable> {
 public:
  enum State : std::uint32_t {
    PS_Begin,
    PS_Item,
    PS_Inherit,
    PS_InheritRef,
    PS_Dps,
    PS_Dp,
    PS_Ref,
    PS_End,
  };

  enum Event : std::uint32_t {
    PE_None,
    PE_fpt,
    PE_obsolete_VALUE,
    PE_inherit,
    PE_ref,
    PE_ref_VALUE,
    PE_ref_end,
    PE_inherit_end,
    PE_nvs,
    PE_cps,
    PE_nv,
    PE_cp,
    PE_member_VALUE,
    PE_mandatory_VALUE,
    PE_dir_VALUE,
    PE_min_VALUE,
    PE_max_VALUE,
    PE_default_VALUE,
    PE_array_VALUE,
    PE_applies_VALUE,
    PE_nv_end,
    PE_cp_end,
    PE_nvs_end,
    PE_cps_end,
    PE_fpt_end,
  };

  enum Action : std::uint32_t {
    PA_none,
    PA_skipElement,
    PA_createFPT,
    PA_setObsolete,
    PA_rememberRefBase,
    PA_setInheritRef,
    PA_pushNv,
    PA_pushCp,
    PA_setMember,
    PA_setMandatory,
    PA_setDirection,
    PA_setMin,
    PA_setMax,
    PA_setDefault,
    PA_setArray,
    PA_setAppliesTo,
    PA_setRef,
    PA_callDone,
  };

  // clang-format off
  static constexpr std::array<Transition, 27> kTransitions{{
      // in state     on event            go to          and do
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
  }};
  // clang-format on

  virtual ~FpTransitionTable() = default;
  virtual void processAction(std::uint32_t action, const AttributeMap* attributes,
                             const std::string* value) = 0;

  // The enumerator's name; "(unknown PState)" and so on for any other number.
  static const char* stateName(std::uint32_t state);
  static const char* eventName(std::uint32_t event);
  static const char* actionName(std::uint32_t action);
};

static_assert(everyPairIsUnique(FpTransitionTable::kTransitions));

}  // namespace zavri::korvat::builder
