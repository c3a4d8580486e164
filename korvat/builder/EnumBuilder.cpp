#include "korvat/builder/EnumBuilder.h"

#include <array>
#include <utility>

#include "korvat/base/Logger.h"
#include "korvat/base/StringUtils.h"
#include "korvat/builder/ElementMap.h"

namespace zavri::korvat::builder {

using base::Logger;

namespace {

using enum EnumTransitionTable::Event;

// clang-format off
constexpr TElementMap<6> kElements({{
    // name      start       end             value
    {"comment",  PE_comment, PE_None,        PE_None},
    {"e-member", PE_member,  PE_member_end,  PE_None},
    {"enumt",    PE_enum,    PE_enum_end,    PE_None},
    {"members",  PE_members, PE_members_end, PE_None},
    {"refs",     PE_refs,    PE_None,        PE_None},
    {"value",    PE_None,    PE_None,        PE_value_value},
}});
// clang-format on
static_assert(kElements.isUnambiguous());

}  // namespace

void EnumBuilder::reset() {
  setState(PS_Begin);
  _memberName.clear();
  _item.reset();
}

void EnumBuilder::onElement(const std::string& name, const AttributeMap& attributes) {
  Logger::trace("[EnumBuilder::onElement] <%s>\n", name.c_str());
  processEvent(kElements.find(name).start, &attributes, nullptr);
}

void EnumBuilder::onElementEnd(const std::string& name) {
  Logger::trace("[EnumBuilder::onElementEnd] </%s>\n", name.c_str());
  processEvent(kElements.find(name).end, nullptr, nullptr);
}

void EnumBuilder::onValue(const std::string& name, const std::string& value) {
  Logger::trace("[EnumBuilder::onValue] element=<%s> value='%s'\n", name.c_str(), value.c_str());
  processEvent(kElements.find(name).value, nullptr, &value);
}

void EnumBuilder::processAction(std::uint32_t action, const AttributeMap* attributes,
                                const std::string* value) {
  Logger::trace("[EnumBuilder::processAction] %s\n", actionName(action));
  switch (static_cast<Action>(action)) {
    case PA_none:
      break;
    case PA_setIdAndIndex:
      createItem(attributes);
      break;
    case PA_setActEnumString:
      setMemberName(attributes);
      break;
    case PA_addEnumMember:
      addMember(value);
      break;
    case PA_skipElement:
      skipElement();
      break;
    case PA_callDone:
      callDone();
      break;
  }
}

void EnumBuilder::createItem(const AttributeMap* attributes) {
  _item = std::make_unique<EnumType>();
  setIdAndIndex(*_item, attributes);
}

void EnumBuilder::setMemberName(const AttributeMap* attributes) {
  if (attributes == nullptr) {
    Logger::warning("[EnumBuilder] missing attributes in enum member\n");
    return;
  }

  const std::string* id = findAttribute(*attributes, "id");
  if (id == nullptr) {
    Logger::warning("[EnumBuilder] missing attribute 'id' in enum member\n");
    return;
  }
  _memberName = *id;
}

void EnumBuilder::addMember(const std::string* value) {
  Logger::trace("[EnumBuilder::addEnumMember] %s -> %s\n", _memberName.c_str(), toPrintable(value));
  if (!_item) return;

  if (value != nullptr) {
    const std::int32_t number = util::StringUtils::toInt32(*value);
    const auto enumerator = static_cast<std::int8_t>(number);  // as wide as it is in a raw value
    if (enumerator == number) {
      _item->addItem(enumerator, _memberName);
    } else {
      Logger::warning("[EnumBuilder] %s -> %s (overflow)\n", _memberName.c_str(), value->c_str());
    }
  }
  _memberName.clear();
}

void EnumBuilder::callDone() {
  Logger::trace("[EnumBuilder::callDone]\n");
  passItemToMaster(std::move(_item));
  reportDone();
  reset();
}

}  // namespace zavri::korvat::builder
