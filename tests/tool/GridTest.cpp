#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/RunTool.h"
#include "tests/convert/TypeXml.h"

// The bit grid that describe draws.
namespace zavri::test {

namespace {

const auto kNameOf = [](const auto& info) { return info.param.name; };

// A catalogue of the one type SNVT_x.
class OneType : public TempCatalogue {
 public:
  explicit OneType(const std::string& root) {
    write(korvat::TypeId::StdPrefix, "enums", sharedEnums());
    write(korvat::TypeId::StdPrefix, "nvs", nvt("_x", root));
  }

  ToolResult describe(std::vector<std::string> options = {}) const {
    options.insert(options.begin(), {"--catalog", path(), "describe", "SNVT_x"});
    return runTool(options);
  }
};

struct GridCase {
  std::string name;
  std::string root;
  std::string grid;
};

class BitGrid : public testing::TestWithParam<GridCase> {};

TEST_P(BitGrid, ShowsWhichBitsBelongToWhichMember) {
  const std::string output = OneType(GetParam().root).describe().output;
  const std::size_t begin = output.find("\n  byte  ");
  ASSERT_NE(begin, std::string::npos) << output;
  EXPECT_EQ(output.substr(begin + 1), GetParam().grid);
}

const std::string kNumbers = "  byte   0   1   2   3   4   5   6   7\n";
const std::string kWhole = "       +-------------------------------+\n";

const std::vector<GridCase> kGridCases = {
    {"OneValue", scalar("unsigned long"),
     kNumbers + kWhole + "   0-1 |            (value)            |\n" + kWhole},
    {"BitFieldsAndTheBitsBetween",
     structure({{"on", bits(0, 1)}, {"mode", bits(3, 2)}, {"rest", scalar("unsigned short")}}),
     kNumbers +
         "       +---+-------+-------+-----------+\n"
         "     0 |on |       | mode  |           |\n"
         "       +---+-------+-------+-----------+\n"
         "     1 |             rest              |\n" +
         kWhole},
    {"ArrayOfNumbers",
     structure(
         {{"count", scalar("unsigned short")}, {"list", scalar("unsigned long", arraySize(3))}}),
     kNumbers + kWhole + "     0 |             count             |\n" + kWhole +
         "   1-6 |            list[3]            |\n" + kWhole},
    {"ArrayOfStructures",
     structure({{"a", scalar("unsigned short")}, {"b", scalar("signed long")}}, arraySize(4)),
     kNumbers + "       (value)[4]: 4 x 3 bytes, the first\n" + kWhole +
         "     0 |             [].a              |\n" + kWhole +
         "   1-2 |             [].b              |\n" + kWhole},
    {"Union",
     structure({{"either", unionOf({{"byte", scalar("unsigned short")},
                                    {"word", scalar("unsigned long")}})}}),
     kNumbers + "       either: a union, one of\n" + kWhole +
         "     0 |          either.byte          |\n" + kWhole + "       or\n" + kWhole +
         "   0-1 |          either.word          |\n" + kWhole},
};

INSTANTIATE_TEST_SUITE_P(Layouts, BitGrid, testing::ValuesIn(kGridCases), kNameOf);

TEST(BitGridText, ShowsFieldsThatShareTheirBitsOneBelowTheOther) {
  const OneType catalogue(structure({{"mid", bits(4, 2)}, {"low", bits(4, 4)}}));
  EXPECT_NE(catalogue.describe().output.find("       or\n       +---------------+---------------+\n"
                                             "     0 |               |      low      |\n"
                                             "       +---------------+---------------+\n"),
            std::string::npos);
}

TEST(BitGridText, CutsNamesThatAreTooLongForTheirBits) {
  const OneType catalogue(structure({{"self_test_in_progress", bits(0, 1)}}));
  EXPECT_NE(catalogue.describe().output.find("     0 |self_te~|"), std::string::npos);
}

TEST(BitGridPicture, IsWrittenToTheFile) {
  const OneType catalogue(structure({{"on", bits(1, 1)}, {"level", scalar("unsigned short")}}));
  const std::string path = catalogue.path() + "/grid.svg";
  const ToolResult result = catalogue.describe({"--svg", path});
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.status, 0);
  std::stringstream picture;
  picture << std::ifstream(path).rdbuf();
  EXPECT_EQ(picture.str().find("<svg xmlns=\"http://www.w3.org/2000/svg\" "), 0u);
  // One bit is 108 wide, the first one behind a margin of 84; the byte below is 8 bits wide.
  EXPECT_NE(picture.str().find("<rect x=\"192\" y=\"70\" width=\"108\""), std::string::npos);
  EXPECT_NE(picture.str().find("<rect x=\"84\" y=\"104\" width=\"864\""), std::string::npos);
  EXPECT_NE(picture.str().find(">SNVT_x, 2 bytes<"), std::string::npos);
  EXPECT_NE(picture.str().find(">level<"), std::string::npos);
  EXPECT_EQ(catalogue.describe({"--svg", "-"}).output, picture.str());
}

TEST(BitGridPicture, EscapesWhatTheCatalogueSays) {
  const OneType catalogue(structure({{"a&lt;b&amp;c&gt;", scalar("unsigned short")}}));
  const std::string picture = catalogue.describe({"--svg", "-"}).output;
  EXPECT_NE(picture.find(">a&lt;b&amp;c&gt;<"), std::string::npos) << picture;
}

TEST(BitGridPicture, SaysWhyAFileCannotBeWritten) {
  const ToolResult result = runTool({"describe", "SNVT_switch", "--svg", "/proc/none/grid.svg"});
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "korvat: cannot write '/proc/none/grid.svg': No such file or directory\n");
  EXPECT_EQ(result.status, 1);
}

}  // namespace

}  // namespace zavri::test
