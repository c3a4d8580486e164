#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <simdjson.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>

// What a program could do at best that takes records apart and writes records: reads JSON objects,
// one a line, from standard input in blocks, parses them with simdjson and prints them again with
// RapidJSON. It knows nothing of types and converts nothing.
namespace {

namespace ondemand = simdjson::ondemand;

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

constexpr std::size_t kBlockSize = std::size_t{256} * 1024;  // as korvat reads and writes

void printText(std::string_view text, Writer& writer) {
  writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

template <typename Node>
void print(Node&& node, Writer& writer) {
  switch (node.type().value()) {
    case ondemand::json_type::object:
      writer.StartObject();
      for (auto field : node.get_object().value()) {
        const std::string_view name = field.unescaped_key().value();
        writer.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
        print(field.value().value(), writer);
      }
      writer.EndObject();
      break;
    case ondemand::json_type::array:
      writer.StartArray();
      for (auto element : node.get_array().value()) print(element.value(), writer);
      writer.EndArray();
      break;
    case ondemand::json_type::string:
      printText(node.get_string().value(), writer);
      break;
    case ondemand::json_type::number: {
      const ondemand::number number = node.get_number().value();
      if (number.is_double()) {
        writer.Double(number.get_double());
      } else if (number.is_int64()) {
        writer.Int64(number.get_int64());
      } else {
        writer.Uint64(number.get_uint64());
      }
      break;
    }
    case ondemand::json_type::boolean:
      writer.Bool(node.get_bool().value());
      break;
    case ondemand::json_type::null:
      writer.Null();
      break;
  }
}

void writeAll(const char* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t written = ::write(STDOUT_FILENO, bytes, size);
    if (written < 0) throw std::runtime_error("cannot write");
    bytes += written;
    size -= static_cast<std::size_t>(written);
  }
}

class Program {
 public:
  void run() {
    std::string block(kBlockSize + simdjson::SIMDJSON_PADDING, '\0');
    std::size_t size = 0;
    while (true) {
      if (size == kBlockSize) throw std::runtime_error("a record is longer than a block");
      const ssize_t count = ::read(STDIN_FILENO, block.data() + size, kBlockSize - size);
      if (count < 0) throw std::runtime_error("cannot read");
      if (count == 0) break;
      size += static_cast<std::size_t>(count);
      const std::size_t lineEnd = std::string_view(block.data(), size).rfind('\n');
      if (lineEnd == std::string_view::npos) continue;
      convert(block.data(), lineEnd + 1);
      size -= lineEnd + 1;
      std::memmove(block.data(), block.data() + lineEnd + 1, size);
    }
    convert(block.data(), size);
    writeAll(_output.GetString(), _output.GetSize());
  }

 private:
  void convert(char* records, std::size_t size) {
    ondemand::document_stream stream = _parser.iterate_many(records, size, kBlockSize).value();
    for (auto record : stream) {
      _writer.Reset(_output);
      print(record.value(), _writer);
      _output.Put('\n');
      if (_output.GetSize() < kBlockSize) continue;
      writeAll(_output.GetString(), _output.GetSize());
      _output.Clear();
    }
  }

  ondemand::parser _parser;
  rapidjson::StringBuffer _output;
  Writer _writer{_output};
};

}  // namespace

int main() {
  try {
    Program().run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "stream_baseline: %s\n", error.what());
    return 1;
  }
  return 0;
}
