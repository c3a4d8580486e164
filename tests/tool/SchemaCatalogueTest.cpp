#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "korvat/base/Value.h"
#include "tests/RunTool.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/StandardValues.h"

// The schemas of all types of the catalogue: another program's validator takes by them what encode
// takes, and refuses what it refuses.
namespace zavri::test {

namespace {

using Words = std::vector<std::string>;
using Values = std::vector<json::Value>;

Values parseLines(const std::string& text) {
  Values values;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) values.push_back(parsed(line));
  return values;
}

json::Value numberOf(double number) {
  json::Value value;
  value.setValue(number);
  return value;
}

// --- Values by a schema ---

enum class Edge { Lowest, Highest };

// A value at the limits of all its numbers. Of a union, the first alternative.
json::Value makeValue(const json::Value& schema, Edge edge);

json::Value makeNumber(const json::Value& schema, Edge edge) {
  const json::Value& limit = schema[edge == Edge::Lowest ? "minimum" : "maximum"];
  return limit.isNull() ? numberOf(edge == Edge::Lowest ? -1e300 : 1e300) : limit;
}

json::Value makeObject(const json::Value& schema, Edge edge) {
  json::Value value;
  value.switchType(json::JsonType::Object);
  const json::Value& alternative = schema["anyOf"][0];
  const json::Value& members =
      alternative.isNull() ? schema["properties"] : alternative["properties"];
  for (const auto& [name, member] : members.getPropertyMap()) value[name] = makeValue(member, edge);
  // Inside another union, an alternative has no limits of its own.
  if (members.isNull()) {
    const std::string name = alternative["required"][0].asString();
    value[name] = makeValue(schema["properties"][name], edge);
  }
  return value;
}

json::Value makeText(const json::Value& schema, Edge edge) {
  if (!schema["pattern"].isNull()) return edge == Edge::Lowest ? "-128" : "127";
  const auto length = static_cast<std::size_t>(schema["maxLength"].asInt32());
  return edge == Edge::Lowest ? "" : std::string(length, 'x');
}

json::Value makeValue(const json::Value& schema, Edge edge) {
  const std::string type = schema["type"].asString();
  if (type == "object") return makeObject(schema, edge);
  if (!schema["anyOf"].isNull()) return makeValue(schema["anyOf"][0], edge);
  const json::Value& names = schema["enum"];
  if (!names.isNull()) return edge == Edge::Lowest ? names[0] : names[names.getSize() - 1];
  if (type == "string") return makeText(schema, edge);
  if (type != "array") return makeNumber(schema, edge);
  json::Value value;
  value.switchType(json::JsonType::Array);
  const auto size = static_cast<unsigned>(schema["maxItems"].asInt32());
  for (unsigned i = 0; i < size; ++i) value[i] = makeValue(schema["items"], edge);
  return value;
}

// --- Values that a schema must refuse ---

// The value in all the ways in which one thing about it is wrong: another kind, a member that is
// missing or not known, an element too many or too few, a number beyond its limits.
Values spoil(const json::Value& schema, const json::Value& value);

Values spoilObject(const json::Value& schema, const json::Value& value) {
  json::Value extended = value;
  extended["no such member"] = 1;
  Values spoilt{"text", extended};
  const auto alternatives = schema["anyOf"][0]["properties"].getPropertyMap();
  for (const auto& [name, member] : value.getPropertyMap()) {
    json::Value smaller;
    smaller.switchType(json::JsonType::Object);
    for (const auto& [other, kept] : value.getPropertyMap()) {
      if (other != name) smaller[other] = kept;
    }
    spoilt.push_back(smaller);
    const json::Value* part = alternatives.find(name);
    for (const json::Value& wrong : spoil(part ? *part : schema["properties"][name], member)) {
      spoilt.push_back(value);
      spoilt.back()[name] = wrong;
    }
  }
  return spoilt;
}

Values spoilArray(const json::Value& schema, const json::Value& value) {
  const unsigned size = value.getSize();
  json::Value longer = value;
  longer[size] = value[size - 1];
  json::Value shorter;
  shorter.switchType(json::JsonType::Array);
  for (unsigned i = 0; i + 1 < size; ++i) shorter[i] = value[i];
  Values spoilt{"text", longer, shorter};
  for (const json::Value& wrong : spoil(schema["items"], value[size - 1])) {
    spoilt.push_back(value);
    spoilt.back()[size - 1] = wrong;
  }
  return spoilt;
}

Values spoilNumber(const json::Value& schema) {
  Values spoilt{"text", json::Value()};
  if (schema["maximum"].isNull() || schema["minimum"].isNull()) return spoilt;
  // Far enough to reach over an invalid marker beside the limits.
  const double low = schema["minimum"].asDouble();
  const double high = schema["maximum"].asDouble();
  spoilt.push_back(numberOf(low - 2 * (high - low) - 3));
  spoilt.push_back(numberOf(high + 2 * (high - low) + 3));
  return spoilt;
}

Values spoil(const json::Value& schema, const json::Value& value) {
  if (value.isObject()) return spoilObject(schema, value);
  if (value.isArray()) return spoilArray(schema, value);
  if (value.isNumber()) return spoilNumber(schema["anyOf"].isNull() ? schema : schema["anyOf"][0]);
  json::Value object;
  object["a"] = 1;
  const json::Value& text = schema["anyOf"].isNull() ? schema : schema["anyOf"][0];
  if (text["maxLength"].isNull()) return {json::Value(), object, "no such name", "128", "-129"};
  const auto length = static_cast<std::size_t>(text["maxLength"].asInt32());
  return {json::Value(), object, std::string(length + 1, 'x')};
}

bool hasUnion(const json::Value& schema) {
  return schema.stringify().find(R"("anyOf":[{"required":)") != std::string::npos;
}

// Whether the schema can tell that encode refuses the value. It cannot tell which bytes a broken
// text stands for, nor, of a union with all its alternatives, which of them encode goes by.
bool isJudged(const json::Value& schema, const json::Value& value) {
  const std::string kBroken = "\uFFFD";
  return !hasUnion(schema) && value.stringify().find(kBroken) == std::string::npos;
}

// --- The test ---

class SchemaCatalogue : public testing::Test {
 protected:
  struct Row {
    std::string type;
    json::Value schema;
    Values values;
    json::Value taken;
    json::Value refused;
  };

