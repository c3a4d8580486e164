#pragma once

#include <string>

#include "korvat/base/StringUtils.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemRefBase.h"
#include "korvat/members/MemScalar.h"
#include "korvat/types/CpType.h"
#include "korvat/types/FpType.h"
#include "korvat/types/VarType.h"

namespace zavri::korvat::builder {

inline std::string dumpScaling(const MemNumeric& member) {
  const Scaling& scaling = member.getScaling();
  if (scaling.isIdentity()) return "";
  return " scaling " + std::to_string(scaling.a) + "," + std::to_string(scaling.b) + "," +
         std::to_string(scaling.c);
}

template <typename T>
std::string dumpLimits(const TMemNumeric<T>& member) {
  std::string text;
  if (member.hasMin()) text += " min " + std::to_string(member.getMin());
  if (member.hasMax()) text += " max " + std::to_string(member.getMax());
  if (member.hasInvalid()) text += " invalid " + std::to_string(member.getInvalid());
  return text + dumpScaling(member);
}

inline std::string dumpNcType(const NcTyped& member) {
  return " '" + std::string(ncTypeRow(member.getNcType()).name) + "'";
}

inline std::string dumpContent(const Member& member) {
  switch (member.getKind()) {
    case Member::Kind::Scalar: {
      const auto& scalar = static_cast<const MemScalar&>(member);
      return dumpNcType(scalar) + dumpLimits(scalar);
    }
    case Member::Kind::Float: {
      const auto& number = static_cast<const MemFloat&>(member);
      return dumpNcType(number) + dumpLimits(number);
    }
    case Member::Kind::Bitfield: {
      const auto& bitfield = static_cast<const MemBitfield&>(member);
      const BitSlot& slot = bitfield.getSlot();
      return std::string(slot.isSigned ? " signed" : " unsigned") + " offset " +
             std::to_string(slot.offset) + " width " + std::to_string(slot.width) +
             dumpLimits(bitfield);
    }
    case Member::Kind::Enum:
    case Member::Kind::Ref: {
      const TypeId& id = static_cast<const MemRefBase&>(member).getRefId();
      return std::string(" ") + resourceTypeName(id.getType()) + " " + id.getPrefix() + " " +
             id.getId();
    }
    case Member::Kind::Aggregate:
      return static_cast<const MemAggregate&>(member).isUnion() ? " union" : " struct";
    case Member::Kind::Invalid:
      break;
  }
  return "";
}

// One line a member, the children indented below it:
//   Scalar value 'unsigned short' min 0 max 200 scaling 5,-1,0 [unit percent]
inline std::string dumpMember(const Member& member, const std::string& indent = "") {
  std::string text = indent + Member::getKindName(member.getKind());
  if (!member.getProgName().empty()) text += " " + member.getProgName();
  text += dumpContent(member);
  if (member.isDynamicArray()) text += " x " + std::to_string(member.getArrayMinSize()) + "..";
  if (member.isArray()) {
    text += (member.isDynamicArray() ? "" : " x ") + std::to_string(member.getArraySize());
  }
  if (!member.getUnit().empty()) text += " [unit " + member.getUnit() + "]";
  text += "\n";
  if (member.getKind() != Member::Kind::Aggregate) return text;

  for (const auto& child : static_cast<const MemAggregate&>(member).getChildren()) {
    text += child ? dumpMember(*child, indent + "  ") : indent + "  (none)\n";
  }
  return text;
}

//   nv 1 nviSetpoint input mandatory member 3 0000000000000000-0/SNVT_temp_p min 10 ...
inline std::string dumpDatapoint(const DpRef& dp) {
  std::string text = dp.getDpType() == DpRef::DpType::Cp ? "  cp " : "  nv ";
  text += std::to_string(dp.getIndex()) + " " + dp.getName();
  text += dp.getDirection() == DpRef::Direction::Input ? " input" : " output";
  if (dp.isMandatory()) text += " mandatory";
  if (dp.getMember() != 0) text += " member " + std::to_string(dp.getMember());
  if (dp.getTypeId()) text += " " + dp.getTypeId().toString();
  if (dp.hasMin()) text += " min " + util::StringUtils::toString(dp.getMin());
  if (dp.hasMax()) text += " max " + util::StringUtils::toString(dp.getMax());
  if (dp.hasDefault()) text += " default " + util::StringUtils::toString(dp.getDefaultValue());
  if (!dp.isArrayPermitted()) text += " single";
  if (!dp.getAppliesTo().empty()) text += " applies to '" + dp.getAppliesTo() + "'";
  return text + "\n";
}

// What a profile adds to the line of its type, and a line for each of its datapoints.
inline std::string dumpProfile(const FpType& profile) {
  std::string text;
  if (profile.hasFlags(BaseType::kStandardProfile)) text += " standard";
  if (profile.hasKey()) text += " key " + std::to_string(profile.getKey());
  if (profile.hasBase()) text += " inherits " + profile.getBase().toString();
  text += "\n";
  for (const DpRef* dp : profile.getNvColl()) text += dumpDatapoint(*dp);
  for (const DpRef* dp : profile.getCpColl()) text += dumpDatapoint(*dp);
  return text;
}

// "nv _temp 39 size 2", its flags, default and formats, and its members or datapoints below.
inline std::string dumpType(const BaseType& type) {
  std::string text = std::string(resourceTypeName(type.getTypeId().getType())) + " " +
                     type.getName() + " " + std::to_string(type.getIndex());
  if (type.hasFlags(BaseType::kObsolete)) text += " obsolete";
  const auto* profile = dynamic_cast<const FpType*>(&type);
  if (profile != nullptr) return text + dumpProfile(*profile);
  const auto* varType = dynamic_cast<const VarType*>(&type);
  if (varType == nullptr) return text + "\n";

  text += " size " + std::to_string(varType->getSize());
  if (const auto* cpType = dynamic_cast<const CpType*>(varType)) {
    text += " default '" + cpType->getDefaultValue() + "'";
  }
  text += "\n";
  for (const auto& [name, format] : varType->getFormats()) {
    text += "format '" + name + "' = '" + format + "'\n";
  }
  return text + (varType->getMember() == nullptr ? "" : dumpMember(*varType->getMember()));
}

}  // namespace zavri::korvat::builder
