#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "korvat/builder/AttributeMap.h"
#include "korvat/builder/TStateMachine.h"

namespace zavri::korvat::builder {

// Table side of EnumBuilder: the grammar of an "enumt" element.
class EnumTransitionTable : public TStateMachine<EnumTransitionTable> {
 public:
  enum State : std::uint32_t {
    PS_Begin,
    PS_Item,
    PS_Members,
    PS_InMember,
    PS_End,
  };

  enum Event : std::uint32_t {
    PE_None,
    PE_enum,
    PE_members,
    PE_member,
    PE_value_value,
    PE_member_end,
    PE_members_end,
    PE_comment,
    PE_refs,
    PE_enum_end,
  };

  enum Action : std::uint32_t {
    PA_none,
    PA_setIdAndIndex,
    PA_setActEnumString,
    PA_addEnumMember,
    PA_skipElement,
    PA_callDone,
  };

  // clang-format off
  static constexpr std::array<Transition, 9> kTransitions{{
      // in state   on event         go to         and do
      {PS_Begin,    PE_enum,         PS_Item,      PA_setIdAndIndex},
      {PS_Item,     PE_members,      PS_Members,   PA_none},
      {PS_Item,     PE_refs,         PS_Item,      PA_skipElement},
      {PS_Item,     PE_enum_end,     PS_End,       PA_callDone},
      {PS_Members,  PE_member,       PS_InMember,  PA_setActEnumString},
      {PS_Members,  PE_members_end,  PS_Item,      PA_none},
      {PS_InMember, PE_value_value,  PS_InMember,  PA_addEnumMember},
      {PS_InMember, PE_comment,      PS_InMember,  PA_skipElement},
      {PS_InMember, PE_member_end,   PS_Members,   PA_none},
  }};
  // clang-format on

  virtual ~EnumTransitionTable() = default;
  virtual void processAction(std::uint32_t action, const AttributeMap* attributes,
                             const std::string* value) = 0;

  // The enumerator's name; "(unknown PState)" and so on for any other number.
  static const char* stateName(std::uint32_t state);
  static const char* eventName(std::uint32_t event);
  static const char* actionName(std::uint32_t action);
};

static_assert(everyPairIsUnique(EnumTransitionTable::kTransitions));

}  // namespace zavri::korvat::builder
