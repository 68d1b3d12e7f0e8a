#pragma once

#include <cstddef>

namespace borvan::test {

// While one lives, each block that this thread allocates lies at the end of its memory pages, with
// a page behind it that nothing may touch; freed blocks may not be touched either. A transfer that
// runs past a buffer then ends the program, whoever made it, in code without sanitizers too. At the
// front a block has the rest of its first page: what reads there goes unnoticed.
//
// Blocks of 8, 24, 40 … bytes are aligned for every type and may end up to 8 bytes before the page.
// Only Linux builds guard, and of these not the one that ThreadSanitizer watches, which has an
// allocator of its own (BORVAN_UNGUARDED); elsewhere the object does nothing.
class GuardedMemory {
 public:
  GuardedMemory();
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;
  ~GuardedMemory();

 private:
  [[maybe_unused]] const bool former_;
};

// Reads each byte and writes it back as it is.
void TouchAll(void* data, std::size_t length);

}  // namespace borvan::test
