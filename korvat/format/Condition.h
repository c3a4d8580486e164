#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "korvat/format/FormatBase.h"

namespace zavri::korvat::format {

// One of two formats, chosen by the number in a member: ((units == 0) ? ("%d", a) : ("%d", b)).
class KORVAT_API Condition : public FormatBase {
 public:
  // Callers store the numbers.
  enum class Operator : std::int32_t { Equal = 0, NotEqual = 1 };

  Condition() : FormatBase(Kind::FT_Condition) {}

  void dump(std::string& text, unsigned level) const override;

  // The member is compared with `value`; an enumeration by the number of its enumerator.
  void setTest(const std::string& fieldName, Operator comparison, std::int32_t value);
  const std::string& getFieldName() const { return _fieldName; }
  Operator getOperator() const { return _operator; }
  std::int32_t getValue() const { return _value; }

  void setThen(std::unique_ptr<FormatBase> node) { _then = std::move(node); }
  void setElse(std::unique_ptr<FormatBase> node) { _else = std::move(node); }
  const FormatBase* getThen() const { return _then.get(); }
  const FormatBase* getElse() const { return _else.get(); }

 private:
  std::string _fieldName;
  Operator _operator = Operator::NotEqual;
  std::int32_t _value = 0;
  std::unique_ptr<FormatBase> _then;
  std::unique_ptr<FormatBase> _else;
};

}  // namespace zavri::korvat::format
