#pragma once

#include "korvat/format/ArgumentExpression.h"

namespace zavri::korvat::format {

// A time of day or a duration: time(hour, minute, second, millisecond). Parts may be missing at
// the end.
class KORVAT_API Time : public ArgumentExpression {
 public:
  Time() : ArgumentExpression(Kind::FT_Time) {}

  // "hour", "minute", "second", "millisecond".
  const char* getPartName(std::size_t position) const override;
};

}  // namespace zavri::korvat::format
