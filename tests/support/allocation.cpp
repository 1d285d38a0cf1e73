// The counters are plain arrays: whatever counts allocations must not make any.
#include "tests/support/allocation.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t kCounted = 4096;  // sizes from here on are not counted
constexpr std::size_t kPrefix = alignof(std::max_align_t);

std::array<std::atomic<long>, kCounted> g_live;
std::atomic<std::size_t> g_refusedLeast = 0;
std::atomic<std::size_t> g_refusedMost = 0;
std::atomic<int> g_refused = 0;

bool isRefused(std::size_t size) {
  if (g_refusedMost == 0 || size < g_refusedLeast || size > g_refusedMost) return false;
  ++g_refused;
  return true;
}

// The size stands in front of the memory handed out.
void* allocate(std::size_t size) noexcept {
  if (isRefused(size)) return nullptr;
  auto* memory = static_cast<std::size_t*>(std::malloc(size + kPrefix));
  if (memory == nullptr) return nullptr;
  *memory = size;
  if (size < kCounted) ++g_live[size];
  return reinterpret_cast<char*>(memory) + kPrefix;
}

void* allocateOrThrow(std::size_t size) {
  void* memory = allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void release(void* memory) noexcept {
  if (memory == nullptr) return;
  void* start = static_cast<char*>(memory) - kPrefix;
  const std::size_t size = *static_cast<std::size_t*>(start);
  if (size < kCounted) --g_live[size];
  std::free(start);
}

}  // namespace

// The linker sends the program's calls of calloc here.
extern "C" void* __real_calloc(std::size_t count, std::size_t size);
extern "C" void* __wrap_calloc(std::size_t count, std::size_t size) {
  return isRefused(count * size) ? nullptr : __real_calloc(count, size);
}

void* operator new(std::size_t size) {
  return allocateOrThrow(size);
}
void* operator new[](std::size_t size) {
  return allocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return allocate(size);
}
void operator delete(void* memory) noexcept {
  release(memory);
}
void operator delete[](void* memory) noexcept {
  release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  release(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  release(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  release(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  release(memory);
}

namespace tvrscn::test {

long liveAllocations(std::size_t size) {
  return g_live.at(size);
}

RefusedAllocations::RefusedAllocations(std::size_t least, std::size_t most) {
  g_refused = 0;
  g_refusedLeast = least;
  g_refusedMost = most;
}

RefusedAllocations::~RefusedAllocations() {
  g_refusedMost = 0;
  g_refusedLeast = 0;
}

int RefusedAllocations::count() {
  return g_refused;
}

}  // namespace tvrscn::test
