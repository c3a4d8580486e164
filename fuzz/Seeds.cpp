// Makes the seeds of the fuzz targets from the embedded catalogue: fuzz_seeds FOLDER writes
// FOLDER/<target>/<number> for each target.

#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <stdexcept>

#include "fuzz/CatalogueItems.h"
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

void addResourceFiles(Seeds& seeds, ResourceType kind) {
  for (const std::string& file : fuzz::splitCatalogue(kind)) {
    seeds.add(ResourceFileSet::getFileName(kind), file);
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
  const std::string lookedUp("\xFC\0", 2);
  for (const VarType* type : getTypes().all) {
    seeds.add("typeid", none + type->getTypeId().toString());
    seeds.add("typeid", lookedUp + type->getTypeId().toString());
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
    addResourceFiles(seeds, ResourceType::Enum);
    addResourceFiles(seeds, ResourceType::Nv);
    addResourceFiles(seeds, ResourceType::Cp);
    addResourceFiles(seeds, ResourceType::Fp);
    for (std::size_t i = 0; i < getTypes().all.size(); ++i) addValues(seeds, i);
    addTypeIds(seeds);
  } catch (const std::exception& error) {
    std::cerr << "fuzz_seeds: " << error.what() << "\n";
    return 1;
  }
  return 0;
}
