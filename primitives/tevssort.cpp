// Ascending sort: quicksort with the larger side on an explicit stack, selection for short segments (after C. A. R.
// Hoare, "Quicksort", 1962, and R. Sedgewick, "Implementing Quicksort programs", 1978).
#include <utility>

#include "frame/checks.h"
#include "tevcv/primitives.h"

using namespace tevcv;

namespace {

struct Segment {
  Tev64f* first;
  Tev64f* last;
};

constexpr int shortSegment = 9;

void sortBySelection(Segment s) {
  for (; s.last > s.first; --s.last) {
    Tev64f* largest = s.first;
    for (Tev64f* p = s.first + 1; p <= s.last; ++p)
      if (*p > *largest) largest = p;
    std::swap(*largest, *s.last);
  }
}

void order(Tev64f& a, Tev64f& b) {
  if (b < a) std::swap(a, b);
}

// Orders the first, second, middle and last elements, leaving a median of them second, and parts the segment around it.
// The two sides leave out values equal to the pivot that meet in the middle.
std::pair<Segment, Segment> partition(Segment s) {
  Tev64f &first = s.first[0], &second = s.first[1], &middle = s.first[(s.last - s.first) / 2], &last = *s.last;
  std::swap(second, middle);
  order(first, second);
  order(second, last);
  order(first, second);
  const Tev64f pivot = second;
  Tev64f *low = s.first + 1, *high = s.last;
  // The ends stop both scans: first <= pivot <= last. A NaN compares with nothing, so the scans are bounded as well.
  for (;;) {
    do ++low;
    while (low < s.last && *low < pivot);
    do --high;
    while (high > s.first && pivot < *high);
    if (low >= high) break;
    std::swap(*low, *high);
  }
  std::swap(s.first[1], *high);
  Tev64f *leftEnd = high - 1, *rightBegin = high + 1;
  while (leftEnd > s.first && *leftEnd == pivot) --leftEnd;
  while (rightBegin < s.last && *rightBegin == pivot) ++rightBegin;
  return {{s.first, leftEnd}, {rightBegin, s.last}};
}

}  // namespace

TevStatus tevsSortAscend_64f_I(Tev64f* srcDst, int len) {
  if (TevStatus s = firstFailure(notNull(srcDst), length(len))) return s;
  // The smaller side is sorted first, so a segment on the stack is at most half of the one below it: 32 suffice.
  Segment stack[32];
  int depth = 0;
  Segment now = {srcDst, srcDst + (len - 1)};
  for (;;) {
    while (now.last - now.first + 1 > shortSegment) {
      auto [left, right] = partition(now);
      if (left.last - left.first > right.last - right.first) std::swap(left, right);
      stack[depth++] = right;
      now = left;
    }
    sortBySelection(now);
    if (depth == 0) return tevStatusOk;
    now = stack[--depth];
  }
}
