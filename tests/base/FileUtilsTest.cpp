#include "korvat/base/FileUtils.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zavri::util {
namespace {

namespace fs = std::filesystem;

// A folder of its own for each test, gone with it.
class FileUtilsFolders : public testing::Test {
 protected:
  FileUtilsFolders() {
    std::string pattern = (fs::temp_directory_path() / "korvat-test-XXXXXX").string();
    if (mkdtemp(pattern.data()) != nullptr) _base = pattern;
  }
  ~FileUtilsFolders() override {
    if (!_base.empty()) fs::remove_all(_base);
  }

  void SetUp() override { ASSERT_FALSE(_base.empty()); }

  void makeFolder(const std::string& name) { fs::create_directories(_base / name); }
  void makeFile(const std::string& name) { std::ofstream(_base / name) << "text"; }
  std::string locate(const std::string& name, bool exactCase = false) const {
    return FileUtils::locateFolder(_base.string(), name, exactCase);
  }

  fs::path _base;
};

TEST(FileUtils, HasADefaultBaseFolder) {
  EXPECT_EQ(FileUtils::getDefaultBaseDir(), "res/korvat/");
}

TEST_F(FileUtilsFolders, FindsTheExactName) {
  makeFolder("9FFFFF0500000000-3");
  EXPECT_EQ(locate("9FFFFF0500000000-3"), "9FFFFF0500000000-3");
  EXPECT_EQ(locate("9FFFFF0500000000-3", true), "9FFFFF0500000000-3");
}

TEST_F(FileUtilsFolders, FindsTheOneNameThatDiffersInCase) {
  makeFolder("9fffFF05000000ab-3");
  EXPECT_EQ(locate("9FFFFF05000000AB-3"), "9fffFF05000000ab-3");
}

TEST_F(FileUtilsFolders, RefusesANameThatDiffersInCaseWhenAskedForTheExactOne) {
  makeFolder("abc");
  EXPECT_EQ(locate("ABC", true), "");
}

TEST_F(FileUtilsFolders, PrefersTheExactName) {
  makeFolder("ABC");
  makeFolder("abc");
  makeFolder("Abc");
  EXPECT_EQ(locate("abc"), "abc");
}

TEST_F(FileUtilsFolders, FindsNothingWhenTwoNamesDifferInCase) {
  makeFolder("ABC");
  makeFolder("Abc");
  EXPECT_EQ(locate("abc"), "");
}

TEST_F(FileUtilsFolders, FindsNoOtherName) {
  makeFolder("abcd");
  makeFolder("ab");
  makeFolder("xabc");
  EXPECT_EQ(locate("abc"), "");
}

TEST_F(FileUtilsFolders, FindsNoFile) {
  makeFile("abc");
  EXPECT_EQ(locate("abc"), "");
  EXPECT_EQ(locate("ABC"), "");
}

TEST_F(FileUtilsFolders, PassesOverAFileThatDiffersInCase) {
  makeFile("ABC");
  makeFolder("Abc");
  EXPECT_EQ(locate("abc"), "Abc");
}

TEST_F(FileUtilsFolders, FollowsALinkToAFolder) {
  makeFolder("target");
  fs::create_directory_symlink(_base / "target", _base / "link");
  fs::create_directory_symlink(_base / "nowhere", _base / "broken");
  EXPECT_EQ(locate("link"), "link");
  EXPECT_EQ(locate("LINK"), "link");
  EXPECT_EQ(locate("broken"), "");
  EXPECT_EQ(locate("BROKEN"), "");
}

TEST_F(FileUtilsFolders, FindsNoFolderFurtherDown) {
  makeFolder("outer/inner");
  EXPECT_EQ(locate("inner"), "");
  EXPECT_EQ(locate("outer/inner"), "");
}

TEST_F(FileUtilsFolders, TakesABaseFolderWithASlashAtItsEnd) {
  makeFolder("abc");
  EXPECT_EQ(FileUtils::locateFolder(_base.string() + "/", "abc", false), "abc");
}

TEST_F(FileUtilsFolders, NeverFindsNamesThatLeaveTheBaseFolder) {
  makeFolder("abc");
  makeFolder("a\\b");
  const std::vector<std::string> names = {"",
                                          ".",
                                          "..",
                                          "/",
                                          "abc/",
                                          "/abc",
                                          "./abc",
                                          "../" + _base.filename().string(),
                                          "abc/..",
                                          "a\\b",
                                          std::string("abc\0", 4),
                                          std::string("abc\0/..", 7)};
  for (const std::string& name : names) {
    SCOPED_TRACE(name);
    EXPECT_EQ(locate(name), "");
    EXPECT_EQ(locate(name, true), "");
  }
}

TEST_F(FileUtilsFolders, FindsNothingUnderABaseThatIsNoFolder) {
  makeFile("file");
  makeFolder("abc");
  EXPECT_EQ(FileUtils::locateFolder((_base / "missing").string(), "abc", false), "");
  EXPECT_EQ(FileUtils::locateFolder((_base / "file").string(), "abc", false), "");
  EXPECT_EQ(FileUtils::locateFolder(_base.string() + std::string("\0x", 2), "abc", false), "");
  EXPECT_EQ(FileUtils::locateFolder(std::string(100000, 'x'), "abc", false), "");
}

TEST_F(FileUtilsFolders, RefusesANameLongerThanAnyFolderName) {
  EXPECT_EQ(locate(std::string(100000, 'x')), "");
}

TEST_F(FileUtilsFolders, LooksUnderTheDefaultFolderWithoutABase) {
  const fs::path oldFolder = fs::current_path();
  makeFolder("res/korvat/abc");
  fs::current_path(_base);
  const std::string found = FileUtils::locateFolder("", "ABC", false);
  const std::string notFound = FileUtils::locateFolder("", "res", false);
  fs::current_path(oldFolder);
  EXPECT_EQ(found, "abc");
  EXPECT_EQ(notFound, "");
}

}  // namespace
}  // namespace zavri::util
