#include "tool/Commands.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "korvat/base/AsciiText.h"
#include "korvat/base/BinaryUtils.h"
#include "korvat/base/StringUtils.h"
#include "tool/Csv.h"
#include "tool/CsvMembers.h"
#include "tool/CsvRows.h"
#include "tool/FailureSummary.h"
#include "tool/FlatRecord.h"
#include "tool/LineReader.h"
#include "tool/Progress.h"
#include "tool/ValueShape.h"

namespace zavri::korvat::tool {

namespace {

constexpr std::size_t kBlockSize = std::size_t{256} * 1024;  // bytes written at once
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::uint64_t kLinesBetweenLooks = 256;  // at the clock, for the progress

// Collects output and writes it in large pieces. False once the reader has gone away.
class Output {
 public:
  bool add(const std::string& text) {
    _text += text;
    return flushBlock();
  }

  // What is to be written next, for a caller who appends to it and then calls flushBlock().
  std::string& getText() { return _text; }
  bool flushBlock() { return _text.size() < kBlockSize || flush(); }

  bool flush() {
    std::size_t written = 0;
    while (written < _text.size()) {
      const ssize_t size = ::write(STDOUT_FILENO, _text.data() + written, _text.size() - written);
      if (size < 0 && errno == EINTR) continue;
      if (size < 0 && errno == EPIPE) return false;
      if (size < 0) throw Failure(kProblem, std::string("cannot write: ") + std::strerror(errno));
      written += static_cast<std::size_t>(size);
    }
    _text.clear();
    return true;
  }

 private:
  std::string _text;
};

// For look-ups of names that stand in a line.
struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const {
    return std::hash<std::string_view>()(text);
  }
};

// Digits without blanks, as many as the bytes of `raw` need. False for any other text.
bool readDigits(std::string_view text, base::Buffer& raw) {
  if (text.size() != 2 * std::size_t{raw.getSize()}) return false;
  std::uint8_t* bytes = raw.getData();
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const int high = util::hexValue(text[i]);
    const int low = util::hexValue(text[i + 1]);
    if (high < 0 || low < 0) return false;
    bytes[i / 2] = static_cast<std::uint8_t>(high << 4 | low);
  }
  return true;
}

// One direction of a stream. A record is converted in place.
//
// There are two roads. A line in the form that programs write, whose conversion succeeds, goes from
// text to text. All others, and options that ask for more, take the general road through documents,
// which defines the answer: where the short one cannot tell that it gives the same, it gives up.
class Stream {
 public:
  Stream(Catalogue& catalogue, const StreamOptions& options)
      : _catalogue(catalogue), _options(options) {
    // The library's messages would be seen twice where the short road gives up.
    const bool isSilent = catalogue.getOptions().logLevel < 0;
    _hasShortRoad = isSilent && !options.isCsv && !options.isFromCsv;
  }
  virtual ~Stream() = default;

  void run() {
    // Once, instead of in every record.
    const VarType* defaultType = _options.type.empty() ? nullptr : &findType(_options.type);
    begin(defaultType);
    if (_options.isCsv) _rows = makeRows(defaultType);
    if (!convertInput() || _failures.getCount() == 0) return;
    _failures.print(_catalogue.getOptions().errorForm == "json");
    throw Failure(kProblem, std::to_string(_failures.getCount()) + " of " + std::to_string(_count) +
                                " records failed; each has its \"error\"");
  }

 protected:
  // Before the first record; `defaultType` may be null.
  virtual void begin(const VarType* defaultType) = 0;
  // Adds the result to a record. Throws Failure.
  virtual void convertRecord(json::Value& record) = 0;
  // The short road: appends the answer to a line, which is not empty, to `text`. False, with
  // anything appended, when it is to take the general road; so when it throws Failure.
  virtual bool convertText(std::string_view line, std::string& text) = 0;
  // A line that is no record: its result as text. Throws Failure, with what is known of it in
  // `record`.
  virtual std::string convertBare(std::string_view line, json::Value& record) = 0;
  // Makes a record of such a line.
  virtual void wrapBare(std::string_view line, json::Value& record) = 0;
  virtual bool isBare(const json::Value& parsed, bool isJson) = 0;
  virtual std::unique_ptr<CsvRows> makeRows(const VarType* defaultType) = 0;
  // The columns of CSV input. Throws Failure when they cannot be converted.
  virtual void takeHeader(const std::vector<std::string>& columns) = 0;

