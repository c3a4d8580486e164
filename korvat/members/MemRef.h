#pragma once

#include "korvat/members/MemRefBase.h"

namespace zavri::korvat {

// A member laid out like another network variable or property type. Transparent in member paths.
class KORVAT_API MemRef : public MemRefBase {
 public:
  MemRef() : MemRefBase(Kind::Ref, ResourceType::Nv) {}

  std::unique_ptr<Member> clone() const override;
  bool traverseMember(Context& context, const MemberCallback& onMember,
                      const StructEndCallback& onStructEnd) const override;
  const Member* findMemberAtPath(TypeManager* typeManager, const std::string& path) const override;
  std::uint64_t countElementBits(BitCount& count) const override;
  [[nodiscard]] bool setRefType(ResourceType type) override;

  // The type at the end of a chain of types that are references themselves. Null, with a warning,
  // when a type is missing or the chain runs in a circle (one longer than kMaxReferences counts as
  // such); null also for a type that is no VarType.
  const VarType* resolve(TypeManager* typeManager) const;
};

}  // namespace zavri::korvat
