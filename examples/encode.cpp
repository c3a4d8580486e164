// Encodes JSON texts and prints the raw values, or why there is none.

#include <korvat/base/BinaryUtils.h>
#include <korvat/base/Buffer.h>
#include <korvat/base/Logger.h>
#include <korvat/base/Value.h>
#include <korvat/convert/JsonConverter.h>
#include <korvat/types/TypeManager.h>
#include <korvat/types/VarType.h>

#include <cstdio>
#include <string>

using namespace zavri;

void encode(korvat::TypeManager& manager, const korvat::VarType& type, const std::string& text) {
  std::printf("%s\n", text.c_str());

  json::Value value;
  std::string error;
  if (!json::Value::parse(text, value, error)) {
    std::printf("  no JSON: %s\n", error.c_str());
    return;
  }

  base::Buffer raw;
  korvat::JsonConverter converter(&manager, type, base::Endianess::Big, false);
  if (converter.jsonToRaw(value, raw)) {
    std::printf("  raw value: %s\n", util::BinaryUtils::toString(raw).c_str());
  }
  for (const korvat::JsonConverter::Problem& problem : converter.getProblems()) {
    std::printf("  problem: %s: %s\n", problem.path.c_str(), problem.text.c_str());
  }
}

int main() {
  base::_logLevel = base::Logger::Silent;  // the problems say it all

  korvat::TypeManager manager("example");
  manager.setBaseDir(CATALOG_DIR);
  const korvat::VarType* type = manager.getVarType("0000000000000000-0/SNVT_setting");
  if (type == nullptr) return 1;
  manager.setAllowCuttingToMinMax(false);  // 120 percent would become 100

  encode(manager, *type, R"({"function":"SET_ON","setting":37.5,"rotation":-90.0})");
  encode(manager, *type, R"({"function":"SET_ON","setting":120.0,"rotation":0.0})");
  encode(manager, *type, R"({"function":"SET_OFF","setting":50.0})");
  encode(manager, *type, R"({"function":"SET_FAST","setting":50.0,"rotation":0.0})");
  encode(manager, *type, R"({"function")");
  return 0;
}