  SchemaCatalogue() {
    Words words{"schema"};
    for (const auto* type : findStandardLayouts(_manager)) {
      words.push_back(type->getTypeId().toLonFormatId());
    }
    const ToolResult result = runTool(words);
    EXPECT_EQ(result.errors, "");
    for (const json::Value& schema : parseLines(result.output)) {
      _rows.push_back({words[_rows.size() + 1], schema, {}, {}, {}});
      _rows.back().taken.switchType(json::JsonType::Array);
      _rows.back().refused.switchType(json::JsonType::Array);
    }
    EXPECT_EQ(_rows.size() + 1, words.size());
  }

  // The values at the edges, and what decode makes of their bytes with one of them changed at a
  // time.
  void addValues() {
    for (Row& row : _rows) {
      for (const Edge edge : {Edge::Lowest, Edge::Highest}) {
        row.values.push_back(makeValue(row.schema, edge));
      }
    }
    std::string records;
    for (const auto& [row, raw] : encodeValues()) {
      ASSERT_NE(raw, "") << row->type << " does not take a value at its limits";
      for (const std::string& changed : changeBytes(raw)) {
        records += R"({"type":")" + row->type + R"(","raw":")" + changed + "\"}\n";
      }
    }
    std::map<std::string, Row*> rowOf;
    for (Row& row : _rows) rowOf[row.type] = &row;
    const ToolResult result = runTool({"decode", "--stream"}, records);
    EXPECT_EQ(result.errors, "");
    for (const json::Value& record : parseLines(result.output)) {
      rowOf[record["type"].asString()]->values.push_back(record["value"]);
    }
  }

