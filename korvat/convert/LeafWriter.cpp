#include "korvat/convert/LeafWriter.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

#include "korvat/base/Logger.h"
#include "korvat/base/StringUtils.h"
#include "korvat/convert/NumberFit.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemScalar.h"
#include "korvat/members/RawCodec.h"
#include "korvat/members/RawText.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/TypeManager.h"

namespace zavri::korvat {

using base::Buffer;
using base::Logger;

namespace {

// The bytes at the context's position, the buffer made long enough for them.
std::uint8_t* placeFor(const Member::Context& context, unsigned byteCount, Buffer& raw) {
  raw.growTo(std::uint64_t{context.bytePos} + byteCount);
  return raw.getData() + context.bytePos;
}

}  // namespace

void LeafWriter::refuse(const char* what, const json::Value& node) {
  const std::string text = node.stringify();
  Logger::warning("[korvat/setRawValue] %s value: %s\n", what, text.c_str());
  _problem = node.isNull() ? "a number is missing" : "not a number: " + text;
}

template <typename Target, typename M>
LeafWriter::Outcome LeafWriter::setRawValue(const M& member, const json::Value& node,
                                            Target& target) {
  if (_typeManager->isSupportInvalidKeyword() && node.isString() && node.asString() == "invalid") {
    if (!member.hasInvalid()) {
      _problem = "\"invalid\" given, but the member has no invalid value";
      return Outcome::Refused;
    }
    target = static_cast<Target>(member.getInvalid());
    return Outcome::Taken;
  }

  const Outcome outcome = isTakenUnscaled(member, node.isFloating())
                              ? convertUnscaled(member, node, target)
                              : convertScaled(member, node, target);
  return outcome == Outcome::Refused ? outcome : keepWithinLimits(member, target);
}

template <typename Target, typename M>
LeafWriter::Outcome LeafWriter::convertUnscaled(const M&, const json::Value& node, Target& target) {
  if (!node.isNumber()) {
    refuse("Not a numeric", node);
    return Outcome::Refused;
  }
  const bool isCutting = _typeManager->isAllowCuttingToMinMax();
  const double number = node.asDouble();
  const bool isTakenAsItIs = std::is_floating_point_v<Target> && !std::isfinite(number);
  if (!isTakenAsItIs && !fitsInto<Target>(number) && !isCutting) {
    const std::string text = node.stringify();
    if (node.isInteger()) {
      Logger::warning("[korvat/setRawValue] Integer overflow with value: %s (int: %lld)\n",
                      text.c_str(), static_cast<long long>(node.asInt64()));
    } else {
      Logger::warning("[korvat/setRawValue] Number overflow with value: %s (d:%lf)\n", text.c_str(),
                      number);
    }
    _problem = text + " is out of range";
    return Outcome::Refused;
  }
  target = fitUnscaled<Target>(number, node.isFloating());
  return Outcome::Taken;
}

template <typename Target, typename M>
LeafWriter::Outcome LeafWriter::convertScaled(const M& member, const json::Value& node,
                                              Target& target) {
  if (!node.isNumber()) {
    refuse("not a numeric", node);
    return Outcome::Refused;
  }
  const double number = node.asDouble();
  const auto raw = static_cast<double>(member.fromPhysical(number, node.isFloating()));
  if (!fitsInto<Target>(raw) && !_typeManager->isAllowCuttingToMinMax()) {
    const std::string text = node.stringify();
    Logger::warning("[korvat/setRawValue] overflow with value: %s (d:%lf)\n", text.c_str(), number);
    _problem = text + " is out of range";
    return Outcome::Refused;
  }
  target = saturate<Target>(raw);
  return Outcome::Taken;
}

template <typename Target, typename M>
LeafWriter::Outcome LeafWriter::keepWithinLimits(const M& member, Target& target) {
  if (isWithinLimits(member, target)) return Outcome::Taken;
  if (!_typeManager->isAllowCuttingToMinMax()) {
    _problem = "the value is outside the member's limits";
    return Outcome::OutOfLimits;
  }
  target = nearestLimit(member, target);
  return Outcome::Taken;
}

template <typename Target, typename M>
bool LeafWriter::storeNumber(const Member::Context& context, const M& member,
                             const json::Value& node, Buffer& raw) {
  Target target{};
  const Outcome outcome = setRawValue(member, node, target);
  if (outcome == Outcome::Refused) return false;
  std::uint8_t* bytes = placeFor(context, sizeof(Target), raw);
  static_cast<void>(writeField(member.getNcType(), target, _endianess, bytes));
  return outcome == Outcome::Taken;
}

bool LeafWriter::writeScalar(const Member::Context& context, const MemScalar& member,
                             const json::Value& node, Buffer& raw) {
  _problem.clear();
  switch (member.getNcType()) {
    case NcType::UnsignedChar:
    case NcType::UnsignedShort:
      return storeNumber<std::uint8_t>(context, member, node, raw);
    case NcType::SignedChar:
    case NcType::SignedShort:
      return storeNumber<std::int8_t>(context, member, node, raw);
    case NcType::UnsignedLong:
      return storeNumber<std::uint16_t>(context, member, node, raw);
    case NcType::SignedLong:
      return storeNumber<std::int16_t>(context, member, node, raw);
    case NcType::UnsignedQuad:
      return storeNumber<std::uint32_t>(context, member, node, raw);
    case NcType::SignedQuad:
      return storeNumber<std::int32_t>(context, member, node, raw);
    case NcType::None:
    case NcType::Float:
    case NcType::Double:
    case NcType::Reserved:
      break;
  }
  _problem = "the member has no base type";
  return false;
}

bool LeafWriter::writeFloat(const Member::Context& context, const MemFloat& member,
                            const json::Value& node, Buffer& raw) {
  _problem.clear();
  if (member.getNcType() == NcType::Float) return storeNumber<float>(context, member, node, raw);
  if (member.getNcType() == NcType::Double) return storeNumber<double>(context, member, node, raw);
  _problem = "the member has no base type";
  return false;
}

bool LeafWriter::writeBitfield(const Member::Context& context, const MemBitfield& member,
                               const json::Value& node, Buffer& raw) {
  _problem.clear();
  Outcome outcome = Outcome::Refused;
  const auto take = [&](auto target) -> std::int16_t {
    outcome = setRawValue(member, node, target);
    return target;
  };
  const std::int16_t number =
      member.getSlot().isSigned ? take(std::int8_t{}) : take(std::uint8_t{});
  if (outcome == Outcome::Refused) return false;

  const AccessStatus status = insertBits(number, member.getSlot(), *placeFor(context, 1, raw));
  if (status != AccessStatus::Exact) {
    _problem = node.stringify() + " does not fit a bit field of " +
               util::StringUtils::toString(static_cast<unsigned>(member.getSlot().width)) + " bits";
    return false;
  }
  return outcome == Outcome::Taken;
}

bool LeafWriter::writeEnum(const Member::Context& context, const MemEnum& member,
                           const json::Value& node, Buffer& raw) {
  _problem.clear();
  const std::string& name = member.getRefId().getId();
  const auto* type = dynamic_cast<const EnumType*>(_typeManager->getType(member.getRefId()));
  if (type == nullptr) {
    Logger::warning("[korvat/getEnum] unknown enum: %s\n", name.c_str());
    _problem = "unknown enumeration type " + name;
    return false;
  }

  std::int64_t number = 0;
  bool isNumber = true;
  if (node.isString() && type->hasName(node.asString())) {
    number = type->getValue(node.asString());
  } else if (node.isString()) {
    number = util::StringUtils::toInt64(node.asString(), isNumber);
  } else {
    number = node.asInt64();
    isNumber = node.isNumber();
  }
  // A name that is not known, or a number beyond a signed byte, must not become another value.
  if (!isNumber || number < INT8_MIN || number > INT8_MAX) {
    const std::string text = node.stringify();
    Logger::warning("[korvat/getEnum] not a numeric value: %s\n", text.c_str());
    _problem = node.isNull() ? "a value of " + name + " is missing"
                             : text + " is neither a name nor a number of " + name;
    return false;
  }
  *placeFor(context, 1, raw) = static_cast<std::uint8_t>(number);
  return true;
}

bool LeafWriter::writeText(const Member::Context& context, const json::Value& node,
                           unsigned byteCount, base::CharEncoding encoding, Buffer& raw) {
  _problem.clear();
  if (!node.isString()) {
    const std::string text = node.stringify();
    Logger::warning("[JsonConverter::getString] expected string, found: %s\n", text.c_str());
    _problem = node.isNull() ? "a text is missing" : "expected a text, found: " + text;
    return false;
  }
  bool isCut = false;
  const std::string text = node.asString();
  const Buffer bytes = korvat::writeText(text, byteCount, encoding, _endianess, isCut);
  std::copy_n(bytes.getData(), byteCount, placeFor(context, byteCount, raw));
  if (isCut) {
    Logger::warning("[JsonConverter::getString] string truncated: %s\n", text.c_str());
    _problem =
        "the text is too long: it was cut to " + util::StringUtils::toString(byteCount) + " bytes";
  }
  return true;
}

}  // namespace zavri::korvat
