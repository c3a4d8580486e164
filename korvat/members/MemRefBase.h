#pragma once

#include "korvat/base/Export.h"
#include "korvat/members/Member.h"
#include "korvat/types/TypeId.h"

namespace zavri::korvat {

// A member whose meaning another type gives. The type is named, not owned, and looked up each time.
class KORVAT_API MemRefBase : public Member {
 public:
  const TypeId& getRefId() const { return _refId; }
  TypeId& getRefId() { return _refId; }

  // Sets the resource type of the reference. False, and nothing changes, for one that this kind of
  // member cannot refer to.
  [[nodiscard]] virtual bool setRefType(ResourceType type) = 0;

 protected:
  MemRefBase(Kind kind, ResourceType type) : Member(kind) { _refId.setType(type); }
  MemRefBase(const MemRefBase&) = default;

 private:
  TypeId _refId;
};

}  // namespace zavri::korvat
