#include "exercise/exercise.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace exercise {

Exercise::~Exercise() {
  for (const Block& block : blocks_) {
    if (settings_.memory == Memory::heap)
      std::free(block.base);
    else
      munmap(block.base, block.baseSize);
  }
}

TevSize Exercise::size(int gate, int smallest, int limit) {
  TevSize result{};
  switch (draw.choice(8)) {
    case 6:
      result = {1, draw.between(1, limit)};
      break;
    case 7:
      result = {draw.between(1, limit), 1};
      break;
    default:
      result = {draw.between(1, limit), draw.between(1, limit)};
      break;
  }
  if (result.width < smallest) result.width = smallest;
  if (result.height < smallest) result.height = smallest;
  if (large()) {
    result.width += 200;
    if (result.height < gate / result.width + 1) result.height += gate / result.width + 1;
  }
  return result;
}

// Guarded: the block ends at an unmapped page, or up to 7 bytes before it, so that it starts at any address that its
// alignment allows. Heap: exactly as long, up to 7 bytes behind an address of malloc's.
void* Exercise::block(std::size_t size, Role role, std::size_t alignment) {
  const std::size_t shift = draw.choice(8) / alignment * alignment;
  Block made{nullptr, size, role, nullptr, {}, 0, 0, nullptr, 0};
  if (settings_.memory == Memory::heap) {
    made.base = std::malloc(size + shift);
    if (!made.base) std::abort();
    made.data = static_cast<unsigned char*>(made.base) + shift;
  } else {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t room = size + shift + alignment;
    const std::size_t inner = (room + page - 1) / page * page;
    made.baseSize = inner + 2 * page;
    made.base = mmap(nullptr, made.baseSize, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (made.base == MAP_FAILED || mprotect(static_cast<char*>(made.base) + page, inner, PROT_READ | PROT_WRITE) != 0) {
      std::perror("guarded memory");
      std::abort();
    }
    unsigned char* const end = static_cast<unsigned char*>(made.base) + page + inner;
    made.data = end - size - shift;
    made.data -= reinterpret_cast<std::uintptr_t>(made.data) % alignment;
    std::memset(made.data, 0xA5, size);  // scratch may hold anything
  }
  blocks_.push_back(made);
  return made.data;
}

Tev8u* Exercise::buffer(int bytes) {
  return static_cast<Tev8u*>(block(bytes > 0 ? static_cast<std::size_t>(bytes) : 0, Role::scratch));
}

void* Exercise::zeroes() {
  constexpr std::size_t size = 4096;
  void* const result = block(size, Role::scratch, 16);
  std::memset(result, 0, size);
  return result;
}

std::vector<unsigned char> Exercise::snapshot() const {
  std::vector<unsigned char> bytes;
  if (!settings_.checkOutputs) return bytes;
  for (const Block& block : blocks_)
    if (block.role != Role::scratch) bytes.insert(bytes.end(), block.data, block.data + block.size);
  return bytes;
}

void Exercise::conclude(const char* name, TevStatus status) {
  record(status);
  if (status < 0) throw Stop{status};
  succeeded_.insert(name);
  for (const Block& block : blocks_)
    if (block.role == Role::output) block.recorder(*this, block);
}

void Exercise::concludeSpoiled(const char* name, TevStatus status, unsigned which,
                               const std::vector<unsigned char>& before) {
  if (status >= 0) throw Stop{status};  // not bad for this function; what it did no longer fits the rest
  if (settings_.checkOutputs && snapshot() != before)
    fault_ = std::string(name) + " returned " + std::to_string(status) + " with argument " + std::to_string(which) +
             " made bad, and wrote to memory";
}

Outcome perform(const Entry& entry, Draw draw, Exercise::Settings settings, Names* names) {
  Exercise e(draw, settings);
  TevStatus status = tevStatusOk;
  try {
    entry.run(e);
  } catch (const Exercise::Stop& stop) {
    status = stop.status;
  }
  if (names) {
    names->called.insert(e.called().begin(), e.called().end());
    names->succeeded.insert(e.succeeded().begin(), e.succeeded().end());
  }
  return {e.digest(), status, e.fault()};
}

const std::vector<Entry>& entries() {
  static const std::vector<Entry> all = [] {
    std::vector<Entry> list;
    for (auto subsystem : {primitives, arithmetic, statistics, integral, filtering, morphology, pyramids, motion,
                           distance, segmentation, features, geometry}) {
      const std::vector<Entry> part = subsystem();
      list.insert(list.end(), part.begin(), part.end());
    }
    return list;
  }();
  return all;
}

}  // namespace exercise
