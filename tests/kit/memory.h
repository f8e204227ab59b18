// Memory of exactly the promised size, with an unmapped page in front of it and behind: a byte read or written outside
// ends the test program.
#pragma once

#include <cstddef>
#include <cstring>
#include <utility>

namespace kit {

// `size` bytes that end at an unmapped page. With a tail, that many bytes lie between their end and the page, so that
// the block can be given any address; touching a tail goes unnoticed only within those bytes.
class GuardedMemory {
 public:
  explicit GuardedMemory(std::size_t size, std::size_t tail = 0);
  ~GuardedMemory();
  GuardedMemory(GuardedMemory&& other) noexcept
      : map_(std::exchange(other.map_, nullptr)), mapSize_(other.mapSize_), data_(other.data_), size_(other.size_) {}
  GuardedMemory& operator=(GuardedMemory&& other) noexcept {
    std::swap(map_, other.map_);
    std::swap(mapSize_, other.mapSize_);
    std::swap(data_, other.data_);
    std::swap(size_, other.size_);
    return *this;
  }

  unsigned char* data() const { return data_; }
  std::size_t size() const { return size_; }

 private:
  unsigned char* map_ = nullptr;
  std::size_t mapSize_ = 0;
  unsigned char* data_ = nullptr;
  std::size_t size_ = 0;
};

// A caller's scratch buffer of exactly the size that a size query gave. Filled with a pattern: scratch may hold
// anything.
class Buffer {
 public:
  explicit Buffer(int size, int misalignment = 0);
  unsigned char* data() const { return memory_.data(); }
  int size() const { return static_cast<int>(memory_.size()); }
  template <class T>
  T* as() const {
    return reinterpret_cast<T*>(data());
  }

 private:
  GuardedMemory memory_;
};

}  // namespace kit
