#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "korvat/base/Logger.h"
#include "korvat/builder/AttributeMap.h"

namespace zavri::korvat::builder {

// One row of a transition table. The state 0 is the first one; the event 0 is no event, and the
// action 0 runs nothing.
struct Transition {
  std::uint32_t state;      // in which the row applies
  std::uint32_t event;      // that it accepts
  std::uint32_t nextState;  // that the machine takes
  std::uint32_t action;     // to run then
};

// True when no state and event have two rows, so that the order of the rows decides nothing.
template <std::size_t N>
constexpr bool everyPairIsUnique(const std::array<Transition, N>& rows) {
  for (std::size_t i = 0; i < N; ++i) {
    for (std::size_t j = i + 1; j < N; ++j) {
      if (rows[i].state == rows[j].state && rows[i].event == rows[j].event) return false;
    }
  }
  return true;
}

// The row for that state and event, or null.
template <std::size_t N>
constexpr const Transition* findTransition(const std::array<Transition, N>& rows,
                                           std::uint32_t state, std::uint32_t event) {
  for (const Transition& row : rows) {
    if (row.state == state && row.event == event) return &row;
  }
  return nullptr;
}

// Name of `number`, or `unknown` past the end of the names.
template <std::size_t N>
constexpr const char* findName(const std::array<const char*, N>& names, std::uint32_t number,
                               const char* unknown) {
  return number < N ? names[number] : unknown;
}

// The machine that turns the events of one item into actions. `Table` derives from it and gives
// the rows (kTransitions), the names for messages (stateName, eventName) and processAction().
template <typename Table>
class TStateMachine {
 public:
  // Feeds one event: takes the row's next state, then runs its action. An event without a row is
  // ignored, and nothing changes: an unknown element passes without effect. `attributes` are those
  // of an element start, `value` is the text of a value; null for all other events.
  void processEvent(std::uint32_t event, const AttributeMap* attributes, const std::string* value) {
    const bool isTraced = base::isLogged(base::Logger::Trace);
    if (isTraced) {
      base::Logger::trace("[TStateMachine::processEvent] %s value=%s\n", Table::eventName(event),
                          toPrintable(value));
    }
    if (event == 0) return;

    const Transition* row = findTransition(Table::kTransitions, _state, event);
    if (row == nullptr) return;

    // The line reads the same whichever builder runs the machine.
    if (isTraced) {
      base::Logger::trace("[VarBuilder::processEvent] %s [%s]-> %s\n", Table::stateName(_state),
                          Table::eventName(event), Table::stateName(row->nextState));
    }
    _state = row->nextState;  // before the action runs: an action may choose another state
    if (row->action != 0) {
      static_cast<Table*>(this)->processAction(row->action, attributes, value);
    }
  }

  std::uint32_t getState() const { return _state; }

 protected:
  TStateMachine() = default;
  ~TStateMachine() = default;

  void setState(std::uint32_t state) { _state = state; }

 private:
  std::uint32_t _state = 0;
};

}  // namespace zavri::korvat::builder
