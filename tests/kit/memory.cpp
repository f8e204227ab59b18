#include "kit/memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace kit {

GuardedMemory::GuardedMemory(std::size_t size, std::size_t tail) : size_(size) {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const std::size_t inner = (size + tail + page - 1) / page * page;
  mapSize_ = inner + 2 * page;
  void* const map = mmap(nullptr, mapSize_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (map == MAP_FAILED || mprotect(static_cast<char*>(map) + page, inner, PROT_READ | PROT_WRITE) != 0) {
    std::perror("guarded memory");
    std::abort();
  }
  map_ = static_cast<unsigned char*>(map);
  data_ = map_ + page + inner - tail - size;
}

GuardedMemory::~GuardedMemory() {
  if (map_) munmap(map_, mapSize_);
}

// The end of the buffer lies `tail` bytes before the page, the fewest that give its start the wanted address modulo 64.
Buffer::Buffer(int size, int misalignment)
    : memory_(static_cast<std::size_t>(size), static_cast<std::size_t>(((-size - misalignment) % 64 + 64) % 64)) {
  std::memset(memory_.data(), 0xA5, memory_.size());
}

}  // namespace kit
