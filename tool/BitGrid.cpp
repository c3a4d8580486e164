#include "tool/BitGrid.h"

#include <algorithm>

#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemBitfield.h"
#include "tool/TextTable.h"

namespace zavri::korvat::tool {

namespace {

// --- From the layout ---

std::string nameOf(const LayoutRow& row) {
  std::string name = row.path.empty() ? "(value)" : row.path;
  if (row.member->isArray()) name += "[" + std::to_string(row.member->getArraySize()) + "]";
  return name;
}

unsigned elementCount(const LayoutRow& row) {
  return row.member->isArray() ? row.member->getArraySize() : 1;
}

// What a line has to say about a row whose members follow; may be nothing.
std::string headingOf(const LayoutRow& row) {
  std::string heading;
  if (row.member->isArray()) {
    heading = nameOf(row) + ": " + std::to_string(elementCount(row)) + " x " +
              bytesText(row.bitCount / 8) + ", the first";
  }
  if (row.member->getKind() == Member::Kind::Aggregate &&
      static_cast<const MemAggregate&>(*row.member).isUnion()) {
    heading += (heading.empty() ? nameOf(row) + ": " : ", ") + std::string("a union, one of");
  }
  return heading;
}

// Puts a bit field into the line of its byte. False where another one has its bits.
bool addField(GridLine& line, const LayoutRow& row) {
  const unsigned first = row.bitOffset;
  const unsigned end = std::min(first + row.bitCount, 8U);
  for (auto cell = line.cells.begin(); cell != line.cells.end(); ++cell) {
    const unsigned cellEnd = cell->firstBit + cell->bitCount;
    if (!cell->name.empty() || first < cell->firstBit || end > cellEnd) continue;
    std::vector<GridLine::Cell> pieces;
    if (first > cell->firstBit) pieces.push_back({cell->firstBit, first - cell->firstBit, ""});
    pieces.push_back({first, end - first, nameOf(row)});
    if (end < cellEnd) pieces.push_back({end, cellEnd - end, ""});
    line.cells.insert(line.cells.erase(cell), pieces.begin(), pieces.end());
    return true;
  }
  return false;
}

// Only an alternative of a union begins before the end of the line above.
void addAlternative(const GridLine& next, std::vector<GridLine>& lines) {
  if (lines.empty() || next.firstByte >= lines.back().firstByte + lines.back().byteCount) return;
  if (!lines.back().heading.empty()) return;
  GridLine line;
  line.firstByte = next.firstByte;
  line.heading = "or";
  lines.push_back(std::move(line));
}

}  // namespace

std::vector<GridLine> makeBitGrid(const std::vector<LayoutRow>& layout) {
  std::vector<GridLine> lines;
  bool isByteOpen = false;  // the last line takes further bit fields
  for (std::size_t i = 0; i < layout.size(); ++i) {
    const LayoutRow& row = layout[i];
    GridLine line;
    line.firstByte = row.byteOffset;
    if (i + 1 < layout.size() && layout[i + 1].nesting > row.nesting) {
      line.heading = headingOf(row);
      isByteOpen = false;
      if (!line.heading.empty()) lines.push_back(std::move(line));
    } else if (row.member->getKind() == Member::Kind::Bitfield) {
      const bool isShared = isByteOpen && lines.back().firstByte == row.byteOffset;
      if (isShared && addField(lines.back(), row)) continue;
      line.byteCount = elementCount(row);
      line.cells = {{0, 8, ""}};
      addField(line, row);
      isByteOpen = !row.member->isArray();
      addAlternative(line, lines);
      lines.push_back(std::move(line));
    } else if (row.bitCount > 0) {
      line.byteCount = row.bitCount / 8 * elementCount(row);
      line.cells = {{0, 8, nameOf(row)}};
      isByteOpen = false;
      addAlternative(line, lines);
      lines.push_back(std::move(line));
    }
  }
  return lines;
}

namespace {

// "4" or "4-7"
std::string bytesOf(const GridLine& line) {
  std::string text = std::to_string(line.firstByte);
  if (line.byteCount > 1) text += "-" + std::to_string(line.firstByte + line.byteCount - 1);
  return text;
}

// --- Text ---

constexpr unsigned kLeastBitWidth = 4;  // characters of one bit, with the border on its left
constexpr unsigned kMostBitWidth = 9;

// Wide enough for all names, if that is not too wide.
unsigned bitWidthOf(const std::vector<GridLine>& lines) {
  std::size_t width = kLeastBitWidth;
  for (const GridLine& line : lines) {
    for (const GridLine::Cell& cell : line.cells) {
      width = std::max(width, (cell.name.size() + cell.bitCount) / cell.bitCount);
    }
  }
  return static_cast<unsigned>(std::min<std::size_t>(width, kMostBitWidth));
}

std::string centered(std::string text, std::size_t width) {
  if (text.size() > width) text.replace(width - 1, std::string::npos, "~");
  return pad(std::string((width - text.size()) / 2, ' ') + text, width);
}

std::string borderOf(const GridLine& line, unsigned bitWidth) {
  std::string border;
  for (const GridLine::Cell& cell : line.cells) {
    border += "+" + std::string(cell.bitCount * bitWidth - 1, '-');
  }
  return border + "+";
}

// A border between two lines has the corners of both.
std::string joined(const std::string& above, const std::string& below) {
  if (above.empty()) return below;
  std::string border = below;
  for (std::size_t i = 0; i < border.size(); ++i) {
    if (above[i] == '+') border[i] = '+';
  }
  return border;
}

}  // namespace

std::string drawText(const std::vector<GridLine>& lines) {
  const unsigned bitWidth = bitWidthOf(lines);
  std::size_t marginWidth = 4;
  for (const GridLine& line : lines) marginWidth = std::max(marginWidth, bytesOf(line).size());
  marginWidth += 2;

  const std::string margin(marginWidth + 1, ' ');
  std::string numbers = rightAlign("byte", marginWidth) + " ";
  for (unsigned bit = 0; bit < 8; ++bit)
    numbers += " " + centered(std::to_string(bit), bitWidth - 1);
  std::string text = toLine(numbers);
  std::string above;
  for (const GridLine& line : lines) {
    if (!line.heading.empty()) {
      if (!above.empty()) text += margin + above + "\n";
      text += margin + line.heading + "\n";
      above.clear();
      continue;
    }
    const std::string border = borderOf(line, bitWidth);
    text += margin + joined(above, border) + "\n" + rightAlign(bytesOf(line), marginWidth) + " ";
    for (const GridLine::Cell& cell : line.cells) {
      text += "|" + centered(cell.name, cell.bitCount * bitWidth - 1);
    }
    text += "|\n";
    above = border;
  }
  return above.empty() ? text : text + margin + above + "\n";
}

// --- SVG ---

namespace {

constexpr unsigned kBitPixels = 108;
constexpr unsigned kLinePixels = 34;
constexpr unsigned kMarginPixels = 84;  // for the byte numbers
constexpr unsigned kEdgePixels = 12;
constexpr unsigned kFontPixels = 14;

std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    switch (c) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

enum class Anchor { Start, Middle, End };

std::string svgText(unsigned x, unsigned y, Anchor anchor, unsigned fontPixels,
                    const std::string& text) {
  constexpr const char* kAnchors[] = {"start", "middle", "end"};
  return "<text x=\"" + std::to_string(x) + "\" y=\"" + std::to_string(y) + "\" text-anchor=\"" +
         kAnchors[static_cast<int>(anchor)] + "\" font-size=\"" + std::to_string(fontPixels) +
         "\">" + escaped(text) + "</text>\n";
}

// A name that is too long for its cell is written smaller; a character is about 0.6 of its height
// wide.
unsigned fontFor(const std::string& name, unsigned widthPixels) {
  const std::size_t fitting = (widthPixels - 6) * 10 / (6 * std::max<std::size_t>(name.size(), 1));
  return static_cast<unsigned>(std::clamp<std::size_t>(fitting, 4, kFontPixels));
}

std::string svgCell(const GridLine::Cell& cell, unsigned top) {
  const unsigned left = kMarginPixels + cell.firstBit * kBitPixels;
  const unsigned width = cell.bitCount * kBitPixels;
  std::string svg = "<rect x=\"" + std::to_string(left) + "\" y=\"" + std::to_string(top) +
                    "\" width=\"" + std::to_string(width) + "\" height=\"" +
                    std::to_string(kLinePixels) + "\" fill=\"" +
                    (cell.name.empty() ? "#dddddd" : "#e8f1fb") + "\" stroke=\"#33506b\"/>\n";
  if (cell.name.empty()) return svg;
  return svg + svgText(left + width / 2, top + kLinePixels / 2 + 5, Anchor::Middle,
                       fontFor(cell.name, width), cell.name);
}

}  // namespace

std::string drawSvg(const std::string& title, const std::vector<GridLine>& lines) {
  const unsigned width = kMarginPixels + 8 * kBitPixels + kEdgePixels;
  unsigned top = kEdgePixels + kLinePixels;
  std::string body = svgText(kEdgePixels, top - 12, Anchor::Start, kFontPixels + 2, title);
  for (unsigned bit = 0; bit < 8; ++bit) {
    body += svgText(kMarginPixels + bit * kBitPixels + kBitPixels / 2, top + 16, Anchor::Middle,
                    kFontPixels - 2, std::to_string(bit));
  }
  body += svgText(kMarginPixels - 10, top + 16, Anchor::End, kFontPixels - 2, "byte");
  top += 24;
  for (const GridLine& line : lines) {
    if (!line.heading.empty()) {
      body +=
          svgText(kMarginPixels, top + kLinePixels - 10, Anchor::Start, kFontPixels, line.heading);
    } else {
      body += svgText(kMarginPixels - 10, top + kLinePixels / 2 + 5, Anchor::End, kFontPixels,
                      bytesOf(line));
      for (const GridLine::Cell& cell : line.cells) body += svgCell(cell, top);
    }
    top += kLinePixels;
  }
  const std::string size = "width=\"" + std::to_string(width) + "\" height=\"" +
                           std::to_string(top + kEdgePixels) + "\"";
  return "<svg xmlns=\"http://www.w3.org/2000/svg\" " + size +
         " font-family=\"sans-serif\" fill=\"#111111\">\n<rect " + size + " fill=\"#ffffff\"/>\n" +
         body + "</svg>\n";
}

}  // namespace zavri::korvat::tool
