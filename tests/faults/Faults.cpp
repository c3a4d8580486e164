#include "tests/faults/Faults.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <new>
#include <utility>

#include <expat.h>

// The functions that the linker's option --wrap puts aside.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real_realloc(void* block, std::size_t size);
void __real_free(void* block);
}

namespace zavri::test {

namespace {

struct Heap {
  bool isArmed = false;
  bool isLasting = false;
  bool hasStruck = false;
  std::size_t untilFault = 0;
  long liveBlocks = 0;
};

// Before any dynamic initialisation: memory is asked for that early.
constinit Heap heap;

bool isRefused() {
  if (!heap.isArmed) return false;
  if (heap.hasStruck) return heap.isLasting;
  if (--heap.untilFault > 0) return false;
  heap.hasStruck = true;
  return true;
}

void* take(std::size_t size) {
  if (isRefused()) return nullptr;

  void* const block = __real_malloc(size == 0 ? 1 : size);
  if (block != nullptr) ++heap.liveBlocks;
  return block;
}

void* retake(void* block, std::size_t size) {
  if (block == nullptr) return take(size);
  return isRefused() ? nullptr : __real_realloc(block, size);
}

void give(void* block) {
  if (block == nullptr) return;
  --heap.liveBlocks;
  __real_free(block);
}

ReadHook& readHook() {
  static ReadHook hook;
  return hook;
}

std::size_t readCount = 0;

}  // namespace

MemoryFault::MemoryFault(std::size_t n, Shortage shortage) {
  heap.untilFault = n;
  heap.hasStruck = false;
  heap.isLasting = shortage == Shortage::Lasting;
  heap.isArmed = true;
}

MemoryFault::~MemoryFault() {
  heap.isArmed = false;
}

bool MemoryFault::hasStruck() {
  return heap.hasStruck;
}

long countLiveBlocks() {
  return heap.liveBlocks;
}

ReadFault::ReadFault(ReadHook hook) {
  readCount = 0;
  readHook() = std::move(hook);
}

ReadFault::~ReadFault() {
  readHook() = nullptr;
}

std::size_t ReadFault::getCount() {
  return readCount;
}

}  // namespace zavri::test

using zavri::test::give;
using zavri::test::retake;
using zavri::test::take;

// --- What C++ asks for ---

void* operator new(std::size_t size) {
  void* const block = take(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void* operator new[](std::size_t size) {
  return operator new(size);
}
void operator delete(void* block) noexcept {
  give(block);
}
void operator delete(void* block, std::size_t) noexcept {
  give(block);
}
void operator delete[](void* block) noexcept {
  give(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  give(block);
}

// --- What the library's C code asks for: the linker gives its calls to these (--wrap) ---

extern "C" {

void* __wrap_malloc(std::size_t size) {
  return take(size);
}
void* __wrap_realloc(void* block, std::size_t size) {
  return retake(block, size);
}
void __wrap_free(void* block) {
  give(block);
}

XML_Parser __wrap_XML_ParserCreate(const XML_Char* encoding) {
  static constexpr XML_Memory_Handling_Suite kMemory{take, retake, give};
  return XML_ParserCreate_MM(encoding, &kMemory, nullptr);
}

// --- Files: takes the place of the C library's for the C++ library's file streams ---

ssize_t read(int fd, void* bytes, std::size_t size) {
  auto& hook = zavri::test::readHook();
  if (hook) {
    errno = hook(++zavri::test::readCount, fd);
    if (errno != 0) return -1;
  }
  return syscall(SYS_read, fd, bytes, size);
}

}  // extern "C"
