#include "korvat/builder/TypeHref.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zavri::korvat::builder {
namespace {

struct HrefCase {
  std::string name;
  std::string text;
  HrefStatus status;
  std::string prefix;
  ResourceType type;
  std::string typeName;
};

class ParseHref : public testing::TestWithParam<HrefCase> {};

TEST_P(ParseHref, TellsPrefixFolderAndName) {
  const HrefCase& c = GetParam();
  TypeHref href{"kept", ResourceType::Fp, "kept"};
  EXPECT_EQ(parseHref(c.text, href), c.status);
  EXPECT_EQ(href.prefix, c.prefix);
  EXPECT_EQ(href.type, c.type);
  EXPECT_EQ(href.name, c.typeName);
}

constexpr HrefStatus kOk = HrefStatus::Valid;
constexpr ResourceType kFp = ResourceType::Fp;

const std::vector<HrefCase> kHrefCases = {
    {"WithUrl", "http://types.lonmark.org/0000000000000000-0/enums/occup_t", kOk,
     "0000000000000000-0", ResourceType::Enum, "occup_t"},
    {"WithoutUrl", "8000010128000000-4/nvs/UNVT_x", kOk, "8000010128000000-4", ResourceType::Nv,
     "UNVT_x"},
    {"Properties", "8000010128000000-4/cps/UCPTx", kOk, "8000010128000000-4", ResourceType::Cp,
     "UCPTx"},
    {"Profiles", "0000000000000000-0/fps/SFPTx", kOk, "0000000000000000-0", ResourceType::Fp,
     "SFPTx"},
    {"WithoutName", "0000000000000000-0/nvs", kOk, "0000000000000000-0", ResourceType::Nv, ""},
    {"EndsWithASlash", "0000000000000000-0/nvs/", kOk, "0000000000000000-0", ResourceType::Nv, ""},
    {"SegmentsBehindTheName", "0000000000000000-0/nvs/SNVT_x/1/2", kOk, "0000000000000000-0",
     ResourceType::Nv, "SNVT_x"},
    {"Empty", "", HrefStatus::Incomplete, "kept", kFp, "kept"},
    {"UrlAlone", "http://types.lonmark.org/", HrefStatus::Incomplete, "kept", kFp, "kept"},
    {"PrefixAlone", "0000000000000000-0", HrefStatus::Incomplete, "kept", kFp, "kept"},
    {"PrefixAndSlash", "0000000000000000-0/", HrefStatus::Incomplete, "kept", kFp, "kept"},
    {"EmptyFolder", "0000000000000000-0//x", HrefStatus::UnknownFolder, "kept", kFp, "kept"},
    {"NoPrefix", "enums/occup_t", HrefStatus::BadPrefix, "kept", kFp, "kept"},
    {"EmptyPrefix", "/enums/occup_t", HrefStatus::BadPrefix, "kept", kFp, "kept"},
    {"ShortPrefix", "0000000000000000/enums/x", HrefStatus::BadPrefix, "kept", kFp, "kept"},
    {"NoHexadecimalPrefix", "80000101280000zz-4/enums/x", HrefStatus::BadPrefix, "kept", kFp,
     "kept"},
    {"NoScope", "8000010128000000-7/enums/x", HrefStatus::BadPrefix, "kept", kFp, "kept"},
    {"OtherUrl", "http://example.org/0000000000000000-0/nvs/x", HrefStatus::BadPrefix, "kept", kFp,
     "kept"},
    {"UnknownFolder", "0000000000000000-0/units/x", HrefStatus::UnknownFolder, "kept", kFp, "kept"},
    {"FolderInAnotherCase", "0000000000000000-0/NVS/x", HrefStatus::UnknownFolder, "kept", kFp,
     "kept"},
};
INSTANTIATE_TEST_SUITE_P(TypeHref, ParseHref, testing::ValuesIn(kHrefCases),
                         [](const auto& info) { return info.param.name; });

TEST(StripUrl, TakesTheNamespaceFromTheStartOnly) {
  EXPECT_EQ(stripUrl("http://types.lonmark.org/a/b"), "a/b");
  EXPECT_EQ(stripUrl("http://types.lonmark.org/"), "");
  EXPECT_EQ(stripUrl("http://types.lonmark.org"), "http://types.lonmark.org");
  EXPECT_EQ(stripUrl("HTTP://types.lonmark.org/a"), "HTTP://types.lonmark.org/a");
  EXPECT_EQ(stripUrl("x http://types.lonmark.org/a"), "x http://types.lonmark.org/a");
  EXPECT_EQ(stripUrl("a/b"), "a/b");
  EXPECT_EQ(stripUrl(""), "");
}

TEST(IsSetPrefix, NeedsAProgramIdAndAScope) {
  EXPECT_TRUE(isSetPrefix("0000000000000000-0"));
  EXPECT_TRUE(isSetPrefix("8000010128000000-4"));
  EXPECT_TRUE(isSetPrefix("9ffffff000000000-3"));
  EXPECT_FALSE(isSetPrefix(""));
  EXPECT_FALSE(isSetPrefix("standard"));
  EXPECT_FALSE(isSetPrefix("8000010128000000"));
  EXPECT_FALSE(isSetPrefix("8000010128000000-"));
  EXPECT_FALSE(isSetPrefix("8000010128000000-8"));
  EXPECT_FALSE(isSetPrefix("8000010128000000-4x"));
  EXPECT_FALSE(isSetPrefix("0000000000000000-9"));
  EXPECT_FALSE(isSetPrefix("0000000000000000-"));
  EXPECT_FALSE(isSetPrefix("my_catalogue_folder-4"));
}

}  // namespace
}  // namespace zavri::korvat::builder
