#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "korvat/base/BinaryUtils.h"
#include "korvat/convert/JsonConverter.h"
#include "korvat/types/TypeManager.h"
#include "korvat/types/VarType.h"
#include "tests/convert/TypeXml.h"

// Short ways to turn JSON texts into raw values of SNVT_x, the type under test.
namespace zavri::test {

inline json::Value parsed(const std::string& text) {
  json::Value value;
  std::string error;
  EXPECT_TRUE(json::Value::parse(text, value, error)) << text << ": " << error;
  return value;
}

inline const korvat::VarType& typeOf(OwnTypes& types) {
  const auto* type = types.manager().getVarType(korvat::TypeId(korvat::ResourceType::Nv, "", "_x"));
  if (type == nullptr) throw std::runtime_error("no SNVT_x");
  return *type;
}

struct Encoded {
  std::string raw;                    // hexadecimal text, behind "failed: " when it was refused
  std::vector<std::string> problems;  // "path: text"
};

inline Encoded describe(bool isDone, const base::Buffer& raw,
                        const korvat::JsonConverter& converter) {
  Encoded encoded{(isDone ? "" : "failed: ") + util::BinaryUtils::toString(raw), {}};
  for (const auto& problem : converter.getProblems()) {
    encoded.problems.push_back(problem.path + ": " + problem.text);
  }
  return encoded;
}

// Converts into a buffer that holds the bytes `before`.
inline Encoded encodeOver(OwnTypes& types, const std::string& before, const std::string& jsonText,
                          base::Endianess order = base::Endianess::Big,
                          bool allowSeveralUnionMembers = false) {
  korvat::JsonConverter converter(&types.manager(), typeOf(types), order, allowSeveralUnionMembers);
  base::Buffer raw = bytesOf(before);
  const bool isDone = converter.jsonToRaw(parsed(jsonText), raw);
  return describe(isDone, raw, converter);
}

inline std::string encode(OwnTypes& types, const std::string& jsonText,
                          base::Endianess order = base::Endianess::Big) {
  return encodeOver(types, "", jsonText, order).raw;
}

inline std::vector<std::string> problemsOf(OwnTypes& types, const std::string& jsonText) {
  return encodeOver(types, "", jsonText).problems;
}

inline Encoded patchOver(OwnTypes& types, const std::string& before, const std::string& jsonText,
                         base::Endianess order = base::Endianess::Big) {
  korvat::JsonConverter converter(&types.manager(), typeOf(types), order, false);
  base::Buffer raw = bytesOf(before);
  const bool isDone = converter.patchRaw(parsed(jsonText), raw);
  return describe(isDone, raw, converter);
}

inline std::string patch(OwnTypes& types, const std::string& before, const std::string& jsonText) {
  return patchOver(types, before, jsonText).raw;
}

}  // namespace zavri::test