  const VarType& findType(const json::Value& record) {
    const json::Value& type = record["type"];
    // An empty field of a row names no type.
    const bool isNamed = type.isString() && !(_options.isFromCsv && type.asString().empty());
    if (isNamed) return findType(type.asString());
    if (_options.type.empty() || (!type.isNull() && !type.isString())) {
      throw Failure(kProblem, "\"type\" is missing or no text");
    }
    return findType(_options.type);
  }

  const VarType& findType(const std::string& name) {
    const auto found = _types.find(name);
    if (found != _types.end()) return *found->second;
    const VarType& type = _catalogue.findVarType(name);
    _types.emplace(name, &type);
    return type;
  }

  // A type for the short road.
  struct KnownType {
    const TypeId* id;
    unsigned size;  // bytes
  };

  // A type that the general road has found before; null for any other one. Throws Failure.
  const KnownType* findKnownType(std::string_view name) {
    const auto known = _knownTypes.find(name);
    if (known != _knownTypes.end()) return &known->second;
    const auto found = _types.find(std::string(name));
    if (found == _types.end()) return nullptr;
    const KnownType type{&found->second->getTypeId(), _catalogue.getSize(*found->second)};
    return &_knownTypes.emplace(name, type).first->second;
  }

  // The same for the type of a record.
  const KnownType* findKnownType(const FlatRecord& record) {
    if (record.hasType()) return findKnownType(record.getType());
    return _options.type.empty() || record.has("type") ? nullptr : findKnownType(_options.type);
  }

  Catalogue& getCatalogue() { return _catalogue; }
  const StreamOptions& getOptions() const { return _options; }

 private:
  // False when nobody reads the output any more.
  bool convertInput() {
    Output output;
    LineReader reader;
    Progress progress;
    const auto takeLine = [&](std::string_view line) {
      if (++_lineCount == 1 && line.substr(0, 3) == kByteOrderMark) line.remove_prefix(3);
      if (_lineCount % kLinesBetweenLooks == 0) progress.show(_count, reader.getByteCount());
      return _options.isFromCsv ? takeCsvLine(line, output) : takeJsonLine(line, output);
    };
    bool isWanted = true;  // the output has a reader
    reader.read([&](std::string_view line) { return isWanted = takeLine(line); },
                [&] {
                  progress.show(_count, reader.getByteCount());
                  return isWanted = output.flush();
                });
    return isWanted && finish(output);
  }

  bool finish(Output& output) {
    if (_options.isFromCsv) {
      const CsvReader::State state = _csv.finish();
      if (state == CsvReader::State::Broken && !takeRow(state, output)) return false;
      if (_columns.empty()) throw Failure(kProblem, "the CSV input is empty: it has no header");
    }
    if (_rows != nullptr && !output.add(_rows->finish())) return false;
    return output.flush();
  }

  bool takeJsonLine(std::string_view line, Output& output) {
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    if (line.find_first_not_of(" \t") == std::string_view::npos) return true;
    if (!convertShortly(line, output.getText())) return output.add(convertLine(line));
    return output.flushBlock();
  }

  // By the short road, if the line can take it.
  bool convertShortly(std::string_view line, std::string& text) {
    const std::size_t size = text.size();
    if (!_hasShortRoad || line.size() > LineReader::kLongestLine) return false;
    bool isConverted = false;
    try {
      isConverted = convertText(line, text);
    } catch (const Failure&) {
      isConverted = false;  // the general road fails too, and tells
    }
    if (isConverted) {
      ++_count;
    } else {
      text.resize(size);
    }
    return isConverted;
  }

  std::string convertLine(std::string_view line) {
    ++_count;
    json::Value record;
    try {
      if (line.size() > LineReader::kLongestLine) {
        throw Failure(kProblem, "the line has more than " +
                                    std::to_string(LineReader::kLongestLine) + " bytes");
      }
      std::string error;
      const bool isJson = json::Value::parse(line, record, error);
      if (!_options.type.empty() && isBare(record, isJson)) {
        if (_rows == nullptr) return convertBare(line, record) + "\n";
        wrapBare(line, record);
      } else if (!isJson) {
        throw Failure(kProblem, "not JSON: " + error);
      }
      if (!record.isObject()) throw Failure(kProblem, "expected a JSON object");
      convertRecord(record);
      dropError(record);
    } catch (const Failure& failure) {
      addFailure(failure, _lineCount, record);
    }
    return toText(record);
  }

