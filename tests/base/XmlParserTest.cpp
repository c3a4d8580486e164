#include "korvat/base/XmlParser.h"

#include <algorithm>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace zavri::xml {
namespace {

using State = XmlParser::State;
using Events = std::vector<std::string>;

// Writes down what it is told: "<name attribute=value", "=path:text" and ">name".
class RecordingParser : public XmlParser {
 public:
  State parseText(const std::string& text) {
    std::istringstream stream(text);
    return parse(stream);
  }

  const Events& events() const { return _events; }
  void forgetEvents() { _events.clear(); }
  // Runs at each event, after it was written down.
  void setReaction(std::function<void(const std::string&)> reaction) {
    _reaction = std::move(reaction);
  }
  std::string path() const {
    std::string path;
    for (const Element& element : getElementStack()) path += "/" + element.name;
    return path;
  }

 protected:
  void onElement(const Element& element, const Attributes& attributes) override {
    std::string event = "<" + element.name;
    for (const auto& [name, value] : attributes) event += " " + name + "=" + value;
    EXPECT_EQ(getElementStack().back().name, element.name);
    record(event);
  }
  void onElementEnd(const Element& element) override {
    EXPECT_EQ(getElementStack().back().name, element.name);
    record(">" + element.name);
  }
  void onValue(const std::string& value) override { record("=" + path() + ":" + value); }

 private:
  void record(const std::string& event) {
    _events.push_back(event);
    if (_reaction) _reaction(event);
  }

