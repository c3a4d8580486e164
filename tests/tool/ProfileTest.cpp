#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "korvat/base/Value.h"
#include "korvat/types/TypeId.h"
#include "tests/RunTool.h"
#include "tests/TempCatalogue.h"

// What the program shows of functional profiles.
namespace zavri::test {

namespace {

using korvat::TypeId;
using Words = std::vector<std::string>;

const auto kNameOf = [](const auto& info) { return info.param.name; };

const std::string kModelSet = "9FFFFF0501A38542-6";
const std::string kClassSet = "9FFFFF0501000000-4";

// Runs the program on the catalogue of user sets.
ToolResult runOnUserSets(Words words) {
  words.insert(words.begin(), {"--catalog", std::string(KORVAT_TEST_DATA) + "/catalogue"});
  return runTool(words);
}

TEST(Profile, ShowsItsDatapointsAndThoseItInherits) {
  const ToolResult result = runOnUserSets({"--prefix", "9FFFFF0000000000-3", "profile", "20003"});
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(
      result.output,
      "UFPTboiler  fp 1  key 20003  set 9FFFFF0000000000-3  inherits from SFPTboilerController\n"
      "network variables\n"
      "     1  nvoState     9FFFFF0000000000-3/UNVTBoilerState  output  mandatory\n"
      "     2  nvoFault     9FFFFF0000000000-3/UNVTBoilerFault  output  optional\n"
      "     3  nviSetpoint  SNVT_temp_p                         input   mandatory  10..90  default "
      "65\n"
      "configuration properties\n"
      "     1  cpTarget     9FFFFF0000000000-3/UCPTBoilerTarget  mandatory  no array  applies to "
      "nvoState\n"
      "     2  cpHeartbeat  SCPTmaxSendTime                      optional   applies to UFPTboiler\n"
      "\n"
      "SFPTboilerController  fp 22  key 8301  set 0000000000000000-0\n"
      "network variables\n"
      "     3  nvoEffectSetpt  SNVT_temp_p  output  mandatory  0..150\n"
      "     6  nviSupplyTemp   SNVT_temp_p  input   optional   0..150\n"
      "     7  nviOutdoorTemp  SNVT_temp_p  input   optional\n"
      "configuration properties\n"
      "     1  nciSndHrtBt  SCPTmaxSendTime  optional   default 0  no array  applies to "
      "nvoEffectSetpt\n");
}

struct FindCase {
  std::string name;
  std::string prefix;
  std::string nameOrKey;
  std::string firstLine;
};

class FoundProfile : public testing::TestWithParam<FindCase> {};

TEST_P(FoundProfile, IsTheMostSpecificOne) {
  const ToolResult result =
      runOnUserSets({"--prefix", GetParam().prefix, "profile", GetParam().nameOrKey});
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output.substr(0, result.output.find('\n')), GetParam().firstLine);
}

const std::vector<FindCase> kFound = {
    {"OfTheModel", kModelSet, "20000", "UFPTprobeOfModel  fp 2  key 20000  set 9FFFFF0501238542-6"},
    {"OfTheSubclass", "9FFFFF0501638500-5", "20000",
     "UFPTprobeOfSubclass  fp 2  key 20000  set 9FFFFF0501238500-5"},
    {"OfTheClass", kClassSet, "20000", "UFPTprobeOfClass  fp 2  key 20000  set 9FFFFF0501000000-4"},
    {"OfTheMaker", "9FFFFF0000000000-3", "20000",
     "UFPTprobeOfMaker  fp 2  key 20000  set 9FFFFF0000000000-3"},
    {"OfTheMakerFromTheModel", kModelSet, "20003",
     "UFPTboiler  fp 1  key 20003  set 9FFFFF0000000000-3  inherits from SFPTboilerController"},
    {"OfTheStandardFromTheModel", kModelSet, "5",
     "SFPTcontroller  fp 6  key 5  set 0000000000000000-0  obsolete"},
    {"UnderTheAlternateProgramId", "8FFFFF0501A38542-6", "20006",
     "UFPTburnerPair  fp 1  key 20006  set 9FFFFF0501238542-6  inherits from "
     "9FFFFF0501238500-5/UFPTburner"},
    {"ByName", kClassSet, "UFPTcascade",
     "UFPTcascade  fp 1  key 20004  set 9FFFFF0501000000-4  inherits from "
     "9FFFFF0000000000-3/UFPTboiler"},
    {"ByNameWithPrefix", kClassSet, "0000000000000000-0/SFPTopenLoopSensor",
     "SFPTopenLoopSensor  fp 2  key 1  set 0000000000000000-0"},
};

INSTANTIATE_TEST_SUITE_P(Searches, FoundProfile, testing::ValuesIn(kFound), kNameOf);

TEST(Profile, IsShownAsJson) {
  const ToolResult result =
      runOnUserSets({"--prefix", kClassSet, "profile", "UFPTcascade", "--json"});
  json::Value profile;
  std::string error;
  ASSERT_TRUE(json::Value::parse(result.output, profile, error)) << error;
  EXPECT_EQ(profile["nvs"].stringify(),
            R"([{"index":1,"name":"nvoCascade","type":"9FFFFF0501000000-4/UNVTCascade",)"
            R"("direction":"output","mandatory":true,"array":true}])");
  EXPECT_EQ(profile["cps"].stringify(), "[]");
  // Nearest first.
  ASSERT_EQ(profile["inherited"].getSize(), 2u);
  EXPECT_EQ(profile["inherited"][0]["name"].asString(), "UFPTboiler");
  EXPECT_EQ(profile["inherited"][1]["name"].asString(), "SFPTboilerController");
  EXPECT_EQ(profile["inherited"][0]["nvs"][2].stringify(),
            R"({"index":3,"name":"nviSetpoint","type":"SNVT_temp_p","direction":"input",)"
            R"("mandatory":true,"member":3,"min":10.0,"max":90.0,"default":65.0,"array":true})");
}

TEST(Profile, TellsWhatTheCatalogueDoesNotHold) {
  TempCatalogue files;
  files.write(TypeId::StdPrefix, "fps",
              "<fpt id='SFPTa' idx='1' key='1'><inheriting><ref>SFPTnone</ref></inheriting>"
              "<f-nvs><f-nv id='nvoX' idx='1'><max>5</max><ref>SNVT_none</ref></f-nv>"
              "<f-nv id='nvoY' idx='2'/></f-nvs></fpt><fpt id='SFPTb' idx='2'/>");
  const ToolResult result = runTool({"--catalog", files.path(), "profile", "1"});
  EXPECT_EQ(result.output,
            "SFPTa  fp 1  key 1  set 0000000000000000-0  inherits from SFPTnone (no such "
            "profile)\n"
            "network variables\n"
            "     1  nvoX  SNVT_none        output  optional   ..5  (no such type)\n"
            "     2  nvoY  (no type given)  output  optional\n");
  const ToolResult asJson = runTool({"--catalog", files.path(), "profile", "1", "--json"});
  json::Value profile;
  std::string error;
  ASSERT_TRUE(json::Value::parse(asJson.output, profile, error)) << error;
  EXPECT_EQ(profile["unknownBase"].stringify(), "true");
  EXPECT_EQ(profile["nvs"][0]["unknownType"].stringify(), "true");
  EXPECT_EQ(profile["nvs"][1].stringify(),
            R"({"index":2,"name":"nvoY","direction":"output","mandatory":false,"array":true})");

  const ToolResult list = runTool({"--catalog", files.path(), "list", "fp"});
  EXPECT_EQ(list.output,
            "fp       1  SFPTa                             key 1, 2 nvs, 0 cps\n"
            "fp       2  SFPTb                             0 nvs, 0 cps\n");
}

TEST(Profile, IsShownOnceInACircle) {
  TempCatalogue files;
  files.write(TypeId::StdPrefix, "fps",
              "<fpt id='SFPTa' idx='1' key='1'><inheriting><ref>SFPTb</ref></inheriting></fpt>"
              "<fpt id='SFPTb' idx='2'><inheriting><ref>SFPTa</ref></inheriting></fpt>");
  const ToolResult result = runTool({"--catalog", files.path(), "profile", "SFPTa"});
  EXPECT_EQ(result.output,
            "SFPTa  fp 1  key 1  set 0000000000000000-0  inherits from SFPTb\n\n"
            "SFPTb  fp 2  set 0000000000000000-0  inherits from SFPTa\n");
}

TEST(Profile, OfTheStandardIsInTheEmbeddedCatalogue) {
  const ToolResult result = runTool({"profile", "8010"});
  EXPECT_EQ(result.output.rfind("SFPTvariableAirVolume  fp 50  key 8010  set 0000000000000000-0\n"
                                "network variables\n"
                                "     1  nviSpaceTemp   SNVT_temp_p       input   mandatory  "
                                "10..50\n",
                                0),
            0u)
      << result.output;
}

struct RefusalCase {
  std::string name;
  Words arguments;
  int status;
  std::string error;
};

class RefusedProfile : public testing::TestWithParam<RefusalCase> {};

TEST_P(RefusedProfile, IsOneErrorWithoutOutput) {
  const ToolResult result = runTool(GetParam().arguments);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "korvat: " + GetParam().error + "\n");
  EXPECT_EQ(result.status, GetParam().status);
}

