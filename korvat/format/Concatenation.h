#pragma once

#include <memory>
#include <vector>

#include "korvat/format/FormatBase.h"

namespace zavri::korvat::format {

// Parts shown one behind the other: text(("%d ", day), time(hour, minute)).
class KORVAT_API Concatenation : public FormatBase {
 public:
  Concatenation() : FormatBase(Kind::FT_Concatenation) {}

  void dump(std::string& text, unsigned level) const override;

  void add(std::unique_ptr<FormatBase> part) { _parts.push_back(std::move(part)); }
  const std::vector<std::unique_ptr<FormatBase>>& getParts() const { return _parts; }

 private:
  std::vector<std::unique_ptr<FormatBase>> _parts;
};

}  // namespace zavri::korvat::format
