#include "korvat/format/FormatBase.h"

#include <array>

namespace zavri::korvat::format {

namespace {

constexpr std::array<const char*, 8> kKindNames{
    "FT_Base",      "FT_Format", "FT_Concatenation", "FT_FormattedString",
    "FT_Condition", "FT_Date",   "FT_Time",          "FT_Field",
};
static_assert(kKindNames.size() == static_cast<std::size_t>(FormatBase::Kind::FT_Field) + 1);

}  // namespace

const char* FormatBase::getKindName(Kind kind) {
  const auto index = static_cast<std::size_t>(kind);
  return index < kKindNames.size() ? kKindNames[index] : "(unknown)";
}

void FormatBase::indent(std::string& text, unsigned level) {
  text.append(std::size_t{3} * level, ' ');
}

void FormatBase::dumpKind(std::string& text, unsigned level) const {
  indent(text, level);
  text += std::string("[") + getKindName(_kind) + "]\n";
}

void FormatBase::dumpChild(std::string& text, unsigned level, std::size_t position,
                           const FormatBase* child) {
  indent(text, level);
  text += "[" + std::to_string(position) + "]";
  dumpBehind(text, level, child);
}

void FormatBase::dumpBehind(std::string& text, unsigned level, const FormatBase* node) {
  text += node == nullptr ? " (null)\n" : "\n";
  if (node != nullptr) node->dump(text, level + 1);
}

}  // namespace zavri::korvat::format
