#pragma once

#include <memory>
#include <string>
#include <vector>

#include "korvat/format/Field.h"

namespace zavri::korvat::format {

// A printf-style text with the members it shows: ("%d/%d", multiplier, divisor). Without members, a
// single conversion shows the value itself. Besides C's conversions there is %m, the name of an
// enumerator.
class KORVAT_API FormattedString : public FormatBase {
 public:
  // `formatText` stands without its quotes; escapes are as they were written.
  explicit FormattedString(const std::string& formatText)
      : FormatBase(Kind::FT_FormattedString), _formatText(formatText) {}

  void dump(std::string& text, unsigned level) const override;

  void add(std::unique_ptr<Field> field) { _fields.push_back(std::move(field)); }
  const std::string& getFormatText() const { return _formatText; }
  const std::vector<std::unique_ptr<Field>>& getFields() const { return _fields; }

  // Letters of the conversions in `formatText`, in their order. Only a letter right after "%"
  // counts: "%d" gives 'd', "%5d" and "%%" give nothing. A character after "\" is passed over. The
  // scan ends at the first NUL.
  static std::vector<char> getFormatSpecArray(const std::string& formatText);

  // Hands the conversions to the fields, in order. False, with a warning, when their numbers
  // differ, save for one conversion without a field; what is too many stays without a partner.
  // `input` is the whole expression, for the message.
  bool analyzeFormatSpecs(const std::string& input);

 private:
  std::string _formatText;
  std::vector<std::unique_ptr<Field>> _fields;
};

}  // namespace zavri::korvat::format
