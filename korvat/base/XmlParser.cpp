#include "korvat/base/XmlParser.h"

#include <algorithm>
#include <new>

#include <expat.h>

namespace zavri::xml {

namespace {

constexpr int kBlockSize = 64 * 1024;  // bytes read at a time

}  // namespace

void Attributes::add(std::string_view name, std::string_view value) {
  if (_size == _entries.size()) _entries.emplace_back();

  _entries[_size].first.assign(name);
  _entries[_size].second.assign(value);
  ++_size;
}

const std::string* Attributes::find(const std::string& name) const {
  const auto found =
      std::find_if(begin(), end(), [&name](const Entry& entry) { return entry.first == name; });
  return found == end() ? nullptr : &found->second;
}

// Exceptions must not pass through the C parser: they are kept, and parse() throws them again.
struct XmlParser::Expat {
  Expat() : parser(XML_ParserCreate(nullptr)) {
    if (parser == nullptr) throw std::bad_alloc();
  }
  Expat(const Expat&) = delete;
  Expat& operator=(const Expat&) = delete;
  ~Expat() { XML_ParserFree(parser); }

  void setHandlers(XmlParser& owner) {
    XML_SetUserData(parser, &owner);
    XML_SetElementHandler(parser, onStart, onEnd);
    XML_SetCharacterDataHandler(parser, onText);
    XML_SetEntityDeclHandler(parser, onEntityDeclaration);
    XML_SetSkippedEntityHandler(parser, onSkippedEntity);
    // Makes a reference to a parameter entity known at once. Otherwise the parser would pass over
    // the declarations behind it in silence. Nothing is fetched without a handler that does it.
    XML_SetParamEntityParsing(parser, XML_PARAM_ENTITY_PARSING_ALWAYS);
  }

  // Runs one event. The parser may still report events that it has read ahead after it was told
  // to stop; they are dropped.
  template <typename Event>
  static void handle(void* userData, Event event) {
    XmlParser& owner = *static_cast<XmlParser*>(userData);
    if (owner.isEnding()) return;

    try {
      event(owner);
    } catch (...) {
      owner._exception = std::current_exception();
    }
    if (owner.isEnding()) XML_StopParser(owner._expat->parser, XML_FALSE);
  }

  static void XMLCALL onStart(void* userData, const char* name, const char** attributes) {
    handle(userData, [=](XmlParser& owner) { owner.startElement(name, attributes); });
  }

  static void XMLCALL onEnd(void* userData, const char*) {
    handle(userData, [](XmlParser& owner) { owner.endElement(); });
  }

  static void XMLCALL onText(void* userData, const char* text, int size) {
    handle(userData, [=](XmlParser& owner) {
      owner.addText(std::string_view(text, static_cast<std::size_t>(size)));
    });
  }

  static void XMLCALL onEntityDeclaration(void* userData, const char*, int, const char*, int,
                                          const char*, const char*, const char*, const char*) {
    handle(userData, [](XmlParser& owner) { owner.fail("entity declaration"); });
  }

  static void XMLCALL onSkippedEntity(void* userData, const char*, int) {
    handle(userData, [](XmlParser& owner) { owner.fail("undefined entity"); });
  }

