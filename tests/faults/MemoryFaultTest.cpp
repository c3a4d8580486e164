#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "korvat/base/Logger.h"
#include "korvat/base/OrderMap.h"
#include "korvat/base/Value.h"
#include "korvat/base/XmlParser.h"
#include "korvat/builder/ResourceBuilder.h"
#include "korvat/format/Format.h"
#include "korvat/types/CpType.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/FpType.h"
#include "korvat/types/ResourceFileSet.h"
#include "korvat/types/TypeManager.h"
#include "tests/LogCapture.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"
#include "tests/faults/Faults.h"

// Memory runs out at each single request for it: the caller gets std::bad_alloc, nothing is lost,
// and what failed goes through when it is tried again.
namespace zavri::korvat {
namespace {

using base::Buffer;
using base::Endianess;
using base::Logger;
using test::bytesOf;
using test::MemoryFault;
using test::scalar;
using test::Shortage;
using test::tag;

constexpr const char* kOwnPrefix = "9FFFFF0000000000-3";
constexpr std::size_t kMostRequests = 100'000;  // of one operation; far more than any here needs

// Messages are made, since making one asks for memory, but not shown.
class Quiet {
 public:
  Quiet() : _old(Logger::setSink([](Logger::Level, const std::string&) {})) {}
  Quiet(const Quiet&) = delete;
  Quiet& operator=(const Quiet&) = delete;
  ~Quiet() { Logger::setSink(std::move(_old)); }

 private:
  Logger::Sink _old;
};

// A catalogue with an item of each kind, in two sets of which one needs the other: for the layout
// and for the display format of a type.
class SmallCatalogue {
 public:
  SmallCatalogue() {
    const std::string toFahrenheit = R"(text("%f", *1.8+32(0:853)))";
    _files.write(TypeId::StdPrefix, "enums", test::sharedEnums());
    _files.writeRaw(
        TypeId::StdPrefix, "nvs",
        "<ldrf><control/><items>" +
            test::nvt("_celsius", scalar("signed long", test::scaling(1, -2, 0)) +
                                      "<comment id='7'/><unit id='8'/>") +
            test::nvt("_mixed", test::structure(
                                    {{"power", test::enumeration("power_t")},
                                     {"high", test::bits(0, 4)},
                                     {"low", test::signedBits(4, 4)},
                                     {"ratio", test::floating("float")},
                                     {"either", test::unionOf({{"byte", scalar("unsigned short")},
                                                               {"word", scalar("unsigned long")}})},
                                     {"text", scalar("unsigned char", test::arraySize(4))},
                                     {"list", scalar("unsigned short"), test::arraySize(3)}})) +
            "</items><strings><string id='7'>a temperature of the outdoor air</string>"
            "<string id='8'>degrees Celsius, if you please</string></strings></ldrf>");
    _files.write(kOwnPrefix, "nvs",
                 "<nvt id='air' idx='1'><p-name>UNVTair</p-name>" +
                     test::structure({{"out", test::reference("SNVT_celsius")}}) +
                     "<formats><format id='UNVTair#US'>text(\"%f\", out*1.8+32)</format></formats>"
                     "</nvt>");
    _files.write(kOwnPrefix, "cps",
                 "<cpt id='setpoint' idx='1'><ref>SNVT_celsius</ref><formats>"
                 "<format id='UCPTsetpoint#US'>" +
                     toFahrenheit +
                     "</format><format id='UCPTsetpoint'>text(\"%f\", )</format></formats></cpt>");
    const std::string href = "http://types.lonmark.org/0000000000000000-0/nvs/SNVT_celsius";
    _files.write(kOwnPrefix, "fps",
                 "<fpt id='UFPTprobe' idx='4' key='20001'><f-nvs><f-nv id='nvoOut' idx='1'>"
                 "<mandatory>yes</mandatory><dir>output</dir><ref href='" +
                     href + "'>SNVT_celsius</ref></f-nv></f-nvs></fpt>");
  }