  // All values with their raw ones, empty for one that encode refuses.
  std::vector<std::pair<Row*, std::string>> encodeValues() {
    std::string records;
    std::vector<std::pair<Row*, std::string>> raws;
    for (Row& row : _rows) {
      for (const json::Value& value : row.values) {
        records += R"({"type":")" + row.type + R"(","value":)" + value.stringify() + "}\n";
        raws.emplace_back(&row, "");
      }
    }
    const Values answers = parseLines(runTool({"encode", "--stream", "--no-cut"}, records).output);
    EXPECT_EQ(answers.size(), raws.size());
    for (std::size_t i = 0; i < answers.size() && i < raws.size(); ++i) {
      raws[i].second = answers[i]["raw"].isString() ? answers[i]["raw"].asString() : "";
    }
    return raws;
  }

  static Words changeBytes(const std::string& raw) {
    Words changed{raw, std::string(raw.size(), '0'), std::string(raw.size(), 'F')};
    for (std::size_t i = 0; i < raw.size(); i += 2) {
      // Beyond the first bytes of long texts and arrays there is nothing new.
      if (i > 60 && i + 8 < raw.size()) continue;
      for (const char* byte : {"FF", "80"}) {
        changed.push_back(raw);
        changed.back().replace(i, 2, byte);
      }
    }
    return changed;
  }

  // What the validator finds.
  std::string compare() {
    const std::string path = _folder.path() + "/schemas";
    std::ofstream file(path);
    for (const Row& row : _rows) {
      json::Value line;
      line["type"] = row.type;
      line["schema"] = row.schema;
      line["taken"] = row.taken;
      line["refused"] = row.refused;
      file << line.stringify() << "\n";
    }
    file.close();
    const std::string script = std::string(KORVAT_SOURCE_DIR) + "/tests/tool/checkSchemas.py";
    std::FILE* pipe = popen(("python3 " + script + " " + path + " 2>&1").c_str(), "r");
    if (pipe == nullptr) return "cannot start python3";
    std::string text;
    for (int c = 0; (c = std::fgetc(pipe)) != EOF;) text += static_cast<char>(c);
    return pclose(pipe) == 0 ? text : "failed: " + text;
  }

  korvat::TypeManager _manager = makeStandardTypes();
  TempCatalogue _folder;
  std::vector<Row> _rows;
};

TEST_F(SchemaCatalogue, TakesWhatEncodeTakes) {
  addValues();
  std::size_t takenCount = 0;
  std::size_t refusedCount = 0;
  const auto raws = encodeValues();
  std::map<const Row*, std::size_t> next;
  for (const auto& [row, raw] : raws) {
    const json::Value& value = row->values[next[row]++];
    if (raw.empty() && !isJudged(row->schema, value)) continue;
    json::Value& list = raw.empty() ? row->refused : row->taken;
    list[list.getSize()] = value;
    ++(raw.empty() ? refusedCount : takenCount);
  }
  EXPECT_EQ(compare(), std::to_string(_rows.size()) + " types, " +
                           std::to_string(takenCount + refusedCount) + " values\n");
  // Of a type at least its lowest and its highest value.
  EXPECT_GE(takenCount, 2 * _rows.size());
  EXPECT_GE(refusedCount, _rows.size());
}

TEST_F(SchemaCatalogue, RefusesWhatIsWrong) {
  std::size_t count = 0;
  for (Row& row : _rows) {
    for (const json::Value& wrong : spoil(row.schema, makeValue(row.schema, Edge::Lowest))) {
      row.refused[row.refused.getSize()] = wrong;
      row.values.push_back(wrong);
      ++count;
    }
  }
  EXPECT_EQ(compare(),
            std::to_string(_rows.size()) + " types, " + std::to_string(count) + " values\n");
  EXPECT_GE(count, 4 * _rows.size());
  // Encode takes a union without any alternative for zeros, which decode never shows.
  for (const auto& [row, raw] : encodeValues()) {
    EXPECT_TRUE(raw.empty() || hasUnion(row->schema)) << row->type << ": " << raw;
  }
}

}  // namespace

}  // namespace zavri::test
