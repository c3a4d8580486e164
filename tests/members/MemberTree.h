#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemRef.h"
#include "korvat/members/MemScalar.h"
#include "korvat/types/TypeId.h"

// Short ways to build member trees by hand, and a record of the callbacks of a walk.
namespace zavri::test {

template <typename T>
std::unique_ptr<T> makeMember(const std::string& name, std::uint32_t arraySize = 0) {
  auto member = std::make_unique<T>();
  member->setProgName(name);
  member->setArraySize(arraySize);
  return member;
}

inline std::unique_ptr<korvat::MemScalar> makeScalar(
    const std::string& name, korvat::NcType type = korvat::NcType::UnsignedShort,
    std::uint32_t arraySize = 0) {
  auto member = makeMember<korvat::MemScalar>(name, arraySize);
  member->setNcType(type);
  return member;
}

inline std::unique_ptr<korvat::MemFloat> makeFloat(const std::string& name,
                                                   korvat::NcType type = korvat::NcType::Float,
                                                   std::uint32_t arraySize = 0) {
  auto member = makeMember<korvat::MemFloat>(name, arraySize);
  member->setNcType(type);
  return member;
}

inline std::unique_ptr<korvat::MemBitfield> makeBitfield(const std::string& name,
                                                         std::uint8_t offset, std::uint8_t width,
                                                         bool isSigned = false,
                                                         std::uint32_t arraySize = 0) {
  auto member = makeMember<korvat::MemBitfield>(name, arraySize);
  member->setOffset(offset);
  member->setWidth(width);
  member->setSigned(isSigned);
  return member;
}

// `type` is the name of a network variable type of the standard set, such as "_temp".
inline std::unique_ptr<korvat::MemRef> makeRef(const std::string& name, const std::string& type,
                                               std::uint32_t arraySize = 0) {
  auto member = makeMember<korvat::MemRef>(name, arraySize);
  member->getRefId().setId(type);
  return member;
}

inline std::unique_ptr<korvat::MemEnum> makeEnum(const std::string& name, const std::string& type) {
  auto member = makeMember<korvat::MemEnum>(name);
  member->getRefId().setId(type);
  return member;
}

// A member of a kind that no definition has.
class OddMember : public korvat::Member {
 public:
  explicit OddMember(int kind) : Member(static_cast<Kind>(kind)) {}
  std::unique_ptr<Member> clone() const override { return std::make_unique<OddMember>(*this); }
  bool traverseMember(Context& context, const MemberCallback& onMember,
                      const StructEndCallback&) const override {
    return visitBytes(context, *this, onMember, 1);
  }
  std::uint64_t countElementBits(korvat::BitCount&) const override { return 8; }
};

template <typename... Children>
std::unique_ptr<korvat::MemAggregate> makeStruct(const std::string& name, Children... children) {
  auto aggregate = makeMember<korvat::MemAggregate>(name);
  (aggregate->addChild(std::move(children)), ...);
  aggregate->buildLookup();
  return aggregate;
}

template <typename... Children>
std::unique_ptr<korvat::MemAggregate> makeUnion(const std::string& name, Children... children) {
  auto aggregate = makeStruct(name, std::move(children)...);
  aggregate->setUnion(true);
  return aggregate;
}

template <typename T>
std::unique_ptr<T> withArray(std::unique_ptr<T> member, std::uint32_t size,
                             std::uint32_t minSize = korvat::Member::kNoArrayMinSize) {
  member->setArraySize(size);
  member->setArrayMinSize(minSize);
  return member;
}

// Writes down each callback of a walk as a line: what is visited, the byte (with the bit offset
// where it is not 0) and the depth; "(array)" for an array as a whole, "[i]" for its elements.
//
//   "s @0 d0", "a(array) @0 d1", "a[0] @0 d2", "flag @1.3 d1", "end s @2 d0"
class WalkRecord {
 public:
  // Walks `member`; `act` may change the context after the line of a member was written, and ends
  // the walk by returning false.
  bool walk(const korvat::Member& member, korvat::Member::Context& context,
            const korvat::Member::MemberCallback& act = accept) {
    const auto onMember = [this, &act](korvat::Member::Context& at, const korvat::Member& visited) {
      std::string line = visited.getProgName();
      if (at.arrayIndex >= 0) {
        line += "[" + std::to_string(at.arrayIndex) + "]";
      } else if (visited.isArray()) {
        line += "(array)";
      }
      lines.push_back(line + describe(at));
      return act(at, visited);
    };
    const auto onStructEnd = [this](korvat::Member::Context& at, const korvat::Member& ended) {
      lines.push_back("end " + ended.getProgName() + describe(at));
      return true;
    };
    return member.traverse(context, onMember, onStructEnd);
  }

  static bool accept(korvat::Member::Context&, const korvat::Member&) { return true; }

  std::vector<std::string> lines;

 private:
  static std::string describe(const korvat::Member::Context& at) {
    std::string place = " @" + std::to_string(at.bytePos);
    if (at.bitOffset != 0) place += "." + std::to_string(at.bitOffset);
    return place + " d" + std::to_string(at.depth);
  }
};

// The lines of a walk over `member` that no callback influences.
inline std::vector<std::string> recordWalk(const korvat::Member& member,
                                           korvat::TypeManager* typeManager = nullptr) {
  const base::Buffer nothing;
  korvat::Member::Context context(typeManager, nothing, true);
  WalkRecord record;
  if (!record.walk(member, context)) record.lines.push_back("failed");
  return record.lines;
}

// XML of a network variable type of the standard set; `root` is its root member element.
inline std::string nvtXml(const std::string& id, const std::string& root) {
  return "<nvt id=\"" + id + "\" idx=\"-1\">" + root + "</nvt>\n";
}
inline std::string refXml(const std::string& type) {
  return "<ref>SNVT" + type + "</ref>";
}
inline std::string memberXml(const std::string& name, const std::string& element) {
  return "<member>" + element + "<p-name>" + name + "</p-name></member>";
}
inline std::string aggregateXml(const std::string& category, const std::string& members) {
  return "<aggregate cat=\"" + category + "\"><members>" + members + "</members></aggregate>";
}
inline std::string structXml(const std::string& members) {
  return aggregateXml("struct", members);
}
// `more` goes into the element: "<array-size>3</array-size>".
inline std::string scalarXml(const std::string& ncType, const std::string& more = "") {
  return "<scalar><nc-type>" + ncType + "</nc-type>" + more + "</scalar>";
}

}  // namespace zavri::test
