#include <benchmark/benchmark.h>
#include <expat.h>

#include <fstream>
#include <string>
#include <vector>

#include "korvat/types/ResourceFileSet.h"
#include "korvat/types/TypeManager.h"

// Loading the embedded catalogue, beside Expat alone over the same files, each read twice as the
// loader does.
namespace zavri::korvat::bench {

namespace {

const std::string kBaseDir = KORVAT_SOURCE_DIR "/res/korvat";

constexpr const char* kFiles[] = {"enums", "nvs", "cps"};

void countElement(void* count, const XML_Char*, const XML_Char**) {
  ++*static_cast<std::size_t*>(count);
}

std::size_t parseFile(const std::string& path) {
  std::size_t elements = 0;
  std::ifstream file(path, std::ios::binary);
  XML_Parser parser = XML_ParserCreate(nullptr);
  XML_SetUserData(parser, &elements);
  XML_SetStartElementHandler(parser, countElement);
  std::vector<char> block(64 * 1024);
  while (file.read(block.data(), static_cast<std::streamsize>(block.size())), file.gcount() > 0) {
    XML_Parse(parser, block.data(), static_cast<int>(file.gcount()), XML_FALSE);
  }
  const bool isDone = XML_Parse(parser, nullptr, 0, XML_TRUE) == XML_STATUS_OK;
  XML_ParserFree(parser);
  return isDone ? elements : 0;
}

void parseOnly(benchmark::State& state) {
  for (auto _ : state) {
    for (const char* file : kFiles) {
      const std::string path = kBaseDir + "/" + TypeId::StdPrefix + "/" + file + ".xml";
      for (int pass = 0; pass < 2; ++pass) {
        if (parseFile(path) == 0) return state.SkipWithError(path.c_str());
      }
    }
  }
}

void loadCatalogue(benchmark::State& state) {
  for (auto _ : state) {
    TypeManager manager("bench");
    manager.setBaseDir(kBaseDir);
    ResourceFileSet& fileSet = manager.getResourceFileSet(TypeId::StdPrefix);
    for (const ResourceType type : {ResourceType::Enum, ResourceType::Nv, ResourceType::Cp}) {
      if (fileSet.getGroup(type, true, &manager) == nullptr) return state.SkipWithError("not loaded");
    }
  }
}

BENCHMARK(parseOnly)->Name("load catalogue/baseline");
BENCHMARK(loadCatalogue)->Name("load catalogue/korvat");

}  // namespace

}  // namespace zavri::korvat::bench
