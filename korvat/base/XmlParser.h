#pragma once

#include <cstddef>
#include <exception>
#include <istream>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "korvat/base/Export.h"

namespace zavri::xml {

// Attributes of one element, in document order.
class KORVAT_API Attributes {
 public:
  using Entry = std::pair<std::string, std::string>;  // name, value

  void add(std::string_view name, std::string_view value);
  void clear() { _size = 0; }

  // Value of the attribute `name` (exact), or null.
  const std::string* find(const std::string& name) const;

  bool empty() const { return _size == 0; }
  std::vector<Entry>::const_iterator begin() const { return _entries.begin(); }
  std::vector<Entry>::const_iterator end() const {
    return _entries.begin() + static_cast<std::ptrdiff_t>(_size);
  }

 private:
  std::vector<Entry> _entries;  // those from _size on are kept for their strings' memory
  std::size_t _size = 0;        // attributes there are
};

// An element as its callbacks see it.
struct Element {
  std::string name;
};

// Reads an XML document and calls back on element starts, ends and texts. A subclass overrides the
// callbacks; they may throw, and parse() passes the exception on.
//
// Only a leaf delivers text: once, whole and untrimmed, just before its end. An empty leaf, and
// text beside child elements, deliver nothing. A document type with an entity declaration, or with
// a reference to a parameter entity, fails the parse at that place, before anything can expand;
// so does a reference to an entity that is not declared (within an attribute, where the document
// names an outer document type, it is left out instead). Nothing outside of the stream is read.
class KORVAT_API XmlParser {
 public:
  enum class State : int {
    Idle = 0,
    Parsing = 1,
    Complete = 2,
    Stopped = 3,
    Failed = 4,
  };

  // Open elements beyond which a document fails.
  static constexpr std::size_t kMaxDepth = 200;
  // Bytes of a tag, with its attributes, or a comment beyond which a document fails. One that ends
  // in the block it is found too long in, of at most as many bytes again, still passes.
  static constexpr long kMaxTagSize = 1'048'576;

  XmlParser();
  XmlParser(const XmlParser&) = delete;
  XmlParser& operator=(const XmlParser&) = delete;
  virtual ~XmlParser();

  // Reads the whole stream. Complete for a well-formed document, Stopped after stop(), Failed for
  // any other document and for a stream that cannot be read. Runs reinit() first when a document
  // was parsed before. A call from a callback does nothing and answers Failed. Throws
  // std::bad_alloc when memory runs out. After an exception the state is Failed.
  State parse(std::istream& stream);

  // Forgets everything, a stop request too, so that another document can be parsed. Does nothing
  // from a callback.
  void reinit();

  // From onElement: no callback for the children, the text and the end of the element that has
  // just started. Does nothing from elsewhere.
  void skipElement();

  // From a callback: ends the running parse, which then answers Stopped; no further callbacks.
  // False takes an earlier request back. A request made between reinit() and parse() ends the parse
  // before its first callback.
  void stop(bool isRequested);

  State getState() const { return _state; }
  // What failed and where (line and column), empty otherwise.
  const std::string& getError() const { return _error; }
  // Line, from 1, that the parser has reached.
  unsigned long getLine() const;

 protected:
  virtual void onElement(const Element& element, const Attributes& attributes) = 0;
  virtual void onElementEnd(const Element& element) = 0;
  virtual void onValue(const std::string& value) = 0;

  // Open elements, innermost last. In onElementEnd the ending element is still on it.
  const std::vector<Element>& getElementStack() const { return _elements; }

 private:
  struct Expat;  // the C parser and its callbacks, which see the private parts

  void readStream(std::istream& stream);
  void startElement(const char* name, const char** attributes);
  void endElement();
  void addText(std::string_view text);
  void fail(std::string_view what);
  void forgetDocument();
  bool isEnding() const;
  void pushElement(const char* name);
  void popElement();

  std::unique_ptr<Expat> _expat;
  State _state = State::Idle;
  std::string _error;
  std::vector<Element> _elements;

  std::vector<Element> _spareElements;  // ended ones, kept for their names' memory
  Attributes _attributes;               // of the element that starts
  std::string _text;                    // of the innermost element, while that is a leaf
  bool _isLeaf = false;                 // the innermost element has had no child yet
  bool _isStarting = false;             // onElement is running
  bool _isStopRequested = false;
  std::size_t _skippedDepth = 0;  // open elements from the skipped one on, itself included; or 0
  std::exception_ptr _exception;  // what a callback threw
};

}  // namespace zavri::xml
