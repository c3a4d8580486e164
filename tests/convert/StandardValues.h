#pragma once

#include <ostream>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "korvat/base/BinaryUtils.h"
#include "korvat/base/Value.h"
#include "korvat/convert/JsonConverter.h"
#include "korvat/types/ResourceFileSet.h"
#include "korvat/types/TypeManager.h"
#include "korvat/types/VarType.h"
#include "tests/LogCapture.h"
#include "tests/convert/Encoding.h"
#include "tests/convert/TypeXml.h"

// The types of the catalogue that comes with the library, and rows of their raw values with the
// JSON that the definitions demand.
namespace zavri::test {

// --- The types ---

// A manager that refuses what is outside of a member's limits instead of cutting it.
inline korvat::TypeManager makeStandardTypes() {
  korvat::TypeManager manager("drv");
  manager.setBaseDir(std::string(KORVAT_SOURCE_DIR) + "/res/korvat");
  manager.setAllowCuttingToMinMax(false);
  return manager;
}

inline std::vector<const korvat::VarType*> findStandardTypes(korvat::TypeManager& manager,
                                                             korvat::ResourceType kind) {
  std::vector<const korvat::VarType*> types;
  const korvat::ResourceGroup* group =
      manager.getResourceFileSet(korvat::TypeId::StdPrefix).getGroup(kind, true, &manager);
  if (group == nullptr) return types;
  for (const auto& entry : group->getTypesByName()) {
    if (const auto* type = dynamic_cast<const korvat::VarType*>(entry.second.get())) {
      types.push_back(type);
    }
  }
  return types;
}

// Those that have a layout; a property may inherit that of the variable it applies to.
inline std::vector<const korvat::VarType*> findStandardLayouts(korvat::TypeManager& manager) {
  std::vector<const korvat::VarType*> layouts;
  for (const auto kind : {korvat::ResourceType::Nv, korvat::ResourceType::Cp}) {
    for (const korvat::VarType* type : findStandardTypes(manager, kind)) {
      if (type->getMember() != nullptr) layouts.push_back(type);
    }
  }
  return layouts;
}

// --- Rows ---

struct ValueRow {
  std::string name;
  std::string type;  // with its four letters
  std::string raw;   // what is left out at the end is zeros
  std::string json;
  std::string given = {};  // to encode, when it is not `json`: one alternative of a union alone
};

inline void PrintTo(const ValueRow& row, std::ostream* out) {
  *out << row.type << " " << row.raw;
}

inline std::string nameOfRow(const testing::TestParamInfo<ValueRow>& info) {
  return info.param.name;
}

inline korvat::TypeId typeIdOf(const korvat::TypeManager& manager, const ValueRow& row) {
  return manager.toTypeId(korvat::TypeId::StdPrefix + "/" + row.type);
}

// Compact JSON of a row's raw value, or what went wrong.
inline std::string decode(korvat::TypeManager& manager, const ValueRow& row) {
  const LogCapture log(base::Logger::Warning);
  json::Value value;
  if (!manager.rawToJson(typeIdOf(manager, row), bytesOf(row.raw), value)) {
    return "failed: " + value.stringify(0);
  }
  return log.lines().empty() ? value.stringify(0) : "warning: " + log.lines()[0].text;
}

// Hexadecimal text of what a row's JSON is encoded to, or the first thing that is wrong with it.
inline std::string encode(korvat::TypeManager& manager, const ValueRow& row) {
  const LogCapture quiet(base::Logger::Error);
  const korvat::VarType* type = manager.getVarType(typeIdOf(manager, row));
  if (type == nullptr) return "no such type";
  korvat::JsonConverter converter(&manager, *type, base::Endianess::Big, true);
  base::Buffer raw;
  const bool isDone = converter.jsonToRaw(parsed(row.given.empty() ? row.json : row.given), raw);
  const Encoded encoded = describe(isDone, raw, converter);
  return encoded.problems.empty() ? encoded.raw : "refused: " + encoded.problems.front();
}

// Hexadecimal text of a row's raw value with the zeros that are left out.
inline std::string wholeRaw(korvat::TypeManager& manager, const ValueRow& row) {
  const korvat::VarType* type = manager.getVarType(typeIdOf(manager, row));
  unsigned byteCount = 0;
  if (type == nullptr || !type->getMaxSize(&manager, byteCount)) return "no such layout";
  base::Buffer raw = bytesOf(row.raw);
  EXPECT_LE(raw.getSize(), byteCount) << row.name;
  raw.setSize(byteCount);
  return util::BinaryUtils::toString(raw);
}

// The standard types of which the rows of ValueTableTest.cpp convert values both ways.
std::set<std::string> typesOfValueTable();

}  // namespace zavri::test
