#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korvat/base/BinaryUtils.h"
#include "korvat/base/Value.h"
#include "korvat/convert/JsonConverter.h"
#include "korvat/members/Value.h"
#include "korvat/types/TypeManager.h"
#include "korvat/types/VarType.h"
#include "tests/LogCapture.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"

// Definitions that lead back to themselves, or describe more than can be, and values that claim
// more than they hold.
namespace zavri::korvat {
namespace {

using base::Buffer;
using base::Endianess;
using base::Logger;
using test::arraySize;
using test::dynamicArray;
using test::nvt;
using test::reference;
using test::scalar;
using test::structure;
using test::unionOf;
using util::BinaryUtils;

const std::string kPath = "0000000000000000-0/SNVT_x";

struct TypeCase {
  std::string name;
  std::string items;  // SNVT_x is asked for
};

const auto kNameOf = [](const auto& info) { return info.param.name; };

class HostileType : public testing::TestWithParam<TypeCase> {
 protected:
  HostileType() : _log(Logger::Warning) {
    _files.write(TypeId::StdPrefix, "nvs", GetParam().items);
    _manager = _files.makeManager();
    _type = _manager.getVarType(kPath);
  }

  test::TempCatalogue _files;
  test::LogCapture _log;
  TypeManager _manager{"drv"};
  const VarType* _type = nullptr;
};

TEST_P(HostileType, EndsEveryWalkWithAFailureAndAMessage) {
  ASSERT_NE(_type, nullptr);
  Buffer raw = test::bytesOf("0102030405060708");
  const Buffer before = raw;

  _log.clear();
  json::Value value;
  EXPECT_FALSE(_manager.rawToJson(_type->getTypeId(), raw, value));
  EXPECT_FALSE(_log.texts().empty());

  _log.clear();
  EXPECT_FALSE(_type->convertPacket(&_manager, Endianess::Big, raw));
  EXPECT_EQ(raw, before);
}

TEST_P(HostileType, LetsPathsEnd) {
  ASSERT_NE(_type, nullptr);
  Buffer raw = test::bytesOf("0102030405060708");
  std::string path = "next";
  for (int i = 0; i < 500; ++i) path += ".next";
  const Value access(&_manager, _type, Endianess::Big, raw);
  double number = 0;
  EXPECT_NE(access[path].get(-1, number), AccessStatus::Exact);
}

// A reference among other members, so that the type has a layout of its own.
const std::vector<TypeCase> kTypeCases = {
    {"ThatIsAMemberOfItself",
     nvt("_x", structure({{"n", scalar("unsigned short")}, {"next", reference("SNVT_x")}}))},
    {"ThatIsAnAlternativeOfItself",
     nvt("_x", unionOf({{"n", scalar("unsigned short")}, {"next", reference("SNVT_x")}}))},
    {"ThatIsAnArrayOfItself", nvt("_x", structure({{"n", scalar("unsigned short")},
                                                   {"next", reference("SNVT_x"), arraySize(2)}}))},
    {"ThatIsADynamicArrayOfItself",
     nvt("_x", structure({{"n", scalar("unsigned short")},
                          {"next", reference("SNVT_x"), dynamicArray(0, 2)}}))},
    {"ThatIsReachedThroughThreeOthers",
     nvt("_x", structure({{"next", reference("SNVT_y")}})) + nvt("_y", reference("SNVT_z")) +
         nvt("_z", unionOf({{"n", scalar("unsigned short")}, {"next", reference("SNVT_w")}})) +
         nvt("_w", structure({{"next", reference("SNVT_x"), arraySize(3)}}))},
    {"ThatIsAReferenceToItself", nvt("_x", reference("SNVT_x"))},
    {"ThatIsAReferenceToItsReference",
     nvt("_x", reference("SNVT_y")) + nvt("_y", reference("SNVT_x"))},
    // Four thousand million visits of nothing; the bytes never grow.
    {"OfStructuresOfNoSize",
     nvt("_x", structure({{"next", structure({{"next", structure({}, arraySize(65536))}}),
                           arraySize(65536)}}))},
    {"OfBitFieldsOfNoWidth",
     nvt("_x",
         structure({{"next",
                     structure({{"next", structure({{"b", test::bits(0, 0)}}, arraySize(65536))}}),
                     arraySize(65536)}}))},
};
INSTANTIATE_TEST_SUITE_P(Cases, HostileType, testing::ValuesIn(kTypeCases), kNameOf);

// --- Counts that lie ---

struct CountCase {
  std::string name;
  std::string raw;  // hexadecimal
  std::string json;
};

class LyingCount : public testing::TestWithParam<CountCase> {};

TEST_P(LyingCount, GivesWhatTheTypeHoldsAndZerosBeyondTheBuffer) {
  test::TempCatalogue files;
  files.write(TypeId::StdPrefix, "nvs",
              nvt("_x", structure({{"n", scalar("unsigned short")},
                                   {"list", scalar("unsigned long"), dynamicArray(0, 3)},
                                   {"end", scalar("unsigned short")}})));
  TypeManager manager = files.makeManager();
  manager.setUseDynamicArrays(true);
  const TypeId id = manager.toTypeId(kPath);
  json::Value value;
  ASSERT_TRUE(manager.rawToJson(id, test::bytesOf(GetParam().raw), value));
  EXPECT_EQ(value.stringify(), GetParam().json);
}

const std::vector<CountCase> kCountCases = {
    {"OfTheWholeArray", "03000100020003FF", R"({"n":3,"list":[1,2,3],"end":255})"},
    {"OneTooMany", "04000100020003FF", R"({"n":4,"list":[1,2,3],"end":255})"},
    {"AsLargeAsItCanBe", "FF000100020003FF", R"({"n":255,"list":[1,2,3],"end":255})"},
    {"BeyondTheBuffer", "FF0001", R"({"n":255,"list":[1,0,0],"end":0})"},
    {"WithNothingBehindIt", "FF", R"({"n":255,"list":[0,0,0],"end":0})"},
    {"OfElementsThatAreNotThere", "020001", R"({"n":2,"list":[1,0],"end":0})"},
};
INSTANTIATE_TEST_SUITE_P(Cases, LyingCount, testing::ValuesIn(kCountCases), kNameOf);

}  // namespace
}  // namespace zavri::korvat
