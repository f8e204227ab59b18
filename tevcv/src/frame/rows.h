// A typed view of an image: rows(pointer, step)[y] is row y. The step counts bytes and may be negative.
#pragma once

#include <cstddef>
#include <type_traits>

namespace tevcv {

template <class T>
class Rows {
 public:
  constexpr Rows(T* first, std::ptrdiff_t step) : first_(first), step_(step) {}

  T* operator[](std::ptrdiff_t y) const { return reinterpret_cast<T*>(reinterpret_cast<Byte*>(first_) + y * step_); }

  // The same image from row y on.
  Rows from(std::ptrdiff_t y) const { return {(*this)[y], step_}; }

  std::ptrdiff_t step() const { return step_; }

 private:
  using Byte = std::conditional_t<std::is_const_v<T>, const unsigned char, unsigned char>;
  T* first_;
  std::ptrdiff_t step_;
};

template <class T>
Rows<T> rows(T* first, int step) {
  return {first, step};
}

// For members that take a step without testing its alignment: bytes beyond whole elements are dropped from the step.
template <class T>
Rows<T> wholeElementRows(T* first, int step) {
  return {first, step & -int{sizeof(T)}};
}

}  // namespace tevcv
