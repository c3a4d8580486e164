#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "korvat/builder/TStateMachine.h"

// What holds for the transition table of every item builder.
namespace zavri::korvat::builder {

// Records the action that runs and leaves the state to the table.
template <typename Table>
class RecordingTable : public Table {
 public:
  using Table::setState;

  void processAction(std::uint32_t number, const AttributeMap*, const std::string*) override {
    action = number;
  }

  std::uint32_t action = 0;
};

template <typename Table>
void expectRow(const Transition& row) {
  RecordingTable<Table> table;
  table.setState(row.state);
  table.processEvent(row.event, nullptr, nullptr);
  EXPECT_EQ(table.getState(), row.nextState);
  EXPECT_EQ(table.action, row.action);
}

// Every pair of state and event that is not listed, numbers beyond the enumerations included, is
// ignored.
template <typename Table>
void expectNoOtherRows(const std::vector<Transition>& rows, std::size_t stateCount,
                       std::size_t eventCount) {
  EXPECT_EQ(Table::kTransitions.size(), rows.size());
  for (std::uint32_t state = 0; state <= stateCount; ++state) {
    for (std::uint32_t event = 0; event <= eventCount; ++event) {
      const bool isListed = std::any_of(rows.begin(), rows.end(), [=](const Transition& row) {
        return row.state == state && row.event == event;
      });
      if (isListed) continue;

      SCOPED_TRACE(std::to_string(state) + " " + std::to_string(event));
      RecordingTable<Table> table;
      table.setState(state);
      table.processEvent(event, nullptr, nullptr);
      EXPECT_EQ(table.getState(), state);
      EXPECT_EQ(table.action, 0u);
    }
  }
}

// `nameOf` gives the listed names, and `unknown` for any other number.
inline void expectNames(const char* (*nameOf)(std::uint32_t), const std::vector<std::string>& names,
                        const char* unknown) {
  for (std::uint32_t i = 0; i < names.size(); ++i) EXPECT_EQ(nameOf(i), names[i]);
  EXPECT_STREQ(nameOf(static_cast<std::uint32_t>(names.size())), unknown);
  EXPECT_STREQ(nameOf(0xFFFFFFFF), unknown);
}

}  // namespace zavri::korvat::builder