  XML_Parser parser;
};

XmlParser::XmlParser() : _expat(std::make_unique<Expat>()) {
  _expat->setHandlers(*this);
}

XmlParser::~XmlParser() = default;

XmlParser::State XmlParser::parse(std::istream& stream) {
  if (_state == State::Parsing) return State::Failed;
  if (_state != State::Idle) reinit();
  if (_isStopRequested) return _state = State::Stopped;

  _state = State::Parsing;
  try {
    readStream(stream);
  } catch (...) {  // from a callback, a stream that throws, or for want of memory
    try {
      fail("exception");
    } catch (const std::bad_alloc&) {
      _error = "exception";  // short enough to need no memory
    }
    throw;
  }
  if (_state == State::Parsing) _state = _isStopRequested ? State::Stopped : State::Complete;
  return _state;
}

void XmlParser::reinit() {
  if (_state == State::Parsing) return;

  XML_ParserReset(_expat->parser, nullptr);
  _expat->setHandlers(*this);
  forgetDocument();
}

void XmlParser::skipElement() {
  if (_isStarting) _skippedDepth = 1;
}

void XmlParser::stop(bool isRequested) {
  _isStopRequested = isRequested;
}

unsigned long XmlParser::getLine() const {
  return XML_GetCurrentLineNumber(_expat->parser);
}

void XmlParser::readStream(std::istream& stream) {
  if (!stream) return fail("unreadable stream");

  int blockSize = kBlockSize;
  XML_Index size = 0;
  XML_Index position = 0;
  for (bool isLast = false; !isLast;) {
    void* const block = XML_GetBuffer(_expat->parser, blockSize);
    if (block == nullptr) throw std::bad_alloc();

    stream.read(static_cast<char*>(block), blockSize);
    if (stream.bad()) return fail("unreadable stream");

    isLast = !stream;
    const auto count = static_cast<int>(stream.gcount());
    size += count;
    const XML_Status status = XML_ParseBuffer(_expat->parser, count, isLast ? 1 : 0);
    if (_exception) std::rethrow_exception(_exception);
    if (isEnding()) return;
    if (status != XML_STATUS_OK) {
      const XML_Error error = XML_GetErrorCode(_expat->parser);
      if (error == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
      return fail(XML_ErrorString(error));
    }

    // The parser scans an unfinished tag or comment again with every block: larger blocks keep the
    // work in proportion to the document. Attributes take many times their size, so there is an
    // end.
    const XML_Index newPosition = XML_GetCurrentByteIndex(_expat->parser);
    if (size - newPosition > kMaxTagSize) {
      return fail("more than " + std::to_string(kMaxTagSize) + " bytes in one tag or comment");
    }
    blockSize = newPosition == position ? 2 * blockSize : kBlockSize;
    position = newPosition;
  }
}

void XmlParser::startElement(const char* name, const char** attributes) {
  const std::size_t depth = _elements.size() + (_skippedDepth == 0 ? 0 : _skippedDepth - 1);
  if (depth == kMaxDepth) return fail("more than " + std::to_string(kMaxDepth) + " open elements");

  if (_skippedDepth > 0) {
    ++_skippedDepth;
    return;
  }

  pushElement(name);
  _text.clear();
  _isLeaf = true;
  _attributes.clear();
  for (; *attributes != nullptr; attributes += 2) _attributes.add(attributes[0], attributes[1]);

  _isStarting = true;
  onElement(_elements.back(), _attributes);
  _isStarting = false;
}

void XmlParser::endElement() {
  if (_skippedDepth > 1) {
    --_skippedDepth;
    return;
  }

  const bool isSkipped = _skippedDepth == 1;
  _skippedDepth = 0;
  if (!isSkipped && _isLeaf && !_text.empty()) onValue(_text);
  if (isEnding()) return;

  _isLeaf = false;
  if (!isSkipped) onElementEnd(_elements.back());
  popElement();
}

void XmlParser::addText(std::string_view text) {
  if (_isLeaf && _skippedDepth == 0) _text.append(text);
}

void XmlParser::fail(std::string_view what) {
  _state = State::Failed;  // whether or not there is memory for the message
  _error = std::string(what) + " at line " + std::to_string(getLine()) + ", column " +
           std::to_string(XML_GetCurrentColumnNumber(_expat->parser) + 1);
}

void XmlParser::forgetDocument() {
  while (!_elements.empty()) popElement();
  _state = State::Idle;
  _error.clear();
  _text.clear();
  _isLeaf = false;
  _isStarting = false;
  _isStopRequested = false;
  _skippedDepth = 0;
  _exception = nullptr;
}

bool XmlParser::isEnding() const {
  return _isStopRequested || _exception != nullptr || _state == State::Failed;
}

void XmlParser::pushElement(const char* name) {
  if (_spareElements.empty()) {
    _elements.emplace_back();
  } else {
    _elements.push_back(std::move(_spareElements.back()));
    _spareElements.pop_back();
  }
  _elements.back().name.assign(name);
}

void XmlParser::popElement() {
  _spareElements.push_back(std::move(_elements.back()));
  _elements.pop_back();
}

}  // namespace zavri::xml
