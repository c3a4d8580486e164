#include "korvat/convert/JsonConverter.h"

#include <algorithm>

#include <boost/bind/bind.hpp>

#include "korvat/base/BinaryUtils.h"
#include "korvat/base/Logger.h"
#include "korvat/base/StringUtils.h"
#include "korvat/convert/DynamicArrays.h"
#include "korvat/convert/FieldBytes.h"
#include "korvat/convert/StackPath.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemScalar.h"
#include "korvat/members/RawCodec.h"
#include "korvat/members/RawText.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/TypeManager.h"
#include "korvat/types/VarType.h"

namespace zavri::korvat {

using base::Buffer;
using base::CharEncoding;
using base::Logger;

namespace {

const std::string kInvalidKeyword = "invalid";

// An integer of a base type as a JSON integer of the same width and sign.
void setInteger(json::Value& target, NcType ncType, std::int64_t raw) {
  switch (ncType) {
    case NcType::SignedChar:
    case NcType::SignedShort:
      return target.setValue(static_cast<std::int8_t>(raw));
    case NcType::UnsignedLong:
      return target.setValue(static_cast<std::uint16_t>(raw));
    case NcType::SignedLong:
      return target.setValue(static_cast<std::int16_t>(raw));
    case NcType::UnsignedQuad:
      return target.setValue(static_cast<std::uint32_t>(raw));
    case NcType::SignedQuad:
      return target.setValue(static_cast<std::int32_t>(raw));
    default:  // unsigned bytes, and the 0 of a member without a base type
      return target.setValue(static_cast<std::uint8_t>(raw));
  }
}

}  // namespace

JsonConverter::JsonConverter(TypeManager* typeManager, const VarType& type,
                             base::Endianess endianess, bool allowSeveralUnionMembers)
    : _typeManager(typeManager),
      _type(&type),
      _endianess(endianess),
      _allowSeveralUnionMembers(allowSeveralUnionMembers) {}

bool JsonConverter::rawToJson(const Buffer& buffer, json::Value& value) {
  value.clear();
  _missingEnums.clear();
  if (_type->getMember() == nullptr) return false;

  using namespace boost::placeholders;
  Stack stack{{nullptr, -1, &value}};
  Member::Context context(_typeManager, buffer, _allowSeveralUnionMembers);
  context.describePlace = boost::bind(&appendStackPath<Stack>, boost::cref(stack), _1);
  const bool isWalked = _type->getMember()->traverse(
      context,
      boost::bind(&JsonConverter::toJson, this, _1, _2, boost::cref(buffer), boost::ref(stack)),
      boost::bind(&JsonConverter::toJsonStructEnd, this, _1, _2, boost::cref(buffer),
                  boost::ref(stack)));
  return isWalked && !context.hasFailed;
}

bool JsonConverter::toJson(Member::Context& context, const Member& member, const Buffer& buffer,
                           Stack& stack) {
  if (stack.empty() || context.hasFailed) return false;
  if (base::isLogged(Logger::Trace)) {
    Logger::trace("[JsonConverter::toJson] stack-size=%ld depth=%ld %s\n",
                  static_cast<long>(stack.size()), static_cast<long>(context.depth),
                  Member::getKindName(member.getKind()));
  }
  const auto depth = static_cast<std::size_t>(context.depth);
  while (depth != 0 && depth < stack.size()) stack.pop_back();
  Logger::trace("[JsonConverter::toJson] stack-size=%ld\n", static_cast<long>(stack.size()));

  const std::string& key =
      context.pendingName != nullptr ? *context.pendingName : member.getProgName();
  context.pendingName = nullptr;
  json::Value* parent = stack.back().value;
  if (parent == nullptr) return false;
  context.stringDone =
      context.depth != 0 && parent->isString() && (context.arrayIndex >= 0 || member.isArray());
  if (context.stringDone) return true;
  json::Value* target = &findTarget(context, key, *parent, stack);

  const bool followsCharSet = context.isCharSetSelected;
  // A reference hands the selection on to what it refers to.
  context.isCharSetSelected =
      member.isCharSet() || (followsCharSet && member.getKind() == Member::Kind::Ref);
  if (member.isArray() && context.arrayIndex < 0) {
    context.isCharSetSelected = followsCharSet;
    writeArray(context, member, buffer, *target);
    return true;
  }
  const bool isWritten = writeMember(context, key, member, buffer, *target);
  if (context.useDynamicArrays) limitArraySize(context, key, member);
  return isWritten;
}

bool JsonConverter::writeMember(Member::Context& context, const std::string& key,
                                const Member& member, const Buffer& buffer, json::Value& target) {
  switch (member.getKind()) {
    case Member::Kind::Ref:
      context.pendingName = &key;
      return true;
    case Member::Kind::Aggregate:
      target.switchType(json::JsonType::Object);
      return true;
    case Member::Kind::Float:
      writeFloat(context, static_cast<const MemFloat&>(member), buffer, target);
      return true;
    case Member::Kind::Scalar:
      writeScalar(context, static_cast<const MemScalar&>(member), buffer, target);
      return true;
    case Member::Kind::Bitfield:
      writeBitfield(context, static_cast<const MemBitfield&>(member), buffer, target);
      return true;
    case Member::Kind::Enum:
      writeEnum(context, static_cast<const MemEnum&>(member), buffer, target);
      return true;
    case Member::Kind::Invalid:
      break;
  }
  return false;
}

// The node that the member fills, made in its parent and put on the stack.
json::Value& JsonConverter::findTarget(Member::Context& context, const std::string& key,
                                       json::Value& parent, Stack& stack) const {
  if (context.depth == 0) return parent;  // the root fills the caller's node
  if (context.arrayIndex >= 0) {
    json::Value& element = parent[static_cast<unsigned>(context.arrayIndex)];
    stack.push_back({nullptr, context.arrayIndex, &element});
    return element;
  }
  if (parent.isNull()) {
    // The root of a type that an array element refers to: it fills the element itself.
    context.depth -= 1;
    return parent;
  }
  json::Value& child = parent[key];
  stack.push_back({&key, -1, &child});
  return child;
}

void JsonConverter::writeArray(Member::Context& context, const Member& member, const Buffer& buffer,
                               json::Value& target) const {
  if (member.getKind() == Member::Kind::Scalar) {
    const auto& scalar = static_cast<const MemScalar&>(member);
    const TextRule rule = takeTextRule(context, scalar);
    if (rule.isText) {
      const std::uint64_t size = buffer.getSize();
      const std::uint64_t start = std::uint64_t{context.bytePos} + (context.bitOffset != 0 ? 1 : 0);
      const std::uint64_t wanted = std::uint64_t{context.elementCount} * scalar.getByteCount();
      const std::uint64_t byteCount = std::min(wanted, size - std::min(start, size));
      const std::uint8_t* bytes = byteCount == 0 ? nullptr : buffer.getData() + start;
      target.setValue(readText(bytes, static_cast<unsigned>(byteCount), rule.encoding, _endianess));
      return;
    }
  }
  target.switchType(json::JsonType::Array);
}

// An array of integers is text when its base type says so ("char"), when the width of its elements
// is the one that a character encoding before it selected, or when it comes right after a
// "char_set".
JsonConverter::TextRule JsonConverter::findTextRule(const Member::Context& context,
                                                    const MemScalar& member) {
  const bool isChar =
      member.getNcType() == NcType::UnsignedChar || member.getNcType() == NcType::SignedChar;
  const auto width = static_cast<std::int32_t>(member.getByteCount());
  const std::int32_t selected = context.charEncoding;
  if (selected >= 0 && (isChar || width == selected)) {
    return {true, encodingOfWidth(selected), true};
  }
  if (context.isCharSetSelected) return {true, encodingOfWidth(width), false};
  return {isChar, CharEncoding::Iso8859_1, false};
}

// The first array that a selection fits uses it up.
JsonConverter::TextRule JsonConverter::takeTextRule(Member::Context& context,
                                                    const MemScalar& member) {
  const TextRule rule = findTextRule(context, member);
  context.isCharSetSelected = false;
  if (rule.usesSelection) context.charEncoding = -1;
  return rule;
}

void JsonConverter::writeScalar(Member::Context& context, const MemScalar& member,
                                const Buffer& buffer, json::Value& target) const {
  const auto bytes = fieldAt(context, buffer, member.getByteCount());
  const std::int64_t raw = readInteger(member.getNcType(), bytes.data(), _endianess);
  const bool isInvalid = _typeManager->isSupportInvalidKeyword() && member.isInvalid(raw);
  if (isInvalid) {
    target.setValue(kInvalidKeyword);
  } else if (member.isScalingIdentity()) {
    setInteger(target, member.getNcType(), raw);
  } else {
    target.setValue(member.toPhysical(raw));
  }

  // However the number is shown, it counts as it is.
  if (context.useDynamicArrays && !isInvalid && member.getScaling().isIdentity()) {
    context.arraySize = static_cast<std::int32_t>(std::clamp<std::int64_t>(raw, -1, INT32_MAX));
  }
}

void JsonConverter::writeFloat(Member::Context& context, const MemFloat& member,
                               const Buffer& buffer, json::Value& target) const {
  const auto bytes = fieldAt(context, buffer, member.getByteCount());
  context.forgetArraySize();
  const double raw = readDouble(member.getNcType(), bytes.data(), _endianess);
  if (!member.isScalingIdentity()) {
    target.setValue(member.toPhysical(raw));
  } else if (member.getNcType() == NcType::Double) {
    target.setValue(raw);
  } else {
    target.setValue(static_cast<float>(raw));
  }
}

void JsonConverter::writeBitfield(const Member::Context& context, const MemBitfield& member,
                                  const Buffer& buffer, json::Value& target) const {
  const std::int16_t raw = readBits(fieldAt(context, buffer, 1)[0], member.getSlot());
  if (!member.isScalingIdentity()) {
    target.setValue(member.toPhysical(raw));
  } else if (member.getSlot().isSigned) {
    target.setValue(static_cast<std::int8_t>(raw));
  } else {
    target.setValue(static_cast<std::uint8_t>(raw));
  }
}

void JsonConverter::writeEnum(Member::Context& context, const MemEnum& member, const Buffer& buffer,
                              json::Value& target) {
  const auto raw = static_cast<std::int8_t>(fieldAt(context, buffer, 1)[0]);
  const EnumType* type = findEnum(member);
  if (type != nullptr && type->hasFlags(BaseType::kCharEncoding)) {
    context.charEncoding = widthOfCharEncoding(raw);
  }
  if (type != nullptr && !type->getName(raw).empty()) {
    target.setValue(type->getName(raw));
  } else {
    target.setValue(util::StringUtils::toString(static_cast<int>(raw)));
  }
}

// An enumeration that is missing is looked for once a conversion: each look may read a file again.
const EnumType* JsonConverter::findEnum(const MemEnum& member) {
  if (_missingEnums.count(member.getRefId()) != 0) return nullptr;
  const EnumType* type = member.resolveEnum(_typeManager);
  if (type == nullptr) _missingEnums.insert(member.getRefId());
  return type;
}

bool JsonConverter::toJsonStructEnd(Member::Context& context, const Member& member,
                                    const Buffer& buffer, Stack& stack) {
  context.arrayIndex = -1;
  const bool isClosed = closeAggregate(context, member, buffer, stack);
  if (!isClosed) context.hasFailed = true;
  return isClosed;
}

bool JsonConverter::closeAggregate(Member::Context& context, const Member& member,
                                   const Buffer& buffer, Stack& stack) const {
  if (stack.empty()) return false;
  if (base::isLogged(Logger::Trace)) {
    Logger::trace("[JsonConverter::toJsonStructEnd] stack-size=%ld depth=%ld\n",
                  static_cast<long>(stack.size()), static_cast<long>(context.depth));
  }
  if (member.getKind() != Member::Kind::Aggregate) return false;
  if (!static_cast<const MemAggregate&>(member).isUnion()) return true;
  return !_typeManager->isUnionRawToRawHex() || writeUnionHex(context, buffer, stack);
}

// Replaces the object of the outermost union, which has just ended, by the text of its bytes.
bool JsonConverter::writeUnionHex(Member::Context& context, const Buffer& buffer,
                                  Stack& stack) const {
  Logger::trace("[JsonConverter::toJsonStructEnd] UNION END\n");
  if (context.unionStack.size() > 1) {
    Logger::trace("[JsonConverter::toJsonStructEnd] UNION inside UNION - ignore\n");
    return true;
  }
  const auto depth = static_cast<std::size_t>(context.depth);
  while (stack.size() > depth + 1) stack.pop_back();
  json::Value* target = stack.back().value;
  if (target == nullptr) return false;
  target->switchType(json::JsonType::String);

  const Member::UnionFrame frame =
      context.unionStack.empty() ? Member::UnionFrame() : context.unionStack.back();
  if (std::uint64_t{frame.start} + frame.extent > buffer.getSize()) {
    Logger::warning("[JsonConverter::toJsonStructEnd] invalid union size\n");
    return false;
  }
  std::string hex;
  util::BinaryUtils::bufferToString(hex, buffer.getData() + frame.start, frame.extent);
  target->setValue(hex);
  Logger::trace("[JsonConverter::toJsonStructEnd] union raw_hex: '%s'\n", hex.c_str());
  return true;
}

}  // namespace zavri::korvat
