#include <gtest/gtest.h>

#include <algorithm>
#include <istream>
#include <streambuf>
#include <string>
#include <vector>

#include "korvat/base/Value.h"
#include "korvat/base/XmlParser.h"
#include "korvat/types/TypeManager.h"
#include "korvat/types/VarType.h"
#include "tests/LogCapture.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"

// XML and JSON texts that are made to exhaust the stack or the memory of who reads them.
namespace zavri::korvat {
namespace {

using base::Logger;
using test::nvt;
using test::scalar;

std::string repeat(const std::string& text, std::size_t count) {
  std::string all;
  all.reserve(count * text.size());
  for (std::size_t i = 0; i < count; ++i) all += text;
  return all;
}

// --- Nesting ---

constexpr std::size_t kMillion = 1'000'000;

struct JsonNesting {
  std::string name;
  std::string open, close;
  std::string error;
};

class NestedJson : public testing::TestWithParam<JsonNesting> {};

TEST_P(NestedJson, IsRefusedAtItsTwoHundredFirstLevel) {
  const JsonNesting& c = GetParam();
  for (const std::string& close : {c.close, std::string()}) {
    json::Value value("before");
    std::string error;
    EXPECT_FALSE(
        json::Value::parse(repeat(c.open, kMillion) + repeat(close, kMillion), value, error));
    EXPECT_EQ(error, c.error);
    EXPECT_EQ(value.asString(), "before");
  }
}

const std::vector<JsonNesting> kJsonNestings = {
    {"OfArrays", "[", "]", "Nested too deeply. (byte 200)"},
    // The brace of level 201 stands behind 200 times five bytes.
    {"OfObjects", "{\"a\":", "}", "Nested too deeply. (byte 1000)"},
};
INSTANTIATE_TEST_SUITE_P(Cases, NestedJson, testing::ValuesIn(kJsonNestings),
                         [](const auto& info) { return info.param.name; });

struct NestedFile {
  std::string name;
  std::string before;  // of the nest
  std::string open, close;
};

class NestedResourceFile : public testing::TestWithParam<NestedFile> {};

TEST_P(NestedResourceFile, IsRefusedAndLeavesTheOtherGroups) {
  const NestedFile& c = GetParam();
  test::TempCatalogue files;
  files.write(TypeId::StdPrefix, "enums", test::enumt("power_t", {{0, "PWR_OFF"}}));
  files.writeRaw(TypeId::StdPrefix, "nvs",
                 c.before + repeat(c.open, kMillion) + repeat(c.close, kMillion));
  TypeManager manager = files.makeManager();
  test::LogCapture log(Logger::Warning);
  EXPECT_EQ(manager.getType("0000000000000000-0/SNVT_x"), nullptr);
  EXPECT_EQ(log.texts(),
            std::vector<std::string>{"[ResourceBuilder][M_CollectStrings] could not parse file '" +
                                     files.path() + "/0000000000000000-0/nvs.xml'\n"});
  EXPECT_NE(manager.getType("0000000000000000-0/power_t"), nullptr);
}

const std::string kItemBegin = "<ldrf><items><nvt id='_x' idx='1'><p-name>SNVT_x</p-name>";
const std::vector<NestedFile> kNestedFiles = {
    {"FromItsRoot", "", "<ldrf>", "</ldrf>"},
    {"WithinItsItems", "<ldrf><items>", "<items>", "</items>"},
    {"OfUnknownElements", kItemBegin, "<x>", "</x>"},
    {"OfStructures", kItemBegin, "<aggregate cat='struct'><members><member>",
     "</member></members></aggregate>"},
};
INSTANTIATE_TEST_SUITE_P(Cases, NestedResourceFile, testing::ValuesIn(kNestedFiles),
                         [](const auto& info) { return info.param.name; });

// --- Entities ---

struct EntityCase {
  std::string name;
  std::string documentType;
};

class EntityDeclaration : public testing::TestWithParam<EntityCase> {};

TEST_P(EntityDeclaration, RefusesAResourceFileBeforeItsFirstItem) {
  test::TempCatalogue files;
  const std::string items = nvt("_x", scalar("unsigned short")) + "<note>&e9;</note>";
  files.writeRaw(
      TypeId::StdPrefix, "nvs",
      "<!DOCTYPE ldrf [" + GetParam().documentType + "]><ldrf><items>" + items + "</items></ldrf>");
  TypeManager manager = files.makeManager();
  test::LogCapture log(Logger::Warning);
  EXPECT_EQ(manager.getType("0000000000000000-0/SNVT_x"), nullptr);
  EXPECT_EQ(log.texts(),
            std::vector<std::string>{"[ResourceBuilder][M_CollectStrings] could not parse file '" +
                                     files.path() + "/0000000000000000-0/nvs.xml'\n"});
}

// Each entity names the one before ten times: the last one has a thousand million letters.
std::string expandingTenfold(const std::string& declaration) {
  std::string text = declaration + "e0 'a'>";
  for (int level = 1; level <= 9; ++level) {
    text += declaration + "e" + std::to_string(level) + " '" +
            repeat("&e" + std::to_string(level - 1) + ";", 10) + "'>";
  }
  return text;
}

const std::vector<EntityCase> kEntityCases = {
    {"ThatExpandsTenfoldNineTimes", expandingTenfold("<!ENTITY ")},
    // One megabyte, named often enough for a terabyte.
    {"OfALongText", "<!ENTITY e0 '" + std::string(kMillion, 'a') + "'><!ENTITY e9 '" +
                        repeat("&e0;", 4096) + "'>"},
    {"ThatNamesItself", "<!ENTITY e9 '&e9;'>"},
    {"OfAFile", "<!ENTITY e9 SYSTEM 'file:///dev/zero'>"},
    {"WithinAParameter", "<!ENTITY % p \"<!ENTITY e9 'a'>\"> %p;"},
};
INSTANTIATE_TEST_SUITE_P(Cases, EntityDeclaration, testing::ValuesIn(kEntityCases),
                         [](const auto& info) { return info.param.name; });

// --- Length ---

constexpr std::size_t kHundredMebibytes = std::size_t{100} * 1024 * 1024;

// Gives `front`, then `piece` again and again, then `back`; `size` bytes in all, or few more.
class RepeatingBuffer : public std::streambuf {
 public:
  RepeatingBuffer(std::string front, const std::string& piece, std::string back, std::size_t size)
      : _front(std::move(front)),
        _block(repeat(piece, 1 + kBlockSize / piece.size())),
        _back(std::move(back)),
        _blockCount(1 + size / _block.size()) {}

