#include <benchmark/benchmark.h>

#include <string>

#include "bench/Sample.h"

// Conversions by type identifier, beside codecs written by hand for each one type. Both sides reuse
// what a caller would reuse: the text and the buffer that they write to. A case checks that both
// sides give the same before it is timed.
namespace zavri::korvat::bench {

namespace {

// What all conversions of one sample need.
struct Bench {
  explicit Bench(const Sample& s)
      : sample(s),
        manager(makeSampleTypes()),
        enums(manager),
        raw(toBuffer(s.hex)),
        id(idOf(s.type)) {
    sample.decode(enums, raw.getData(), document);
    text = document.stringify();
  }

  const Sample& sample;
  TypeManager manager;
  Enums enums;
  base::Buffer raw;
  TypeId id;
  json::Value document;  // by hand
  std::string text;
};

void finish(benchmark::State& state, std::size_t byteCount) {
  state.SetBytesProcessed(static_cast<std::int64_t>(byteCount) *
                          static_cast<std::int64_t>(state.iterations()));
}

bool fail(benchmark::State& state, const std::string& given, const std::string& expected) {
  if (given == expected) return false;
  state.SkipWithError(("differs: " + given + " expected " + expected).c_str());
  return true;
}

// --- Raw bytes to a document ---

void decodeByHand(benchmark::State& state, const Sample& sample) {
  const Bench bench(sample);
  for (auto _ : state) {
    json::Value value;
    sample.decode(bench.enums, bench.raw.getData(), value);
    benchmark::DoNotOptimize(value);
  }
  finish(state, bench.raw.getSize());
}

void decode(benchmark::State& state, const Sample& sample) {
  Bench bench(sample);
  json::Value decoded;
  if (!bench.manager.rawToJson(bench.id, bench.raw, decoded) || decoded != bench.document) {
    state.SkipWithError("differs from the document made by hand");
    return;
  }
  for (auto _ : state) {
    json::Value value;
    benchmark::DoNotOptimize(bench.manager.rawToJson(bench.id, bench.raw, value));
    benchmark::DoNotOptimize(value);
  }
  finish(state, bench.raw.getSize());
}

// --- Raw bytes to text ---

void printByHand(benchmark::State& state, const Sample& sample) {
  const Bench bench(sample);
  rapidjson::StringBuffer buffer;
  JsonWriter writer(buffer);
  sample.print(bench.enums, bench.raw.getData(), writer);
  if (fail(state, std::string(buffer.GetString(), buffer.GetSize()), bench.text)) return;
  for (auto _ : state) {
    buffer.Clear();
    writer.Reset(buffer);
    sample.print(bench.enums, bench.raw.getData(), writer);
    benchmark::DoNotOptimize(buffer.GetString());
  }
  finish(state, bench.text.size());
}

void print(benchmark::State& state, const Sample& sample) {
  Bench bench(sample);
  std::string text;
  if (!bench.manager.rawToJsonText(bench.id, bench.raw, text)) text = "failed";
  if (fail(state, text, bench.text)) return;
  for (auto _ : state) {
    benchmark::DoNotOptimize(bench.manager.rawToJsonText(bench.id, bench.raw, text));
    benchmark::DoNotOptimize(text.data());
  }
  finish(state, bench.text.size());
}

// --- A document to raw bytes ---

void encodeByHand(benchmark::State& state, const Sample& sample) {
  const Bench bench(sample);
  base::Buffer raw;
  raw.setSize(bench.raw.getSize());
  if (!sample.encode(bench.enums, bench.document, raw.getData()) || raw != bench.raw) {
    state.SkipWithError("does not come back");
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(sample.encode(bench.enums, bench.document, raw.getData()));
    benchmark::ClobberMemory();
  }
  finish(state, bench.raw.getSize());
}

void encode(benchmark::State& state, const Sample& sample) {
  Bench bench(sample);
  base::Buffer raw;
  if (!bench.manager.jsonToRaw(bench.id, bench.document, raw) || raw != bench.raw) {
    state.SkipWithError("does not come back");
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(bench.manager.jsonToRaw(bench.id, bench.document, raw));
    benchmark::ClobberMemory();
  }
  finish(state, bench.raw.getSize());
}

// --- Text to raw bytes ---

void parseByHand(benchmark::State& state, const Sample& sample) {
  const Bench bench(sample);
  base::Buffer raw;
  raw.setSize(bench.raw.getSize());
  if (!sample.parse(bench.enums, bench.text, raw.getData()) || raw != bench.raw) {
    state.SkipWithError("does not come back");
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(sample.parse(bench.enums, bench.text, raw.getData()));
    benchmark::ClobberMemory();
  }
  finish(state, bench.text.size());
}

void parse(benchmark::State& state, const Sample& sample) {
  Bench bench(sample);
  base::Buffer raw;
  if (!bench.manager.jsonTextToRaw(bench.id, bench.text, raw) || raw != bench.raw) {
    state.SkipWithError("does not come back");
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(bench.manager.jsonTextToRaw(bench.id, bench.text, raw));
    benchmark::ClobberMemory();
  }
  finish(state, bench.text.size());
}

struct Direction {
  const char* name;
  void (*korvat)(benchmark::State&, const Sample&);
  void (*baseline)(benchmark::State&, const Sample&);
};

constexpr Direction kDirections[] = {
    {"raw to document", decode, decodeByHand},
    {"raw to text", print, printByHand},
    {"document to raw", encode, encodeByHand},
    {"text to raw", parse, parseByHand},
};

[[maybe_unused]] const bool kRegistered = [] {
  for (const Direction& direction : kDirections) {
    for (const Sample& sample : getSamples()) {
      const std::string name = std::string(direction.name) + ", " + sample.type;
      benchmark::RegisterBenchmark((name + "/korvat").c_str(), direction.korvat, sample);
      benchmark::RegisterBenchmark((name + "/baseline").c_str(), direction.baseline, sample);
    }
  }
  return true;
}();

}  // namespace

}  // namespace zavri::korvat::bench