  bool takeCsvLine(std::string_view line, Output& output) {
    const CsvReader::State state = _csv.addLine(line);
    return state == CsvReader::State::More || takeRow(state, output);
  }

  bool takeRow(CsvReader::State state, Output& output) {
    const std::vector<std::string>& fields = _csv.getFields();
    const bool isBroken = state == CsvReader::State::Broken;
    if (_columns.empty()) {
      if (isBroken) throw Failure(kProblem, "the header of the CSV input: " + _csv.getError());
      takeColumns(fields);
      return true;
    }
    ++_count;
    json::Value record;
    for (std::size_t i = 0; i < fields.size() && i < _columns.size(); ++i) {
      record[_columns[i]] = fields[i];
    }
    try {
      if (isBroken) throw Failure(kProblem, _csv.getError());
      if (fields.size() != _columns.size()) {
        throw Failure(kProblem, "the row has " + std::to_string(fields.size()) +
                                    " fields, but the header " + std::to_string(_columns.size()));
      }
      convertRecord(record);
      dropError(record);
    } catch (const Failure& failure) {
      addFailure(failure, _csv.getFirstLine(), record);
    }
    return output.add(toText(record));
  }

  void takeColumns(const std::vector<std::string>& columns) {
    const std::set<std::string> names(columns.begin(), columns.end());
    if (names.size() != columns.size()) {
      throw Failure(kProblem, "the header of the CSV input names a column twice");
    }
    if (_options.type.empty() && names.count("type") == 0) {
      throw Failure(kWrongUsage, "the CSV input has no column 'type': name the type with --type");
    }
    takeHeader(columns);
    if (_rows != nullptr) _rows->setInput(columns);
    _columns = columns;
  }

  void addFailure(const Failure& failure, std::uint64_t line, json::Value& record) {
    _failures.add(failure.what(), line, record);
    record["error"] = failure.what();
  }

  // Of an earlier conversion.
  static void dropError(json::Value& record) {
    if (record.getPropertyMap().find("error") == nullptr) return;
    json::Value rest;
    for (const auto& [name, value] : record.getPropertyMap()) {
      if (name != "error") rest[name] = value;
    }
    record = std::move(rest);
  }

  std::string toText(const json::Value& record) {
    return _rows == nullptr ? record.stringify() + "\n" : _rows->add(record);
  }

  Catalogue& _catalogue;
  StreamOptions _options;
  bool _hasShortRoad;
  std::unordered_map<std::string, const VarType*> _types;
  std::unordered_map<std::string, KnownType, TextHash, std::equal_to<>> _knownTypes;
  CsvReader _csv;
  std::vector<std::string> _columns;  // of CSV input; empty before its header
  std::unique_ptr<CsvRows> _rows;     // null when the output is JSON
  FailureSummary _failures;
  std::uint64_t _count = 0;
  std::uint64_t _lineCount = 0;
};

class DecodeStream : public Stream {
 public:
  DecodeStream(Catalogue& catalogue, const StreamOptions& options)
      : Stream(catalogue, options), _shape(catalogue, options.shape) {}

 protected:
  void begin(const VarType* defaultType) override {
    _defaultType = defaultType;
    if (defaultType != nullptr && !_shape.isPlain()) _shape.prepare(*defaultType);
  }

  void convertRecord(json::Value& record) override {
    const VarType& type = findType(record);
    const std::string& property = getOptions().rawColumn;
    if (!std::as_const(record)[property].isString()) {
      throw Failure(kProblem, "\"" + property + "\" is missing or no text");
    }
    json::Value rawNumbers;
    json::Value value = decode(type, std::as_const(record)[property].asString(), rawNumbers);
    record["value"] = std::move(value);
    if (!rawNumbers.isNull()) record["rawNumbers"] = std::move(rawNumbers);
  }

  bool convertText(std::string_view line, std::string& text) override {
    if (!_shape.isPlain()) return false;
    if (_defaultType != nullptr && util::hexValue(line.front()) >= 0) {
      if (!decodeText(findKnownType(getOptions().type), line, text)) return false;
      text += '\n';
      return true;
    }
    if (!_record.read(line, false, text) || !_record.hasRaw()) return false;
    if (_record.has("value") || _record.has("error")) return false;
    text += ",\"value\":";
    if (!decodeText(findKnownType(_record), _record.getRaw(), text)) return false;
    text += "}\n";
    return true;
  }

