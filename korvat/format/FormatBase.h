#pragma once

#include <cstdint>
#include <string>

#include "korvat/base/Export.h"

namespace zavri::korvat::format {

// A node of a parsed display format. Nodes own their children. The parser builds them; they are not
// changed afterwards, and from then on readable from any number of threads.
class KORVAT_API FormatBase {
 public:
  enum class Kind : std::int32_t {
    FT_Base = 0,
    FT_Format = 1,
    FT_Concatenation = 2,
    FT_FormattedString = 3,
    FT_Condition = 4,
    FT_Date = 5,
    FT_Time = 6,
    FT_Field = 7,
  };

  virtual ~FormatBase() = default;
  FormatBase& operator=(const FormatBase&) = delete;

  // Appends the subtree as lines of text, for diagnostics. `level` is the depth of indentation, in
  // steps of three spaces.
  virtual void dump(std::string& text, unsigned level) const = 0;

  Kind getKind() const { return _kind; }
  // "FT_Base", "FT_Format" and so on; "(unknown)" for any other number.
  static const char* getKindName(Kind kind);

  const std::string& getName() const { return _name; }
  void setName(const std::string& name) { _name = name; }

 protected:
  explicit FormatBase(Kind kind) : _kind(kind) {}
  FormatBase(const FormatBase&) = default;

  // The first line of every dump.
  void dumpKind(std::string& text, unsigned level) const;
  static void indent(std::string& text, unsigned level);
  // "[2]" and, on lines of its own, the child at that position; " (null)" where there is none.
  static void dumpChild(std::string& text, unsigned level, std::size_t position,
                        const FormatBase* child);
  // The subtree on lines of its own behind a heading; " (null)" where there is none.
  static void dumpBehind(std::string& text, unsigned level, const FormatBase* node);

 private:
  const Kind _kind;
  std::string _name;
};

}  // namespace zavri::korvat::format
