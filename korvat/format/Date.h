#pragma once

#include "korvat/format/ArgumentExpression.h"

namespace zavri::korvat::format {

// A calendar date: date(year, month, day). Parts may be missing at the end.
class KORVAT_API Date : public ArgumentExpression {
 public:
  Date() : ArgumentExpression(Kind::FT_Date) {}

  // "year", "month", "day".
  const char* getPartName(std::size_t position) const override;
};

}  // namespace zavri::korvat::format