  TypeManager makeManager() const { return _files.makeManager(); }

 private:
  test::TempCatalogue _files;
};

TypeId nv(const std::string& prefix, const std::string& name) {
  return TypeId(ResourceType::Nv, prefix, name);
}

struct Sample {
  TypeId id;
  std::string hex;
  std::string json;
};

// 0x092E is 2350, in steps of 0.01; 1.8 * 23.5 + 32 = 74.3. 0x41200000 is 10.0 and 0xF in four
// signed bits is -1.
const std::vector<Sample>& samples() {
  static const std::vector<Sample> kSamples{
      {nv("", "_celsius"), "092E", "23.5"},
      {nv("", "_mixed"), "017F41200000000531323300010203",
       R"({"power":"PWR_ON","high":7,"low":-1,"ratio":10.0,"either":{"byte":0,"word":5},)"
       R"("text":"123","list":[1,2,3]})"},
      {nv(kOwnPrefix, "air"), "092E", R"({"out":23.5})"},
      {nv(kOwnPrefix, "air-US"), "092E", R"({"out":74.3})"},
      {TypeId(ResourceType::Cp, kOwnPrefix, "setpoint"), "092E", "23.5"},
      {TypeId(ResourceType::Cp, kOwnPrefix, "setpoint-US"), "092E", "74.3"},
  };
  return kSamples;
}

// Lets memory run out at the first request of `operation`, at the second, and so on, until it gets
// through: it must fail with std::bad_alloc and nothing else, or do what it should all the same,
// which it checks itself (giving spare room back asks for memory and can do without).
// `prepare` runs before each and `check` after each, with memory. Returns the number of requests
// that were refused.
std::size_t failEachRequest(Shortage shortage, const std::function<void()>& prepare,
                            const std::function<void()>& operation,
                            const std::function<void()>& check) {
  for (std::size_t n = 1; n < kMostRequests; ++n) {
    SCOPED_TRACE("request " + std::to_string(n));
    prepare();
    bool isDone = false;
    {
      const MemoryFault fault(n, shortage);
      try {
        operation();
        isDone = true;
      } catch (const std::bad_alloc&) {
      }
    }
    const bool hasStruck = MemoryFault::hasStruck();
    EXPECT_TRUE(isDone || hasStruck) << "std::bad_alloc without a reason";
    check();
    if (!hasStruck || testing::Test::HasFailure()) return n - 1;
  }
  ADD_FAILURE() << "the operation never got through";
  return kMostRequests;
}

class MemoryFaultTest : public testing::TestWithParam<Shortage> {
 protected:
  void SetUp() override {
    // What is made once and stays is no loss.
    TypeManager manager = _catalogue.makeManager();
    convertAll(manager);
  }

  static void convertAll(TypeManager& manager) {
    for (const Sample& sample : samples()) {
      SCOPED_TRACE(sample.id.toString());
      json::Value value;
      ASSERT_TRUE(manager.rawToJson(sample.id, bytesOf(sample.hex), value, Endianess::Big, true));
      EXPECT_EQ(value.stringify(), sample.json);
    }
    const FpType* profile = manager.getFpType(manager.searchFpType(kOwnPrefix, 20001));
    ASSERT_NE(profile, nullptr);
    ASSERT_EQ(profile->getNvColl().size(), 1u);
    EXPECT_EQ(profile->getNvColl()[0]->getTypeId(), nv("", "_celsius"));
  }

