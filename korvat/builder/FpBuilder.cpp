#include "korvat/builder/FpBuilder.h"

#include <cstddef>
#include <utility>

#include "korvat/base/Logger.h"
#include "korvat/base/StringUtils.h"
#include "korvat/builder/ElementMap.h"
#include "korvat/builder/TypeHref.h"

namespace zavri::korvat::builder {

using base::Logger;
using util::StringUtils;

namespace {

using enum FpTransitionTable::Event;

// clang-format off
constexpr TElementMap<16> kElements({{
    // name        start       end             value
    {"applies",    PE_None,    PE_None,        PE_applies_VALUE},
    {"array",      PE_None,    PE_None,        PE_array_VALUE},
    {"default",    PE_None,    PE_None,        PE_default_VALUE},
    {"dir",        PE_None,    PE_None,        PE_dir_VALUE},
    {"f-cp",       PE_cp,      PE_cp_end,      PE_None},
    {"f-cps",      PE_cps,     PE_cps_end,     PE_None},
    {"f-nv",       PE_nv,      PE_nv_end,      PE_None},
    {"f-nvs",      PE_nvs,     PE_nvs_end,     PE_None},
    {"fpt",        PE_fpt,     PE_fpt_end,     PE_None},
    {"inheriting", PE_inherit, PE_inherit_end, PE_None},
    {"mandatory",  PE_None,    PE_None,        PE_mandatory_VALUE},
    {"max",        PE_None,    PE_None,        PE_max_VALUE},
    {"member",     PE_None,    PE_None,        PE_member_VALUE},
    {"min",        PE_None,    PE_None,        PE_min_VALUE},
    {"obsolete",   PE_None,    PE_None,        PE_obsolete_VALUE},
    {"ref",        PE_ref,     PE_ref_end,     PE_ref_VALUE},
}});
// clang-format on
static_assert(kElements.isUnambiguous());

}  // namespace

void FpBuilder::reset() {
  setState(PS_Begin);
  _refBase.clear();
  _datapoint = nullptr;
  _profile.reset();
}

void FpBuilder::onElement(const std::string& name, const AttributeMap& attributes) {
  const std::uint32_t event = kElements.find(name).start;
  Logger::trace("[FpBuilder::onElement] <%s> ==> %s / %s\n", name.c_str(), stateName(getState()),
                eventName(event));
  processEvent(event, &attributes, nullptr);
}

void FpBuilder::onElementEnd(const std::string& name) {
  const std::uint32_t event = kElements.find(name).end;
  Logger::trace("[FpBuilder::onElementEnd] </%s> ==> %s / %s\n", name.c_str(),
                stateName(getState()), eventName(event));
  processEvent(event, nullptr, nullptr);
}

void FpBuilder::onValue(const std::string& name, const std::string& value) {
  Logger::trace("[FpBuilder::onValue] element=<%s> value='%s'\n", name.c_str(), value.c_str());
  Logger::trace("[FpBuilder::getValueEvent] element='%s'\n", name.c_str());
  processEvent(kElements.find(name).value, nullptr, &value);
}

void FpBuilder::processAction(std::uint32_t action, const AttributeMap* attributes,
                              const std::string* value) {
  Logger::trace("[FpBuilder::processAction] %s\n", actionName(action));
  switch (static_cast<Action>(action)) {
    case PA_none:
      return;
    case PA_skipElement:
      return skipElement();
    case PA_createFPT:
      return createFpt(attributes);
    case PA_rememberRefBase:
      return rememberRefBase(attributes);
    case PA_pushNv:
      return pushDatapoint(DpRef::DpType::Nv, attributes);
    case PA_pushCp:
      return pushDatapoint(DpRef::DpType::Cp, attributes);
    case PA_callDone:
      return callDone();
    case PA_setObsolete:
      if (_profile && value != nullptr) setObsolete(*value);
      return;
    case PA_setInheritRef:
      if (_profile && value != nullptr) setInheritRef(*value);
      return;
    case PA_setMember:
    case PA_setMandatory:
    case PA_setDirection:
    case PA_setMin:
    case PA_setMax:
    case PA_setDefault:
    case PA_setArray:
    case PA_setAppliesTo:
    case PA_setRef:
      if (_datapoint != nullptr && value != nullptr) {
        setField(static_cast<Action>(action), *value);
      }
      return;
  }
}

void FpBuilder::setField(Action action, const std::string& text) {
  switch (action) {
    case PA_setMember:
      return _datapoint->setMember(StringUtils::toInt32(text));
    case PA_setMandatory:
      return _datapoint->setMandatory(text == "yes");
    case PA_setDirection:
      return setDirection(text);
    case PA_setMin:
      return _datapoint->setMin(StringUtils::toDouble(text));
    case PA_setMax:
      return _datapoint->setMax(StringUtils::toDouble(text));
    case PA_setDefault:
      return _datapoint->setDefaultValue(StringUtils::toDouble(text));
    case PA_setArray:
      return _datapoint->setArrayPermitted(text != "not permitted");
    case PA_setAppliesTo:
      return _datapoint->setAppliesTo(text);
    case PA_setRef:
      return setRef(text);
    default:  // no field of a datapoint
      return;
  }
}

void FpBuilder::createFpt(const AttributeMap* attributes) {
  _datapoint = nullptr;
  _profile = std::make_unique<FpType>();
  if (attributes == nullptr) {
    Logger::warning("[FpBuilder] missing attributes in member\n");
  } else {
    readAttributes(*attributes);
  }
  Logger::trace("[FpBuilder::createNvt] %s\n", _profile->getName().c_str());
}

void FpBuilder::readAttributes(const AttributeMap& attributes) {
  setIdAndIndex(*_profile, &attributes);
  TypeId& id = _profile->getTypeId();
  id.setId(TypeId::stripPrefix(id.getId()));

  const std::string* isStandard = findAttribute(attributes, "stlp_std");
  if (isStandard != nullptr && *isStandard == "yes") _profile->addFlags(BaseType::kStandardProfile);

  if (const std::string* key = findAttribute(attributes, "key")) {
    _profile->setKey(StringUtils::toInt32(*key));
  } else {
    Logger::warning("[FpBuilder::setIdAndIndex] no key for %s\n", id.getId().c_str());
  }
}

void FpBuilder::setObsolete(const std::string& text) {
  if (text == "yes") _profile->addFlags(BaseType::kObsolete);
}

// Without an "href" the reference is to the set that the one before it named.
void FpBuilder::rememberRefBase(const AttributeMap* attributes) {
  Logger::trace("[FpBuilder::rememberRefBase]\n");
  const std::string* href = attributes == nullptr ? nullptr : findAttribute(*attributes, "href");
  if (href == nullptr) return;

  _refBase = stripUrl(*href);
  const std::size_t slash = _refBase.find('/');
  if (slash == std::string::npos) {
    Logger::warning("[FpBuilder::rememberRefBase] ref-base='%s'\n", _refBase.c_str());
  } else {
    _refBase.resize(slash);
  }
  Logger::trace("[FpBuilder::rememberRefBase] => '%s'\n", _refBase.c_str());
}

// The set of the inherited profile says nothing about the sets of the datapoints' types.
void FpBuilder::setInheritRef(const std::string& text) {
  _profile->getBase() = TypeId(ResourceType::Fp, _refBase, TypeId::stripPrefix(text));
  _refBase.clear();
}

void FpBuilder::pushDatapoint(DpRef::DpType dpType, const AttributeMap* attributes) {
  _datapoint = nullptr;
  if (!_profile || attributes == nullptr) return;

  const char* profileName = _profile->getName().c_str();
  const std::string* id = findAttribute(*attributes, "id");
  if (id == nullptr) {
    Logger::warning("[FpBuilder::setIdAndIndex] no 'id'-attr found in %s\n", profileName);
  }
  const std::string* index = findAttribute(*attributes, "idx");
  if (index == nullptr) {
    Logger::warning("[FpBuilder::setIdAndIndex] no 'idx'-attr found in %s\n", profileName);
  }

  auto datapoint = std::make_unique<DpRef>(_profile.get(), dpType,
                                           index == nullptr ? 0 : StringUtils::toInt32(*index));
  if (id != nullptr) datapoint->setName(*id);
  _datapoint = datapoint.get();
  _profile->add(std::move(datapoint));
}

void FpBuilder::setDirection(const std::string& text) {
  if (text == "input") {
    _datapoint->setDirection(DpRef::Direction::Input);
  } else if (text == "output") {
    _datapoint->setDirection(DpRef::Direction::Output);
  } else {
    Logger::warning("[FpBuilder::setDirection] direction unhandled: '%s'\n", text.c_str());
  }
}

void FpBuilder::setRef(const std::string& text) {
  const bool isProperty = _datapoint->getDpType() == DpRef::DpType::Cp;
  _datapoint->setTypeId(TypeId(isProperty ? ResourceType::Cp : ResourceType::Nv, _refBase,
                               TypeId::stripPrefix(text)));
}

void FpBuilder::callDone() {
  Logger::trace("[FpBuilder::callDone]\n");
  _datapoint = nullptr;
  passItemToMaster(std::move(_profile));
  reportDone();
  reset();
}

}  // namespace zavri::korvat::builder
