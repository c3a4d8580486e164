#include "korvat/format/Condition.h"

#include "korvat/base/StringUtils.h"

namespace zavri::korvat::format {

namespace {

const char* operatorText(Condition::Operator comparison) {
  switch (comparison) {
    case Condition::Operator::Equal:
      return "==";
    case Condition::Operator::NotEqual:
      return "!=";
  }
  return "(unknown)";
}

}  // namespace

void Condition::setTest(const std::string& fieldName, Operator comparison, std::int32_t value) {
  _fieldName = fieldName;
  _operator = comparison;
  _value = value;
}

void Condition::dump(std::string& text, unsigned level) const {
  dumpKind(text, level);
  indent(text, level + 1);
  text += "if:\n";
  indent(text, level + 2);
  text +=
      _fieldName + " " + operatorText(_operator) + " " + util::StringUtils::toString(_value) + "\n";
  indent(text, level + 1);
  text += "then:";
  dumpBehind(text, level + 1, _then.get());
  indent(text, level + 1);
  text += "else:";
  dumpBehind(text, level + 1, _else.get());
}

}  // namespace zavri::korvat::format
