#pragma once

#include <map>
#include <string>
#include <vector>

#include "korvat/members/Member.h"

namespace zavri::korvat {

// A structure, whose members follow each other, or a union, whose members (its alternatives) all
// start at its first byte and which is as long as the longest of them. Owns its members.
class KORVAT_API MemAggregate : public Member {
 public:
  MemAggregate() : Member(Kind::Aggregate) {}

  std::unique_ptr<Member> clone() const override;
  // Every alternative of a union is visited, one after the other over the same bytes; its
  // struct-end callback still finds the frame of the union on the context's stack.
  bool traverseMember(Context& context, const MemberCallback& onMember,
                      const StructEndCallback& onStructEnd) const override;
  const Member* findMemberAtPath(TypeManager* typeManager, const std::string& path) const override;
  std::uint64_t countElementBits(BitCount& count) const override;

  bool isUnion() const { return _isUnion; }
  void setUnion(bool isUnion) { _isUnion = isUnion; }

  // Members in the order of the layout. A null entry is one that was announced but never came: a
  // walk ends there, with a warning.
  const std::vector<std::unique_ptr<Member>>& getChildren() const { return _children; }
  void addChild(std::unique_ptr<Member> child);
  // Makes the members added since the last call known by name; they must have their names. Of two
  // members with one name the later is found; a member without a name is not.
  void buildLookup();
  // The member called `progName`, or null.
  const Member* findChild(const std::string& progName) const;
  Member* findChild(const std::string& progName);
  // Puts `child`, which takes over the name, in the place of the member called `progName`; false,
  // and nothing changes, when there is none.
  bool replaceChild(const std::string& progName, std::unique_ptr<Member> child);
  // The member after the one called `progName`; null at the end, and with a warning when there is
  // no such member.
  const Member* getNextSibling(const std::string& progName) const;

  // Of a union: dotted path of the enumeration that tells the alternative in use; may be empty.
  const std::string& getDiscriminator() const { return _discriminator; }
  void setDiscriminator(const std::string& path) { _discriminator = path; }

 private:
  MemAggregate(const MemAggregate& source);

  bool traverseChildren(Context& context, const MemberCallback& onMember,
                        const StructEndCallback& onStructEnd) const;

  bool _isUnion = false;
  std::vector<std::unique_ptr<Member>> _children;
  std::map<std::string, std::size_t> _lookup;  // program name to position in _children
  std::size_t _lookedUpCount = 0;              // children that the look-up covers
  std::string _discriminator;
};

}  // namespace zavri::korvat
