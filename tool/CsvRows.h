#pragma once

#include <string>
#include <vector>

#include "korvat/base/Value.h"
#include "tool/ValueShape.h"

namespace zavri::korvat::tool {

// Converted records as rows of comma separated values, lines that end in a line feed. The columns
// are those of the input, the results and "error". They are fixed by the header: where it is not
// given, by the properties of the first record that is more than an error; further properties of
// later records are left out.
class CsvRows {
 public:
  // `columns` are found in the property `resultName` of a record, or, for an empty name, in the
  // record itself. `replaced` are the properties that the conversion gives a record: they are no
  // columns of the input.
  CsvRows(std::vector<ShapeColumn> columns, const std::string& resultName,
          std::vector<std::string> replaced);

  // The columns of the input.
  void setInput(const std::vector<std::string>& names);

  // The rows that are ready with this record, with the header in front of the first one.
  std::string add(const json::Value& record);
  // What is still missing.
  std::string finish();

 private:
  void addHeader(std::string& text) const;
  void addRow(const json::Value& record, std::string& text) const;
  const json::Value* findCell(const json::Value& record, const ShapeColumn& column) const;

  std::vector<ShapeColumn> _columns;
  std::string _resultName;
  std::vector<std::string> _replaced;
  std::vector<std::string> _input;
  bool _isInputKnown = false;
  bool _isHeaderDone = false;
  std::vector<json::Value> _waiting;  // for a record that tells the columns
};

}  // namespace zavri::korvat::tool