  const SmallCatalogue _catalogue;
  const Quiet _quiet;
};

// --- Loading ---

TEST_P(MemoryFaultTest, LeavesNothingHalfReadWhenALoadFails) {
  std::unique_ptr<TypeManager> manager;
  long liveBlocks = 0;
  const std::size_t requestCount = failEachRequest(
      GetParam(),
      [&] {
        manager.reset();
        liveBlocks = test::countLiveBlocks();
        manager = std::make_unique<TypeManager>(_catalogue.makeManager());
      },
      [&] {
        for (const Sample& sample : samples()) {
          if (manager->getVarType(sample.id) == nullptr) ADD_FAILURE() << sample.id.toString();
        }
        manager->getType(TypeId(ResourceType::Enum, "", "power_t"));
        static_cast<void>(manager->searchFpType(kOwnPrefix, 20001));
      },
      [&] {
        convertAll(*manager);
        manager.reset();
        EXPECT_EQ(test::countLiveBlocks(), liveBlocks);
      });
  EXPECT_GT(requestCount, 500u);
}

TEST_P(MemoryFaultTest, FailsThePassWithAWarningAndSaysThatMemoryRanOut) {
  TypeManager manager = _catalogue.makeManager();
  const std::string path = manager.getBaseDir() + "/" + TypeId::StdPrefix + "/enums.xml";
  const std::string warning = "while parsing file '" + path + "': std::bad_alloc\n";
  int failedPassCount = 0;
  bool isLoaded = false;
  for (std::size_t n = 1; n < kMostRequests && !isLoaded; ++n) {
    SCOPED_TRACE("request " + std::to_string(n));
    // None of the manager's sets, and so without a group that could take the items.
    ResourceFileSet fileSet(&manager, TypeId::StdPrefix.c_str());
    builder::ResourceBuilder builder(fileSet);
    test::LogCapture log(Logger::Warning);
    try {
      const MemoryFault fault(n, Shortage::Once);
      isLoaded = builder.load(path, true);
    } catch (const std::bad_alloc&) {  // before the file is open, or where it was to be reported
      continue;
    }
    EXPECT_EQ(isLoaded, !MemoryFault::hasStruck());
    EXPECT_EQ(builder.isOutOfMemory(), !isLoaded);
    if (isLoaded) break;
    ++failedPassCount;
    const std::vector<std::string> texts = log.texts();
    EXPECT_EQ(std::count_if(
                  texts.begin(), texts.end(),
                  [&](const std::string& text) { return text.find(warning) != std::string::npos; }),
              1);
  }
  EXPECT_TRUE(isLoaded);
  EXPECT_GT(failedPassCount, 50);
}

// --- Conversion ---

TEST_P(MemoryFaultTest, ConvertsRawToJsonAfterAFailure) {
  TypeManager manager = _catalogue.makeManager();
  convertAll(manager);
  for (const Sample& sample : samples()) {
    SCOPED_TRACE(sample.id.toString());
    const Buffer raw = bytesOf(sample.hex);
    long liveBlocks = 0;
    failEachRequest(
        GetParam(), [&] { liveBlocks = test::countLiveBlocks(); },
        [&] {
          json::Value value;
          EXPECT_TRUE(manager.rawToJson(sample.id, raw, value, Endianess::Big, true));
          if (value.stringify() != sample.json) ADD_FAILURE() << value.stringify();
        },
        [&] { EXPECT_EQ(test::countLiveBlocks(), liveBlocks); });
  }
  convertAll(manager);
}

TEST_P(MemoryFaultTest, ConvertsJsonToRawAfterAFailure) {
  TypeManager manager = _catalogue.makeManager();
  convertAll(manager);
  for (const Sample& sample : samples()) {
    SCOPED_TRACE(sample.id.toString());
    const Buffer expected = bytesOf(sample.hex);
    long liveBlocks = 0;
    failEachRequest(
        GetParam(), [&] { liveBlocks = test::countLiveBlocks(); },
        [&] {
          json::Value value;
          std::string error;
          EXPECT_TRUE(json::Value::parse(sample.json, value, error));
          Buffer raw;
          EXPECT_TRUE(manager.jsonToRaw(sample.id, value, raw, Endianess::Big, true));
          EXPECT_TRUE(raw == expected);
        },
        [&] { EXPECT_EQ(test::countLiveBlocks(), liveBlocks); });
  }
  convertAll(manager);
}

TEST_P(MemoryFaultTest, LoadsWithinAConversionAgainAfterAFailure) {
  const Sample& sample = samples()[1];  // needs its enumeration while it is converted
  const Buffer raw = bytesOf(sample.hex);
  std::unique_ptr<TypeManager> manager;
  failEachRequest(
      GetParam(), [&] { manager = std::make_unique<TypeManager>(_catalogue.makeManager()); },
      [&] {
        json::Value value;
        EXPECT_TRUE(manager->rawToJson(sample.id, raw, value, Endianess::Big, true));
        if (value.stringify() != sample.json) ADD_FAILURE() << value.stringify();
      },
      [&] { convertAll(*manager); });
}

// --- Parsers ---

class CountingParser : public xml::XmlParser {
 public:
  int elementCount = 0;

