#include "tool/Schema.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemRef.h"
#include "korvat/members/MemScalar.h"
#include "korvat/types/EnumType.h"
#include "tool/Failure.h"

namespace zavri::korvat::tool {

namespace {

constexpr double kLargestFloat = std::numeric_limits<float>::max();
// The values an enumerator can have, as text.
constexpr const char* kSignedByte = "^(-128|-?(12[0-7]|1[01][0-9]|[1-9]?[0-9]))$";

json::Value numberOf(double number) {
  json::Value value;
  value.setValue(number);
  return value;
}

float toSingle(double number) {
  return static_cast<float>(std::clamp(number, -kLargestFloat, kLargestFloat));
}

// What the shortest decimal text of a single stands for.
double readShortest(float number) {
  json::Value value;
  value.setValue(number);
  return std::strtod(value.stringify().c_str(), nullptr);
}

// A raw number as decode shows it.
template <typename M, typename T>
json::Value showRaw(const M& member, T raw) {
  json::Value shown;
  if (member.isScalingIdentity()) {
    shown.setValue(raw);
  } else {
    shown.setValue(member.toPhysical(raw));
  }
  return shown;
}

// Numbers from `low` to `high`, in either order: a negative factor turns them round.
void setRange(json::Value& schema, const json::Value& low, const json::Value& high, bool isTurned) {
  schema["minimum"] = isTurned ? high : low;
  schema["maximum"] = isTurned ? low : high;
}

// Whether the limits that a definition sets are part of the schema, or only those of the field.
enum class LimitUse { Definition, Field };

// An integer member of raw numbers from `lowest` to `highest`.
template <typename M, typename T>
json::Value integerSchema(const M& member, LimitUse use, T lowest, T highest) {
  const bool isLimited = use == LimitUse::Definition;
  const T low = isLimited && member.hasMin() ? std::max(member.getMin(), lowest) : lowest;
  const T high = isLimited && member.hasMax() ? std::min(member.getMax(), highest) : highest;
  const bool isTurned = showRaw(member, lowest).asDouble() > showRaw(member, highest).asDouble();
  json::Value schema;
  schema["type"] = member.isScalingIdentity() ? "integer" : "number";
  setRange(schema, showRaw(member, low), showRaw(member, high), isTurned);
  return schema;
}

json::Value scalarSchema(const MemScalar& member, LimitUse use) {
  const unsigned bitCount = 8 * member.getByteCount();
  if (bitCount == 0) return integerSchema(member, use, std::int64_t{0}, std::int64_t{0});
  if (!ncTypeRow(member.getNcType()).isSigned) {
    return integerSchema(member, use, std::int64_t{0}, (std::int64_t{1} << bitCount) - 1);
  }
  const std::int64_t half = std::int64_t{1} << (bitCount - 1);
  return integerSchema(member, use, -half, half - 1);
}

json::Value bitfieldSchema(const MemBitfield& member, LimitUse use) {
  const BitSlot& slot = member.getSlot();
  const int span = 1 << slot.width;
  const int lowest = slot.isSigned ? -span / 2 : 0;
  return integerSchema(member, use, static_cast<std::int16_t>(lowest),
                       static_cast<std::int16_t>(lowest + span - 1));
}

// The outermost number that a limit allows: it is also kept by the single nearest to it, which is
// shown by its own shortest text.
double allowedBy(const MemFloat& member, double limit, bool isUpper) {
  if (member.getNcType() != NcType::Float) return limit;
  const double clamped = std::clamp(limit, -kLargestFloat, kLargestFloat);
  const double shortest = readShortest(toSingle(clamped));
  return isUpper ? std::max(clamped, shortest) : std::min(clamped, shortest);
}

json::Value floatSchema(const MemFloat& member, LimitUse use) {
  const bool isSingle = member.getNcType() == NcType::Float;
  const bool isTurned = showRaw(member, 0.0).asDouble() > showRaw(member, 1.0).asDouble();
  const bool hasMin = use == LimitUse::Definition && member.hasMin();
  const bool hasMax = use == LimitUse::Definition && member.hasMax();
  json::Value schema;
  schema["type"] = "number";
  if (hasMin || isSingle) {
    const double limit = hasMin ? member.getMin() : -kLargestFloat;
    schema[isTurned ? "maximum" : "minimum"] = showRaw(member, allowedBy(member, limit, false));
  }
  if (hasMax || isSingle) {
    const double limit = hasMax ? member.getMax() : kLargestFloat;
    schema[isTurned ? "minimum" : "maximum"] = showRaw(member, allowedBy(member, limit, true));
  }
  return schema;
}

// The invalid marker of a floating member as it is shown.
json::Value markerOf(const MemFloat& member) {
  const double marker = member.getInvalid();
  if (member.getNcType() != NcType::Float) return showRaw(member, marker);
  const float single = toSingle(marker);
  return member.isScalingIdentity() ? numberOf(readShortest(single))
                                    : showRaw(member, static_cast<double>(single));
}

template <typename M>
json::Value markerOf(const M& member) {
  return showRaw(member, member.getInvalid());
}

// Goes through the members in the order of a conversion, which lets earlier members decide what
// later arrays are.
class SchemaMaker {
 public:
  explicit SchemaMaker(Catalogue& catalogue) : _catalogue(catalogue) {}

