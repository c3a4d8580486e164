#include "korvat/builder/MemberFields.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>

#include "korvat/base/Logger.h"
#include "korvat/base/StringUtils.h"
#include "korvat/members/Limits.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemScalar.h"

namespace zavri::korvat::builder {

using base::Logger;
using util::StringUtils;

namespace {

// `number` cut to the range of T.
template <typename T, typename Number>
T saturate(Number number) {
  return static_cast<T>(std::clamp(number, static_cast<Number>(std::numeric_limits<T>::min()),
                                   static_cast<Number>(std::numeric_limits<T>::max())));
}

const char* kindNameOf(const Member& member) {
  return Member::getKindName(member.getKind());
}

void warnCannotSet(const char* field, const Member& member) {
  Logger::warning("[VarBuilder] cannot set '%s' in %s\n", field, kindNameOf(member));
}

const char* nameOf(Limit limit) {
  switch (limit) {
    case Limit::Min:
      return "min";
    case Limit::Max:
      return "max";
    case Limit::Invalid:
      return "invalid";
  }
  return "";
}

template <typename T>
void storeLimit(TMemNumeric<T>& member, Limit limit, T raw) {
  switch (limit) {
    case Limit::Min:
      return member.setMin(raw);
    case Limit::Max:
      return member.setMax(raw);
    case Limit::Invalid:
      return member.setInvalid(raw);
  }
}

const char* nameOf(ScalingPart part) {
  switch (part) {
    case ScalingPart::A:
      return "scaling/a";
    case ScalingPart::B:
      return "scaling/b";
    case ScalingPart::C:
      return "scaling/c";
  }
  return "";
}

void storeScaling(MemNumeric& member, ScalingPart part, std::int16_t number) {
  switch (part) {
    case ScalingPart::A:
      return member.setScalingA(number);
    case ScalingPart::B:
      return member.setScalingB(number);
    case ScalingPart::C:
      return member.setScalingC(number);
  }
}

std::uint8_t toBitCount(const std::string& text) {
  return saturate<std::uint8_t>(StringUtils::toInt32(text));
}

// The bit field that `member` is, or null with a warning.
MemBitfield* asBitfield(Member& member, const char* field) {
  if (member.getKind() == Member::Kind::Bitfield) return static_cast<MemBitfield*>(&member);

  warnCannotSet(field, member);
  return nullptr;
}

std::optional<std::uint32_t> toElementCount(const std::string& text, const char* field,
                                            const Member& member) {
  const std::int32_t number = StringUtils::toInt32(text);
  if (number < 0) {
    Logger::warning("[VarBuilder] negative '%s' (%s) in %s\n", field, text.c_str(),
                    kindNameOf(member));
    return std::nullopt;
  }

  const auto elementCount = static_cast<std::uint32_t>(number);
  if (elementCount <= kMaxArraySize) return elementCount;

  Logger::warning("[VarBuilder] '%s' (%s) in %s cut to %lu\n", field, text.c_str(),
                  kindNameOf(member), static_cast<unsigned long>(kMaxArraySize));
  return kMaxArraySize;
}

}  // namespace

void setLimit(Member& member, Limit limit, const std::string& text) {
  switch (member.getKind()) {
    case Member::Kind::Float:
      return storeLimit(static_cast<MemFloat&>(member), limit, StringUtils::toDouble(text));
    case Member::Kind::Scalar:
      return storeLimit(static_cast<MemScalar&>(member), limit, StringUtils::toInt64(text));
    case Member::Kind::Bitfield:
      return storeLimit(static_cast<MemBitfield&>(member), limit,
                        saturate<std::int16_t>(StringUtils::toInt32(text)));
    case Member::Kind::Invalid:
    case Member::Kind::Ref:
    case Member::Kind::Enum:
    case Member::Kind::Aggregate:
      return warnCannotSet(nameOf(limit), member);
  }
}

void setScaling(Member& member, ScalingPart part, const std::string& text) {
  switch (member.getKind()) {
    case Member::Kind::Float:
      return storeScaling(static_cast<MemFloat&>(member), part,
                          saturate<std::int16_t>(StringUtils::toDouble(text)));
    case Member::Kind::Scalar:
      return storeScaling(static_cast<MemScalar&>(member), part,
                          saturate<std::int16_t>(StringUtils::toInt64(text)));
    case Member::Kind::Bitfield:
      return storeScaling(static_cast<MemBitfield&>(member), part,
                          saturate<std::int16_t>(StringUtils::toInt32(text)));
    case Member::Kind::Invalid:
    case Member::Kind::Ref:
    case Member::Kind::Enum:
    case Member::Kind::Aggregate:
      return warnCannotSet(nameOf(part), member);
  }
}

void setNcType(Member& member, const std::string& text, const std::string& fileSetName) {
  NcTyped* typed = nullptr;
  if (member.getKind() == Member::Kind::Scalar) typed = static_cast<MemScalar*>(&member);
  if (member.getKind() == Member::Kind::Float) typed = static_cast<MemFloat*>(&member);
  if (typed == nullptr) {
    Logger::warning("[VarBuilder][%s] cannot set nc-type (%s) in %s\n", fileSetName.c_str(),
                    text.c_str(), kindNameOf(member));
    return;
  }

  const NcType ncType = ncTypeOf(text);
  const bool isFloat = member.getKind() == Member::Kind::Float;
  if (ncType == NcType::None || ncTypeRow(ncType).isFloating != isFloat) {
    Logger::warning("[VarBuilder][%s] invalid nc-type (%s) for %s\n", fileSetName.c_str(),
                    text.c_str(), kindNameOf(member));
    return;
  }
  typed->setNcType(ncType);
}

void setBitfieldSigned(Member& member, const std::string& text) {
  if (MemBitfield* bitfield = asBitfield(member, "signed")) bitfield->setSigned(text == "yes");
}

void setBitfieldWidth(Member& member, const std::string& text) {
  Logger::trace("[VarBuilder::setBitfieldWidth] %s\n", text.c_str());
  if (MemBitfield* bitfield = asBitfield(member, "width")) bitfield->setWidth(toBitCount(text));
}

void setBitfieldOffset(Member& member, const std::string& text) {
  Logger::trace("[VarBuilder::setBitfieldOffset] %s\n", text.c_str());
  if (MemBitfield* bitfield = asBitfield(member, "offset")) bitfield->setOffset(toBitCount(text));
}

void setArrayMinSize(Member& member, const std::string& text) {
  if (const auto elementCount = toElementCount(text, "array-min-size", member)) {
    member.setArrayMinSize(*elementCount);
  }
}

void setArraySize(Member& member, const std::string& text) {
  const auto elementCount = toElementCount(text, "array-size", member);
  if (!elementCount) return;

  member.setArraySize(*elementCount);
  if (member.getArrayMinSize() == Member::kNoArrayMinSize) member.setArrayMinSize(*elementCount);
}

}  // namespace zavri::korvat::builder