 protected:
  void onElement(const xml::Element&, const xml::Attributes&) override { ++elementCount; }
  void onElementEnd(const xml::Element&) override {}
  void onValue(const std::string&) override {}
};

TEST_P(MemoryFaultTest, ParsesXmlWithTheSameParserAfterAFailure) {
  const std::string text = "<a b='" + std::string(40, 'x') + "'><c/><d>" + std::string(40, 'y') +
                           "</d><e f='1' g='2'/></a>";
  std::unique_ptr<CountingParser> parser;
  failEachRequest(
      GetParam(), [&] { parser = std::make_unique<CountingParser>(); },
      [&] {
        std::istringstream stream(text);
        EXPECT_EQ(parser->parse(stream), xml::XmlParser::State::Complete);
      },
      [&] {
        parser->elementCount = 0;
        std::istringstream stream(text);
        EXPECT_EQ(parser->parse(stream), xml::XmlParser::State::Complete);
        EXPECT_EQ(parser->elementCount, 4);
      });
}

TEST_P(MemoryFaultTest, LeavesTheValueAloneWhenAJsonTextCannotBeRead) {
  const std::string nested = "{\"a long member name\":[" + std::string(50, '[') +
                             std::string(50, ']') + ",\"" + std::string(600, 'x') + "\"]}";
  json::Value value;
  std::string error;
  failEachRequest(
      GetParam(), [&] { value.setValue(std::int32_t{42}); },
      [&] { EXPECT_TRUE(json::Value::parse(nested, value, error)); },
      [&] {
        if (MemoryFault::hasStruck()) {
          EXPECT_EQ(value.stringify(), "42");
        } else {
          EXPECT_EQ(value.stringify(), nested);
        }
      });
}

TEST_P(MemoryFaultTest, LeavesAMapAsItWasWhenAKeyCannotBeAdded) {
  for (int size : {0, 1, 15, 16, 31, 32, 64}) {
    SCOPED_TRACE("size " + std::to_string(size));
    base::TOrderMap<int> map;
    for (int i = 0; i < size; ++i) map["a key of so many characters " + std::to_string(i)] = i;
    const base::TOrderMap<int> before = map;
    const std::string key = "a key that is missing so far";
    failEachRequest(
        GetParam(), [&] { map = before; }, [&] { map[key] = -1; },
        [&] {
          const bool isAdded = map.find(key) != nullptr;
          EXPECT_NE(isAdded, MemoryFault::hasStruck());
          EXPECT_EQ(map.size(), before.size() + (isAdded ? 1 : 0));
          map["another key"] = -2;
          ASSERT_NE(map.find("another key"), nullptr);
          for (const auto& [name, value] : before) EXPECT_EQ(*map.find(name), value);
        });
  }
}

INSTANTIATE_TEST_SUITE_P(Shortages, MemoryFaultTest,
                         testing::Values(Shortage::Once, Shortage::Lasting), [](const auto& info) {
                           return info.param == Shortage::Once ? "Once" : "Lasting";
                         });

}  // namespace
}  // namespace zavri::korvat
