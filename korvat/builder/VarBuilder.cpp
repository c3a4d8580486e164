#include "korvat/builder/VarBuilder.h"

#include <array>
#include <cstddef>
#include <utility>

#include "korvat/base/Logger.h"
#include "korvat/base/StringUtils.h"
#include "korvat/builder/ElementMap.h"
#include "korvat/builder/MemberFields.h"
#include "korvat/builder/TypeHref.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemRef.h"
#include "korvat/members/MemScalar.h"
#include "korvat/types/CpType.h"
#include "korvat/types/NvType.h"

namespace zavri::korvat::builder {

using base::Logger;
using util::StringUtils;

namespace {

using enum VarTransitionTable::Event;

// clang-format off
constexpr TElementMap<32> kElements({{
    // name            start         end               value
    {"a",              PE_None,      PE_None,          PE_scaling_a_VALUE},
    {"aggregate",      PE_aggregate, PE_aggregate_end, PE_None},
    {"array-min-size", PE_None,      PE_None,          PE_array_min_size_VALUE},
    {"array-size",     PE_None,      PE_None,          PE_array_size_VALUE},
    {"b",              PE_None,      PE_None,          PE_scaling_b_VALUE},
    {"bitfield",       PE_bitfield,  PE_bitfield_end,  PE_None},
    {"c",              PE_None,      PE_None,          PE_scaling_c_VALUE},
    {"cpt",            PE_cpt,       PE_cpt_end,       PE_None},
    {"default",        PE_None,      PE_None,          PE_default_VALUE},
    {"enum",           PE_enum,      PE_enum_end,      PE_None},
    {"float",          PE_float,     PE_float_end,     PE_None},
    {"format",         PE_format,    PE_format_end,    PE_format_VALUE},
    {"formats",        PE_formats,   PE_formats_end,   PE_None},
    {"invalid",        PE_None,      PE_None,          PE_invalid_VALUE},
    {"max",            PE_None,      PE_None,          PE_max_VALUE},
    {"member",         PE_member,    PE_member_end,    PE_None},
    {"members",        PE_members,   PE_members_end,   PE_None},
    {"min",            PE_None,      PE_None,          PE_min_VALUE},
    {"nc-type",        PE_None,      PE_None,          PE_nc_type_VALUE},
    {"nvt",            PE_nvt,       PE_nvt_end,       PE_None},
    {"obsolete",       PE_None,      PE_None,          PE_obsolete_VALUE},
    {"offset",         PE_None,      PE_None,          PE_offset_VALUE},
    {"p-name",         PE_None,      PE_None,          PE_p_name_VALUE},
    {"ref",            PE_ref,       PE_ref_end,       PE_ref_VALUE},
    {"refs",           PE_refs,      PE_None,          PE_None},
    {"s",              PE_None,      PE_None,          PE_scaling_s_VALUE},
    {"scalar",         PE_scalar,    PE_scalar_end,    PE_None},
    {"scaling",        PE_scaling,   PE_scaling_end,   PE_None},
    {"signed",         PE_None,      PE_None,          PE_signed_VALUE},
    {"size",           PE_None,      PE_None,          PE_size_VALUE},
    {"unit",           PE_unit,      PE_None,          PE_None},
    {"width",          PE_None,      PE_None,          PE_width_VALUE},
}});
// clang-format on
static_assert(kElements.isUnambiguous());

// What the loader reports for a file with a second root member in one type.
constexpr const char* kIllegalState = "illegal state";

constexpr std::size_t kPrefixLetters = 4;

struct StrippedName {
  ResourceType type;  // Invalid for a name without the four letters
  std::string name;
};

bool beginsWith(const std::string& text, const char* letters) {
  return text.compare(0, kPrefixLetters, letters) == 0;
}

// `text` without the four letters of a network variable or property name.
StrippedName stripPrefix(const std::string& text) {
  Logger::trace("[VarBuilder::stripPrefix] '%s'\n", text.c_str());
  if (beginsWith(text, "SNVT") || beginsWith(text, "UNVT")) {
    return {ResourceType::Nv, text.substr(kPrefixLetters)};
  }
  if (beginsWith(text, "SCPT") || beginsWith(text, "UCPT")) {
    return {ResourceType::Cp, text.substr(kPrefixLetters)};
  }
  return {ResourceType::Invalid, text};
}

// True for the name of a type that no standard set defines.
bool isUserName(const std::string& text) {
  return beginsWith(text, "UNVT") || beginsWith(text, "UCPT");
}

}  // namespace

void VarBuilder::reset() {
  setState(PS_Begin);
  _members.clear();
  _type.reset();
  _formatId.clear();
  _rootUnit.clear();
  _hasHref = false;
}

void VarBuilder::onElement(const std::string& name, const AttributeMap& attributes) {
  const std::uint32_t event = kElements.find(name).start;
  if (base::isLogged(Logger::Trace)) {
    Logger::trace("[VarBuilder::onElement] <%s> ==> %s / %s\n", name.c_str(), stateName(getState()),
                  eventName(event));
  }
  processEvent(event, &attributes, nullptr);
}

void VarBuilder::onElementEnd(const std::string& name) {
  const std::uint32_t event = kElements.find(name).end;
  if (base::isLogged(Logger::Trace)) {
    Logger::trace("[VarBuilder::onElementEnd] </%s> ==> %s / %s\n", name.c_str(),
                  stateName(getState()), eventName(event));
  }
  processEvent(event, nullptr, nullptr);
}

void VarBuilder::onValue(const std::string& name, const std::string& value) {
  Logger::trace("[VarBuilder::onValue] element=<%s> value='%s'\n", name.c_str(), value.c_str());
  Logger::trace("[VarBuilder::getValueEvent] element='%s'\n", name.c_str());
  processEvent(kElements.find(name).value, nullptr, &value);
}

void VarBuilder::processAction(std::uint32_t action, const AttributeMap* attributes,
                               const std::string* value) {
  Logger::trace("[VarBuilder::processAction] %s\n", actionName(action));
  switch (action) {
    case PA_skipElement:
      return skipElement();
    case PA_createNVT:
      return createNvt(attributes);
    case PA_createCPT:
      return createCpt(attributes);
    case PA_pushRef:
      return pushRef(attributes);
    case PA_pushScalar:
      return static_cast<void>(push<MemScalar>("pushScalar"));
    case PA_pushFloat:
      return static_cast<void>(push<MemFloat>("pushFloat"));
    case PA_pushBitfield:
      return static_cast<void>(push<MemBitfield>("pushBitfield"));
    case PA_pushEnum:
      return static_cast<void>(push<MemEnum>("pushEnum"));
    case PA_pushAggregate:
      return pushAggregate(attributes);
    case PA_checkPop:
      return checkPop();
    case PA_pop:
      return pop();
    case PA_rememberIdAttr:
      return rememberFormatId(attributes);
    case PA_setState:
      return returnToMember();
    case PA_handleEnumRef:
      return readEnumHref(attributes);
    case PA_setUnit:
      return setUnit(attributes);
    case PA_callBuildLookup:
      return buildLookup();
    case PA_callDone:
      return callDone();
    default:  // the others need a text
      if (value != nullptr) processText(static_cast<Action>(action), *value);
  }
}

void VarBuilder::processText(Action action, const std::string& text) {
  switch (action) {
    case PA_setDefault:
      return setDefault(text);
    case PA_setObsolete:
      return setObsolete(text);
    case PA_setSize:
      return setSize(text);
    case PA_setProgName:
      return setProgName(text);
    case PA_setRefValue:
      return setRefValue(text);
    case PA_addFormat:
      return addFormat(text);
    case PA_setNcType:
      return setTopNcType(text);
    default:  // the others need a member
      if (Member* top = findTop()) processFieldText(action, text, *top);
  }
}

void VarBuilder::processFieldText(Action action, const std::string& text, Member& member) {
  switch (action) {
    case PA_setArrayMinSize:
      return setArrayMinSize(member, text);
    case PA_setArraySize:
      return setArraySize(member, text);
    case PA_setMin:
      return setLimit(member, Limit::Min, text);
    case PA_setMax:
      return setLimit(member, Limit::Max, text);
    case PA_setInvalid:
      return setLimit(member, Limit::Invalid, text);
    case PA_setScalingA:
      return setScaling(member, ScalingPart::A, text);
    case PA_setScalingB:
      return setScaling(member, ScalingPart::B, text);
    case PA_setScalingC:
      return setScaling(member, ScalingPart::C, text);
    case PA_setBitfieldSigned:
      return setBitfieldSigned(member, text);
    case PA_setBitfieldWidth:
      return setBitfieldWidth(member, text);
    case PA_setBitfieldOffset:
      return setBitfieldOffset(member, text);
    case PA_setScalingS:  // accepted, and of no effect on a value
    default:
      return;
  }
}

// --- The type ---

void VarBuilder::createNvt(const AttributeMap* attributes) {
  beginType(std::make_unique<NvType>(), attributes);
  Logger::trace("[VarBuilder::createNvt] %s\n", getTypeName());
}

void VarBuilder::createCpt(const AttributeMap* attributes) {
  beginType(std::make_unique<CpType>(), attributes);
  Logger::trace("[VarBuilder::createCpt] %s\n", getTypeName());
}

void VarBuilder::beginType(std::unique_ptr<VarType> type, const AttributeMap* attributes) {
  _members.clear();
  _formatId.clear();
  _rootUnit.clear();
  _type = std::move(type);
  setIdAndIndex(*_type, attributes);
}

void VarBuilder::setDefault(const std::string& text) {
  if (auto* cpType = dynamic_cast<CpType*>(_type.get())) {
    cpType->setDefaultValue(text);
  } else {
    Logger::warning("[VarBuilder] can only set default value in CP\n");
  }
}

void VarBuilder::setObsolete(const std::string& text) {
  if (_type && text == "yes") _type->addFlags(BaseType::kObsolete);
}

void VarBuilder::setSize(const std::string& text) {
  if (_type) _type->setSize(StringUtils::toInt32(text));
}

void VarBuilder::setProgName(const std::string& text) {
  if (Member* top = findTop()) {
    Logger::trace("[VarBuilder::setProgName] '%s'\n", text.c_str());
    top->setProgName(text);
    return;
  }
  if (!_type) return;

  const std::string progName = stripPrefix(text).name;
  if (progName == _type->getName()) return;

  Logger::warning("[VarBuilder] p-name differs from identifier: p-name=%s  id=%s\n",
                  progName.c_str(), getTypeName());
}

void VarBuilder::setUnit(const AttributeMap* attributes) {
  Logger::trace("[VarBuilder::setUnit]\n");
  if (attributes == nullptr) {
    Logger::warning("[VarBuilder] missing attributes in unit member\n");
    return;
  }
  const std::string* id = findAttribute(*attributes, "id");
  if (id == nullptr) {
    Logger::warning("[VarBuilder] missing attribute 'id' in unit\n");
    return;
  }
  const std::string* unit = lookupString(*id);
  if (unit == nullptr) {
    Logger::warning("[VarBuilder] no string for id '%s' unit in %s\n", id->c_str(), getTypeName());
    return;
  }

  Logger::trace("[VarBuilder] setting unit '%s' in %s\n", unit->c_str(), getTypeName());
  if (Member* top = findTop()) {
    top->setUnit(*unit);
  } else if (_type && _type->getMember() != nullptr) {
    _type->getMember()->setUnit(*unit);
  } else {
    _rootUnit = *unit;
  }
}

void VarBuilder::rememberFormatId(const AttributeMap* attributes) {
  Logger::trace("[VarBuilder::rememberIdAttr]\n");
  if (attributes == nullptr) return;

  const std::string* id = findAttribute(*attributes, "id");
  _formatId = id == nullptr ? std::string() : *id;
}

void VarBuilder::addFormat(const std::string& text) {
  Logger::trace("[VarBuilder::rememberIdAttr] %s\n", text.c_str());
  if (!_type) return;
  if (_formatId.empty()) {
    Logger::warning("[VarBuilder] no 'id' given for format\n");
    return;
  }

  // "SNVT_temp_p#US" of the type "_temp_p" is its format "US", and "SNVT_temp_p" its plain one.
  std::string key = stripPrefix(_formatId).name;
  const std::string& typeName = _type->getName();
  if (key.compare(0, typeName.size(), typeName) == 0) {
    key.erase(0, typeName.size());
    if (!key.empty() && key.front() == '#') key.erase(0, 1);
  } else {
    Logger::warning(
        "[VarBuilder] format-id does not begin with type name: format='%s' type='%s' \n",
        key.c_str(), typeName.c_str());
  }
  _type->setFormatText(key, StringUtils::trim(text));
}

void VarBuilder::callDone() {
  Logger::trace("[VarBuilder::callDone]\n");
  _members.clear();
  passItemToMaster(std::move(_type));
  reportDone();
  reset();
}

const char* VarBuilder::getTypeName() const {
  return toPrintable(_type ? &_type->getName() : nullptr);
}

// --- The members ---

// The new member, now on top; null when it could not be placed.
template <typename T>
T* VarBuilder::push(const char* operation) {
  Logger::trace("[VarBuilder::%s]\n", operation);
  auto member = std::make_unique<T>();
  T* placed = member.get();
  return place(std::move(member)) ? placed : nullptr;
}

bool VarBuilder::place(std::unique_ptr<Member> member) {
  if (!_type) {
    Logger::warning("[VarBuilder] member without nvt/cpt\n");
    return false;
  }

  _hasHref = false;
  Member* const placed = member.get();
  Member* const top = findTop();
  if (top == nullptr) {
    placeRoot(std::move(member));
  } else if (top->getKind() == Member::Kind::Aggregate) {
    static_cast<MemAggregate*>(top)->addChild(std::move(member));
  } else {
    Logger::warning("[VarBuilder] cannot add member to %s\n", Member::getKindName(top->getKind()));
    return false;
  }
  _members.push_back(placed);
  return true;
}

void VarBuilder::placeRoot(std::unique_ptr<Member> member) {
  if (_type->getMember() != nullptr) {
    Logger::warning("illegal xml while parsing type=%s ix=%d\n", getTypeName(), _type->getIndex());
    throw kIllegalState;
  }
  if (!_rootUnit.empty()) member->setUnit(_rootUnit);
  _type->setMember(std::move(member));
}

void VarBuilder::pushRef(const AttributeMap* attributes) {
  if (MemRef* reference = push<MemRef>("pushRef")) readHref(*reference, attributes);
}

void VarBuilder::pushAggregate(const AttributeMap* attributes) {
  MemAggregate* aggregate = push<MemAggregate>("pushAggregate");
  if (aggregate == nullptr) return;

  const std::string* category = attributes == nullptr ? nullptr : findAttribute(*attributes, "cat");
  if (category == nullptr) {
    Logger::warning("[VarBuilder] missing attribute 'cat' in aggregate\n");
    return;
  }
  aggregate->setUnion(*category == "union");
}

void VarBuilder::checkPop() {
  Logger::trace("[VarBuilder::checkPop]\n");
  if (_members.size() == 1) {
    pop();
  } else {
    setState(PS_Member);  // stays on the stack until its "member" ends
  }
}

void VarBuilder::pop() {
  Logger::trace("[VarBuilder::pop]\n");
  if (!_members.empty()) _members.pop_back();
  setState(_members.empty() ? PS_Item : PS_Members);
}

void VarBuilder::buildLookup() {
  Logger::trace("[VarBuilder::callBuildLookup]\n");
  Member* top = findTop();
  if (top == nullptr || top->getKind() != Member::Kind::Aggregate) return;
  static_cast<MemAggregate*>(top)->buildLookup();
}

void VarBuilder::returnToMember() {
  const Member* top = findTop();
  Logger::trace("[VarBuilder::setState] top=%p\n", static_cast<const void*>(top));
  if (top == nullptr) {
    Logger::warning("[VarBuilder] invalid state\n");
    return;
  }

  switch (top->getKind()) {
    case Member::Kind::Ref:
      return setState(PS_Ref);
    case Member::Kind::Float:
      return setState(PS_Float);
    case Member::Kind::Scalar:
      return setState(PS_Scalar);
    case Member::Kind::Bitfield:
      return setState(PS_Bitfield);
    case Member::Kind::Enum:
      return setState(PS_Enum);
    case Member::Kind::Aggregate:
      return setState(PS_Aggregate);
    case Member::Kind::Invalid:
      Logger::warning("[VarBuilder] Invalid state\n");
  }
}

void VarBuilder::setTopNcType(const std::string& text) {
  Logger::trace("[VarBuilder::setNcType] %s\n", text.c_str());
  if (Member* top = findTop()) {
    setNcType(*top, text, getFileSetName());
  } else {
    // The one setter that tells when no member is open: a type without it has no size.
    Logger::warning("[VarBuilder] cannot set nc-type %s\n", text.c_str());
  }
}

// --- References ---

void VarBuilder::readEnumHref(const AttributeMap* attributes) {
  Logger::trace("[VarBuilder::handleEnumRef]\n");
  Member* top = findTop();
  if (top == nullptr) return;
  if (top->getKind() != Member::Kind::Enum) {
    Logger::warning("[VarBuilder] cannot set 'href' in %s\n", Member::getKindName(top->getKind()));
    return;
  }
  readHref(static_cast<MemEnum&>(*top), attributes);
}

// A reference without a usable "href" keeps what it has: the standard set.
void VarBuilder::readHref(MemRefBase& reference, const AttributeMap* attributes) {
  const std::string* text = attributes == nullptr ? nullptr : findAttribute(*attributes, "href");
  if (text == nullptr) return;

  TypeHref href;
  switch (parseHref(*text, href)) {
    case HrefStatus::Valid:
      break;
    case HrefStatus::Incomplete:
      return Logger::warning("[VarBuilder] invalid 'href'-attribute : >>>%s<<<\n", text->c_str());
    case HrefStatus::BadPrefix:
      return Logger::warning("[VarBuilder] invalid 'href'-attribute: >>>%s<<<\n", text->c_str());
    case HrefStatus::UnknownFolder:
      return Logger::warning("[VarBuilder] cannot determine type from 'href'-attribute: >>>%s<<<\n",
                             text->c_str());
  }
  if (!reference.setRefType(href.type)) {
    return Logger::warning(
        "[VarBuilder] failed to set ref-type to %s from 'href'-attribute: >>>%s<<<\n",
        resourceTypeName(href.type), text->c_str());
  }

  _hasHref = true;
  TypeId& refId = reference.getRefId();
  refId.setPrefix(href.prefix);
  if (href.name.empty()) return;
  refId.setId(reference.getKind() == Member::Kind::Enum ? href.name : stripPrefix(href.name).name);
}

void VarBuilder::setRefValue(const std::string& text) {
  Logger::trace("[VarBuilder::setRefValue] %s\n", text.c_str());
  Member* top = findTop();
  if (top == nullptr) return;

  if (top->getKind() == Member::Kind::Enum) {
    static_cast<MemEnum*>(top)->getRefId().setId(text);
  } else if (top->getKind() == Member::Kind::Ref) {
    setRefName(static_cast<MemRef&>(*top), text);
  } else {
    Logger::warning("[VarBuilder] cannot set 'ref' in %s\n", Member::getKindName(top->getKind()));
  }
}

void VarBuilder::setRefName(MemRefBase& reference, const std::string& text) {
  const StrippedName stripped = stripPrefix(text);
  TypeId& refId = reference.getRefId();
  refId.setId(stripped.name);
  if (!_hasHref && isUserName(text) && isSetPrefix(getFileSetName())) {
    refId.setPrefix(getFileSetName());
  }
  if (stripped.type == ResourceType::Invalid || stripped.type == refId.getType()) return;

  if (reference.setRefType(stripped.type)) {
    Logger::debug("[VarBuilder::setRefValue] inferring resource type '%s' from '%s'\n",
                  resourceTypeName(stripped.type), text.c_str());
  }
}

}  // namespace zavri::korvat::builder