  Events _events;
  std::function<void(const std::string&)> _reaction;
};

TEST(Attributes, KeepsTheOrderAndFindsByName) {
  Attributes attributes;
  EXPECT_TRUE(attributes.empty());
  EXPECT_EQ(attributes.begin(), attributes.end());
  attributes.add("b", "1");
  attributes.add("a", "2");
  attributes.add("B", "");
  const std::vector<Attributes::Entry> expected = {{"b", "1"}, {"a", "2"}, {"B", ""}};
  EXPECT_EQ(std::vector<Attributes::Entry>(attributes.begin(), attributes.end()), expected);
  ASSERT_NE(attributes.find("a"), nullptr);
  EXPECT_EQ(*attributes.find("a"), "2");
  EXPECT_EQ(*attributes.find("b"), "1");
  EXPECT_EQ(*attributes.find("B"), "");
  EXPECT_EQ(attributes.find("A"), nullptr);
  EXPECT_EQ(attributes.find(""), nullptr);
  EXPECT_FALSE(attributes.empty());
}

TEST(Attributes, AreGoneAfterClear) {
  Attributes attributes;
  attributes.add("a", "1");
  attributes.add("b", "2");
  attributes.clear();
  EXPECT_TRUE(attributes.empty());
  EXPECT_EQ(attributes.find("a"), nullptr);
  attributes.add("c", "3");
  const std::vector<Attributes::Entry> expected = {{"c", "3"}};
  EXPECT_EQ(std::vector<Attributes::Entry>(attributes.begin(), attributes.end()), expected);
  EXPECT_EQ(attributes.find("b"), nullptr);
}

TEST(XmlParser, HasFixedStateNumbers) {
  EXPECT_EQ(static_cast<int>(State::Idle), 0);
  EXPECT_EQ(static_cast<int>(State::Parsing), 1);
  EXPECT_EQ(static_cast<int>(State::Complete), 2);
  EXPECT_EQ(static_cast<int>(State::Stopped), 3);
  EXPECT_EQ(static_cast<int>(State::Failed), 4);
}

// --- Events ---

struct EventCase {
  std::string name;
  std::string text;
  Events events;
};

class XmlParserEvents : public testing::TestWithParam<EventCase> {};

TEST_P(XmlParserEvents, ComeInDocumentOrder) {
  RecordingParser parser;
  EXPECT_EQ(parser.parseText(GetParam().text), State::Complete) << parser.getError();
  EXPECT_EQ(parser.events(), GetParam().events);
  EXPECT_EQ(parser.getState(), State::Complete);
  EXPECT_EQ(parser.getError(), "");
  EXPECT_TRUE(parser.path().empty());
}

const std::vector<EventCase> kEventCases = {
    {"EmptyRoot", "<a/>", {"<a", ">a"}},
    {"EmptyLeaf", "<a></a>", {"<a", ">a"}},
    {"Leaf", "<a>x</a>", {"<a", "=/a:x", ">a"}},
    {"UntrimmedLeaf", "<a> x\n\ty </a>", {"<a", "=/a: x\n\ty ", ">a"}},
    {"BlankLeaf", "<a> </a>", {"<a", "=/a: ", ">a"}},
    {"Nested",
     "<a>\n <b>x</b>\n <c><d>y</d></c>\n</a>",
     {"<a", "<b", "=/a/b:x", ">b", "<c", "<d", "=/a/c/d:y", ">d", ">c", ">a"}},
    {"MixedText", "<a>before<b>x</b>after</a>", {"<a", "<b", "=/a/b:x", ">b", ">a"}},
    {"TextBehindEmptyChild", "<a><b/>after</a>", {"<a", "<b", ">b", ">a"}},
    {"TextBeforeEmptyChild", "<a>before<b/></a>", {"<a", "<b", ">b", ">a"}},
    {"Siblings",
     "<a><b>1</b><b>2</b></a>",
     {"<a", "<b", "=/a/b:1", ">b", "<b", "=/a/b:2", ">b", ">a"}},
    {"Attributes", "<a z='1' b=\"two words\" c=''/>", {"<a z=1 b=two words c=", ">a"}},
    {"AttributesOfEachElement",
     "<a x='1'><b/><c y='2' z='3'/></a>",
     {"<a x=1", "<b", ">b", "<c y=2 z=3", ">c", ">a"}},
    {"PredefinedEntities",
     "<a b='&lt;&quot;'>&lt;&amp;&gt;&apos;&#65;&#x20AC;</a>",
     {"<a b=<\"", "=/a:<&>'A\xE2\x82\xAC", ">a"}},
    {"CharacterData", "<a>x<![CDATA[<y>&amp;]]>z</a>", {"<a", "=/a:x<y>&amp;z", ">a"}},
    {"EmptyCharacterData", "<a><![CDATA[]]></a>", {"<a", ">a"}},
    {"CommentWithinText", "<a>x<!-- c -->y<?p i?>z</a>", {"<a", "=/a:xyz", ">a"}},
    {"LineEnds", "<a>x\r\ny\rz</a>", {"<a", "=/a:x\ny\nz", ">a"}},
    {"Prolog",
     "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?><!-- c --><a/><!-- d -->\n",
     {"<a", ">a"}},
    {"Latin1",
     "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</a>",
     {"<a", "=/a:\xC3\xA4", ">a"}},
    {"Utf16",
     std::string("\xFE\xFF\0<\0a\0>\x20\xAC\0<\0/\0a\0>", 18),
     {"<a", "=/a:\xE2\x82\xAC", ">a"}},
    {"NamesAreAsWritten", "<N:a N:b='1'/>", {"<N:a N:b=1", ">N:a"}},
    {"DocumentType",
     "<!DOCTYPE a [<!ELEMENT a ANY><!ATTLIST a b CDATA 'x'>]><a/>",
     {"<a b=x", ">a"}},
    // Naming an outer document type is harmless, because it is not fetched.
    {"OuterDocumentType",
     "<!DOCTYPE a SYSTEM 'file:///nowhere.dtd'><a>x</a>",
     {"<a", "=/a:x", ">a"}},
    {"EntityOfOuterDocumentTypeInAttribute",
     "<!DOCTYPE a SYSTEM 'x.dtd'><a b='1&x;2'/>",
     {"<a b=12", ">a"}},
};
INSTANTIATE_TEST_SUITE_P(Texts, XmlParserEvents, testing::ValuesIn(kEventCases),
                         [](const auto& info) { return info.param.name; });

TEST(XmlParser, ShowsTheOpenElements) {
  RecordingParser parser;
  Events paths;
  parser.setReaction([&](const std::string& event) { paths.push_back(event + parser.path()); });
  EXPECT_EQ(parser.parseText("<a><b><c/></b>t<d/></a>"), State::Complete);
  EXPECT_EQ(paths, (Events{"<a/a", "<b/a/b", "<c/a/b/c", ">c/a/b/c", ">b/a/b", "<d/a/d", ">d/a/d",
                           ">a/a"}));
}

TEST(XmlParser, IsParsingDuringCallbacks) {
  RecordingParser parser;
  EXPECT_EQ(parser.getState(), State::Idle);
  std::vector<State> states;
  std::vector<unsigned long> lines;
  parser.setReaction([&](const std::string&) {
    states.push_back(parser.getState());
    lines.push_back(parser.getLine());
  });
  EXPECT_EQ(parser.parseText("<a>\n\n<b/></a>"), State::Complete);
  EXPECT_EQ(states, std::vector<State>(4, State::Parsing));
  EXPECT_EQ(lines, (std::vector<unsigned long>{1, 3, 3, 3}));
}

TEST(XmlParser, DeliversLongTextOnceAndWhole) {
  std::string longText;
  for (int i = 0; i < 60000; ++i) longText += "line " + std::to_string(i) + "\n";
  ASSERT_GT(longText.size(), 8u * 64u * 1024u);
  RecordingParser parser;
  EXPECT_EQ(parser.parseText("<a><b>" + longText + "</b></a>"), State::Complete);
  EXPECT_EQ(parser.events(), (Events{"<a", "<b", "=/a/b:" + longText, ">b", ">a"}));
}

// Every kind of token is cut by the border of the blocks in which a document is read.
TEST(XmlParser, ReadsTokensAcrossTheBordersOfBlocks) {
  const std::string element =
      "<elem attr='v&lt;\xC3\xA4'>t&#x20AC;\xE2\x82\xAC<![CDATA[c]]></elem>";
  const std::string value =
      "t\xE2\x82\xAC\xE2\x82\xAC"
      "c";
  for (std::size_t shift = 0; shift < element.size(); ++shift) {
    SCOPED_TRACE(shift);
    const std::string start = "<a>";
    const std::string padding(64 * 1024 - start.size() - shift, ' ');
    RecordingParser parser;
    ASSERT_EQ(parser.parseText(start + padding + element + "</a>"), State::Complete);
    ASSERT_EQ(parser.events(),
              (Events{"<a", "<elem attr=v<\xC3\xA4", "=/a/elem:" + value, ">elem", ">a"}));
  }
}

TEST(XmlParser, ReadsADocumentThatEndsWithABlock) {
  for (const std::size_t size : {65535u, 65536u, 65537u, 131072u}) {
    SCOPED_TRACE(size);
    const std::string text(size - 7, 'x');
    RecordingParser parser;
    EXPECT_EQ(parser.parseText("<a>" + text + "</a>"), State::Complete);
    EXPECT_EQ(parser.events(), (Events{"<a", "=/a:" + text, ">a"}));
  }
}

TEST(XmlParser, ReadsManyElements) {
  std::string text = "<a>";
  for (int i = 0; i < 50000; ++i) text += "<an-element-with-a-long-name id='some longer value'/>";
  RecordingParser parser;
  EXPECT_EQ(parser.parseText(text + "</a>"), State::Complete);
  ASSERT_EQ(parser.events().size(), 100002u);
  EXPECT_EQ(parser.events()[99999], "<an-element-with-a-long-name id=some longer value");
}

TEST(XmlParser, ReadsATagAndACommentOfAMebibyteEach) {
  const std::string value(XmlParser::kMaxTagSize, 'v');
  RecordingParser parser;
  EXPECT_EQ(parser.parseText("<a b='" + value.substr(8) + "'><!--" + value.substr(8) + "--></a>"),
            State::Complete);
  ASSERT_EQ(parser.events().size(), 2u);
  EXPECT_EQ(parser.events()[0].size(), value.size() - 3);
}

TEST(XmlParser, RefusesALongerTag) {
  const std::string value(2 * XmlParser::kMaxTagSize, 'v');
  RecordingParser parser;
  EXPECT_EQ(parser.parseText("<a b='" + value + "'/>"), State::Failed);
  EXPECT_EQ(parser.getError(), "more than 1048576 bytes in one tag or comment at line 1, column 1");
  EXPECT_TRUE(parser.events().empty());
}

// --- Skipping ---

struct SkipCase {
  std::string name;
  std::string text;
  Events events;
};

class XmlParserSkip : public testing::TestWithParam<SkipCase> {};

TEST_P(XmlParserSkip, DropsTheElementsNamedSkip) {
  RecordingParser parser;
  parser.setReaction([&parser](const std::string& event) {
    if (event.starts_with("<skip")) parser.skipElement();
  });
  EXPECT_EQ(parser.parseText(GetParam().text), State::Complete) << parser.getError();
  EXPECT_EQ(parser.events(), GetParam().events);
}

const std::vector<SkipCase> kSkipCases = {
    {"Text", "<a><skip>x</skip><b/></a>", {"<a", "<skip", "<b", ">b", ">a"}},
    {"Children",
     "<a><skip><b>x</b><c/></skip><b>y</b></a>",
     {"<a", "<skip", "<b", "=/a/b:y", ">b", ">a"}},
    {"Empty", "<a><skip/><b/></a>", {"<a", "<skip", "<b", ">b", ">a"}},
    {"OfTheSameName",
     "<a><skip><skip><skip/></skip></skip><b/></a>",
     {"<a", "<skip", "<b", ">b", ">a"}},
    {"OneBehindTheOther", "<a><skip><b/></skip><skip>x</skip></a>", {"<a", "<skip", "<skip", ">a"}},
    {"Root", "<skip><b>x</b></skip>", {"<skip"}},
    {"InnerOne", "<a><b><skip><c/></skip></b>x</a>", {"<a", "<b", "<skip", ">b", ">a"}},
    {"ParentIsNoLeaf", "<a><skip/>x</a>", {"<a", "<skip", ">a"}},
};
INSTANTIATE_TEST_SUITE_P(Texts, XmlParserSkip, testing::ValuesIn(kSkipCases),
                         [](const auto& info) { return info.param.name; });

TEST(XmlParser, SkipsNothingWhenAskedOutsideOfAnElementStart) {
  RecordingParser parser;
  parser.setReaction([&parser](const std::string& event) {
    if (!event.starts_with("<")) parser.skipElement();
  });
  parser.skipElement();
  EXPECT_EQ(parser.parseText("<a><b>x</b><c>y</c></a>"), State::Complete);
  EXPECT_EQ(parser.events(), (Events{"<a", "<b", "=/a/b:x", ">b", "<c", "=/a/c:y", ">c", ">a"}));
}

// --- Stopping ---

class XmlParserStop : public testing::TestWithParam<const char*> {};

TEST_P(XmlParserStop, EndsTheParseWithThatCallback) {
  const Events all = {"<a", "<b", "=/a/b:x", ">b", "<c", ">c", ">a"};
  RecordingParser parser;
  parser.setReaction([&parser](const std::string& event) {
    if (event == GetParam()) parser.stop(true);
  });
  EXPECT_EQ(parser.parseText("<a><b>x</b><c/></a>"), State::Stopped);
  EXPECT_EQ(parser.getState(), State::Stopped);
  EXPECT_EQ(parser.getError(), "");
  ASSERT_FALSE(parser.events().empty());
  EXPECT_EQ(parser.events().back(), GetParam());
  EXPECT_EQ(parser.events(),
            Events(all.begin(), std::find(all.begin(), all.end(), GetParam()) + 1));
}

INSTANTIATE_TEST_SUITE_P(Events, XmlParserStop,
                         testing::Values("<a", "<b", "=/a/b:x", ">b", "<c", ">c", ">a"),
                         [](const auto& info) { return "Event" + std::to_string(info.index); });

TEST(XmlParser, GoesOnWhenAStopIsTakenBack) {
  RecordingParser parser;
  parser.setReaction([&parser](const std::string&) {
    parser.stop(true);
    parser.stop(false);
  });
  EXPECT_EQ(parser.parseText("<a><b/></a>"), State::Complete);
  EXPECT_EQ(parser.events().size(), 4u);
}

TEST(XmlParser, StopsWhileAnElementIsSkipped) {
  RecordingParser parser;
  parser.setReaction([&parser](const std::string&) {
    parser.skipElement();
    parser.stop(true);
  });
  EXPECT_EQ(parser.parseText("<a><b/></a>"), State::Stopped);
  EXPECT_EQ(parser.events(), Events{"<a"});
}

TEST(XmlParser, ReadsNothingAfterAStopMadeBeforehand) {
  RecordingParser parser;
  parser.stop(true);
  EXPECT_EQ(parser.parseText("<a/>"), State::Stopped);
  EXPECT_TRUE(parser.events().empty());
  parser.reinit();
  EXPECT_EQ(parser.parseText("<a/>"), State::Complete);
}

TEST(XmlParser, DoesNotLookAtWhatFollowsAStop) {
  RecordingParser parser;
  parser.setReaction([&parser](const std::string&) { parser.stop(true); });
  EXPECT_EQ(parser.parseText("<a><b></a>"), State::Stopped);
}

// --- Another document ---

TEST(XmlParser, ForgetsEverythingOnReinit) {
  RecordingParser parser;
  parser.parseText("<a><b>x<");
  EXPECT_EQ(parser.getState(), State::Failed);
  parser.reinit();
  EXPECT_EQ(parser.getState(), State::Idle);
  EXPECT_EQ(parser.getError(), "");
  EXPECT_EQ(parser.path(), "");
  EXPECT_EQ(parser.getLine(), 1u);
}

class XmlParserAgain : public testing::TestWithParam<const char*> {};

TEST_P(XmlParserAgain, ParsesAnotherDocumentAfterwards) {
  RecordingParser parser;
  parser.setReaction([&parser](const std::string& event) {
    if (event == "<stop") parser.stop(true);
    if (event == "<skip") parser.skipElement();
    if (event == "<throw") throw std::runtime_error("thrown");
  });
  for (const bool isReinitialised : {true, false}) {
    SCOPED_TRACE(isReinitialised);
    try {
      parser.parseText(GetParam());
    } catch (const std::runtime_error&) {
      EXPECT_EQ(parser.getState(), State::Failed);
    }
    if (isReinitialised) parser.reinit();
    parser.forgetEvents();
    EXPECT_EQ(parser.parseText("<a b='1'><c>x</c></a>"), State::Complete) << parser.getError();
    EXPECT_EQ(parser.events(), (Events{"<a b=1", "<c", "=/a/c:x", ">c", ">a"}));
    EXPECT_EQ(parser.getError(), "");
  }
}

INSTANTIATE_TEST_SUITE_P(First, XmlParserAgain,
                         testing::Values("<x>text</x>", "<x><y>text", "", "<x><stop/></x>",
                                         "<x><skip><y>", "<x>text<throw/></x>",
                                         "<!DOCTYPE x [<!ENTITY e 'f'>]><x/>"),
                         [](const auto& info) { return "Document" + std::to_string(info.index); });

TEST(XmlParser, RefusesToStartOverWithinACallback) {
  RecordingParser parser;
  std::vector<State> states;
  parser.setReaction([&](const std::string&) {
    parser.reinit();
    states.push_back(parser.parseText("<inner/>"));
  });
  EXPECT_EQ(parser.parseText("<a>x</a>"), State::Complete);
  EXPECT_EQ(parser.events(), (Events{"<a", "=/a:x", ">a"}));
  EXPECT_EQ(states, std::vector<State>(3, State::Failed));
}

// --- Exceptions ---

class XmlParserThrow : public testing::TestWithParam<const char*> {};

TEST_P(XmlParserThrow, PassesTheExceptionOnAndCallsBackNoMore) {
  RecordingParser parser;
  parser.setReaction([](const std::string& event) {
    if (event == GetParam()) throw std::runtime_error("illegal state");
  });
  try {
    parser.parseText("<a><b>x</b><c/></a>");
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "illegal state");
  }
  EXPECT_EQ(parser.getState(), State::Failed);
  EXPECT_EQ(parser.events().back(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Events, XmlParserThrow,
                         testing::Values("<a", "<b", "=/a/b:x", ">b", "<c", ">c", ">a"),
                         [](const auto& info) { return "Event" + std::to_string(info.index); });

TEST(XmlParser, PassesOnWhatIsNoStandardException) {
  RecordingParser parser;
  parser.setReaction([](const std::string&) { throw "illegal state"; });
  EXPECT_THROW(parser.parseText("<a>x</a>"), const char*);
  EXPECT_EQ(parser.getError().substr(0, 20), "exception at line 1,");
}

// --- Documents that fail ---

struct FailCase {
  std::string name;
  std::string text;
  std::string error;
  Events events;
};

class XmlParserFail : public testing::TestWithParam<FailCase> {};

TEST_P(XmlParserFail, TellsWhatAndWhere) {
  RecordingParser parser;
  EXPECT_EQ(parser.parseText(GetParam().text), State::Failed);
  EXPECT_EQ(parser.getState(), State::Failed);
  EXPECT_EQ(parser.getError(), GetParam().error);
  EXPECT_EQ(parser.events(), GetParam().events);
}

const std::vector<FailCase> kFailCases = {
    {"Empty", "", "no element found at line 1, column 1", {}},
    {"Blank", " \n ", "no element found at line 2, column 2", {}},
    {"Text", "abc", "syntax error at line 1, column 1", {}},
    {"NoEnd", "<a>\n<b>x", "no element found at line 2, column 5", {"<a", "<b"}},
    {"WrongEnd", "<a><b></a>", "mismatched tag at line 1, column 9", {"<a", "<b"}},
    {"TwoRoots", "<a/><b/>", "junk after document element at line 1, column 5", {"<a", ">a"}},
    {"DuplicateAttribute", "<a b='1' b='2'/>", "duplicate attribute at line 1, column 10", {}},
    {"NoUtf8", "<a>\xE4</a>", "not well-formed (invalid token) at line 1, column 4", {"<a"}},
    {"ZeroByte",
     std::string("<a>\0</a>", 8),
     "not well-formed (invalid token) at line 1, column 4",
     {"<a"}},
    {"UnknownEncoding",
     "<?xml version='1.0' encoding='x-unheard-of'?><a/>",
     "unknown encoding at line 1, column 31",
     {}},
    {"UndefinedEntity", "<a>&x;</a>", "undefined entity at line 1, column 4", {"<a"}},
    {"UndefinedEntityInAttribute", "<a b='&x;'/>", "undefined entity at line 1, column 1", {}},
    {"EntityOfOuterDocumentType",
     "<!DOCTYPE a SYSTEM 'x.dtd'><a>&x;</a>",
     "undefined entity at line 1, column 31",
     {"<a"}},
    {"InternalEntity",
     "<!DOCTYPE a [\n<!ENTITY e 'text'>]><a>&e;</a>",
     "entity declaration at line 2, column 12",
     {}},
    {"ExternalEntity",
     "<!DOCTYPE a [<!ENTITY e SYSTEM 'file:///etc/hostname'>]><a>&e;</a>",
     "entity declaration at line 1, column 54",
     {}},
    {"PublicEntity",
     "<!DOCTYPE a [<!ENTITY e PUBLIC 'p' 'file:///etc/hostname'>]><a>&e;</a>",
     "entity declaration at line 1, column 58",
     {}},
    {"ParameterEntity",
     "<!DOCTYPE a [<!ENTITY % e 'text'>]><a/>",
     "entity declaration at line 1, column 27",
     {}},
    {"ExternalParameterEntity",
     "<!DOCTYPE a [<!ENTITY % e SYSTEM 'x.dtd'> %e;]><a/>",
     "entity declaration at line 1, column 41",
     {}},
    {"UnparsedEntity",
     "<!DOCTYPE a [<!NOTATION n SYSTEM 'n'><!ENTITY e SYSTEM 'x.gif' NDATA n>]><a/>",
     "entity declaration at line 1, column 70",
     {}},
    {"EntityThatIsNotUsed",
     "<!DOCTYPE a [<!ENTITY e ''>]><a/>",
     "entity declaration at line 1, column 25",
     {}},
    {"UndefinedParameterEntity",
     "<!DOCTYPE a [%x;<!ENTITY e 'text'>]><a>&e;</a>",
     "undefined entity at line 1, column 14",
     {}},
    {"ParameterEntityOfOuterDocumentType",
     "<!DOCTYPE a SYSTEM 'x.dtd' [%x;<!ENTITY e 'text'>]><a>&e;</a>",
     "undefined entity at line 1, column 29",
     {}},
};
INSTANTIATE_TEST_SUITE_P(Texts, XmlParserFail, testing::ValuesIn(kFailCases),
                         [](const auto& info) { return info.param.name; });

TEST(XmlParser, RefusesAnEntityBombBeforeItExpands) {
  std::string text = "<!DOCTYPE a [<!ENTITY e0 'lol'>";
  for (int i = 1; i < 12; ++i) {
    const std::string inner = "&e" + std::to_string(i - 1) + ";";
    text += "<!ENTITY e" + std::to_string(i) + " '";
    for (int j = 0; j < 10; ++j) text += inner;
    text += "'>";
  }
  RecordingParser parser;
  EXPECT_EQ(parser.parseText(text + "]><a>&e11;</a>"), State::Failed);
  EXPECT_EQ(parser.getError(), "entity declaration at line 1, column 26");
  EXPECT_TRUE(parser.events().empty());
}

std::string nested(std::size_t depth) {
  std::string text;
  for (std::size_t i = 0; i < depth; ++i) text += "<e>";
  for (std::size_t i = 0; i < depth; ++i) text += "</e>";
  return text;
}

TEST(XmlParser, ReadsTwoHundredOpenElements) {
  RecordingParser parser;
  EXPECT_EQ(parser.parseText(nested(200)), State::Complete);
  EXPECT_EQ(parser.events().size(), 400u);
}

TEST(XmlParser, RefusesMoreOpenElements) {
  RecordingParser parser;
  EXPECT_EQ(parser.parseText(nested(201)), State::Failed);
  EXPECT_EQ(parser.getError(), "more than 200 open elements at line 1, column 601");
  EXPECT_EQ(parser.events().size(), 200u);
}

TEST(XmlParser, CountsSkippedElementsAsOpenOnes) {
  RecordingParser parser;
  parser.setReaction([&parser](const std::string&) { parser.skipElement(); });
  EXPECT_EQ(parser.parseText(nested(200)), State::Complete);
  EXPECT_EQ(parser.parseText(nested(201)), State::Failed);
  EXPECT_EQ(parser.getError(), "more than 200 open elements at line 1, column 601");
}

TEST(XmlParser, RefusesAMillionOpenElements) {
  RecordingParser parser;
  EXPECT_EQ(parser.parseText(nested(1000000)), State::Failed);
}

const std::string kDocument =
    "<?xml version='1.0'?><!DOCTYPE a [<!ELEMENT a ANY>]><!-- c --><a b='1'>t<c>\xC3\xA4&lt;"
    "<![CDATA[x]]></c><?p i?><d/></a>";

TEST(XmlParser, RefusesADocumentCutAtAnyByte) {
  RecordingParser whole;
  ASSERT_EQ(whole.parseText(kDocument), State::Complete) << whole.getError();
  for (std::size_t size = 0; size < kDocument.size(); ++size) {
    SCOPED_TRACE(size);
    RecordingParser parser;
    EXPECT_EQ(parser.parseText(kDocument.substr(0, size)), State::Failed);
    EXPECT_FALSE(parser.getError().empty());
  }
}

TEST(XmlParser, SurvivesEveryFlippedBit) {
  for (std::size_t bit = 0; bit < 8 * kDocument.size(); ++bit) {
    SCOPED_TRACE(bit);
    std::string damaged = kDocument;
    damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << (bit % 8)));
    RecordingParser parser;
    const State state = parser.parseText(damaged);
    EXPECT_TRUE(state == State::Complete || state == State::Failed);
    EXPECT_EQ(parser.getError().empty(), state == State::Complete);
  }
}