  std::size_t getReadSize() const { return _readSize; }

 protected:
  int_type underflow() override {
    std::string& next = _step == 0 ? _front : _step <= _blockCount ? _block : _back;
    if (_step++ > _blockCount + 1) return traits_type::eof();
    _readSize += next.size();
    setg(next.data(), next.data(), next.data() + next.size());
    return next.empty() ? underflow() : traits_type::to_int_type(next[0]);
  }

 private:
  static constexpr std::size_t kBlockSize = 64 * 1024;  // bytes

  std::size_t _readSize = 0;  // bytes
  std::string _front, _block, _back;
  std::size_t _blockCount;
  std::size_t _step = 0;
};

class CountingParser : public xml::XmlParser {
 public:
  std::size_t elementCount = 0;
  std::size_t longest = 0;  // bytes of a text or an attribute's value

 protected:
  void onElement(const xml::Element&, const xml::Attributes& attributes) override {
    ++elementCount;
    for (const auto& [name, value] : attributes) longest = std::max(longest, value.size());
  }
  void onElementEnd(const xml::Element&) override {}
  void onValue(const std::string& value) override { longest = std::max(longest, value.size()); }
};

struct LongXml {
  std::string name;
  std::string front, piece, back;
};

TEST(HundredMebibytesOfXml, OfTextAreReadToTheirEnd) {
  RepeatingBuffer buffer("<a>", "text ", "</a>", kHundredMebibytes);
  std::istream stream(&buffer);
  CountingParser parser;
  ASSERT_EQ(parser.parse(stream), xml::XmlParser::State::Complete) << parser.getError();
  EXPECT_EQ(parser.elementCount, 1u);
  EXPECT_GE(parser.longest, kHundredMebibytes);
}

class HundredMebibytesOfOneTag : public testing::TestWithParam<LongXml> {};

TEST_P(HundredMebibytesOfOneTag, AreRefusedAfterTheFirst) {
  const LongXml& c = GetParam();
  RepeatingBuffer buffer(c.front, c.piece, c.back, kHundredMebibytes);
  std::istream stream(&buffer);
  CountingParser parser;
  EXPECT_EQ(parser.parse(stream), xml::XmlParser::State::Failed);
  EXPECT_EQ(parser.getError().find("more than 1048576 bytes in one tag or comment at line 1"), 0u)
      << parser.getError();
  EXPECT_LE(parser.elementCount, 1u);
  EXPECT_LT(buffer.getReadSize(), kHundredMebibytes / 20);
}

const std::vector<LongXml> kLongXml = {
    {"OfAnAttribute", "<a b='", "text ", "'/>"},
    {"OfAttributes", "<a", " b='c'", "/>"},
    {"OfAComment", "<a><!--", "text ", "--></a>"},
    {"OfAName", "<a><", "name", "/></a>"},
    {"OfSpace", "<a ", " \n", "/>"},
    {"OfAnInstruction", "<?a ", "text ", "?><a/>"},
    {"OfADocumentType", "<!DOCTYPE a SYSTEM '", "text ", "'><a/>"},
};
INSTANTIATE_TEST_SUITE_P(Cases, HundredMebibytesOfOneTag, testing::ValuesIn(kLongXml),
                         [](const auto& info) { return info.param.name; });

TEST(HundredMebibytesOfJson, InOneTextAreRead) {
  json::Value value;
  std::string error;
  const std::string text = '"' + std::string(kHundredMebibytes, 'a') + '"';
  ASSERT_TRUE(json::Value::parse(text, value, error)) << error;
  EXPECT_EQ(value.asString().size(), kHundredMebibytes);
}

TEST(HundredMebibytesOfJson, InOneNumberAreRefused) {
  json::Value value;
  std::string error;
  EXPECT_FALSE(json::Value::parse(std::string(kHundredMebibytes, '9'), value, error));
  EXPECT_FALSE(error.empty());
}

TEST(HundredMebibytesOfJson, ThatNeverEndAreRefused) {
  json::Value value;
  std::string error;
  EXPECT_FALSE(json::Value::parse('"' + std::string(kHundredMebibytes, 'a'), value, error));
  EXPECT_FALSE(error.empty());
}

}  // namespace
}  // namespace zavri::korvat
