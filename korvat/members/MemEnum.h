#pragma once

#include "korvat/members/MemRefBase.h"

namespace zavri::korvat {

class EnumType;

// A value of an enumeration: one signed byte.
class KORVAT_API MemEnum : public MemRefBase {
 public:
  MemEnum() : MemRefBase(Kind::Enum, ResourceType::Enum) {}

  std::unique_ptr<Member> clone() const override;
  bool traverseMember(Context& context, const MemberCallback& onMember,
                      const StructEndCallback& onStructEnd) const override;
  std::uint64_t countElementBits(BitCount& count) const override;
  [[nodiscard]] bool setRefType(ResourceType type) override;

  // The enumeration; null, with a warning when the catalogue has no type of that name, when there
  // is none.
  const EnumType* resolveEnum(TypeManager* typeManager) const;
};

}  // namespace zavri::korvat