// --- Streams that fail ---

// Gives `text` and then throws, as a stream buffer does whose file cannot be read on.
class FailingBuffer : public std::streambuf {
 public:
  explicit FailingBuffer(std::string text) : _text(std::move(text)) {
    setg(_text.data(), _text.data(), _text.data() + _text.size());
  }

 protected:
  int_type underflow() override { throw std::runtime_error("read error"); }

 private:
  std::string _text;
};

TEST(XmlParser, FailsWhenTheStreamFailsInTheMiddle) {
  for (const std::size_t size : {0u, 10u, 100000u}) {
    SCOPED_TRACE(size);
    FailingBuffer buffer("<a><b/>" + std::string(size, ' '));
    std::istream stream(&buffer);
    RecordingParser parser;
    EXPECT_EQ(parser.parse(stream), State::Failed);
    EXPECT_EQ(parser.getError().substr(0, 17), "unreadable stream");
  }
}

TEST(XmlParser, FailsWhenTheStreamFailsBehindTheDocument) {
  FailingBuffer buffer("<a/>");
  std::istream stream(&buffer);
  RecordingParser parser;
  EXPECT_EQ(parser.parse(stream), State::Failed);
}

TEST(XmlParser, PassesOnTheExceptionOfAStreamThatThrows) {
  FailingBuffer buffer("<a/>");
  std::istream stream(&buffer);
  stream.exceptions(std::ios::badbit);
  RecordingParser parser;
  EXPECT_THROW(parser.parse(stream), std::runtime_error);
  EXPECT_EQ(parser.getState(), State::Failed);
}