const std::vector<RefusalCase> kRefusals = {
    {"UnknownKey",
     {"profile", "99999"},
     3,
     "no functional profile with the key 99999 in set 0000000000000000-0 and the more general "
     "ones; see 'korvat list fp'"},
    {"KeyOutOfRange",
     {"profile", "99999999999"},
     3,
     "no functional profile with the key 99999999999 in set 0000000000000000-0 and the more "
     "general ones; see 'korvat list fp'"},
    {"PrefixOfAnotherLength",
     {"--prefix", "9FFF", "profile", "1"},
     2,
     "--prefix: '9FFF' names no set; expected 16 hexadecimal digits, '-' and a scope from 0 to 6"},
    {"AnotherKindOfType",
     {"profile", "SNVT_switch"},
     3,
     "'SNVT_switch' is no functional profile; see 'korvat list fp'"},
    {"ProfileToDescribe",
     {"describe", "SFPTnodeObject"},
     3,
     "'SFPTnodeObject' has no layout: see 'korvat profile SFPTnodeObject'"},
    {"NoProfile", {"profile"}, 2, "PROFILE is required; see 'korvat --help'"},
};

INSTANTIATE_TEST_SUITE_P(Commands, RefusedProfile, testing::ValuesIn(kRefusals), kNameOf);

}  // namespace

}  // namespace zavri::test
