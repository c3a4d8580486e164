#include "korvat/convert/PacketConverter.h"

#include <algorithm>

#include <boost/bind/bind.hpp>

#include "korvat/base/Logger.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemScalar.h"
#include "korvat/types/VarType.h"

namespace zavri::korvat {

using base::Logger;
using base::Packet;

namespace {

template <typename T>
bool copyAs(Packet& input, Packet& output) {
  T number{};
  if (!input.read(number)) return false;
  output.add(number);
  return true;
}

template <typename T>
bool peekAs(const Packet& input, std::uint64_t& number) {
  T value{};
  if (!input.peek(value)) return false;
  number = value;
  return true;
}

unsigned byteCountOf(const Member& member) {
  return member.getKind() == Member::Kind::Scalar
             ? static_cast<const MemScalar&>(member).getByteCount()
             : static_cast<const MemFloat&>(member).getByteCount();
}

}  // namespace

PacketConverter::PacketConverter(TypeManager* typeManager, const VarType& type,
                                 base::Endianess from, base::Endianess to)
    : _typeManager(typeManager), _type(&type), _input(from), _output(to) {}

bool PacketConverter::convert(base::Buffer& buffer) {
  if (buffer.getSize() == 0) return false;

  unsigned maxSize = 0;
  const bool isSized = _type->getMaxSize(_typeManager, maxSize);
  if (buffer.getSize() != maxSize && base::isLogged(Logger::Debug)) {
    Logger::debug(
        "[korvat] converting type %s: sizes differ, type max size "
        "%ld (buffer-size %ld)\n",
        _type->getName().c_str(), static_cast<long>(maxSize), static_cast<long>(buffer.getSize()));
  }
  if (_input.getEndianess() == _output.getEndianess()) return true;
  if (!isSized) return false;

  using namespace boost::placeholders;
  _input = Packet(_input.getEndianess(), buffer);
  _output.setSize(buffer.getSize());
  const bool isWalked = _type->getMember()->traverse(
      _typeManager, _input, boost::bind(&PacketConverter::convertMember, this, _1, _2),
      boost::bind(&PacketConverter::convertStructEnd, this, _1, _2));
  if (!isWalked || _hasFailed) return false;
  buffer = _output;
  return true;
}

bool PacketConverter::convertMember(Member::Context& context, const Member& member) {
  if (_hasFailed) return false;
  if (!context.unionStack.empty()) return true;  // copied as a whole at the union's end
  if (member.isArray() && context.arrayIndex < 0) return true;

  switch (member.getKind()) {
    case Member::Kind::Float:
    case Member::Kind::Scalar:
      if (!moveTo(context.bytePos)) return false;
      setContextArraySize(context, member);
      return copyNumber(_input, _output, byteCountOf(member));
    case Member::Kind::Bitfield:
    case Member::Kind::Enum:
      if (!moveTo(context.bytePos)) return false;
      return copyAs<unsigned char>(_input, _output);
    default:
      return true;
  }
}

bool PacketConverter::moveTo(std::uint32_t bytePos) {
  return _input.setPos(bytePos) && _output.setPos(bytePos);
}

// A dynamic array that follows takes its element count from this field.
void PacketConverter::setContextArraySize(Member::Context& context, const Member& member) const {
  context.forgetArraySize();
  if (member.getKind() != Member::Kind::Scalar || byteCountOf(member) == 0) return;
  std::uint64_t number = 0;
  if (!peekNumber(_input, byteCountOf(member), number)) return;
  context.arraySize = static_cast<std::int32_t>(std::min<std::uint64_t>(number, INT32_MAX));
}

bool PacketConverter::convertStructEnd(Member::Context& context, const Member& member) {
  Logger::trace("[VarType::convertPacketStructEnd] depth=%ld\n", static_cast<long>(context.depth));
  bool isDone = member.getKind() == Member::Kind::Aggregate;
  if (isDone && static_cast<const MemAggregate&>(member).isUnion())
    isDone = copyOuterUnion(context);
  if (!isDone) _hasFailed = true;
  return isDone;
}

bool PacketConverter::copyOuterUnion(const Member::Context& context) {
  Logger::trace("[VarType::convertPacketStructEnd] UNION END\n");
  if (context.unionStack.size() > 1) {
    Logger::trace("[VarType::convertPacketStructEnd] UNION inside UNION - ignore\n");
    return true;
  }
  const Member::UnionFrame& frame = context.unionStack.back();
  if (std::uint64_t{frame.start} + frame.extent > _input.getSize()) {
    Logger::warning("[VarType::convertPacketStructEnd] invalid union size\n");
    return false;
  }
  // Both positions lie within the packets: the sum was checked.
  static_cast<void>(_output.setPos(frame.start));
  _output.addBytes(_input.getData() + frame.start, frame.extent, true);
  return true;
}

bool copyNumber(Packet& input, Packet& output, unsigned byteCount) {
  switch (byteCount) {
    case 0:
      return true;
    case 1:
      return copyAs<unsigned char>(input, output);
    case 2:
      return copyAs<unsigned short>(input, output);
    case 4:
      return copyAs<unsigned int>(input, output);
    case 8:
      return copyAs<unsigned long long>(input, output);
    default:
      Logger::error("[korvat/convertPacket] invalid size %ld\n", static_cast<long>(byteCount));
      return false;
  }
}

bool peekNumber(const Packet& input, unsigned byteCount, std::uint64_t& number) {
  switch (byteCount) {
    case 0:
      number = 0;
      return true;
    case 1:
      return peekAs<unsigned char>(input, number);
    case 2:
      return peekAs<unsigned short>(input, number);
    case 4:
      return peekAs<unsigned int>(input, number);
    case 8:
      return peekAs<unsigned long long>(input, number);
    default:
      Logger::error("[korvat/convertPacket] invalid size %ld (setContextArraySize)\n",
                    static_cast<long>(byteCount));
      return false;
  }
}

}  // namespace zavri::korvat