  std::string convertBare(std::string_view line, json::Value& record) override {
    wrapBare(line, record);
    json::Value rawNumbers;
    const json::Value value =
        decode(*_defaultType, std::as_const(record)["raw"].asString(), rawNumbers);
    if (rawNumbers.isNull()) return value.stringify();
    json::Value both;
    both["value"] = value;
    both["rawNumbers"] = rawNumbers;
    return both.stringify();
  }

  void wrapBare(std::string_view line, json::Value& record) override {
    record.clear();
    record["raw"] = util::StringUtils::trim(std::string(line));
  }

  // Hexadecimal text may look like a JSON number, but never like an object.
  bool isBare(const json::Value& parsed, bool isJson) override {
    return !isJson || !parsed.isObject();
  }

  std::unique_ptr<CsvRows> makeRows(const VarType* defaultType) override {
    return std::make_unique<CsvRows>(
        defaultType == nullptr ? _shape.makeColumns() : _shape.makeColumns(*defaultType), "value",
        std::vector<std::string>{"value", "rawNumbers", "error"});
  }

  void takeHeader(const std::vector<std::string>& columns) override {
    const std::string& wanted = getOptions().rawColumn;
    if (std::find(columns.begin(), columns.end(), wanted) != columns.end()) return;
    std::string names;
    for (const std::string& name : columns) names += (names.empty() ? "" : ", ") + name;
    throw Failure(kProblem, "the CSV input has no column '" + wanted + "'; there are: " + names);
  }

 private:
  json::Value decode(const VarType& type, const std::string& hex, json::Value& rawNumbers) {
    const base::Buffer raw = getCatalogue().readHex(hex);
    getCatalogue().checkLength(type, raw);
    json::Value value = getCatalogue().decode(type, raw);
    if (getOptions().isCsv) checkColumns(type);
    if (_shape.isPlain()) return value;
    _shape.changeMembers(type, raw, value, rawNumbers);
    if (!getOptions().isCsv) _shape.chooseMembers(type, value);
    return value;
  }

  bool decodeText(const KnownType* type, std::string_view hex, std::string& text) {
    if (type == nullptr) return false;
    _raw.setSize(type->size);
    if (!readDigits(hex, _raw)) return false;
    if (!getCatalogue().getManager().rawToJsonText(*type->id, _raw, _value)) return false;
    text += _value;
    return true;
  }

  // The columns are fixed: those of the default type, or the members that were chosen.
  void checkColumns(const VarType& type) {
    if (_defaultType == nullptr) return _shape.prepare(type);
    if (_defaultType == &type) return;
    throw Failure(kProblem, "the columns are those of " + displayName(*_defaultType) +
                                ": they take no value of " + displayName(type));
  }

  ValueShape _shape;
  const VarType* _defaultType = nullptr;
  // Of the short road, used again for each line.
  FlatRecord _record;
  base::Buffer _raw;
  std::string _value;
};

class EncodeStream : public Stream {
 public:
  EncodeStream(Catalogue& catalogue, const StreamOptions& options) : Stream(catalogue, options) {
    const Options& all = catalogue.getOptions();
    // With these the library goes a long way itself.
    _isTextFast = all.order == base::Endianess::Big && !all.useDynamicArrays && !all.useUnionHex &&
                  !all.refuseCutting;
  }

 protected:
  void begin(const VarType* defaultType) override { _defaultType = defaultType; }

  void convertRecord(json::Value& record) override {
    const VarType& type = findType(record);
    if (_members) {
      json::Value gathered = record;
      _members->gather(type, gathered);
      const std::string raw = encode(type, std::as_const(gathered)["value"]);
      // Rows keep their fields; JSON shows the value as decode does.
      if (!getOptions().isCsv) record = std::move(gathered);
      record["raw"] = raw;
      return;
    }
    const json::Value* value = record.getPropertyMap().find("value");
    if (value == nullptr) throw Failure(kProblem, "\"value\" is missing");
    record["raw"] = encode(type, *value);
  }

