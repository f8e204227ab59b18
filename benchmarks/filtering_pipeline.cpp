#include <algorithm>

#include "bench.h"
#include "tevcv/filtering.h"

namespace {

using bench::hd;

// Pointers to the rows of a contiguous image; the last row stands for those below it.
template <class T>
std::vector<T*> rowPointers(T* image, int elements, int count) {
  std::vector<T*> pointers;
  for (int y = 0; y < count; ++y) pointers.push_back(image + size_t(elements) * size_t(std::min(y, hd.height - 1)));
  return pointers;
}

std::shared_ptr<std::vector<Tev8u>> scratch(TevStatus (*query)(TevSize, int, int*), int length) {
  int size = 0;
  query(hd, length, &size);
  return std::make_shared<std::vector<Tev8u>>(size);
}

std::function<void()> row32f() {
  auto src = bench::noise<Tev32f>(), dst = bench::noise<Tev32f>();
  auto buffer = scratch(teviFilterRowBorderPipelineGetBufferSize_32f_C1R, 7);
  auto pointers = rowPointers(dst->data(), hd.width, hd.height);
  return [=]() mutable {
    static const Tev32f kernel[7] = {0.03F, 0.1F, 0.2F, 0.34F, 0.2F, 0.1F, 0.03F};
    teviFilterRowBorderPipeline_32f_C1R(src->data(), hd.width * 4, pointers.data(), hd, kernel, 7, 3, tevBorderRepl, 0,
                                        buffer->data());
    (void)dst;
  };
}

std::function<void()> column32f() {
  auto src = bench::noise<Tev32f>(), dst = bench::noise<Tev32f>();
  auto buffer = scratch(teviFilterColumnPipelineGetBufferSize_32f_C1R, 7);
  auto pointers = rowPointers<const Tev32f>(src->data(), hd.width, hd.height + 6);
  return [=]() mutable {
    static const Tev32f kernel[7] = {0.03F, 0.1F, 0.2F, 0.34F, 0.2F, 0.1F, 0.03F};
    teviFilterColumnPipeline_32f_C1R(pointers.data(), dst->data(), hd.width * 4, hd, kernel, 7, buffer->data());
    (void)src;
  };
}

const Tev16s kernel16s[7] = {1, 6, 15, 20, 15, 6, 1};

std::function<void()> row8u16s() {
  auto src = bench::noise<Tev8u>();
  auto dst = bench::noise<Tev16s>();
  auto buffer = scratch(teviFilterRowBorderPipelineGetBufferSize_8u16s_C1R, 7);
  auto pointers = rowPointers(dst->data(), hd.width, hd.height);
  return [=]() mutable {
    teviFilterRowBorderPipeline_8u16s_C1R(src->data(), hd.width, pointers.data(), hd, kernel16s, 7, 3, tevBorderRepl, 0,
                                          3, buffer->data());
    (void)dst;
  };
}

std::function<void()> column16s8u() {
  auto src = bench::noise<Tev16s>();
  auto dst = bench::noise<Tev8u>();
  auto buffer = scratch(teviFilterColumnPipelineGetBufferSize_16s8u_C1R, 7);
  auto pointers = rowPointers<const Tev16s>(src->data(), hd.width, hd.height + 6);
  return [=]() mutable {
    teviFilterColumnPipeline_16s8u_C1R(pointers.data(), dst->data(), hd.width, hd, kernel16s, 7, 21, buffer->data());
    (void)src;
  };
}

const bool entries[] = {
    bench::add({.name = "Row pipeline 7 taps 32f", .target = 60, .prepare = row32f}),
    bench::add({.name = "Column pipeline 7 taps 32f", .target = 60, .prepare = column32f}),
    bench::add({.name = "Row pipeline 7 taps 32f, 2 threads", .threads = 2, .prepare = row32f}),
    bench::add({.name = "Column pipeline 7 taps 32f, 2 threads", .threads = 2, .prepare = column32f}),
    bench::add({.name = "Row pipeline 7 taps 8u16s", .prepare = row8u16s}),
    bench::add({.name = "Column pipeline 7 taps 16s8u", .prepare = column16s8u}),
};

}  // namespace
