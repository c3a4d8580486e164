#include <benchmark/benchmark.h>
#include <expat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench/Heap.h"
#include "korvat/types/ResourceFileSet.h"
#include "korvat/types/TypeManager.h"

// Loading the embedded catalogue, beside Expat alone over the same files, each read twice as the
// loader does. "heap/files" is what the loaded catalogue takes on the heap over the size of its
// files.
namespace zavri::korvat::bench {

namespace {

const std::string kBaseDir = KORVAT_SOURCE_DIR "/res/korvat";

constexpr const char* kFiles[] = {"enums", "nvs", "cps", "fps"};

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

std::string pathOf(const char* file) {
  return kBaseDir + "/" + TypeId::StdPrefix + "/" + file + ".xml";
}

bool loadAll(TypeManager& manager) {
  ResourceFileSet& fileSet = manager.getResourceFileSet(TypeId::StdPrefix);
  for (const ResourceType type :
       {ResourceType::Enum, ResourceType::Nv, ResourceType::Cp, ResourceType::Fp}) {
    if (fileSet.getGroup(type, true, &manager) == nullptr) return false;
  }
  return true;
}

void parseOnly(benchmark::State& state) {
  for (auto _ : state) {
    for (const char* file : kFiles) {
      for (int pass = 0; pass < 2; ++pass) {
        if (parseFile(pathOf(file)) == 0) return state.SkipWithError(file);
      }
    }
  }
}

void loadCatalogue(benchmark::State& state) {
  for (auto _ : state) {
    TypeManager manager("bench");
    manager.setBaseDir(kBaseDir);
    if (!loadAll(manager)) return state.SkipWithError("not loaded");
  }

  std::uintmax_t fileSize = 0;
  for (const char* file : kFiles) fileSize += std::filesystem::file_size(pathOf(file));
  state.SetBytesProcessed(static_cast<std::int64_t>(fileSize) *
                          static_cast<std::int64_t>(state.iterations()));
  TypeManager manager("bench");
  manager.setBaseDir(kBaseDir);
  const std::size_t before = getHeapSize();
  if (!loadAll(manager)) return state.SkipWithError("not loaded");
  state.counters["heap/files"] =
      static_cast<double>(getHeapSize() - before) / static_cast<double>(fileSize);
}

BENCHMARK(parseOnly)->Name("load catalogue/baseline");
BENCHMARK(loadCatalogue)->Name("load catalogue/korvat");

}  // namespace

}  // namespace zavri::korvat::bench