  json::Value make(const Member& member) {
    if (++_memberCount > kMaxSchemaMembers) {
      throw Failure(kProblem, "the layout has more than " + std::to_string(kMaxSchemaMembers) +
                                  " members: too many for a schema");
    }
    if (!member.isArray()) return makeElement(member);

    ArrayForm form = ArrayForm::Elements;
    if (member.getKind() == Member::Kind::Scalar) {
      form = takeForm(static_cast<const MemScalar&>(member));
    }
    if (form == ArrayForm::Text) return makeText(member);
    json::Value schema = makeArray(member);
    if (form == ArrayForm::Elements) return schema;
    json::Value either;
    either["anyOf"][0] = makeText(member);
    either["anyOf"][1] = schema;
    return either;
  }

 private:
  enum class ArrayForm { Elements, Text, Either };

  // What the members so far say about the next array of numbers.
  struct TextState {
    bool isCharSetSelected = false;  // a "char_set" went before
    bool mayBeEncoded = false;       // a character encoding went before
  };

  TypeManager& getManager() { return _catalogue.getManager(); }

  // The converter's rule. An encoding selected before may be of any width.
  ArrayForm takeForm(const MemScalar& member) {
    const bool isChar =
        member.getNcType() == NcType::UnsignedChar || member.getNcType() == NcType::SignedChar;
    const bool followsCharSet = _text.isCharSetSelected;
    _text.isCharSetSelected = false;
    if (isChar) _text.mayBeEncoded = false;
    if (isChar || followsCharSet) return ArrayForm::Text;
    return _text.mayBeEncoded ? ArrayForm::Either : ArrayForm::Elements;
  }

  json::Value makeText(const Member& member) {
    json::Value schema;
    schema["type"] = "string";
    schema["maxLength"] = member.getArraySize();
    return schema;
  }

  json::Value makeArray(const Member& member) {
    const Options& options = _catalogue.getOptions();
    const bool isDynamic = member.isDynamicArray() && options.useDynamicArrays;
    json::Value schema;
    schema["type"] = "array";
    schema["items"] = makeElement(member);
    if (!mayBeMissing(member)) {
      schema["minItems"] = isDynamic ? member.getArrayMinSize() : member.getArraySize();
    }
    schema["maxItems"] = member.getArraySize();
    return schema;
  }

  json::Value makeElement(const Member& member) {
    const bool isReference = member.getKind() == Member::Kind::Ref;
    _text.isCharSetSelected = member.isCharSet() || (_text.isCharSetSelected && isReference);
    json::Value schema = makeKind(member);
    if (!member.getUnit().empty()) schema["unit"] = member.getUnit();
    return schema;
  }

  json::Value makeKind(const Member& member) {
    switch (member.getKind()) {
      case Member::Kind::Ref:
        return makeReferenced(static_cast<const MemRef&>(member));
      case Member::Kind::Aggregate:
        return makeAggregate(static_cast<const MemAggregate&>(member));
      case Member::Kind::Scalar: {
        const auto& scalar = static_cast<const MemScalar&>(member);
        return addMarker(scalar, scalarSchema(scalar, _limitUse));
      }
      case Member::Kind::Bitfield: {
        const auto& field = static_cast<const MemBitfield&>(member);
        return addMarker(field, bitfieldSchema(field, _limitUse));
      }
      case Member::Kind::Float: {
        const auto& number = static_cast<const MemFloat&>(member);
        return addMarker(number, floatSchema(number, _limitUse));
      }
      case Member::Kind::Enum:
        return makeEnum(static_cast<const MemEnum&>(member));
      case Member::Kind::Invalid:
        break;
    }
    throw Failure(kProblem, "member '" + member.getProgName() + "' has no kind");
  }

  // The invalid marker is a value beside the limits.
  template <typename M>
  json::Value addMarker(const M& member, const json::Value& limits) {
    if (!member.hasInvalid()) return limits;
    json::Value marker;
    marker["const"] = markerOf(member);
    marker["title"] = "invalid";
    json::Value schema;
    schema["anyOf"][0] = limits;
    schema["anyOf"][1] = marker;
    if (_catalogue.getOptions().supportInvalidKeyword) schema["anyOf"][2]["const"] = "invalid";
    return schema;
  }

  json::Value makeEnum(const MemEnum& member) {
    json::Value number;
    number["type"] = "string";
    number["pattern"] = kSignedByte;
    number["title"] = "number without a name";
    json::Value schema;
    schema["title"] = member.getRefId().getId();
    const EnumType* type = member.resolveEnum(&getManager());
    if (type != nullptr && type->hasFlags(BaseType::kCharEncoding)) _text.mayBeEncoded = true;
    const json::Value names = type == nullptr ? json::Value() : namesOf(*type);
    if (names.getSize() == 0) {
      schema["anyOf"][0] = number;
      return schema;
    }
    schema["anyOf"][0]["enum"] = names;
    schema["anyOf"][1] = number;
    return schema;
  }

