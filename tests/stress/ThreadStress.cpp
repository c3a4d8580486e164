// Converts and looks up from many threads at once, for a run under the thread sanitizer:
//
//   korvat_thread_stress [CONVERSIONS]
//
// First each thread has a manager of its own, which it loads meanwhile; then all of them share one
// whose groups are loaded, but which has converted nothing yet. CONVERSIONS (100000 unless given)
// are made in the second part, a tenth of that in the first. Exits 1 when a result differs from
// what one thread alone gets.

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "korvat/base/Logger.h"
#include "korvat/members/Value.h"
#include "korvat/types/FpType.h"
#include "korvat/types/VarType.h"
#include "tests/stress/Workload.h"

namespace zavri::test {
namespace {

using korvat::ResourceType;
using korvat::TypeId;
using korvat::TypeManager;

constexpr std::size_t kThreads = 8;

// What went wrong; the first of each thread is shown.
class Failures {
 public:
  void add(const std::string& text) {
    const std::lock_guard<std::mutex> lock(_mutex);
    if (++_count <= 10) std::fprintf(stderr, "%s\n", text.c_str());
  }
  std::size_t count() const { return _count; }

 private:
  std::mutex _mutex;
  std::atomic<std::size_t> _count{0};
};

void lookUp(TypeManager& manager, const Workload::Sample& sample, Failures& failures) {
  const korvat::VarType* type = manager.getVarType(sample.id);
  if (type == nullptr || manager.getVarType(sample.id.toString()) != type) {
    return failures.add("lost " + sample.id.toString());
  }
  if (manager.getTypeIdByIndex(TypeId::StdPrefix, ResourceType::Nv, 95).getId() != "_switch") {
    failures.add("lost the type with number 95");
  }
  // The sensor's key, and one that no profile has.
  if (manager.searchFpType(TypeId::StdPrefix, 1) == TypeId::None ||
      manager.searchFpType(TypeId::StdPrefix, 65'000) != TypeId::None) {
    failures.add("lost a profile");
  }
  unsigned byteCount = 0;
  if (!type->getMaxSize(&manager, byteCount) || byteCount != sample.raw.getSize()) {
    failures.add("another size of " + sample.id.toString());
  }
  base::Buffer raw = sample.raw;
  if (raw.getSize() > 0 && manager.convert(base::Endianess::Big, sample.id, raw, true) &&
      (!manager.convert(base::Endianess::Big, sample.id, raw, true) ||
       raw.getSize() != sample.raw.getSize())) {
    failures.add("cannot swap " + sample.id.toString() + " back");
  }
  static_cast<void>(manager.accessValue(base::Endianess::Big, sample.id, raw));
  static_cast<void>(manager.toFullTypeId(sample.id, false));
}

// One thread's share: `count` conversions that begin with another sample in each thread.
void work(TypeManager& manager, const Workload& workload, std::size_t thread, std::size_t count,
          Failures& failures) {
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t index = i / 2 + thread * 37;
    const std::string problem = workload.convert(manager, index, i);
    if (!problem.empty()) failures.add(problem);
    if (i % 16 == thread) {
      lookUp(manager, workload.samples()[index % workload.samples().size()], failures);
    }
    if (i % 1000 == thread) base::Logger::warning("thread %zu is at %zu\n", thread, i);
  }
}

template <typename Share>
void runThreads(Share share) {
  std::vector<std::thread> threads;
  for (std::size_t thread = 0; thread < kThreads; ++thread) threads.emplace_back(share, thread);
  for (std::thread& thread : threads) thread.join();
}

int run(std::size_t count) {
  // Not an atomic one: the logger calls its sink from one thread at a time.
  std::size_t messageCount = 0;
  base::Logger::setSink(
      [&](base::Logger::Level, const std::string&) { messageCount = messageCount + 1; });
  const Workload workload;
  Failures failures;

  runThreads([&](std::size_t thread) {
    TypeManager manager = Workload::makeManager();
    work(manager, workload, thread, count / 10 / kThreads, failures);
  });

  TypeManager shared = Workload::makeManager();
  Workload::load(shared);
  runThreads(
      [&](std::size_t thread) { work(shared, workload, thread, count / kThreads, failures); });

  base::Logger::setSink(nullptr);
  std::printf("%zu conversions by %zu threads, %zu messages, %zu failures\n",
              count / kThreads * kThreads, kThreads, messageCount, failures.count());
  return failures.count() == 0 && messageCount > 0 ? 0 : 1;
}

}  // namespace
}  // namespace zavri::test

int main(int argumentCount, char** arguments) {
  const std::size_t count =
      argumentCount > 1 ? std::strtoull(arguments[1], nullptr, 10) : std::size_t{100'000};
  return zavri::test::run(count);
}
