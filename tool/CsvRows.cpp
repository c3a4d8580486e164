#include "tool/CsvRows.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "tool/Csv.h"
#include "tool/CsvMembers.h"

namespace zavri::korvat::tool {

namespace {

// Errors that wait for the first record to tell the columns.
constexpr std::size_t kMostWaiting = 1000;

bool isIn(const std::vector<std::string>& names, const std::string& name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// An enumeration as EnumForm::Both shows it.
bool isNameAndNumber(const json::Value& value) {
  const json::Value::PropertyMap& properties = value.getPropertyMap();
  const json::Value* name = properties.find("name");
  const json::Value* number = properties.find("number");
  return properties.size() == 2 && name != nullptr && (name->isNull() || name->isString()) &&
         number != nullptr && number->isInteger();
}

}  // namespace

CsvRows::CsvRows(std::vector<ShapeColumn> columns, const std::string& resultName,
                 std::vector<std::string> replaced)
    : _columns(std::move(columns)), _resultName(resultName), _replaced(std::move(replaced)) {}

void CsvRows::setInput(const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    if (!isIn(_replaced, name)) _input.push_back(name);
  }
  _isInputKnown = true;
}

std::string CsvRows::add(const json::Value& record) {
  if (!_isInputKnown) {
    const bool isError = record.getSize() == 1 && record.getPropertyMap().find("error") != nullptr;
    if (isError && _waiting.size() < kMostWaiting) {
      _waiting.push_back(record);
      return "";
    }
    std::vector<std::string> names;
    for (const auto& [name, value] : record.getPropertyMap()) names.push_back(name);
    setInput(names);
  }
  std::string text = finish();
  addRow(record, text);
  return text;
}

std::string CsvRows::finish() {
  std::string text;
  if (!_isHeaderDone) addHeader(text);
  _isHeaderDone = true;
  for (const json::Value& record : _waiting) addRow(record, text);
  _waiting.clear();
  return text;
}

void CsvRows::addHeader(std::string& text) const {
  const std::unordered_set<std::string> taken(_input.begin(), _input.end());
  bool isFirst = true;
  for (const std::string& name : _input) {
    addCsvField(text, isFirst, name);
    isFirst = false;
  }
  for (const ShapeColumn& column : _columns) {
    const bool isMember = !_resultName.empty();
    const bool isTold = taken.count(column.name) == 0 && !(isMember && isRecordName(column.name));
    addCsvField(text, isFirst, (isTold ? "" : kMemberPrefix) + column.name);
    isFirst = false;
  }
  addCsvField(text, isFirst, "error");
  text += '\n';
}

const json::Value* CsvRows::findCell(const json::Value& record, const ShapeColumn& column) const {
  if (column.cell == ShapeColumn::Cell::RawNumber) {
    const std::string leaf = column.name.substr(0, column.name.size() - 4);  // without ".raw"
    return record["rawNumbers"].getPropertyMap().find(leaf);
  }
  const json::Value& result = _resultName.empty() ? record : record[_resultName];
  const json::Value* member = column.path.find(result);
  if (member == nullptr || column.cell == ShapeColumn::Cell::Member) return member;
  const bool isEnum = isNameAndNumber(*member);
  if (column.cell == ShapeColumn::Cell::EnumNumber) return isEnum ? &(*member)["number"] : nullptr;
  return isEnum ? &(*member)["name"] : member;
}

void CsvRows::addRow(const json::Value& record, std::string& text) const {
  const json::Value& error = record["error"];
  bool isFirst = true;
  for (const std::string& name : _input) {
    addCsvField(text, isFirst, toCsvText(record[name]));
    isFirst = false;
  }
  for (const ShapeColumn& column : _columns) {
    const json::Value* cell = error.isNull() ? findCell(record, column) : nullptr;
    addCsvField(text, isFirst, cell == nullptr ? "" : toCsvText(*cell));
    isFirst = false;
  }
  addCsvField(text, isFirst, toCsvText(error));
  text += '\n';
}

}  // namespace zavri::korvat::tool
