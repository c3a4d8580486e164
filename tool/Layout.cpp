#include "tool/Layout.h"

#include <utility>

#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemRef.h"
#include "korvat/types/TypeManager.h"
#include "tool/Failure.h"

namespace zavri::korvat::tool {

namespace {

// Goes through the members and notes where each begins. The library itself moves the place, by
// walking over what has been noted.
class LayoutWriter {
 public:
  explicit LayoutWriter(TypeManager& manager) : _context(&manager, _nothing, true) {
    _context.useDynamicArrays = false;
  }

  void add(const Member& member, const std::string& path, unsigned nesting,
           const VarType* refType) {
    if (member.getKind() != Member::Kind::Bitfield) _context.closeByte();
    if (member.getKind() == Member::Kind::Ref && !member.isArray()) {
      const VarType* type = resolve(member);
      add(*type->getMember(), path, nesting, type);
      return;
    }

    const std::uint32_t bytePos = _context.bytePos;
    const std::uint8_t bitOffset = _context.bitOffset;
    addRow(member, path, nesting, refType);
    addContent(member, member.isArray() ? path + "[]" : path, nesting + 1);
    _context.bytePos = bytePos;
    _context.bitOffset = bitOffset;
    pass(member);
  }

  std::vector<LayoutRow> takeRows() { return std::move(_rows); }

 private:
  void addRow(const Member& member, const std::string& path, unsigned nesting,
              const VarType* refType) {
    if (_rows.size() >= kMaxLayoutRows) {
      throw Failure(kProblem, "the layout has more than " + std::to_string(kMaxLayoutRows) +
                                  " members: too many to show");
    }
    LayoutRow row;
    row.member = &member;
    row.path = path;
    row.nesting = nesting;
    row.byteOffset = _context.bytePos;
    if (member.getKind() == Member::Kind::Bitfield) {
      row.bitOffset = static_cast<const MemBitfield&>(member).getSlot().offset;
    }
    row.bitCount = member.getElementBitCount(_context.owner);
    row.refType = member.getKind() == Member::Kind::Ref ? resolve(member) : refType;
    _rows.push_back(std::move(row));
  }

  // The members of a structure or union, or of the first element of an array of them.
  void addContent(const Member& member, const std::string& path, unsigned nesting) {
    const Member* content = &member;
    if (member.getKind() == Member::Kind::Ref) content = resolve(member)->getMember();
    if (content != &member && content->isArray()) return add(*content, path, nesting, nullptr);
    if (content->getKind() != Member::Kind::Aggregate) return;

    const auto& aggregate = static_cast<const MemAggregate&>(*content);
    const std::uint32_t start = _context.bytePos;
    for (const auto& child : aggregate.getChildren()) {
      if (!child) break;
      add(*child, path.empty() ? child->getProgName() : path + "." + child->getProgName(), nesting,
          nullptr);
      if (!aggregate.isUnion()) continue;
      _context.bytePos = start;
      _context.bitOffset = 0;
    }
  }

  const VarType* resolve(const Member& reference) {
    const VarType* type = static_cast<const MemRef&>(reference).resolve(_context.owner);
    if (type == nullptr || type->getMember() == nullptr) {
      throw Failure(kProblem, "the reference to " +
                                  static_cast<const MemRef&>(reference).getRefId().toString() +
                                  " leads to no layout");
    }
    return type;
  }

  void pass(const Member& member) {
    const auto ignore = [](Member::Context&, const Member&) { return true; };
    if (!member.traverse(_context, ignore, ignore)) {
      throw Failure(kProblem, "the layout cannot be followed");
    }
  }

  const base::Buffer _nothing;
  Member::Context _context;
  std::vector<LayoutRow> _rows;
};

}  // namespace

std::vector<LayoutRow> makeLayout(TypeManager& manager, const VarType& type) {
  LayoutWriter writer(manager);
  writer.add(*type.getMember(), type.getMember()->getProgName(), 0, nullptr);
  return writer.takeRows();
}

}  // namespace zavri::korvat::tool