  bool convertText(std::string_view line, std::string& text) override {
    if (!_isTextFast) return false;
    if (_defaultType != nullptr) {
      if (line.front() != '{' || startsLikeDefault(line)) {
        if (!encodeText(findKnownType(getOptions().type), line)) return false;
        appendRaw(text);
        text += '\n';
        return true;
      }
      // Then it takes more to tell a record from a value.
      if (findDefaultLeaves().decoded.getPropertyMap().find("value") != nullptr) return false;
    }
    if (!_record.read(line, true, text) || _record.has("error")) return false;
    if (_record.has("raw") && !_record.hasRaw()) return false;
    if (!encodeText(findKnownType(_record), _record.getValue())) return false;
    if (_record.hasRaw()) {
      std::string raw;
      appendRaw(raw);
      text.replace(_record.getRawPosition(), _record.getRaw().size(), raw);
    } else {
      text += ",\"raw\":\"";
      appendRaw(text);
      text += '"';
    }
    text += "}\n";
    return true;
  }

  std::string convertBare(std::string_view line, json::Value& record) override {
    wrapBare(line, record);
    return encode(*_defaultType, std::as_const(record)["value"]);
  }

  void wrapBare(std::string_view, json::Value& record) override {
    json::Value wrapped;
    wrapped["value"] = std::move(record);
    record = std::move(wrapped);
  }

  // An object with a "value" is a record, unless it could be a value whose type has a member of
  // that name: all its properties are members then. Any other JSON is a value itself.
  bool isBare(const json::Value& parsed, bool isJson) override {
    if (!isJson || parsed.getPropertyMap().find("value") == nullptr) return isJson;
    const json::Value::PropertyMap& members = findDefaultLeaves().decoded.getPropertyMap();
    const json::Value::PropertyMap& given = parsed.getPropertyMap();
    return std::all_of(given.begin(), given.end(), [&members](const auto& property) {
      return members.find(property.first) != nullptr;
    });
  }

  std::unique_ptr<CsvRows> makeRows(const VarType*) override {
    return std::make_unique<CsvRows>(std::vector<ShapeColumn>{{"raw", MemberPath("raw")}}, "",
                                     std::vector<std::string>{"raw", "error"});
  }

  void takeHeader(const std::vector<std::string>& columns) override {
    _members = std::make_unique<CsvMembers>(getCatalogue(), columns);
    if (_defaultType != nullptr) _members->prepare(*_defaultType);
  }

 private:
  // Into _raw. A text that reads back the same has lost nothing: what the general road refuses,
  // such as a number beyond its limits, reads back as another text.
  bool encodeText(const KnownType* type, std::string_view value) {
    if (type == nullptr || value.empty()) return false;
    TypeManager& manager = getCatalogue().getManager();
    _raw.clear();
    return manager.jsonTextToRaw(*type->id, value, _raw, base::Endianess::Big, false) &&
           manager.rawToJsonText(*type->id, _raw, _value) && _value == value;
  }

  void appendRaw(std::string& text) const {
    constexpr char kDigits[] = "0123456789ABCDEF";
    for (unsigned i = 0; i < _raw.getSize(); ++i) {
      const std::uint8_t byte = _raw.getData()[i];
      text += kDigits[byte >> 4];
      text += kDigits[byte & 0xF];
    }
  }

  // Whether an object begins with the first member of the default type.
  bool startsLikeDefault(std::string_view line) {
    const json::Value::PropertyMap& members = findDefaultLeaves().decoded.getPropertyMap();
    if (members.empty()) return false;
    const std::string& name = members.begin()->first;
    return line.substr(1, 1) == "\"" && line.substr(2, name.size()) == name &&
           line.substr(2 + name.size(), 1) == "\"";
  }

  const TypeLeaves& findDefaultLeaves() {
    if (!_defaultLeaves) _defaultLeaves.emplace(getCatalogue(), *_defaultType);
    return *_defaultLeaves;
  }

  std::string encode(const VarType& type, const json::Value& value) {
    return util::BinaryUtils::toString(getCatalogue().encode(type, value));
  }

  const VarType* _defaultType = nullptr;
  std::optional<TypeLeaves> _defaultLeaves;  // of the default type, once they are asked for
  std::unique_ptr<CsvMembers> _members;      // for CSV input
  // Of the short road, used again for each line.
  bool _isTextFast;
  FlatRecord _record;
  base::Buffer _raw;
  std::string _value;
};

}  // namespace

void runDecodeStream(Catalogue& catalogue, const StreamOptions& options) {
  DecodeStream(catalogue, options).run();
}

void runEncodeStream(Catalogue& catalogue, const StreamOptions& options) {
  EncodeStream(catalogue, options).run();
}

}  // namespace zavri::korvat::tool
