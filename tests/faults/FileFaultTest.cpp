#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <string>

#include "korvat/types/TypeManager.h"
#include "korvat/types/VarType.h"
#include "tests/LogCapture.h"
#include "tests/Sanitizers.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"
#include "tests/faults/Faults.h"

// Files that cannot be read, or not to their end: there is no type, a message says which file it
// was, and the next request reads the file again.
namespace zavri::korvat {
namespace {

using base::Logger;
using test::kIsSanitized;
using test::LogCapture;
using test::ReadFault;
using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

const TypeId kFirst(ResourceType::Nv, "", "_first");
const TypeId kLast(ResourceType::Nv, "", "_last");

// A file of network variables that takes several reads: of 64 KiB each, as often as a read asks
// for.
class FileFaultTest : public testing::Test {
 protected:
  FileFaultTest() : _manager(_files.makeManager()) {
    write();
    _path = _files.path() + "/" + TypeId::StdPrefix + "/nvs.xml";
  }

  void write() {
    std::string items = test::nvt("_first", test::scalar("unsigned short"));
    items += std::string(250'000, '\n');
    items += test::nvt("_last", test::scalar("unsigned short"));
    _files.write(TypeId::StdPrefix, "nvs", items);
  }

  void expectEverything() {
    EXPECT_NE(_manager.getType(kFirst), nullptr);
    EXPECT_NE(_manager.getType(kLast), nullptr);
  }

  std::string parseWarning(const std::string& pass) const {
    return "[ResourceBuilder][" + pass + "] could not parse file '" + _path + "'\n";
  }
  std::string loadWarning(const std::string& pass) const {
    return "[ResourceBuilder][" + pass + "] cannot load '" + _path + "'\n";
  }

  test::TempCatalogue _files;
  TypeManager _manager;
  std::string _path;
};

// Runs `check` in a child process, which may give up what a process cannot get back. True when it
// returned true.
template <typename Check>
bool succeedsInAChild(Check check) {
  const pid_t child = fork();
  if (child == 0) _exit(check() ? 0 : 1);
  int status = 0;
  return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
         WEXITSTATUS(status) == 0;
}

// --- Reads ---

// How many reads the two passes over the file take.
std::size_t countReads(const test::TempCatalogue& files) {
  TypeManager manager = files.makeManager();
  const ReadFault none([](std::size_t, int) { return 0; });
  manager.getType(kFirst);
  return ReadFault::getCount();
}

TEST_F(FileFaultTest, GivesNoTypeWhenAnyReadFails) {
  const std::size_t readCount = countReads(_files);
  ASSERT_GT(readCount, 6u);  // the middle of the file is met in both passes
  for (std::size_t bad = 1; bad <= readCount; ++bad) {
    SCOPED_TRACE("read " + std::to_string(bad));
    _manager = _files.makeManager();
    LogCapture log(Logger::Warning);
    {
      const ReadFault fault([&](std::size_t number, int) { return number == bad ? EIO : 0; });
      EXPECT_EQ(_manager.getType(kFirst), nullptr);
    }
    const std::string pass = bad <= readCount / 2 ? "M_CollectStrings" : "M_BuildResources";
    EXPECT_THAT(log.texts(), ElementsAre(parseWarning(pass)));
    expectEverything();
  }
}

TEST_F(FileFaultTest, GivesNoTypeWhenTheFileShrinksMeanwhile) {
  const std::size_t readCount = countReads(_files);
  for (std::size_t moment = 2; moment < readCount; ++moment) {
    SCOPED_TRACE("read " + std::to_string(moment));
    _manager = _files.makeManager();
    write();
    LogCapture log(Logger::Warning);
    const ReadFault fault([&](std::size_t number, int) {
      if (number == moment) fs::resize_file(_path, 1000);
      return 0;
    });
    EXPECT_EQ(_manager.getType(kFirst), nullptr);
    EXPECT_EQ(log.lines().size(), 1u);
    write();
    expectEverything();
  }
}

TEST_F(FileFaultTest, GivesNoTypeWhenTheFileVanishesBetweenItsTwoPasses) {
  LogCapture log(Logger::Warning);
  bool isGone = false;
  {
    const ReadFault fault([&](std::size_t, int) {
      if (!isGone) fs::rename(_path, _path + ".away");
      isGone = true;
      return 0;
    });
    EXPECT_EQ(_manager.getType(kFirst), nullptr);
  }
  EXPECT_THAT(log.texts(), ElementsAre(loadWarning("M_BuildResources")));
  fs::rename(_path + ".away", _path);
  expectEverything();
}

// --- What is no file ---

TEST_F(FileFaultTest, GivesNoTypeForAFolderInPlaceOfTheFile) {
  fs::remove(_path);
  fs::create_directory(_path);
  LogCapture log(Logger::Warning);
  EXPECT_EQ(_manager.getType(kFirst), nullptr);
  EXPECT_THAT(log.texts(), ElementsAre(parseWarning("M_CollectStrings")));
  fs::remove(_path);
  write();
  expectEverything();
}

// Nobody may ever write into it: opening it would not end.
TEST_F(FileFaultTest, DoesNotWaitForAPipeInPlaceOfTheFile) {
  fs::remove(_path);
  ASSERT_EQ(mkfifo(_path.c_str(), 0600), 0);
  LogCapture log(Logger::Warning);
  EXPECT_EQ(_manager.getType(kFirst), nullptr);
  EXPECT_THAT(log.texts(), ElementsAre(loadWarning("M_CollectStrings")));
  fs::remove(_path);
  write();
  expectEverything();
}

TEST_F(FileFaultTest, GivesNoTypeForALinkToItself) {
  fs::remove(_path);
  fs::create_symlink(_path, _path);
  LogCapture log(Logger::Warning);
  EXPECT_EQ(_manager.getType(kFirst), nullptr);
  EXPECT_THAT(log.texts(), ElementsAre(loadWarning("M_CollectStrings")));
}

// --- What may not be read ---

TEST_F(FileFaultTest, GivesNoTypeWithoutPermissionToReadTheFile) {
  fs::permissions(_path, fs::perms::none);
  EXPECT_TRUE(succeedsInAChild([this] {
    if (geteuid() == 0 && setuid(65534) != 0) return false;
    LogCapture log(Logger::Warning);
    return _manager.getType(kFirst) == nullptr && log.lines().size() == 1 &&
           log.contains(Logger::Warning, loadWarning("M_CollectStrings"));
  }));
  fs::permissions(_path, fs::perms::owner_read);
  expectEverything();
}

TEST_F(FileFaultTest, GivesNoTypeWithoutPermissionToEnterTheFolder) {
  fs::permissions(_files.path(), fs::perms::none);
  EXPECT_TRUE(succeedsInAChild([this] {
    if (geteuid() == 0 && setuid(65534) != 0) return false;
    LogCapture log(Logger::Warning);
    return _manager.getType(kFirst) == nullptr && log.lines().size() == 1 &&
           log.contains(Logger::Warning, loadWarning("M_CollectStrings"));
  }));
  fs::permissions(_files.path(), fs::perms::owner_all);
  expectEverything();
}

TEST_F(FileFaultTest, ReadsTheFileOnceItMayBeOpened) {
  if (kIsSanitized) GTEST_SKIP() << "the sanitizer itself opens pipes, to look at memory";
  EXPECT_TRUE(succeedsInAChild([this] {
    rlimit files{};
    if (getrlimit(RLIMIT_NOFILE, &files) != 0) return false;
    const rlimit none{0, files.rlim_max};
    if (setrlimit(RLIMIT_NOFILE, &none) != 0) return false;
    LogCapture log(Logger::Warning);
    const bool isRefused = _manager.getType(kFirst) == nullptr;
    const bool isTold = log.contains(Logger::Warning, loadWarning("M_CollectStrings"));
    if (setrlimit(RLIMIT_NOFILE, &files) != 0) return false;
    return isRefused && isTold && _manager.getType(kFirst) != nullptr;
  }));
}

}  // namespace
}  // namespace zavri::korvat
