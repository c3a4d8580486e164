#include "tool/Commands.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string_view>

#include "korvat/base/BinaryUtils.h"
#include "korvat/base/StringUtils.h"

namespace zavri::korvat::tool {

namespace {

constexpr std::size_t kBlockSize = 256 * 1024;          // bytes read at once
constexpr std::size_t kLongestLine = 16 * 1024 * 1024;  // bytes; a longer line fails

// Calls `onLine` for each line of standard input, without its end, and `onPause` after each block.
// A line beyond kLongestLine arrives as its beginning, one byte too long. Stops when `onLine` is
// false.
class LineReader {
 public:
  using LineCallback = std::function<bool(std::string_view)>;
  using PauseCallback = std::function<bool()>;

  void read(const LineCallback& onLine, const PauseCallback& onPause) {
    std::string block(kBlockSize, '\0');
    while (true) {
      const ssize_t size = ::read(STDIN_FILENO, block.data(), block.size());
      if (size < 0 && errno == EINTR) continue;
      if (size < 0) {
        throw Failure(kProblem, std::string("cannot read standard input: ") + std::strerror(errno));
      }
      if (size == 0) break;
      if (!takeBlock({block.data(), static_cast<std::size_t>(size)}, onLine)) return;
      if (!onPause()) return;
    }
    if (!_rest.empty() && !onLine(_rest)) return;
    onPause();
  }

 private:
  bool takeBlock(std::string_view block, const LineCallback& onLine) {
    std::size_t begin = 0;
    while (begin < block.size()) {
      const std::size_t end = block.find('\n', begin);
      const std::string_view piece = block.substr(begin, end - begin);
      if (end == std::string_view::npos) {
        keep(piece);
        return true;
      }
      begin = end + 1;
      if (_rest.empty()) {
        if (!onLine(piece)) return false;
        continue;
      }
      keep(piece);
      const bool goesOn = onLine(_rest);
      _rest.clear();
      if (!goesOn) return false;
    }
    return true;
  }

  void keep(std::string_view piece) {
    const std::size_t room = kLongestLine + 1 - _rest.size();
    _rest.append(piece.substr(0, room));
  }

  std::string _rest;  // of a line whose end has not come yet
};

// Collects output and writes it in large pieces. False once the reader has gone away.
class Output {
 public:
  bool add(const std::string& line) {
    _text += line;
    _text += '\n';
    return _text.size() < kBlockSize || flush();
  }

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

// One direction of a stream. A record is converted in place.
class Stream {
 public:
  Stream(Catalogue& catalogue, const std::string& defaultType)
      : _catalogue(catalogue), _defaultType(defaultType) {}
  virtual ~Stream() = default;

  void run() {
    if (!_defaultType.empty()) findType(_defaultType);  // once, instead of in every record
    Output output;
    LineReader().read(
        [&](std::string_view line) {
          if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
          if (line.find_first_not_of(" \t") == std::string_view::npos) return true;
          return output.add(convertLine(line));
        },
        [&] { return output.flush(); });
    if (_failedCount > 0) {
      throw Failure(kProblem, std::to_string(_failedCount) + " of " + std::to_string(_count) +
                                  " records failed; each has its \"error\"");
    }
  }

 protected:
  // Adds the result to a record. Throws Failure.
  virtual void convertRecord(json::Value& record) = 0;
  // A line that is no record: its result as text. Throws Failure, with what is known of it in
  // `record`.
  virtual std::string convertBare(std::string_view line, json::Value& record) = 0;
  virtual bool isBare(const json::Value& parsed, bool isJson) const = 0;

  const VarType& findType(const json::Value& record) {
    const json::Value& type = record["type"];
    if (!type.isString() && (_defaultType.empty() || !type.isNull())) {
      throw Failure(kProblem, "\"type\" is missing or no text");
    }
    return findType(type.isString() ? type.asString() : _defaultType);
  }

  const VarType& findType(const std::string& name) {
    const auto found = _types.find(name);
    if (found != _types.end()) return *found->second;
    const VarType& type = _catalogue.findVarType(name);
    _types.emplace(name, &type);
    return type;
  }

  base::Buffer readRaw(const VarType& type, const std::string& hex) {
    base::Buffer raw = _catalogue.readHex(hex);
    _catalogue.checkLength(type, raw);
    return raw;
  }

  Catalogue& getCatalogue() { return _catalogue; }
  const std::string& getDefaultType() const { return _defaultType; }

 private:
  std::string convertLine(std::string_view line) {
    ++_count;
    json::Value record;
    try {
      if (line.size() > kLongestLine) {
        throw Failure(kProblem,
                      "the line has more than " + std::to_string(kLongestLine) + " bytes");
      }
      std::string error;
      const bool isJson = json::Value::parse(line, record, error);
      if (!_defaultType.empty() && isBare(record, isJson)) {
        return convertBare(line, record);
      }
      if (!isJson) throw Failure(kProblem, "not JSON: " + error);
      if (!record.isObject()) throw Failure(kProblem, "expected a JSON object");
      convertRecord(record);
    } catch (const Failure& failure) {
      ++_failedCount;
      record["error"] = failure.what();
    }
    return record.stringify();
  }

  Catalogue& _catalogue;
  std::string _defaultType;
  std::unordered_map<std::string, const VarType*> _types;
  std::uint64_t _count = 0;
  std::uint64_t _failedCount = 0;
};

class DecodeStream : public Stream {
 public:
  using Stream::Stream;

 protected:
  void convertRecord(json::Value& record) override {
    const VarType& type = findType(record);
    if (!std::as_const(record)["raw"].isString()) {
      throw Failure(kProblem, "\"raw\" is missing or no text");
    }
    const base::Buffer raw = readRaw(type, std::as_const(record)["raw"].asString());
    record["value"] = getCatalogue().decode(type, raw);
  }

  std::string convertBare(std::string_view line, json::Value& record) override {
    const std::string hex = util::StringUtils::trim(std::string(line));
    record.clear();
    record["raw"] = hex;
    const VarType& type = findType(getDefaultType());
    return getCatalogue().decode(type, readRaw(type, hex)).stringify();
  }

  // Hexadecimal text may look like a JSON number, but never like an object.
  bool isBare(const json::Value& parsed, bool isJson) const override {
    return !isJson || !parsed.isObject();
  }
};

class EncodeStream : public Stream {
 public:
  using Stream::Stream;

 protected:
  void convertRecord(json::Value& record) override {
    const VarType& type = findType(record);
    const json::Value* value = record.getPropertyMap().find("value");
    if (value == nullptr) throw Failure(kProblem, "\"value\" is missing");
    record["raw"] = util::BinaryUtils::toString(getCatalogue().encode(type, *value));
  }

  std::string convertBare(std::string_view, json::Value& record) override {
    const json::Value value = record;
    record.clear();
    record["value"] = value;
    return util::BinaryUtils::toString(getCatalogue().encode(findType(getDefaultType()), value));
  }

  // A record has a value and names its type, or has been decoded; any other JSON is a value itself.
  bool isBare(const json::Value& parsed, bool isJson) const override {
    const bool isRecord = parsed.getPropertyMap().find("value") != nullptr &&
                          (parsed["type"].isString() || parsed["raw"].isString());
    return isJson && !isRecord;
  }
};

}  // namespace

void runDecodeStream(Catalogue& catalogue, const std::string& defaultType) {
  DecodeStream(catalogue, defaultType).run();
}

void runEncodeStream(Catalogue& catalogue, const std::string& defaultType) {
  EncodeStream(catalogue, defaultType).run();
}

}  // namespace zavri::korvat::tool
