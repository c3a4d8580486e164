// Uses types of one's own: writes a small catalogue, reads it, and prints the library's messages in
// its own way.

#include <korvat/base/Buffer.h>
#include <korvat/base/Endianess.h>
#include <korvat/base/Logger.h>
#include <korvat/base/Value.h>
#include <korvat/types/TypeManager.h>

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

using namespace zavri;

// The set of a manufacturer, with one network variable type.
const char* const kPrefix = "9FFFFF0000000000-3";
const char* const kTypes = R"(<?xml version="1.0" encoding="UTF-8"?>
<ldrf>
  <items>
    <nvt id="coldRoom" idx="1">
      <p-name>UNVTcoldRoom</p-name>
      <size>3</size>
      <aggregate cat="struct">
        <members>
          <member>
            <scalar>
              <nc-type>signed long</nc-type>
              <scaling><a>1</a><b>-2</b><c>0</c></scaling>
            </scalar>
            <p-name>temperature</p-name>
          </member>
          <member>
            <scalar><nc-type>unsigned short</nc-type></scalar>
            <p-name>doors_open</p-name>
          </member>
        </members>
      </aggregate>
    </nvt>
  </items>
</ldrf>
)";

void printMessage(base::Logger::Level level, const std::string& message) {
  std::printf("%s: %s", level == base::Logger::Error ? "error" : "warning", message.c_str());
}

int main() {
  base::Logger::setSink(printMessage);  // errors and warnings; base::_logLevel asks for more

  namespace fs = std::filesystem;
  const fs::path folder =
      fs::temp_directory_path() / ("korvat-example." + std::to_string(getpid()));
  fs::create_directories(folder / kPrefix);
  std::ofstream(folder / kPrefix / "nvs.xml") << kTypes;

  korvat::TypeManager manager("example");
  manager.setBaseDir(folder.string());
  const std::string prefix = kPrefix;
  const std::uint8_t bytes[] = {0xF8, 0xC6, 0x02};
  base::Buffer raw(bytes, sizeof bytes);

  json::Value value;
  if (manager.rawToJson(manager.toTypeId(prefix + "/UNVTcoldRoom"), raw, value)) {
    std::puts(value.stringify().c_str());
  }

  const korvat::TypeId missing = manager.toTypeId(prefix + "/UNVTwarmRoom");
  if (!manager.convert(base::Endianess::Big, missing, raw, true)) std::puts("not converted");

  fs::remove_all(folder);
  return 0;
}
