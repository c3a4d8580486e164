#include "korvat/base/Logger.h"

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/LogCapture.h"

namespace zavri::base {
namespace {

using test::LogCapture;

void logAtEveryLevel() {
  Logger::error("error\n");
  Logger::warning("warning\n");
  Logger::info("info\n");
  Logger::debug("debug\n");
  Logger::trace("trace\n");
}

TEST(Logger, StartsAtWarningLevel) {
  // No other test leaves the level changed: LogCapture restores it.
  EXPECT_EQ(_logLevel, Logger::Warning);
}

TEST(Logger, NumbersItsLevelsFromZero) {
  EXPECT_EQ(Logger::Silent, -1);
  EXPECT_EQ(Logger::Error, 0);
  EXPECT_EQ(Logger::Warning, 1);
  EXPECT_EQ(Logger::Info, 2);
  EXPECT_EQ(Logger::Debug, 3);
  EXPECT_EQ(Logger::Trace, 4);
}

struct LevelCase {
  std::string name;
  Logger::Level level;
  std::vector<std::string> texts;
};

class LoggerLevels : public testing::TestWithParam<LevelCase> {};

TEST_P(LoggerLevels, WritesMessagesUpToTheLevel) {
  const LogCapture log(GetParam().level);
  logAtEveryLevel();
  EXPECT_EQ(log.texts(), GetParam().texts);
}

const std::vector<LevelCase> kLevelCases = {
    {"Silent", Logger::Silent, {}},
    {"Error", Logger::Error, {"error\n"}},
    {"Warning", Logger::Warning, {"error\n", "warning\n"}},
    {"Info", Logger::Info, {"error\n", "warning\n", "info\n"}},
    {"Debug", Logger::Debug, {"error\n", "warning\n", "info\n", "debug\n"}},
    {"Trace", Logger::Trace, {"error\n", "warning\n", "info\n", "debug\n", "trace\n"}},
};
INSTANTIATE_TEST_SUITE_P(Levels, LoggerLevels, testing::ValuesIn(kLevelCases),
                         [](const auto& info) { return info.param.name; });

TEST(Logger, TellsWhichLevelsAreLogged) {
  const LogCapture log(Logger::Info);
  EXPECT_TRUE(isLogged(Logger::Error));
  EXPECT_TRUE(isLogged(Logger::Info));
  EXPECT_FALSE(isLogged(Logger::Debug));
}

TEST(Logger, HandsOverTheLevelOfEachMessage) {
  const LogCapture log;
  logAtEveryLevel();
  ASSERT_EQ(log.lines().size(), 5u);
  for (int level = Logger::Error; level <= Logger::Trace; ++level) {
    EXPECT_EQ(log.lines()[static_cast<std::size_t>(level)].level, level);
  }
}

TEST(Logger, FormatsItsArguments) {
  const LogCapture log;
  Logger::warning("[korvat] %s = %d (%ld), %5.1f%%\n", "level", -7, 1234567890123L, 2.25);
  EXPECT_EQ(log.texts(), std::vector<std::string>{"[korvat] level = -7 (1234567890123),   2.2%\n"});
}

TEST(Logger, WritesLongMessagesWhole) {
  const LogCapture log;
  const std::string longText(100000, 'x');
  Logger::error("<%s>\n", longText.c_str());
  EXPECT_EQ(log.texts(), std::vector<std::string>{"<" + longText + ">\n"});
}

TEST(Logger, WritesAnEmptyMessage) {
  const LogCapture log;
  Logger::error("%s", "");
  EXPECT_EQ(log.texts(), std::vector<std::string>{""});
}

TEST(Logger, WritesToStandardErrorWithoutASink) {
  const Logger::Sink oldSink = Logger::setSink(nullptr);
  testing::internal::CaptureStderr();
  Logger::error("to %s\n", "stderr");
  Logger::info("not at this level\n");
  const std::string written = testing::internal::GetCapturedStderr();
  Logger::setSink(oldSink);
  EXPECT_EQ(written, "to stderr\n");
}

TEST(Logger, ReturnsTheSinkThatIsReplaced) {
  std::vector<std::string> texts;
  const Logger::Sink oldSink =
      Logger::setSink([&texts](Logger::Level, const std::string& text) { texts.push_back(text); });
  const Logger::Sink ours = Logger::setSink(oldSink);
  ASSERT_TRUE(ours);
  ours(Logger::Error, "by hand\n");
  EXPECT_EQ(texts, std::vector<std::string>{"by hand\n"});
}

TEST(Logger, KeepsMessagesOfSeveralThreadsApart) {
  constexpr int kThreads = 4;
  constexpr int kMessages = 500;
  const LogCapture log;
  std::vector<std::thread> threads;
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([number] {
      for (int i = 0; i < kMessages; ++i) Logger::error("thread %d\n", number);
    });
  }
  for (std::thread& thread : threads) thread.join();

  std::vector<int> counts(kThreads, 0);
  for (const std::string& text : log.texts()) {
    ASSERT_EQ(text.size(), std::string("thread 0\n").size());
    ++counts[static_cast<std::size_t>(text[7] - '0')];
  }
  EXPECT_EQ(counts, std::vector<int>(kThreads, kMessages));
}

TEST(LogCapture, RestoresLevelAndSink) {
  const LogCapture outer(Logger::Error);
  {
    const LogCapture inner(Logger::Trace);
    Logger::trace("inner\n");
    EXPECT_EQ(inner.texts(), std::vector<std::string>{"inner\n"});
  }
  EXPECT_EQ(_logLevel, Logger::Error);
  Logger::trace("nowhere\n");
  Logger::error("outer\n");
  EXPECT_EQ(outer.texts(), std::vector<std::string>{"outer\n"});
}

TEST(LogCapture, FindsWholeLinesWithTheirLevel) {
  LogCapture log;
  Logger::warning("missing type\n");
  EXPECT_TRUE(log.contains(Logger::Warning, "missing type\n"));
  EXPECT_FALSE(log.contains(Logger::Error, "missing type\n"));
  EXPECT_FALSE(log.contains(Logger::Warning, "missing type"));
  EXPECT_EQ(log.texts(Logger::Warning), std::vector<std::string>{"missing type\n"});
  EXPECT_TRUE(log.texts(Logger::Error).empty());
  log.clear();
  EXPECT_TRUE(log.lines().empty());
}

}  // namespace
}  // namespace zavri::base
