#pragma once

#include <cstddef>
#include <functional>

// Faults of the system, made on demand. This program replaces the functions that the library gets
// memory and the bytes of files from: operator new and delete, malloc and its kin (as the library
// and its XML parser call them), and read(). What the C library takes for itself is left alone. One
// thread at a time.
namespace zavri::test {

// How long memory stays out.
enum class Shortage {
  Once,  // one request fails
  Lasting,
};

// Lets the n-th request for memory from now on fail, counted from 1, and with Lasting those behind
// it too, until the object ends.
class MemoryFault {
 public:
  MemoryFault(std::size_t n, Shortage shortage);
  MemoryFault(const MemoryFault&) = delete;
  MemoryFault& operator=(const MemoryFault&) = delete;
  ~MemoryFault();

  // Whether a request has failed.
  static bool hasStruck();
};

// Blocks of memory that were taken and not given back.
long countLiveBlocks();

// Is asked before each read of a file; `number` counts them from 1 and `fd` is the file. The result
// is 0 to read on, or the error number, such as EIO, that the read fails with.
using ReadHook = std::function<int(std::size_t number, int fd)>;

// Puts a hook in place until the object ends.
class ReadFault {
 public:
  explicit ReadFault(ReadHook hook);
  ReadFault(const ReadFault&) = delete;
  ReadFault& operator=(const ReadFault&) = delete;
  ~ReadFault();

  // Reads so far.
  static std::size_t getCount();
};

}  // namespace zavri::test
