#pragma once

#include <string>
#include <vector>

#include "tool/Layout.h"

namespace zavri::korvat::tool {

// A picture of a layout: one line for each byte, or for the bytes of one member. Bits count from
// the most significant one, which is 0, as everywhere in the program and in the catalogue.
struct GridLine {
  struct Cell {
    unsigned firstBit = 0;  // from the most significant one
    unsigned bitCount = 8;
    std::string name;  // empty for bits that belong to no member
  };

  unsigned firstByte = 0;
  unsigned byteCount = 1;
  std::string heading;      // says what the lines below are; such a line has no bytes of its own
  std::vector<Cell> cells;  // all 8 bits, in order
};

// The lines in the order of the layout. The alternatives of a union come one below the other, and
// of an array's structures only the first.
std::vector<GridLine> makeBitGrid(const std::vector<LayoutRow>& layout);

// The grid as text, with names cut to their cells.
std::string drawText(const std::vector<GridLine>& lines);

// The grid as a picture in SVG 1.1, readable on light and dark ground.
std::string drawSvg(const std::string& title, const std::vector<GridLine>& lines);

}  // namespace zavri::korvat::tool