TEST(XmlParser, FailsOnAStreamThatWasNotOpened) {
  std::istringstream stream("<a/>");
  stream.setstate(std::ios::failbit);
  RecordingParser parser;
  EXPECT_EQ(parser.parse(stream), State::Failed);
  EXPECT_EQ(parser.getError(), "unreadable stream at line 1, column 1");

  std::istream noBuffer(nullptr);
  EXPECT_EQ(parser.parse(noBuffer), State::Failed);
}

// Gives one byte at a time, as a slow pipe does.
class TricklingBuffer : public std::streambuf {
 public:
  explicit TricklingBuffer(std::string text) : _text(std::move(text)) {}

 protected:
  int_type underflow() override {
    if (_next == _text.size()) return traits_type::eof();
    char* const byte = &_text[_next++];
    setg(byte, byte, byte + 1);
    return traits_type::to_int_type(*byte);
  }

 private:
  std::string _text;
  std::size_t _next = 0;
};

TEST(XmlParser, ReadsAStreamThatTrickles) {
  TricklingBuffer buffer("<a><b>x</b></a>");
  std::istream stream(&buffer);
  RecordingParser parser;
  EXPECT_EQ(parser.parse(stream), State::Complete);
  EXPECT_EQ(parser.events(), (Events{"<a", "<b", "=/a/b:x", ">b", ">a"}));
}

}  // namespace
}  // namespace zavri::xml
