// Converts values of all types of the catalogue for a long time and proves that memory does not
// grow meanwhile:
//
//   korvat_long_run [CONVERSIONS]
//
// Half of the CONVERSIONS (10000000 unless given) go from raw to JSON, half back. The address space
// is limited to what the process has after a first round over all values, and a little. Exits 1
// when a result differs, when memory runs out, or when the process has grown.

#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <string>

#include "korvat/base/Logger.h"
#include "tests/Sanitizers.h"
#include "tests/stress/Workload.h"

namespace zavri::test {
namespace {

constexpr std::size_t kAllowance = std::size_t{4} << 20;  // bytes by which the process may grow

struct Size {
  std::size_t address;   // bytes of address space
  std::size_t resident;  // of them in memory
};

Size measure() {
  std::ifstream file("/proc/self/statm");
  Size pages{};
  file >> pages.address >> pages.resident;
  const auto pageSize = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return {pages.address * pageSize, pages.resident * pageSize};
}

bool limitAddressSpace(std::size_t byteCount) {
  const rlimit limit{byteCount, byteCount};
  return setrlimit(RLIMIT_AS, &limit) == 0;
}

// A sanitizer keeps freed memory aside: the process has no limit then and may grow.
int run(std::size_t count, bool isLimited) {
  const Workload workload;
  korvat::TypeManager manager = Workload::makeManager();
  Workload::load(manager);
  const std::size_t perRound = 2 * workload.samples().size();
  std::size_t failureCount = 0;
  const auto convert = [&](std::size_t i) {
    const std::string problem = workload.convert(manager, i / 2, i);
    if (problem.empty()) return;
    if (++failureCount <= 10) std::fprintf(stderr, "%s\n", problem.c_str());
  };

  for (std::size_t i = 0; i < perRound; ++i) convert(i);
  const Size before = measure();
  if (isLimited && !limitAddressSpace(before.address + kAllowance)) {
    std::perror("cannot limit the address space");
    return 1;
  }
  for (std::size_t i = 0; i < count; ++i) convert(i);
  const Size after = measure();

  std::printf(
      "%zu conversions of %zu values: %zu failures, resident %zu KiB before, %zu KiB after\n",
      count, workload.samples().size(), failureCount, before.resident / 1024,
      after.resident / 1024);
  const bool hasGrown = isLimited && after.resident > before.resident + kAllowance;
  if (hasGrown) std::fprintf(stderr, "the process has grown\n");
  return failureCount == 0 && !hasGrown ? 0 : 1;
}

}  // namespace
}  // namespace zavri::test

int main(int argumentCount, char** arguments) {
  zavri::base::_logLevel = zavri::base::Logger::Error;
  const std::size_t count =
      argumentCount > 1 ? std::strtoull(arguments[1], nullptr, 10) : std::size_t{10'000'000};
  try {
    return zavri::test::run(count, !zavri::test::kIsSanitized);
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "%s\n", exception.what());
    return 1;
  }
}
