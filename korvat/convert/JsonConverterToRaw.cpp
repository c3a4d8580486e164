#include <algorithm>

#include <boost/bind/bind.hpp>

#include "korvat/base/AsciiText.h"
#include "korvat/base/BinaryUtils.h"
#include "korvat/base/Logger.h"
#include "korvat/base/StringUtils.h"
#include "korvat/convert/DynamicArrays.h"
#include "korvat/convert/FieldBytes.h"
#include "korvat/convert/JsonConverter.h"
#include "korvat/convert/LeafWriter.h"
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

// The half of the converter that writes.
namespace zavri::korvat {

using base::Buffer;
using base::Logger;

namespace {

const json::Value kNull;

}  // namespace

bool JsonConverter::jsonToRaw(const json::Value& value, Buffer& raw) {
  _keepMissing = false;
  return walkToRaw(value, raw);
}

bool JsonConverter::patchRaw(const json::Value& value, Buffer& raw) {
  _keepMissing = true;
  return walkToRaw(value, raw);
}

bool JsonConverter::walkToRaw(const json::Value& value, Buffer& raw) {
  _problems.clear();
  if (_type->getMember() == nullptr) return false;

  using namespace boost::placeholders;
  ConstStack stack{{nullptr, -1, &value}};
  Member::Context context(_typeManager, raw, _allowSeveralUnionMembers);
  context.describePlace = boost::bind(&appendStackPath<ConstStack>, boost::cref(stack), _1);
  const bool isWalked = _type->getMember()->traverse(
      context, boost::bind(&JsonConverter::toRaw, this, _1, _2, boost::ref(raw), boost::ref(stack)),
      boost::bind(&JsonConverter::toRawStructEnd, this, _1, _2, boost::ref(raw),
                  boost::ref(stack)));
  if (!isWalked || context.hasFailed) return false;

  // A value always has its whole length, also when its last members were not given.
  context.closeByte();
  raw.growTo(context.bytePos);
  return true;
}

void JsonConverter::addProblem(const ConstStack& stack, const std::string& text) {
  if (_problems.size() >= kMaxProblems) return;
  std::string path;
  appendStackPath(stack, path);
  _problems.push_back({path, text});
}

// What is missing is no problem where fields may be missing.
void JsonConverter::addProblem(const ConstStack& stack, const json::Value& node,
                               const std::string& text) {
  if (node.isNull() && _typeManager->isAllowMissingFields()) return;
  addProblem(stack, text);
}

bool JsonConverter::toRaw(Member::Context& context, const Member& member, Buffer& raw,
                          ConstStack& stack) {
  if (stack.empty() || context.hasFailed) return false;
  if (base::isLogged(Logger::Trace)) {
    Logger::trace("[JsonConverter::toRaw] stack-size=%ld depth=%ld %s\n",
                  static_cast<long>(stack.size()), static_cast<long>(context.depth),
                  Member::getKindName(member.getKind()));
  }
  const auto depth = static_cast<std::size_t>(context.depth);
  while (depth != 0 && depth < stack.size()) stack.pop_back();
  Logger::trace("[JsonConverter::toRaw] stack-size=%ld\n", static_cast<long>(stack.size()));

  const bool isReferenced = context.pendingName != nullptr;
  const std::string& key =
      context.pendingName != nullptr ? *context.pendingName : member.getProgName();
  context.pendingName = nullptr;
  const Visit visit = findNode(context, member, key, isReferenced, stack);
  const json::Value& node = stack.back().value == nullptr ? kNull : *stack.back().value;
  if (context.stringDone) return true;
  const bool isPassed = visit == Visit::Pass || (_keepMissing && node.isNull());
  if (member.isArray() && context.arrayIndex < 0) {
    if (isPassed) noteWritten(context, member, raw);
    return isPassed || getArray(context, member, node, raw, stack);
  }
  selectCharSet(context, member);
  if (isPassed) noteWritten(context, member, raw);
  // A reference that is passed over still hands its place on.
  const bool isEnd = isPassed && member.getKind() != Member::Kind::Ref;
  const bool isDone = isEnd || convertMember(context, member, key, node, raw, stack);
  if (context.useDynamicArrays) limitArraySize(context, key, member);
  return isDone;
}

bool JsonConverter::convertMember(Member::Context& context, const Member& member,
                                  const std::string& key, const json::Value& node, Buffer& raw,
                                  const ConstStack& stack) {
  switch (member.getKind()) {
    case Member::Kind::Ref:
      // The root of the type takes the node's place: under the same key, or as the same element.
      context.isElementRoot = context.arrayIndex >= 0;
      context.pendingName = &key;
      return true;
    case Member::Kind::Aggregate:
      return checkObject(context, static_cast<const MemAggregate&>(member), node, stack);
    case Member::Kind::Invalid:
      return false;
    default:
      return writeLeaf(context, member, key, node, raw, stack);
  }
}

// Finds the member's node in that of its parent and puts it on the stack. Inside a union an
// alternative that is not given, or given besides an earlier one, is passed over with all that it
// holds.
JsonConverter::Visit JsonConverter::findNode(Member::Context& context, const Member& member,
                                             const std::string& key, bool isReferenced,
                                             ConstStack& stack) {
  const bool isElementRoot = context.isElementRoot;
  context.isElementRoot = false;
  context.stringDone = false;
  const json::Value* node = stack.back().value;
  if (isElementRoot) {
    context.depth -= 1;  // it stands for the element, whose node is on top
  } else if (context.depth != 0) {
    const json::Value* parent = node;
    if (parent == nullptr && context.unionStack.empty()) return Visit::Pass;
    context.stringDone =
        parent != nullptr && parent->isString() && (context.arrayIndex >= 0 || member.isArray());
    if (context.stringDone) return Visit::Pass;

    node = nullptr;
    if (context.arrayIndex >= 0) {
      const auto index = static_cast<unsigned>(context.arrayIndex);
      if (parent != nullptr && parent->isArray() && index < parent->getSize()) {
        node = &(*parent)[index];
      }
      stack.push_back({nullptr, context.arrayIndex, node});
    } else {
      if (parent != nullptr && parent->isObject() && !key.empty()) {
        node = parent->getPropertyMap().find(key);
      }
      stack.push_back({&key, -1, node});
    }
  }

  if (context.unionStack.empty()) return Visit::Convert;
  if (_typeManager->isUnionJsonToRawHex()) return Visit::Pass;  // the union's end writes it whole
  const bool isAlternative = context.isInUnion() && context.arrayIndex < 0 && !isReferenced;
  return isSkippedInUnion(context, member, isAlternative, node) ? Visit::Pass : Visit::Convert;
}

bool JsonConverter::isSkippedInUnion(Member::Context& context, const Member& member,
                                     bool isAlternative, const json::Value* node) const {
  Member::UnionFrame& frame = context.unionStack.back();
  if (isAlternative) {
    const bool isGiven = node != nullptr && !node->isNull();
    frame.skipAlternative = !isGiven;
    if (isGiven && ++frame.alternativeCount > 1 && !context.allowSeveralUnionMembers) {
      frame.skipAlternative = true;
      Logger::warning(
          "[JsonConverter::toRaw] more than one union member, "
          "current member: '%s'\n",
          member.getProgName().c_str());
    }
  }
  return std::any_of(context.unionStack.begin(), context.unionStack.end(),
                     [](const Member::UnionFrame& open) { return open.skipAlternative; });
}

bool JsonConverter::checkObject(const Member::Context& context, const MemAggregate& aggregate,
                                const json::Value& node, const ConstStack& stack) {
  const bool isHexUnion = aggregate.isUnion() && _typeManager->isUnionJsonToRawHex();
  if (!node.isObject()) {
    if (!context.isInUnion() && !isHexUnion) {
      Logger::warning("[JsonConverter::toRaw] expected object\n");
      addProblem(stack, node,
                 node.isNull() ? "an object is missing"
                               : "expected an object, found: " + node.stringify());
    }
    return true;
  }
  if (_typeManager->isAllowUndefinedFields()) return true;
  for (const auto& [name, value] : node.getPropertyMap()) {
    if (aggregate.findChild(name) != nullptr) continue;
    addProblem(stack, "unknown member '" + name + "'");
    return false;
  }
  return true;
}

bool JsonConverter::getArray(Member::Context& context, const Member& member,
                             const json::Value& node, Buffer& raw, const ConstStack& stack) {
  if (member.getKind() == Member::Kind::Scalar) {
    const auto& scalar = static_cast<const MemScalar&>(member);
    const TextRule rule = takeTextRule(context, scalar);
    if (rule.isText) {
      context.closeByte();
      LeafWriter writer(_typeManager, _endianess);
      const unsigned byteCount =
          std::min(context.elementCount, member.getArraySize()) * scalar.getByteCount();
      const bool isDone = writer.writeText(context, node, byteCount, rule.encoding, raw);
      if (!writer.getProblem().empty()) addProblem(stack, node, writer.getProblem());
      return isDone || _typeManager->isAllowMissingFields();
    }
  }
  if (!node.isArray()) {
    Logger::warning("[JsonConverter::getArray] expected array\n");
    addProblem(
        stack, node,
        node.isNull() ? "an array is missing" : "expected an array, found: " + node.stringify());
  } else if (node.getSize() > context.elementCount) {
    addProblem(stack, util::StringUtils::toString(node.getSize()) + " elements given, at most " +
                          util::StringUtils::toString(context.elementCount) + " expected");
  }
  return true;
}

bool JsonConverter::writeLeaf(Member::Context& context, const Member& member,
                              const std::string& key, const json::Value& node, Buffer& raw,
                              const ConstStack& stack) {
  LeafWriter writer(_typeManager, _endianess);
  bool isDone = false;
  switch (member.getKind()) {
    case Member::Kind::Scalar:
      isDone = writeCountedScalar(context, static_cast<const MemScalar&>(member), key, node, writer,
                                  raw, stack);
      break;
    case Member::Kind::Float:
      isDone = writer.writeFloat(context, static_cast<const MemFloat&>(member), node, raw);
      break;
    case Member::Kind::Bitfield:
      isDone = writer.writeBitfield(context, static_cast<const MemBitfield&>(member), node, raw);
      break;
    default:  // an enumeration
      isDone = writer.writeEnum(context, static_cast<const MemEnum&>(member), node, raw);
      break;
  }
  const bool isForgiven =
      member.getKind() == Member::Kind::Scalar && _typeManager->isAllowMissingFields();
  if (!isDone && !isForgiven) {
    addProblem(stack, writer.getProblem());
    return false;
  }
  if (!isDone) addProblem(stack, node, writer.getProblem());
  noteWritten(context, member, raw);
  return true;
}

// Writes a scalar; one that is the count of a dynamic array given in the same object gets the count
// of what is given, so that it always fits the data behind it.
bool JsonConverter::writeCountedScalar(Member::Context& context, const MemScalar& member,
                                       const std::string& key, const json::Value& node,
                                       LeafWriter& writer, Buffer& raw, const ConstStack& stack) {
  const CountedArray counted =
      context.useDynamicArrays ? findCountedArray(context, key, member) : CountedArray();
  const json::Value* object = stack.size() < 2 ? nullptr : stack[stack.size() - 2].value;
  const json::Value* given = counted.array == nullptr || object == nullptr
                                 ? nullptr
                                 : object->getPropertyMap().find(*counted.key);
  if (given == nullptr || (!given->isArray() && !given->isString())) {
    return writer.writeScalar(context, member, node, raw);
  }

  unsigned count = given->getSize();
  if (given->isString() && counted.array->getKind() == Member::Kind::Scalar) {
    const auto& array = static_cast<const MemScalar&>(*counted.array);
    const TextRule rule = foreseeTextRule(context, member, counted, *object, raw);
    const std::string text = base::CharEncoder::convertToEncoding(given->asString(), rule.encoding);
    const unsigned unit = std::max(array.getByteCount(), 1u);
    count = (static_cast<unsigned>(text.size()) + unit - 1) / unit;
  }
  json::Value number;
  const std::uint32_t elementCount = std::min(count, counted.array->getArraySize());
  if (member.isScalingIdentity()) {
    number.setValue(elementCount);
  } else {
    number.setValue(member.toPhysical(elementCount));  // as it is shown
  }
  return writer.writeScalar(context, member, number, raw);
}

// The text rule that will hold at the array behind its count: an enumeration in between may select
// the encoding.
JsonConverter::TextRule JsonConverter::foreseeTextRule(const Member::Context& context,
                                                       const MemScalar& member,
                                                       const CountedArray& counted,
                                                       const json::Value& object,
                                                       const Buffer& raw) const {
  Member::Context ahead = context;
  ahead.advance(member.getByteCount());
  const auto onMember = [&](Member::Context& at, const Member& passed) {
    selectCharSet(at, passed);
    if (passed.getKind() != Member::Kind::Enum) return true;
    Member::Context first = at;
    first.bytePos = 0;
    Buffer byte;
    const auto& memEnum = static_cast<const MemEnum&>(passed);
    const json::Value& node = object[passed.getProgName()];
    LeafWriter writer(_typeManager, _endianess);
    if (node.isNull() || !writer.writeEnum(first, memEnum, node, byte)) {
      noteWritten(at, passed, raw);
    } else {
      noteWritten(first, passed, byte);
      at.charEncoding = first.charEncoding;
    }
    return true;
  };
  for (const Member* passed : counted.between) {  // no structures, which nobody waits to end
    static_cast<void>(passed->traverse(ahead, onMember, Member::StructEndCallback()));
  }
  return findTextRule(ahead, static_cast<const MemScalar&>(*counted.array));
}

// A "char_set" makes the array right after it text. A reference hands the selection on to what it
// refers to.
void JsonConverter::selectCharSet(Member::Context& context, const Member& member) {
  const bool isHandedOn = context.isCharSetSelected && member.getKind() == Member::Kind::Ref;
  context.isCharSetSelected = member.isCharSet() || isHandedOn;
}

// Keeps what the members after this one depend on: the count of a dynamic array, the width of the
// characters. Taken from the bytes, so that it holds for members left alone too; what lies beyond
// the end counts as 0, which it will be.
void JsonConverter::noteWritten(Member::Context& context, const Member& member,
                                const Buffer& raw) const {
  if (member.isArray() && context.arrayIndex < 0) {
    if (member.getKind() == Member::Kind::Scalar) {
      takeTextRule(context, static_cast<const MemScalar&>(member));
    }
    return;
  }
  if (member.getKind() == Member::Kind::Enum) {
    const auto& memEnum = static_cast<const MemEnum&>(member);
    const auto* type = dynamic_cast<const EnumType*>(_typeManager->getType(memEnum.getRefId()));
    if (type != nullptr && type->hasFlags(BaseType::kCharEncoding)) {
      const auto byte = static_cast<std::int8_t>(fieldAt(context, raw, 1)[0]);
      context.charEncoding = widthOfCharEncoding(byte);
    }
  } else if (member.getKind() == Member::Kind::Float) {
    context.forgetArraySize();
  } else if (member.getKind() == Member::Kind::Scalar) {
    const auto& scalar = static_cast<const MemScalar&>(member);
    if (!context.useDynamicArrays || !scalar.getScaling().isIdentity()) return;
    const auto bytes = fieldAt(context, raw, scalar.getByteCount());
    const std::int64_t count = readInteger(scalar.getNcType(), bytes.data(), _endianess);
    // The invalid marker, as a keyword, is no count: raw to JSON does not take it for one either.
    if (_typeManager->isSupportInvalidKeyword() && scalar.isInvalid(count)) return;
    context.arraySize = static_cast<std::int32_t>(std::clamp<std::int64_t>(count, -1, INT32_MAX));
  }
}

bool JsonConverter::toRawStructEnd(Member::Context& context, const Member& member, Buffer& raw,
                                   ConstStack& stack) {
  const bool isClosed = closeAggregateToRaw(context, member, raw, stack);
  if (!isClosed) context.hasFailed = true;
  return isClosed;
}

bool JsonConverter::closeAggregateToRaw(Member::Context& context, const Member& member, Buffer& raw,
                                        ConstStack& stack) {
  if (stack.empty()) return false;
  if (base::isLogged(Logger::Trace)) {
    Logger::trace("[JsonConverter::toRawStructEnd] stack-size=%ld depth=%ld\n",
                  static_cast<long>(stack.size()), static_cast<long>(context.depth));
  }
  if (member.getKind() != Member::Kind::Aggregate) return false;
  if (!static_cast<const MemAggregate&>(member).isUnion()) return true;
  if (_typeManager->isUnionJsonToRawHex()) return readUnionHex(context, raw, stack);

  // Also a short alternative takes up the whole union.
  const Member::UnionFrame frame =
      context.unionStack.empty() ? Member::UnionFrame() : context.unionStack.back();
  raw.growTo(std::uint64_t{frame.start} + frame.extent);
  return true;
}

// Writes the hexadecimal text of the outermost union, which has just ended.
bool JsonConverter::readUnionHex(Member::Context& context, Buffer& raw, ConstStack& stack) {
  Logger::trace("[JsonConverter::toRawStructEnd] UNION END\n");
  if (context.unionStack.size() > 1) {
    Logger::trace("[JsonConverter::toRawStructEnd] UNION inside UNION - ignore\n");
    return true;
  }
  const auto depth = static_cast<std::size_t>(context.depth);
  while (stack.size() > depth + 1) stack.pop_back();
  const std::string* name = stack.back().name;
  Logger::trace("[JsonConverter::toRawStructEnd] -> top.name='%s'\n",
                name == nullptr ? "" : name->c_str());
  const json::Value& node = stack.back().value == nullptr ? kNull : *stack.back().value;
  if (_keepMissing && node.isNull()) return true;
  if (!node.isString()) {
    addProblem(stack, "expected the hexadecimal text of a union, found: " + node.stringify());
    return false;
  }

  const Member::UnionFrame frame =
      context.unionStack.empty() ? Member::UnionFrame() : context.unionStack.back();
  raw.growTo(std::uint64_t{frame.start} + frame.extent);
  const std::string hex = node.asString();
  Buffer bytes;
  const unsigned byteCount = util::BinaryUtils::stringToBuffer(bytes, hex, 0);
  const auto digits =
      std::count_if(hex.begin(), hex.end(), [](char c) { return !util::isBlank(c); });
  if (static_cast<std::uint64_t>(digits) != std::uint64_t{2} * byteCount) {
    addProblem(stack, "not hexadecimal text of whole bytes: " + node.stringify());
  }
  if (byteCount > frame.extent) {
    Logger::warning("[JsonConverter::toRawStructEnd] shortening raw by %ld bytes: %s\n",
                    static_cast<long>(byteCount - frame.extent), hex.c_str());
    addProblem(stack, "the hexadecimal text is too long for the union");
  }
  bytes.setSize(frame.extent);
  std::copy_n(bytes.getData(), frame.extent, raw.getData() + frame.start);
  return true;
}

}  // namespace zavri::korvat
