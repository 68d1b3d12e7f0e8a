#include "guarded_memory.h"

#include <cstdint>

#if defined(__linux__) && !defined(BORVAN_UNGUARDED)
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>
#endif

namespace borvan::test {

void TouchAll(void* data, std::size_t length) {
  auto* const bytes = static_cast<volatile std::uint8_t*>(data);
  for (std::size_t i = 0; i < length; ++i) {
    const std::uint8_t byte = bytes[i];
    bytes[i] = byte;
  }
}

#if defined(__linux__) && !defined(BORVAN_UNGUARDED)

namespace {

thread_local bool guarding = false;

// Addresses are handed out once: a freed block's pages stay forbidden.
class Arena {
 public:
  void* Allocate(std::size_t size) {
    const std::size_t length = Pages(size);
    const std::size_t offset = used_.fetch_add(length + kPage);
    if (start_ == MAP_FAILED || offset + length + kPage > kSize ||
        mprotect(At(offset), length, PROT_READ | PROT_WRITE) != 0) {
      return nullptr;
    }
    std::uint8_t* const block = At(offset + length - Room(size));
    std::memcpy(block - sizeof size, &size, sizeof size);
    return block;
  }

  bool Holds(const void* block) const {
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    const auto start = reinterpret_cast<std::uintptr_t>(start_);
    return address >= start && address - start < kSize;
  }

  static void Free(void* block) {
    auto* const bytes = static_cast<std::uint8_t*>(block);
    std::size_t size = 0;
    std::memcpy(&size, bytes - sizeof size, sizeof size);
    const std::size_t length = Pages(size);
    void* const pages = bytes + Room(size) - length;
    static_cast<void>(madvise(pages, length, MADV_DONTNEED));
    static_cast<void>(mprotect(pages, length, PROT_NONE));
  }

 private:
  static constexpr std::size_t kPage = 4096;
  static constexpr std::size_t kSize = std::size_t{16} << 30U;
  static constexpr std::size_t kAlignment = 16;

  // Sizes that are no multiple of 8 are never those of an object with pointers.
  static std::size_t Room(std::size_t size) {
    return size % 8 == 0 ? (size + kAlignment - 1) / kAlignment * kAlignment : size;
  }

  // The size is kept in front of the block.
  static std::size_t Pages(std::size_t size) {
    return (Room(size) + sizeof size + kPage - 1) / kPage * kPage;
  }

  std::uint8_t* At(std::size_t offset) const { return static_cast<std::uint8_t*>(start_) + offset; }

  void* const start_ =
      mmap(nullptr, kSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  std::atomic<std::size_t> used_{0};
};

Arena& TheArena() {
  static Arena arena;
  return arena;
}

}  // namespace

GuardedMemory::GuardedMemory() : former_(guarding) {
  guarding = true;
}

GuardedMemory::~GuardedMemory() {
  guarding = former_;
}

}  // namespace borvan::test

using borvan::test::guarding;
using borvan::test::TheArena;

void* operator new(std::size_t size) {
  void* const block = guarding ? TheArena().Allocate(size) : std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

void operator delete(void* block) noexcept {
  if (block == nullptr) {
    return;
  }
  if (TheArena().Holds(block)) {
    borvan::test::Arena::Free(block);
  } else {
    std::free(block);
  }
}

void operator delete(void* block, std::size_t /*size*/) noexcept {
  operator delete(block);
}

#else

GuardedMemory::GuardedMemory() : former_(false) {}
GuardedMemory::~GuardedMemory() = default;

}  // namespace borvan::test

#endif
