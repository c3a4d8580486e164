// Makes the seeds of the fuzz targets from the embedded catalogue: fuzz_seeds FOLDER writes
// FOLDER/<target>/<number> for each target.

#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>

#include "fuzz/Fuzzing.h"
#include "korvat/base/Value.h"

using namespace zavri::korvat;
using fuzz::getTypes;
using fuzz::Types;
using zavri::base::Buffer;
namespace json = zavri::json;

namespace {

// Starts of the members of Types to the input that a target over values expects.
std::string valueCase(std::size_t typeNumber, char bits) {
  return {static_cast<char>(typeNumber & 0xFF), static_cast<char>(typeNumber >> 8), bits, '\0'};
}

class Seeds {
 public:
  explicit Seeds(const std::filesystem::path& folder) : _folder(folder) {}

  void add(const std::string& target, const std::string& seed) {
    const std::filesystem::path folder = _folder / target;
    if (_counts[target] == 0) std::filesystem::create_directories(folder);
    std::ofstream file(folder / ("seed-" + std::to_string(++_counts[target])), std::ios::binary);
    file << seed;
    if (!file.flush()) throw std::runtime_error("cannot write to " + folder.string());
  }

 private:
  std::filesystem::path _folder;
  std::map<std::string, unsigned> _counts;
};

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  if (!file) throw std::runtime_error("cannot read " + path);
  return text.str();
}

// Without what stands between elements for the reader's sake.
std::string dropIndentation(const std::string& xml) {
  std::string text;
  for (std::size_t i = 0; i < xml.size(); ++i) {
    if (xml[i] == '\n') i = xml.find_first_not_of(" \n", i);
    text += xml[i];
  }
  return text;
}

// Each item of a file of the catalogue in a file of its own, with the first of the strings.
void addResourceFiles(Seeds& seeds, const std::string& target, const std::string& tag) {
  const std::string folder = std::string(KORVAT_SOURCE_CATALOG) + "/" + TypeId::StdPrefix;
  const std::string text = readFile(folder + "/" + target + ".xml");
  const std::string end = "</" + tag + ">";
  std::size_t begin = text.find("<" + tag + " ");
  while (begin != std::string::npos) {
    const std::size_t size = text.find(end, begin) + end.size() - begin;
    seeds.add(target,
              "<ldrf><control><folder>" + TypeId::StdPrefix +
                  "</folder></control><strings><string id=\"u_A\">amperes</string></strings>"
                  "<items>" +
                  dropIndentation(text.substr(begin, size)) + "</items></ldrf>");
    begin = text.find("<" + tag + " ", begin + size);
  }
}

// The path of the last leaf of a value.
std::string findLeaf(const json::Value& value) {
  if (value.isArray() && value.getSize() > 0) {
    const unsigned index = value.getSize() - 1;
    const std::string rest = findLeaf(value[index]);
    return "[" + std::to_string(index) + "]" + rest;
  }
  std::string path;
  for (const auto& [name, member] : value.getPropertyMap()) {
    const std::string rest = findLeaf(member);
    path = name + (rest.empty() || rest[0] == '[' ? "" : ".") + rest;
  }
  return path;
}

void addValues(Seeds& seeds, std::size_t typeNumber) {
  Types& types = getTypes();
  const VarType& type = *types.all[typeNumber];
  unsigned size = 0;
  if (!type.getMaxSize(&types.manager, size)) return;

  Buffer raw;
  raw.setSize(size);
  for (unsigned i = 0; i < size; ++i) raw.getData()[i] = static_cast<std::uint8_t>(i);
  const std::string bytes(reinterpret_cast<const char*>(raw.getData()), size);
  json::Value value;
  if (!types.manager.rawToJson(type.getTypeId(), raw, value)) return;
  const std::string json = value.stringify();
  const auto operation = static_cast<char>(typeNumber % 10);

  seeds.add("rawtojson", valueCase(typeNumber, '\0') + bytes);
  seeds.add("jsontoraw", valueCase(typeNumber, '\0') + json);
  seeds.add("packet", valueCase(typeNumber, '\0') + bytes);
  seeds.add("member", valueCase(typeNumber, '\0') + findLeaf(value) + '\0' +
                          static_cast<char>(size) + bytes + operation + "\xFF\x01\x02\x03\x04");

  const std::string name = type.getTypeId().toLonFormatId();
  std::string hex;
  for (const char byte : bytes) {
    constexpr char kDigits[] = "0123456789ABCDEF";
    hex += kDigits[(byte >> 4) & 15];
    hex += kDigits[byte & 15];
  }
  const std::string inJson("\0\0\0", 3), outJson("\4\0\0", 3), outCsv("\7\6\0", 3);
  seeds.add("stream", outJson + "{\"type\":\"" + name + "\",\"raw\":\"" + hex + "\"}\n");
  seeds.add("stream", inJson + "{\"type\":\"" + name + "\",\"value\":" + json + "}\n");
  seeds.add("stream", outCsv + "type,raw\n" + name + "," + hex + "\n");
}

void addTypeIds(Seeds& seeds) {
  const std::string none("\2\0", 2);
  for (const VarType* type : getTypes().all) {
    seeds.add("typeid", none + type->getTypeId().toString());
  }
  seeds.add("typeid", none + "/~/type/dp/drv/0000000000000000-0/SNVT_temp_p");
  seeds.add("typeid", std::string("\4") + "8000010501638500-5" + '\0' + "SFPTclosedLoopActuator");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: fuzz_seeds FOLDER\n";
    return 2;
  }
  try {
    Seeds seeds(argv[1]);
    addResourceFiles(seeds, "enums", "enumt");
    addResourceFiles(seeds, "nvs", "nvt");
    addResourceFiles(seeds, "cps", "cpt");
    addResourceFiles(seeds, "fps", "fpt");
    for (std::size_t i = 0; i < getTypes().all.size(); ++i) addValues(seeds, i);
    addTypeIds(seeds);
  } catch (const std::exception& error) {
    std::cerr << "fuzz_seeds: " << error.what() << "\n";
    return 1;
  }
  return 0;
}
