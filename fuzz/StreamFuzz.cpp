// Streams of records: any input is converted line by line, and JSON output is JSON, line by line.

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <string_view>

#include "fuzz/Fuzzing.h"
#include "tool/Commands.h"

using namespace zavri::korvat;
namespace json = zavri::json;

namespace {

// The stream commands read standard input and write standard output: both become files in memory.
class StandardStreams {
 public:
  StandardStreams() {
    open(STDIN_FILENO);
    open(STDOUT_FILENO);
    stderr = std::fopen("/dev/null", "w");  // the summary of failures
    fuzz::require(stderr != nullptr);
  }

  void setInput(const std::string& text) {
    rewind(STDIN_FILENO);
    fuzz::require(::write(STDIN_FILENO, text.data(), text.size()) ==
                  static_cast<ssize_t>(text.size()));
    ::lseek(STDIN_FILENO, 0, SEEK_SET);
    rewind(STDOUT_FILENO);
  }
  std::string getOutput() {
    const off_t size = ::lseek(STDOUT_FILENO, 0, SEEK_CUR);
    std::string text(static_cast<std::size_t>(size), '\0');
    fuzz::require(::pread(STDOUT_FILENO, text.data(), text.size(), 0) == size);
    return text;
  }

 private:
  static void open(int file) {
    const int memory = ::memfd_create("korvat-fuzz", MFD_CLOEXEC);
    fuzz::require(memory >= 0 && ::dup2(memory, file) == file);
    ::close(memory);
  }
  static void rewind(int file) {
    fuzz::require(::ftruncate(file, 0) == 0);
    ::lseek(file, 0, SEEK_SET);
  }
};

tool::Catalogue& getCatalogue() {
  static tool::Catalogue catalogue([] {
    tool::Options options;
    options.catalog = KORVAT_SOURCE_CATALOG;
    return options;
  }());
  return catalogue;
}

void requireJsonLines(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    fuzz::require(end != std::string_view::npos);
    json::Value value;
    std::string error;
    fuzz::require(json::Value::parse(text.substr(0, end), value, error));
    text.remove_prefix(end + 1);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static StandardStreams streams;
  fuzz::Input input(data, size);
  const unsigned bits = input.takeByte();
  const unsigned shape = input.takeByte();
  tool::StreamOptions options;
  options.type = input.takeText();
  options.isCsv = (bits & 1) != 0;
  options.isFromCsv = (bits & 2) != 0;
  options.shape.enumForm = static_cast<tool::EnumForm>(shape % 3);
  options.shape.withRawNumbers = (shape & 4) != 0;
  options.shape.isInvalidNull = (shape & 8) != 0;
  if ((shape & 16) != 0) options.shape.paths.push_back(input.takeText());
  const bool isDecode = (bits & 4) != 0;
  streams.setInput(input.takeRestAsText());

  try {
    if (isDecode) {
      tool::runDecodeStream(getCatalogue(), options);
    } else {
      tool::runEncodeStream(getCatalogue(), options);
    }
  } catch (const tool::Failure& failure) {
    fuzz::require(failure.what()[0] != '\0');
  }
  const bool isBareHex = !isDecode && !options.type.empty();
  if (!options.isCsv && !isBareHex) requireJsonLines(streams.getOutput());
  return 0;
}
