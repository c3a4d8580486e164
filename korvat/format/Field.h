#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "korvat/format/FormatBase.h"

namespace zavri::korvat::format {

// A member that a formatted string shows.
class KORVAT_API Field : public FormatBase {
 public:
  // Shown in another unit: factor * physical value + offset. The unit's name is the text `index` of
  // a language file; `mode` is the scope of the set that the file belongs to.
  struct NumericSpec {
    double factor = 1;
    double offset = 0;
    std::optional<std::int32_t> mode;
    std::optional<std::int32_t> index;
  };

  // `fieldName` is a member path, and may carry indices ("domain_id[3]"); empty for the value
  // itself.
  explicit Field(const std::string& fieldName,
                 const std::optional<NumericSpec>& numericSpec = std::nullopt)
      : FormatBase(Kind::FT_Field), _fieldName(fieldName), _numericSpec(numericSpec) {}

  void dump(std::string& text, unsigned level) const override;

  const std::string& getFieldName() const { return _fieldName; }
  const std::optional<NumericSpec>& getNumericSpec() const { return _numericSpec; }

  // Letter of the printf conversion that shows the member; 0 when the format text has none for it.
  char getConversion() const { return _conversion; }
  void setConversion(char letter) { _conversion = letter; }

 private:
  std::string _fieldName;
  std::optional<NumericSpec> _numericSpec;
  char _conversion = 0;
};

}  // namespace zavri::korvat::format
