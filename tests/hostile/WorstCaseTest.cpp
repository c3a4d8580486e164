#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "korvat/base/Value.h"
#include "korvat/convert/JsonConverter.h"
#include "korvat/types/TypeManager.h"
#include "korvat/types/VarType.h"
#include "tests/LogCapture.h"
#include "tests/Sanitizers.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"

// What 1 MiB of hostile input costs at most. Each case runs in a process of its own, which tells
// its processor time and its memory; both are printed. Memory is bound where no sanitizer runs, and
// so is time where the compiler also optimises; elsewhere it is bound far more loosely.
namespace zavri::korvat {
namespace {

using base::Buffer;
using base::Logger;
using test::arraySize;
using test::kIsSanitized;
using test::nvt;
using test::reference;
using test::scalar;
using test::structure;

constexpr std::size_t kMebibyte = std::size_t{1024} * 1024;

#if defined(__OPTIMIZE__)
constexpr bool kIsOptimised = true;
#else
constexpr bool kIsOptimised = false;
#endif
constexpr double kMostSeconds = kIsOptimised && !kIsSanitized ? 1.0 : 120.0;
constexpr long kMostMebibytes = 256 + 32;  // those of the test program included

std::string front(const std::string& name) {
  return "<ldrf><control><folder>0000000000000000-0</folder></control><" + name + ">";
}

// `front`, then pieces up to 1 MiB, then `back`; "#" in a piece is its number.
std::string fill(const std::string& front, const std::string& piece, const std::string& back) {
  std::string text = front;
  const std::size_t number = piece.find('#');
  for (unsigned i = 0; text.size() + piece.size() + back.size() + 8 < kMebibyte; ++i) {
    if (number == std::string::npos) {
      text += piece;
    } else {
      for (const char c : piece) text += c == '#' ? std::to_string(i) : std::string(1, c);
    }
  }
  return text + back;
}

// Loads a file of that kind and asks for its type number 1.
void load(const std::string& file, const std::string& text) {
  test::TempCatalogue files;
  files.writeRaw(TypeId::StdPrefix, file, text);
  TypeManager manager = files.makeManager();
  static_cast<void>(manager.getTypeByIndex(TypeId::StdPrefix,
                                           file == "nvs"     ? ResourceType::Nv
                                           : file == "fps"   ? ResourceType::Fp
                                           : file == "enums" ? ResourceType::Enum
                                                             : ResourceType::Cp,
                                           1));
}

void parse(const std::string& text) {
  json::Value value;
  std::string error;
  if (json::Value::parse(text, value, error)) static_cast<void>(value.stringify());
}

// 1 MiB of a value, or of JSON for it, of the type SNVT_x of those items.
void decode(const std::string& items) {
  test::TempCatalogue files;
  files.write(TypeId::StdPrefix, "nvs", items);
  TypeManager manager = files.makeManager();
  Buffer raw;
  raw.setSize(kMebibyte);
  json::Value value;
  static_cast<void>(manager.rawToJson(manager.toTypeId("0000000000000000-0/SNVT_x"), raw, value));
}
void encode(const std::string& items, const std::string& text) {
  test::TempCatalogue files;
  files.write(TypeId::StdPrefix, "nvs", items);
  TypeManager manager = files.makeManager();
  json::Value value;
  std::string error;
  if (!json::Value::parse(text, value, error)) throw std::runtime_error(error);
  Buffer raw;
  static_cast<void>(manager.jsonToRaw(manager.toTypeId("0000000000000000-0/SNVT_x"), value, raw));
}

struct WorstCase {
  std::string name;
  std::function<void()> run;
};

class WorstCaseOfOneMebibyte : public testing::TestWithParam<WorstCase> {};

struct Cost {
  double seconds;
  long mebibytes;
  bool isDone;
};

double toSeconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

Cost measure(const std::function<void()>& run) {
  const pid_t child = fork();
  if (child == 0) {
    int status = 0;
    try {
      test::LogCapture log(Logger::Error);
      run();
    } catch (...) {
      status = 1;
    }
    _exit(status);
  }
  int status = 0;
  rusage usage{};
  if (child < 0 || wait4(child, &status, 0, &usage) != child) return {0, 0, false};
  return {toSeconds(usage.ru_utime) + toSeconds(usage.ru_stime), usage.ru_maxrss / 1024,
          WIFEXITED(status) && WEXITSTATUS(status) == 0};
}

TEST_P(WorstCaseOfOneMebibyte, StaysWithinASecondAndMemory) {
  const Cost cost = measure(GetParam().run);
  std::printf("%-40s %6.3f s %5ld MiB\n", GetParam().name.c_str(), cost.seconds, cost.mebibytes);
  ASSERT_TRUE(cost.isDone);
  EXPECT_LE(cost.seconds, kMostSeconds);
  if (!kIsSanitized) {
    EXPECT_LE(cost.mebibytes, kMostMebibytes);
  }
}

const std::string kItem = "<nvt id='_x' idx='1'><p-name>SNVT_x</p-name>";
const std::string kEnd = "</items></ldrf>";

// 16 times 65536 bytes, each a node of its own, in the largest arrays there are; fewer beside a
// sanitizer, which has seen all there is to see after the first ones.
std::string manyNodes(const std::string& leaf) {
  const std::string rowCount = arraySize(kIsSanitized ? 2 : 16);
  return nvt("_x", structure({{"rows", structure({{"cells", leaf, arraySize(65536)}}), rowCount}}));
}

const std::vector<WorstCase> kFileCases = {
    {"FileOfShortItems", [] { load("nvs", fill(front("items"), "<nvt id='_#' idx='#'/>", kEnd)); }},
    {"FileOfOneItemAgainAndAgain",
     [] { load("nvs", fill(front("items"), "<nvt id='_x' idx='1'/>", kEnd)); }},
    {"FileOfStrings",
     [] { load("nvs", fill(front("strings"), "<string id='#'>a</string>", "</strings></ldrf>")); }},
    {"FileOfAttributes",
     [] { load("nvs", fill(front("items") + "<nvt id='_x' idx='1'", " a#=''", "/>" + kEnd)); }},
    {"FileOfOneAttribute",
     [] { load("nvs", fill(front("items") + "<nvt id='", "a", "' idx='1'/>" + kEnd)); }},
    {"FileOfOneTag", [] { load("nvs", fill(front("items") + "<nvt ", " ", "")); }},
    {"FileOfOneText",
     [] { load("nvs", fill(front("items") + kItem + "<p-name>", "a", "</p-name></nvt>" + kEnd)); }},
    {"FileOfMembers",
     [] {
       load("nvs", fill(front("items") + kItem + "<aggregate cat='struct'><members>",
                        "<member><p-name>m#</p-name><scalar><nc-type>s32_type</nc-type></scalar>"
                        "</member>",
                        "</members></aggregate></nvt>" + kEnd));
     }},
    {"FileOfEmptyMembers",
     [] {
       load("nvs", fill(front("items") + kItem + "<aggregate cat='struct'><members>", "<member/>",
                        "</members></aggregate></nvt>" + kEnd));
     }},
    {"FileOfArraysInArrays",
     [] {
       std::string inner =
           "<scalar><nc-type>s32_type</nc-type><array-size>65536</array-size>"
           "</scalar>";
       for (int i = 0; i < 20; ++i) {
         inner = "<aggregate cat='struct'><members><member>" + inner +
                 "<array-size>65536</array-size></member></members></aggregate>";
       }
       load("nvs", fill(front("items"),
                        "<nvt id='_#' idx='#'><p-name>SNVT_#</p-name>" + inner + "</nvt>", kEnd));
     }},
    {"FileOfReferencesInARow",
     [] {
       load("nvs",
            fill(front("items"),
                 "<nvt id='_#' idx='1'><p-name>SNVT_#</p-name><ref>SNVT_1#</ref></nvt>", kEnd));
     }},
    {"FileOfFormats",
     [] {
       load("nvs", fill(front("items") + kItem + scalar("unsigned short") + "<formats>",
                        "<format id='SNVT_x#f#'>text(\"%f\", *1.8+32(0:1))</format>",
                        "</formats></nvt>" + kEnd));
     }},
    {"FileOfDerivedTypes",
     [] {
       std::string members;
       for (int i = 0; i < 5'000; ++i) {
         members += "<member>" + scalar("unsigned short") + "<p-name>m" + std::to_string(i) +
                    "</p-name></member>";
       }
       load("nvs",
            fill(front("items") + kItem + "<aggregate cat='struct'><members>" + members +
                     "</members></aggregate><formats>",
                 "<format id='SNVT_x#f#'>text(\"%f\", m1*2)</format>", "</formats></nvt>" + kEnd));
     }},
    {"FileOfOneFormat",
     [] {
       load("nvs", fill(front("items") + kItem + scalar("unsigned short") +
                            "<formats><format id='SNVT_x'>",
                        "(", "</format></formats></nvt>" + kEnd));
     }},
    {"FileOfEnumerators",
     [] {
       load("enums",
            fill(front("items") + "<enumt id='e' idx='1'><members>",
                 "<e-member id='e#'><value>1</value></e-member>", "</members></enumt>" + kEnd));
     }},
    {"FileOfDatapoints",
     [] {
       load("fps", fill(front("items") + "<fpt id='f' idx='1' key='1'><f-nvs>",
                        "<f-nv id='n#' idx='#'><ref>SNVT_x</ref></f-nv>", "</f-nvs></fpt>" + kEnd));
     }},
    {"FileOfProperties",
     [] {
       load("cps", fill(front("items"),
                        "<cpt id='p#' idx='#'><size>4</size><ref>SNVT_x</ref></cpt>", kEnd));
     }},
    {"FileOfZeros", [] { load("nvs", std::string(kMebibyte, '\0')); }},
    {"FileOfOpenElements", [] { load("nvs", fill("", "<a>", "")); }},
    {"FileOfEntities", [] { load("nvs", fill("<!DOCTYPE a [", "<!ENTITY a# 'b'>", "]><a/>")); }},
    {"FileOfAttributeDeclarations",
     [] { load("nvs", fill("<!DOCTYPE a [", "<!ATTLIST a a# CDATA 'b'>", "]><a><a/><a/></a>")); }},
    {"FileOfElementDeclarations",
     [] { load("nvs", fill("<!DOCTYPE a [<!ELEMENT a (b", ",b", ")>]><a/>")); }},
    {"FileOfDeepDeclarations",
     [] { load("nvs", fill("<!DOCTYPE a [<!ELEMENT a ", "(", ">]><a/>")); }},
};
INSTANTIATE_TEST_SUITE_P(Files, WorstCaseOfOneMebibyte, testing::ValuesIn(kFileCases),
                         [](const auto& info) { return info.param.name; });

const std::vector<WorstCase> kJsonCases = {
    {"JsonOfArrays", [] { parse(fill("[[]", ",[]", "]")); }},
    {"JsonOfObjects", [] { parse(fill("[{}", ",{}", "]")); }},
    {"JsonOfShortObjects", [] { parse(fill("[{\"\":0}", ",{\"\":0}", "]")); }},
    {"JsonOfMembers", [] { parse(fill("{\"a\":0", ",\"#\":0", "}")); }},
    {"JsonOfOneMember", [] { parse(fill("{\"a\":0", ",\"a\":0", "}")); }},
    {"JsonOfNumbers", [] { parse(fill("[0", ",0", "]")); }},
    {"JsonOfFractions", [] { parse(fill("[0", ",5e-324", "]")); }},
    {"JsonOfOneNumber", [] { parse(fill("0.", "1", "")); }},
    {"JsonOfOneExponent", [] { parse(fill("1e-", "9", "")); }},
    {"JsonOfOneText", [] { parse(fill("\"", "\\uD83D\\uDE00", "\"")); }},
    {"JsonOfOpenArrays", [] { parse(fill("", "[", "")); }},
    {"JsonOfControlCharacters", [] { parse(fill("\"", "\\u0000", "\"")); }},
    {"JsonOfUnknownMembers",
     [] {
       encode(nvt("_x", structure({{"a", scalar("unsigned short")}})),
              fill("{\"a\":0", ",\"#\":0", "}"));
     }},
    {"JsonOfTooManyElements",
     [] { encode(nvt("_x", scalar("unsigned short", arraySize(65536))), fill("[0", ",0", "]")); }},
};
INSTANTIATE_TEST_SUITE_P(Json, WorstCaseOfOneMebibyte, testing::ValuesIn(kJsonCases),
                         [](const auto& info) { return info.param.name; });

const std::vector<WorstCase> kRawCases = {
    {"RawOfBytes", [] { decode(manyNodes(scalar("unsigned short"))); }},
    {"RawOfScaledBytes",
     [] { decode(manyNodes(scalar("unsigned short", test::scaling(5, -1, 0)))); }},
    {"RawOfCharacters", [] { decode(manyNodes(scalar("unsigned char"))); }},
    {"RawOfStructures",
     [] {
       decode(manyNodes(structure({{"a", scalar("unsigned short")}})));
     }},
    {"RawOfReferences",
     [] {
       decode(nvt("_y", structure({{"a", scalar("unsigned short")}})) +
              manyNodes(reference("SNVT_y")));
     }},
    {"RawOfMissingEnumerations", [] { decode(manyNodes(test::enumeration("none_t"))); }},
    {"RawOfNothing",
     [] {
       decode(nvt("_x", structure({{"rows", structure({{"cells", structure({}), arraySize(65536)}}),
                                    arraySize(65536)}})));
     }},
    {"RawOfBitFieldsOfNoWidth",
     [] {
       decode(
           nvt("_x", structure({{"rows", structure({{"cells", test::bits(0, 0), arraySize(65536)}}),
                                 arraySize(65536)}})));
     }},
};
INSTANTIATE_TEST_SUITE_P(Raw, WorstCaseOfOneMebibyte, testing::ValuesIn(kRawCases),
                         [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace zavri::korvat
