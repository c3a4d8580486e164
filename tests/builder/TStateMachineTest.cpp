#include "korvat/builder/TStateMachine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/LogCapture.h"

namespace zavri::korvat::builder {
namespace {

using base::Logger;
using test::LogCapture;

// A door: 0 closed, 1 open, 2 locked; 1 push, 2 turn key; action 1 rings, 2 jams it in state 9.
class Door : public TStateMachine<Door> {
 public:
  static constexpr std::array<Transition, 5> kTransitions{{
      {0, 0, 2, 2},  // never taken
      {0, 1, 1, 1},
      {1, 1, 0, 0},
      {0, 2, 2, 0},
      {2, 1, 2, 2},
  }};

  static const char* stateName(std::uint32_t state) { return findName(kStates, state, "(state)"); }
  static const char* eventName(std::uint32_t event) { return findName(kEvents, event, "(event)"); }

  void processAction(std::uint32_t action, const AttributeMap* attributes,
                     const std::string* value) {
    actions.push_back(action);
    stateInAction = getState();
    lastAttributes = attributes;
    lastValue = value;
    if (action == 2) setState(9);
  }

  std::vector<std::uint32_t> actions;
  std::uint32_t stateInAction = 99;
  const AttributeMap* lastAttributes = nullptr;
  const std::string* lastValue = nullptr;

 private:
  static constexpr std::array<const char*, 3> kStates{"closed", "open", "locked"};
  static constexpr std::array<const char*, 3> kEvents{"none", "push", "key"};
};

TEST(TStateMachine, StartsInStateZero) {
  const Door door;
  EXPECT_EQ(door.getState(), 0u);
}

TEST(TStateMachine, TakesTheNextStateBeforeItRunsTheAction) {
  Door door;
  door.processEvent(1, nullptr, nullptr);
  EXPECT_EQ(door.getState(), 1u);
  EXPECT_EQ(door.actions, std::vector<std::uint32_t>{1});
  EXPECT_EQ(door.stateInAction, 1u);
}

TEST(TStateMachine, RunsNothingForActionZero) {
  Door door;
  door.processEvent(2, nullptr, nullptr);
  EXPECT_EQ(door.getState(), 2u);
  EXPECT_TRUE(door.actions.empty());
}

TEST(TStateMachine, LetsAnActionChooseAnotherState) {
  Door door;
  door.processEvent(2, nullptr, nullptr);
  door.processEvent(1, nullptr, nullptr);
  EXPECT_EQ(door.stateInAction, 2u);
  EXPECT_EQ(door.getState(), 9u);
}

TEST(TStateMachine, IgnoresAnEventWithoutARowInTheCurrentState) {
  Door door;
  door.processEvent(1, nullptr, nullptr);
  door.actions.clear();

  LogCapture log(Logger::Debug);
  door.processEvent(2, nullptr, nullptr);  // a key turns in a closed door only
  door.processEvent(77, nullptr, nullptr);
  EXPECT_EQ(door.getState(), 1u);
  EXPECT_TRUE(door.actions.empty());
  EXPECT_TRUE(log.lines().empty());
}

TEST(TStateMachine, NeverLooksForARowOfEventZero) {
  Door door;
  LogCapture log;
  door.processEvent(0, nullptr, nullptr);
  EXPECT_EQ(door.getState(), 0u);
  EXPECT_TRUE(door.actions.empty());
  EXPECT_EQ(log.texts(),
            std::vector<std::string>{"[TStateMachine::processEvent] none value=(null)\n"});
}

TEST(TStateMachine, HandsAttributesAndValueToTheAction) {
  Door door;
  const AttributeMap attributes;
  const std::string value = "hard";
  door.processEvent(1, &attributes, &value);
  EXPECT_EQ(door.lastAttributes, &attributes);
  EXPECT_EQ(door.lastValue, &value);
}

TEST(TStateMachine, TracesTheEventAndTheTransition) {
  Door door;
  const std::string value = "hard";
  LogCapture log;
  door.processEvent(1, nullptr, &value);
  ASSERT_EQ(log.lines().size(), 2u);
  EXPECT_EQ(log.texts(Logger::Trace),
            (std::vector<std::string>{"[TStateMachine::processEvent] push value=hard\n",
                                      "[VarBuilder::processEvent] closed [push]-> open\n"}));
}

TEST(TStateMachine, TracesOnlyTheEventWhenNoRowTakesIt) {
  Door door;
  LogCapture log;
  door.processEvent(3, nullptr, nullptr);
  EXPECT_EQ(log.texts(Logger::Trace),
            std::vector<std::string>{"[TStateMachine::processEvent] (event) value=(null)\n"});
}

TEST(FindTransition, GivesNullWithoutARow) {
  EXPECT_EQ(findTransition(Door::kTransitions, 1, 2), nullptr);
  EXPECT_EQ(findTransition(Door::kTransitions, 3, 1), nullptr);
}

TEST(EveryPairIsUnique, SeesTwoRowsForOneStateAndEvent) {
  EXPECT_TRUE(everyPairIsUnique(Door::kTransitions));
  constexpr std::array<Transition, 3> kDouble{{{1, 2, 0, 0}, {2, 1, 0, 0}, {1, 2, 3, 4}}};
  EXPECT_FALSE(everyPairIsUnique(kDouble));
}

}  // namespace
}  // namespace zavri::korvat::builder
