#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "korvat/base/Value.h"
#include "tests/RunTool.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"

// schema TYPE: the parts of the schema that each kind of member makes.
namespace zavri::test {

namespace {

using korvat::TypeId;
using Words = std::vector<std::string>;

const auto kNameOf = [](const auto& info) { return info.param.name; };

struct SchemaCase {
  std::string name;
  std::string root;    // the layout of SNVT_x
  std::string schema;  // without what every schema begins with
  Words options = {};
};

std::string headOf(const std::string& type, int index) {
  return R"({"$schema":"https://json-schema.org/draft/2020-12/schema","title":")" + type +
         R"(","description":"Values of the nv type )" + std::to_string(index) +
         R"( of the set 0000000000000000-0",)";
}

std::string limited(const std::string& fields, const std::string& low, const std::string& high) {
  return fields + tag("min", low) + tag("max", high);
}

class SchemaOfOurOwn : public testing::TestWithParam<SchemaCase> {};

TEST_P(SchemaOfOurOwn, TellsWhatTheTypeTakes) {
  TempCatalogue files;
  files.write(TypeId::StdPrefix, "enums", sharedEnums());
  files.writeRaw(TypeId::StdPrefix, "nvs",
                 "<ldrf><strings><string id='deg'>degrees</string></strings><items>" + sharedNvs() +
                     nvt("_x", GetParam().root) + "</items></ldrf>");
  Words words{"--catalog", files.path(), "schema", "SNVT_x"};
  words.insert(words.end(), GetParam().options.begin(), GetParam().options.end());

  const ToolResult result = runTool(words);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  json::Value schema;
  std::string error;
  ASSERT_TRUE(json::Value::parse(result.output, schema, error)) << error;
  EXPECT_EQ(schema.stringify(), headOf("SNVT_x", 1) + GetParam().schema.substr(1));
}

const std::string kByte = R"({"type":"integer","minimum":0,"maximum":255})";
const std::string kWord = R"({"type":"integer","minimum":0,"maximum":65535})";
const std::string kPair =
    R"("type":"object","properties":{"a":)" + kByte +
    R"(,"b":{"type":"integer","minimum":-128,"maximum":127}},"additionalProperties":false,)"
    R"("required":["a","b"])";
// The numbers of a signed byte.
const std::string kNumberText =
    R"({"type":"string","pattern":"^(-128|-?(12[0-7]|1[01][0-9]|[1-9]?[0-9]))$",)"
    R"("title":"number without a name"})";
const std::string kPower = R"("anyOf":[{"enum":["PWR_NUL","PWR_OFF","PWR_ON"]},)" + kNumberText +
                           R"(],"title":"power_t"})";
// A word of hundredths up to 655.34 with the invalid marker 655.35.
const std::string kMarkedWord =
    scalar("unsigned long", scaling(1, -2, 0) + tag("max", "65534") + invalid("65535"));
const std::string kMarkedSchema = R"({"anyOf":[{"type":"number","minimum":0.0,"maximum":655.34},)"
                                  R"({"const":655.35,"title":"invalid"})";
// A number, a text, an enumeration and a reference to a number.
const std::string kMixed = structure({{"n", scalar("unsigned short")},
                                      {"t", scalar("unsigned char"), arraySize(2)},
                                      {"e", enumeration("power_t")},
                                      {"r", reference("SNVT_word")}});
const std::string kMixedMembers =
    R"({"type":"object","properties":{"n":)" + kByte +
    R"(,"t":{"type":"string","maxLength":2},"e":{"title":"power_t","anyOf":)"
    R"([{"enum":["PWR_NUL","PWR_OFF","PWR_ON"]},)" +
    kNumberText + R"(]},"r":{"type":"integer","minimum":0,"maximum":65535,"title":"SNVT_word"}})";
const std::string kSmallUnion = unionOf(
    {{"small", scalar("unsigned short", tag("max", "9"))}, {"word", scalar("unsigned long")}});

const std::vector<SchemaCase> kCases = {
    // --- Numbers ---
    {"Byte", scalar("unsigned short"), kByte},
    {"SignedWord", scalar("signed long"), R"({"type":"integer","minimum":-32768,"maximum":32767})"},
    {"Quad", scalar("unsigned quad"), R"({"type":"integer","minimum":0,"maximum":4294967295})"},
    {"Limits", scalar("unsigned short", limited("", "10", "200")),
     R"({"type":"integer","minimum":10,"maximum":200})"},
    {"LimitsBeyondTheField", scalar("unsigned short", limited("", "-5", "300")), kByte},
    // 200 * 0.5
    {"Scaling", scalar("unsigned short", limited(scaling(5, -1, 0), "0", "200")),
     R"({"type":"number","minimum":0.0,"maximum":100.0})"},
    // (0 - 2740) / 10 and (65535 - 2740) / 10
    {"Offset", scalar("unsigned long", scaling(1, -1, -2740)),
     R"({"type":"number","minimum":-274.0,"maximum":6279.5})"},
    // -2 * (10 + 3) and -2 * (1 + 3)
    {"NegativeFactor", scalar("unsigned short", limited(scaling(-2, 0, 3), "1", "10")),
     R"({"type":"number","minimum":-26.0,"maximum":-8.0})"},
    {"BitField", structure({{"b", bits(0, 3)}, {"s", signedBits(3, 5)}}),
     R"({"type":"object","properties":{"b":{"type":"integer","minimum":0,"maximum":7},)"
     R"("s":{"type":"integer","minimum":-16,"maximum":15}},"additionalProperties":false,)"
     R"("required":["b","s"]})"},
    {"InvalidMarker", kMarkedWord, kMarkedSchema + "]}"},
    {"InvalidKeyword",
     kMarkedWord,
     kMarkedSchema + R"(,{"const":"invalid"}]})",
     {"--invalid-keyword"}},
    {"InvalidKeywordWithoutAMarker", scalar("unsigned short"), kByte, {"--invalid-keyword"}},
    // Of the largest single the shortest decimal text, which lies above it.
    {"Float", floating("float"),
     R"({"type":"number","minimum":-3.4028235e+38,"maximum":3.4028235e+38})"},
    {"FloatWithLimits", floating("float", limited("", "0", "0.1") + invalid("-1")),
     R"({"anyOf":[{"type":"number","minimum":0.0,"maximum":0.1},)"
     R"({"const":-1.0,"title":"invalid"}]})"},
    {"Double", floating("double float"), R"({"type":"number"})"},
    {"DoubleWithAMinimum", floating("double float", tag("min", "-1.5")),
     R"({"type":"number","minimum":-1.5})"},
    {"FloatWithANegativeFactor", floating("double float", limited(scaling(-2, 0, 0), "1", "10")),
     R"({"type":"number","maximum":-2.0,"minimum":-20.0})"},

    // --- Names ---
    {"Enumeration", enumeration("power_t"),
     R"({"anyOf":[{"enum":["PWR_NUL","PWR_OFF","PWR_ON"]},)" + kNumberText + "]}"},
    {"EnumerationInAStructure", structure({{"e", enumeration("power_t")}}),
     R"({"type":"object","properties":{"e":{"title":"power_t","anyOf":)"
     R"([{"enum":["PWR_NUL","PWR_OFF","PWR_ON"]},)" +
         kNumberText + R"(]}},"additionalProperties":false,"required":["e"]})"},
    {"MissingEnumeration", structure({{"e", enumeration("missing_t")}}),
     R"({"type":"object","properties":{"e":{"title":"missing_t","anyOf":[)" + kNumberText +
         R"(]}},"additionalProperties":false,"required":["e"]})"},

    // --- Structures ---
    {"Structure", structure({{"a", scalar("unsigned short")}, {"b", scalar("signed short")}}),
     "{" + kPair + "}"},
    {"Reference", structure({{"p", reference("SNVT_pair")}}),
     R"({"type":"object","properties":{"p":{)" + kPair +
         R"(,"title":"SNVT_pair"}},"additionalProperties":false,"required":["p"]})"},
    {"Unit", structure({{"n", scalar("unsigned short"), "<unit id='deg'/>"}}),
     R"({"type":"object","properties":{"n":{"type":"integer","minimum":0,"maximum":255,)"
     R"("unit":"degrees"}},"additionalProperties":false,"required":["n"]})"},
    {"AllRequired", kMixed,
     kMixedMembers + R"(,"additionalProperties":false,"required":["n","t","e","r"]})"},
    {"AllowMissing",
     kMixed,
     kMixedMembers + R"(,"additionalProperties":false,"required":["e"]})",
     {"--allow-missing"}},
    {"AllowUndefined",
     kMixed,
     kMixedMembers + R"(,"required":["n","t","e","r"]})",
     {"--allow-undefined"}},

    // --- Unions: what does not hold may be out of its limits ---
    {"Union", kSmallUnion,
     R"({"type":"object","properties":{"small":)" + kByte + R"(,"word":)" + kWord +
         R"(},"additionalProperties":false,"anyOf":[{"required":["small"],"properties":)"
         R"({"small":{"type":"integer","minimum":0,"maximum":9}}},)"
         R"({"required":["word"],"properties":{"word":)" +
         kWord + "}}]}"},
    {"UnionHex",
     kSmallUnion,
     R"({"type":"string","pattern":"^([0-9A-Fa-f]{2})*$","minLength":4,"maxLength":4})",
     {"--union-hex"}},

    // --- Arrays ---
    {"Array", scalar("unsigned short", arraySize(3)),
     R"({"type":"array","items":)" + kByte + R"(,"minItems":3,"maxItems":3})"},
    {"ArrayOfStructures",
     structure({{"a", scalar("unsigned short")}, {"b", scalar("signed short")}}, arraySize(2)),
     R"({"type":"array","items":{)" + kPair + R"(},"minItems":2,"maxItems":2})"},
    {"ArrayThatMayBeShort",
     scalar("unsigned short", arraySize(3)),
     R"({"type":"array","items":)" + kByte + R"(,"maxItems":3})",
     {"--allow-missing"}},
    {"DynamicArray",
     structure(
         {{"n", scalar("unsigned short")}, {"d", scalar("unsigned long"), dynamicArray(1, 4)}}),
     R"({"type":"object","properties":{"n":)" + kByte + R"(,"d":{"type":"array","items":)" + kWord +
         R"(,"minItems":1,"maxItems":4}},"additionalProperties":false,"required":["n","d"]})",
     {"--dynamic-arrays"}},
    {"DynamicArrayWithoutTheOption",
     structure(
         {{"n", scalar("unsigned short")}, {"d", scalar("unsigned long"), dynamicArray(1, 4)}}),
     R"({"type":"object","properties":{"n":)" + kByte + R"(,"d":{"type":"array","items":)" + kWord +
         R"(,"minItems":4,"maxItems":4}},"additionalProperties":false,"required":["n","d"]})"},

    // --- Text ---
    {"Text", scalar("unsigned char", arraySize(4)), R"({"type":"string","maxLength":4})"},
    {"OneCharacterIsANumber", scalar("unsigned char"), kByte},
    {"TextBehindCharSet",
     structure({{"char_set", scalar("unsigned short")},
                {"t", scalar("unsigned long"), arraySize(5)},
                {"list", scalar("unsigned long"), arraySize(2)}}),
     R"({"type":"object","properties":{"char_set":)" + kByte +
         R"(,"t":{"type":"string","maxLength":5},"list":{"type":"array","items":)" + kWord +
         R"(,"minItems":2,"maxItems":2}},"additionalProperties":false,)"
         R"("required":["char_set","t","list"]})"},
    // The value of the encoding tells whether the array is text.
    {"TextOfSomeEncoding",
     structure(
         {{"code", enumeration("char_encoding_t")}, {"t", scalar("unsigned long"), arraySize(2)}}),
     R"({"type":"object","properties":{"code":{"title":"char_encoding_t","anyOf":)"
     R"([{"enum":["CE_NUL","CE_8","CE_16","CE_32"]},)" +
         kNumberText +
         R"(]},"t":{"anyOf":[{"type":"string","maxLength":2},{"type":"array","items":)" + kWord +
         R"(,"minItems":2,"maxItems":2}]}},"additionalProperties":false,"required":["code","t"]})"},
};

INSTANTIATE_TEST_SUITE_P(Members, SchemaOfOurOwn, testing::ValuesIn(kCases), kNameOf);

TEST(Schema, IsIndentedAndKnowsTheStandardTypes) {
  const ToolResult result = runTool({"schema", "SNVT_switch"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output, R"({
  "$schema": "https://json-schema.org/draft/2020-12/schema",
  "title": "SNVT_switch",
  "description": "Values of the nv type 95 of the set 0000000000000000-0",
  "type": "object",
  "properties": {
    "value": {
      "type": "number",
      "minimum": 0.0,
      "maximum": 100.0,
      "unit": "percent of full level"
    },
    "state": {
      "anyOf": [
        {
          "type": "integer",
          "minimum": -1,
          "maximum": 1
        },
        {
          "const": -1,
          "title": "invalid"
        }
      ],
      "unit": "state code"
    }
  },
  "additionalProperties": false,
  "required": [
    "value",
    "state"
  ]
}
)");
}

TEST(Schema, HasALineForEachOfSeveralTypes) {
  const ToolResult result = runTool({"schema", "SNVT_count", "SNVT_char_ascii"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, headOf("SNVT_count", 8) +
                               R"("type":"integer","minimum":0,"maximum":65535,"unit":"count"})"
                               "\n" +
                               headOf("SNVT_char_ascii", 7) + kByte.substr(1) + "\n");
}

// --- Usage ---

// Types "_t0" to "_t<levels>": each but the last is a structure of two of the next one.
std::string doubledTypes(int levels) {
  std::string items = nvt("_t" + std::to_string(levels), scalar("unsigned char"));
  for (int level = 0; level < levels; ++level) {
    const std::string next = reference("SNVT_t" + std::to_string(level + 1));
    items += nvt("_t" + std::to_string(level), structure({{"a", next}, {"b", next}}));
  }
  return items;
}

struct UsageCase {
  std::string name;
  Words arguments;
  int status;
  std::string message;
};

class WrongSchema : public testing::TestWithParam<UsageCase> {};

TEST_P(WrongSchema, IsOneLineAndNoOutput) {
  TempCatalogue files;
  files.write(TypeId::StdPrefix, "nvs", sharedNvs() + doubledTypes(17));
  Words words = GetParam().arguments;
  std::replace(words.begin(), words.end(), std::string("OWN"), files.path());
  const ToolResult result = runTool(words);
  EXPECT_EQ(result.status, GetParam().status);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
  EXPECT_NE(result.errors.find(GetParam().message), std::string::npos) << result.errors;
}

const std::vector<UsageCase> kUsageCases = {
    {"NoType", {"schema"}, 2, "TYPE is required"},
    {"UnknownType", {"schema", "SNVT_foo"}, 3, "unknown type 'SNVT_foo'"},
    {"UnknownTypeBehindAKnownOne", {"schema", "SNVT_temp", "SNVT_foo"}, 3, "'SNVT_foo'"},
    {"Enumeration", {"schema", "hvac_t"}, 3, "'hvac_t' has no values"},
    {"Profile", {"schema", "SFPTnodeObject"}, 3, "'SFPTnodeObject' has no values"},
    {"TypeWithoutALayout", {"schema", "SNVT_bare", "--catalog", "OWN"}, 1, "has no layout"},
    {"TypeWithoutAnEnd", {"schema", "SNVT_endless", "--catalog", "OWN"}, 1, "cannot be followed"},
    // 2^17 numbers
    {"TooManyMembers", {"schema", "SNVT_t0", "--catalog", "OWN"}, 1, "more than 100000 members"},
    {"ReferenceToNothing", {"schema", "SNVT_dangling", "--catalog", "OWN"}, 1, "SNVT_dangling"},
};

INSTANTIATE_TEST_SUITE_P(Commands, WrongSchema, testing::ValuesIn(kUsageCases), kNameOf);

}  // namespace

}  // namespace zavri::test
