#include "korvat/format/Format.h"

#include "korvat/format/Concatenation.h"
#include "korvat/format/Condition.h"
#include "korvat/format/FormattedString.h"

namespace zavri::korvat {

namespace {

using format::FormatBase;

void collectFields(const FormatBase* node, std::vector<const format::Field*>& fields) {
  if (node == nullptr) return;
  switch (node->getKind()) {
    case FormatBase::Kind::FT_Concatenation:
      for (const auto& part : static_cast<const format::Concatenation*>(node)->getParts()) {
        collectFields(part.get(), fields);
      }
      return;
    case FormatBase::Kind::FT_FormattedString:
      for (const auto& field : static_cast<const format::FormattedString*>(node)->getFields()) {
        if (field) fields.push_back(field.get());
      }
      return;
    case FormatBase::Kind::FT_Condition: {
      const auto* condition = static_cast<const format::Condition*>(node);
      collectFields(condition->getThen(), fields);
      collectFields(condition->getElse(), fields);
      return;
    }
    case FormatBase::Kind::FT_Base:
    case FormatBase::Kind::FT_Format:
    case FormatBase::Kind::FT_Date:
    case FormatBase::Kind::FT_Time:
    case FormatBase::Kind::FT_Field:
      return;
  }
}

}  // namespace

void Format::dump(std::string& text, unsigned level) const {
  dumpKind(text, level);
  if (_body) {
    _body->dump(text, level + 1);
  } else {
    indent(text, level + 1);
    text += "(null)\n";
  }
}

std::vector<const format::Field*> Format::getFields() const {
  std::vector<const format::Field*> fields;
  collectFields(_body.get(), fields);
  return fields;
}

}  // namespace zavri::korvat