  // In the order of their values; names that share a value with another one come last.
  static json::Value namesOf(const EnumType& type) {
    json::Value names;
    for (const auto& [value, name] : type.getItemsByValue()) {
      if (!name.empty()) names[names.getSize()] = name;
    }
    for (const auto& [name, value] : type.getItemsByName()) {
      if (!name.empty() && type.getName(value) != name) names[names.getSize()] = name;
    }
    return names;
  }

  json::Value makeReferenced(const MemRef& member) {
    const VarType* type = member.resolve(&getManager());
    if (type == nullptr || type->getMember() == nullptr) {
      throw Failure(kProblem,
                    "the reference to " + member.getRefId().toString() + " leads to no layout");
    }
    json::Value schema = make(*type->getMember());
    schema["title"] = displayName(*type);
    return schema;
  }

  json::Value makeAggregate(const MemAggregate& member) {
    if (member.isUnion()) return makeUnion(member);
    json::Value schema = makeObject(member);
    schema["required"].switchType(json::JsonType::Array);
    for (const auto& child : member.getChildren()) {
      if (!child) break;
      if (mayBeMissing(*child)) continue;
      json::Value& required = schema["required"];
      required[required.getSize()] = child->getProgName();
    }
    return schema;
  }

  json::Value makeObject(const MemAggregate& member) {
    json::Value schema;
    schema["type"] = "object";
    schema["properties"].switchType(json::JsonType::Object);
    for (const auto& child : member.getChildren()) {
      if (!child) break;
      schema["properties"][child->getProgName()] = make(*child);
    }
    if (!_catalogue.getOptions().allowUndefinedFields) {
      schema["additionalProperties"].setBoolean(false);
    }
    return schema;
  }

  // The alternatives show the same bytes. Those that do not hold may show anything, so that the
  // limits have to be kept by one of them only.
  json::Value makeUnion(const MemAggregate& member) {
    if (_catalogue.getOptions().useUnionHex) return makeUnionHex(member);
    const TextState before = _text;
    const LimitUse outerUse = _limitUse;
    _limitUse = LimitUse::Field;
    json::Value schema = makeObject(member);
    _limitUse = outerUse;
    _text = before;
    for (const auto& child : member.getChildren()) {
      if (!child) break;
      json::Value& anyOf = schema["anyOf"];
      json::Value& alternative = anyOf[anyOf.getSize()];
      alternative["required"][0] = child->getProgName();
      if (outerUse == LimitUse::Field) continue;
      alternative["properties"][child->getProgName()] = make(*child);
    }
    return schema;
  }

  // The text of all bytes of a union. Dynamic arrays in it may leave some of them out.
  json::Value makeUnionHex(const MemAggregate& member) {
    const base::Buffer nothing;
    Member::Context context(&getManager(), nothing, true);
    context.useDynamicArrays = false;
    const auto ignore = [](Member::Context&, const Member&) { return true; };
    if (!member.traverseMember(context, ignore, ignore)) {
      throw Failure(kProblem, "the layout of a union cannot be followed");
    }
    json::Value schema;
    schema["type"] = "string";
    schema["pattern"] = "^([0-9A-Fa-f]{2})*$";
    if (!_catalogue.getOptions().useDynamicArrays) schema["minLength"] = 2 * context.bytePos;
    schema["maxLength"] = 2 * context.bytePos;
    return schema;
  }

  // Only integers and text may be left out, and only with that option.
  bool mayBeMissing(const Member& member) {
    if (!_catalogue.getOptions().allowMissingFields) return false;
    const Member* target = &member;
    if (member.getKind() == Member::Kind::Ref) {
      const VarType* type = static_cast<const MemRef&>(member).resolve(&getManager());
      if (type == nullptr || type->getMember() == nullptr) return false;
      target = type->getMember();
    }
    return target->getKind() == Member::Kind::Scalar;
  }

  Catalogue& _catalogue;
  unsigned _memberCount = 0;
  TextState _text;
  LimitUse _limitUse = LimitUse::Definition;
};

}  // namespace

json::Value makeSchema(Catalogue& catalogue, const VarType& type) {
  catalogue.getSize(type);  // throws for a layout without an end
  const json::Value content = SchemaMaker(catalogue).make(*type.getMember());
  json::Value schema;
  schema["$schema"] = "https://json-schema.org/draft/2020-12/schema";
  schema["title"] = displayName(type);
  schema["description"] =
      std::string("Values of the ") + resourceTypeName(type.getTypeId().getType()) + " type " +
      std::to_string(type.getIndex()) + " of the set " + type.getTypeId().getPrefix();
  for (const auto& [name, part] : content.getPropertyMap()) {
    if (name != "title") schema[name] = part;
  }
  return schema;
}

}  // namespace zavri::korvat::tool
