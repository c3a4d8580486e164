#pragma once

#include <memory>
#include <string>
#include <vector>

#include "korvat/base/Export.h"
#include "korvat/format/FormatBase.h"

namespace zavri::korvat {

namespace format {
class Field;
}

// A display format of a type: tells how a value is shown to people. The root of a parsed
// expression, named after the format. Copies share the nodes, which never change.
class KORVAT_API Format : public format::FormatBase {
 public:
  // `text` is the expression, `body` its outermost node (null for an empty format).
  explicit Format(const std::string& text = std::string(),
                  std::unique_ptr<format::FormatBase> body = nullptr)
      : FormatBase(Kind::FT_Format), _text(text), _body(std::move(body)) {}
  Format(const Format&) = default;

  void dump(std::string& text, unsigned level) const override;

  const std::string& getText() const { return _text; }
  const format::FormatBase* getBody() const { return _body.get(); }

  // The fields of all strings, in the order of the text.
  std::vector<const format::Field*> getFields() const;

 private:
  std::string _text;
  std::shared_ptr<const format::FormatBase> _body;
};

}  // namespace zavri::korvat
