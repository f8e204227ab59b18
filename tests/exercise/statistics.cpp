// Exercises of the statistics: mean and deviation, extrema with index, norms.
#include "exercise/exercise.h"

namespace exercise {

namespace {

// The members differ in the pixels for each thread from which they share a region; two threads' worth are drawn.
constexpr int gate16 = 16384, gate64 = 65536, gate128 = 131072, gate256 = 262144, gate1024 = 1048576;

enum class Results {
  required,   // a null pointer is refused
  optional,   // a null pointer is an output that is not wanted
  unchecked,  // must not be null
};

template <class T>
Image<T> source(Exercise& e, TevSize roi, int channels) {
  return e.in<T>(roi, channels, e.draw.oneIn(4) ? Values::unit : Values::any);
}

// Now and then a mask that selects nothing.
Image<Tev8u> maskOf(Exercise& e, TevSize roi) {
  const auto mask = e.in<Tev8u>(roi, 1, Values::mask);
  if (e.draw.oneIn(12))
    for (int y = 0; y < roi.height; ++y)
      std::memset(mask.data + std::ptrdiff_t{y} * mask.step, 0, static_cast<std::size_t>(roi.width));
  return mask;
}

template <Results results, class R>
auto output(Exercise& e) {
  if constexpr (results == Results::required)
    return e.outValue<R>();
  else if constexpr (results == Results::optional)
    return e.draw.oneIn(6) ? nullptr : e.outValue<R>();
  else
    return keep(e.outValue<R>());
}

// The call, with the outputs behind the other arguments.
template <Results results, class... R, class F, class... A>
void callWith(Exercise& e, const char* name, F function, A... arguments) {
  const std::tuple outputs{output<results, R>(e)...};
  std::apply([&](auto... out) { e.call(name, function, arguments..., out...); }, outputs);
}

template <int gate, Results results, class T, class... R>
void statistic(Exercise& e, const char* name, TevStatus (*function)(const T*, int, TevSize, R*...)) {
  const TevSize roi = e.size(gate);
  const auto src = source<T>(e, roi, 1);
  callWith<results, R...>(e, name, function, src.data, src.step, roi);
}

template <int gate, Results results, class T, class... R>
void statistic(Exercise& e, const char* name, TevStatus (*function)(const T*, int, TevSize, int, R*...)) {
  const TevSize roi = e.size(gate);
  const auto src = source<T>(e, roi, 3);
  const int coi = e.draw.between(1, 3);
  callWith<results, R...>(e, name, function, src.data, src.step, roi, coi);
}

template <int gate, Results results, class T, class... R>
void statistic(Exercise& e, const char* name, TevStatus (*function)(const T*, int, const Tev8u*, int, TevSize, R*...)) {
  const TevSize roi = e.size(gate);
  const auto src = source<T>(e, roi, 1);
  const auto mask = maskOf(e, roi);
  callWith<results, R...>(e, name, function, src.data, src.step, mask.data, mask.step, roi);
}

template <int gate, Results results, class T, class... R>
void statistic(Exercise& e, const char* name,
               TevStatus (*function)(const T*, int, const Tev8u*, int, TevSize, int, R*...)) {
  const TevSize roi = e.size(gate);
  const auto src = source<T>(e, roi, 3);
  const auto mask = maskOf(e, roi);
  const int coi = e.draw.between(1, 3);
  callWith<results, R...>(e, name, function, src.data, src.step, mask.data, mask.step, roi, coi);
}

// The second image is all zeros at times, the zero denominator of a relative norm.
template <class T>
Image<T> reference(Exercise& e, TevSize roi, int channels) {
  const auto image = source<T>(e, roi, channels);
  if (e.draw.oneIn(8))
    for (int y = 0; y < roi.height; ++y)
      std::memset(reinterpret_cast<char*>(image.data) + std::ptrdiff_t{y} * image.step, 0,
                  static_cast<std::size_t>(roi.width * channels) * sizeof(T));
  return image;
}

template <int gate, Results results, class T, class R>
void statistic(Exercise& e, const char* name,
               TevStatus (*function)(const T*, int, const T*, int, const Tev8u*, int, TevSize, R*)) {
  const TevSize roi = e.size(gate);
  const auto a = source<T>(e, roi, 1), b = reference<T>(e, roi, 1);
  const auto mask = maskOf(e, roi);
  callWith<results, R>(e, name, function, a.data, a.step, b.data, b.step, mask.data, mask.step, roi);
}

template <int gate, Results results, class T, class R>
void statistic(Exercise& e, const char* name,
               TevStatus (*function)(const T*, int, const T*, int, const Tev8u*, int, TevSize, int, R*)) {
  const TevSize roi = e.size(gate);
  const auto a = source<T>(e, roi, 3), b = reference<T>(e, roi, 3);
  const auto mask = maskOf(e, roi);
  const int coi = e.draw.between(1, 3);
  callWith<results, R>(e, name, function, a.data, a.step, b.data, b.step, mask.data, mask.step, roi, coi);
}

}  // namespace

#define ENTRY(function, gate, results)                                                         \
  {                                                                                            \
#function, [](Exercise & e) { statistic<gate, Results::results>(e, #function, function); } \
  }

// With more than 32 threads the extrema keep a block of the allocator's for each large call: they must not free it.
std::vector<Entry> statistics() {
  return {
      ENTRY(teviMean_8u_C1MR, gate256, required),          ENTRY(teviMean_8s_C1MR, gate256, required),
      ENTRY(teviMean_16u_C1MR, gate256, required),         ENTRY(teviMean_32f_C1MR, gate256, required),
      ENTRY(teviMean_8u_C3CMR, gate256, required),         ENTRY(teviMean_8s_C3CMR, gate256, required),
      ENTRY(teviMean_16u_C3CMR, gate256, required),        ENTRY(teviMean_32f_C3CMR, gate256, required),
      ENTRY(teviMean_StdDev_8u_C1R, gate256, optional),    ENTRY(teviMean_StdDev_8s_C1R, gate256, optional),
      ENTRY(teviMean_StdDev_16u_C1R, gate256, optional),   ENTRY(teviMean_StdDev_32f_C1R, gate128, optional),
      ENTRY(teviMean_StdDev_8u_C3CR, gate256, optional),   ENTRY(teviMean_StdDev_8s_C3CR, gate256, optional),
      ENTRY(teviMean_StdDev_16u_C3CR, gate256, optional),  ENTRY(teviMean_StdDev_32f_C3CR, gate16, optional),
      ENTRY(teviMean_StdDev_8u_C1MR, gate256, optional),   ENTRY(teviMean_StdDev_8s_C1MR, gate256, optional),
      ENTRY(teviMean_StdDev_16u_C1MR, gate256, optional),  ENTRY(teviMean_StdDev_32f_C1MR, gate256, optional),
      ENTRY(teviMean_StdDev_8u_C3CMR, gate256, optional),  ENTRY(teviMean_StdDev_8s_C3CMR, gate256, optional),
      ENTRY(teviMean_StdDev_16u_C3CMR, gate256, optional), ENTRY(teviMean_StdDev_32f_C3CMR, gate256, optional),
      ENTRY(teviMinMaxIndx_8u_C1R, gate16, unchecked),     ENTRY(teviMinMaxIndx_8s_C1R, gate16, unchecked),
      ENTRY(teviMinMaxIndx_16u_C1R, gate16, unchecked),    ENTRY(teviMinMaxIndx_32f_C1R, gate16, unchecked),
      ENTRY(teviMinMaxIndx_8u_C3CR, gate16, unchecked),    ENTRY(teviMinMaxIndx_8s_C3CR, gate16, unchecked),
      ENTRY(teviMinMaxIndx_16u_C3CR, gate16, unchecked),   ENTRY(teviMinMaxIndx_32f_C3CR, gate16, unchecked),
      ENTRY(teviMinMaxIndx_8u_C1MR, gate16, unchecked),    ENTRY(teviMinMaxIndx_8s_C1MR, gate16, unchecked),
      ENTRY(teviMinMaxIndx_16u_C1MR, gate16, unchecked),   ENTRY(teviMinMaxIndx_32f_C1MR, gate16, unchecked),
      ENTRY(teviMinMaxIndx_8u_C3CMR, gate16, unchecked),   ENTRY(teviMinMaxIndx_8s_C3CMR, gate16, unchecked),
      ENTRY(teviMinMaxIndx_16u_C3CMR, gate16, unchecked),  ENTRY(teviMinMaxIndx_32f_C3CMR, gate16, unchecked),
      ENTRY(teviNorm_Inf_8u_C1MR, gate1024, required),     ENTRY(teviNorm_Inf_8u_C3CMR, gate256, required),
      ENTRY(teviNorm_Inf_8s_C1MR, gate1024, required),     ENTRY(teviNorm_Inf_8s_C3CMR, gate256, required),
      ENTRY(teviNorm_Inf_16u_C1MR, gate1024, required),    ENTRY(teviNorm_Inf_16u_C3CMR, gate256, required),
      ENTRY(teviNorm_Inf_32f_C1MR, gate256, required),     ENTRY(teviNorm_Inf_32f_C3CMR, gate64, required),
      ENTRY(teviNorm_L1_8u_C1MR, gate256, required),       ENTRY(teviNorm_L1_8u_C3CMR, gate256, required),
      ENTRY(teviNorm_L1_8s_C1MR, gate256, required),       ENTRY(teviNorm_L1_8s_C3CMR, gate256, required),
      ENTRY(teviNorm_L1_16u_C1MR, gate256, required),      ENTRY(teviNorm_L1_16u_C3CMR, gate256, required),
      ENTRY(teviNorm_L1_32f_C1MR, gate256, required),      ENTRY(teviNorm_L1_32f_C3CMR, gate256, required),
      ENTRY(teviNorm_L2_8u_C1MR, gate256, required),       ENTRY(teviNorm_L2_8u_C3CMR, gate64, required),
      ENTRY(teviNorm_L2_8s_C1MR, gate256, required),       ENTRY(teviNorm_L2_8s_C3CMR, gate64, required),
      ENTRY(teviNorm_L2_16u_C1MR, gate256, required),      ENTRY(teviNorm_L2_16u_C3CMR, gate64, required),
      ENTRY(teviNorm_L2_32f_C1MR, gate256, required),      ENTRY(teviNorm_L2_32f_C3CMR, gate64, required),
      ENTRY(teviNormDiff_Inf_8u_C1MR, gate16, required),   ENTRY(teviNormDiff_Inf_8u_C3CMR, gate16, required),
      ENTRY(teviNormDiff_Inf_8s_C1MR, gate16, required),   ENTRY(teviNormDiff_Inf_8s_C3CMR, gate16, required),
      ENTRY(teviNormDiff_Inf_16u_C1MR, gate16, required),  ENTRY(teviNormDiff_Inf_16u_C3CMR, gate16, required),
      ENTRY(teviNormDiff_Inf_32f_C1MR, gate16, required),  ENTRY(teviNormDiff_Inf_32f_C3CMR, gate16, required),
      ENTRY(teviNormDiff_L1_8u_C1MR, gate256, required),   ENTRY(teviNormDiff_L1_8u_C3CMR, gate256, required),
      ENTRY(teviNormDiff_L1_8s_C1MR, gate256, required),   ENTRY(teviNormDiff_L1_8s_C3CMR, gate64, required),
      ENTRY(teviNormDiff_L1_16u_C1MR, gate256, required),  ENTRY(teviNormDiff_L1_16u_C3CMR, gate64, required),
      ENTRY(teviNormDiff_L1_32f_C1MR, gate16, required),   ENTRY(teviNormDiff_L1_32f_C3CMR, gate16, required),
      ENTRY(teviNormDiff_L2_8u_C1MR, gate256, required),   ENTRY(teviNormDiff_L2_8u_C3CMR, gate256, required),
      ENTRY(teviNormDiff_L2_8s_C1MR, gate256, required),   ENTRY(teviNormDiff_L2_8s_C3CMR, gate256, required),
      ENTRY(teviNormDiff_L2_16u_C1MR, gate256, required),  ENTRY(teviNormDiff_L2_16u_C3CMR, gate64, required),
      ENTRY(teviNormDiff_L2_32f_C1MR, gate16, required),   ENTRY(teviNormDiff_L2_32f_C3CMR, gate16, required),
      ENTRY(teviNormRel_Inf_8u_C1MR, gate256, required),   ENTRY(teviNormRel_Inf_8u_C3CMR, gate64, required),
      ENTRY(teviNormRel_Inf_8s_C1MR, gate256, required),   ENTRY(teviNormRel_Inf_8s_C3CMR, gate64, required),
      ENTRY(teviNormRel_Inf_16u_C1MR, gate256, required),  ENTRY(teviNormRel_Inf_16u_C3CMR, gate64, required),
      ENTRY(teviNormRel_Inf_32f_C1MR, gate64, required),   ENTRY(teviNormRel_Inf_32f_C3CMR, gate64, required),
      ENTRY(teviNormRel_L1_8u_C1MR, gate16, required),     ENTRY(teviNormRel_L1_8u_C3CMR, gate64, required),
      ENTRY(teviNormRel_L1_8s_C1MR, gate256, required),    ENTRY(teviNormRel_L1_8s_C3CMR, gate64, required),
      ENTRY(teviNormRel_L1_16u_C1MR, gate64, required),    ENTRY(teviNormRel_L1_16u_C3CMR, gate64, required),
      ENTRY(teviNormRel_L1_32f_C1MR, gate16, required),    ENTRY(teviNormRel_L1_32f_C3CMR, gate16, required),
      ENTRY(teviNormRel_L2_8u_C1MR, gate256, required),    ENTRY(teviNormRel_L2_8u_C3CMR, gate64, required),
      ENTRY(teviNormRel_L2_8s_C1MR, gate256, required),    ENTRY(teviNormRel_L2_8s_C3CMR, gate64, required),
      ENTRY(teviNormRel_L2_16u_C1MR, gate64, required),    ENTRY(teviNormRel_L2_16u_C3CMR, gate64, required),
      ENTRY(teviNormRel_L2_32f_C1MR, gate16, required),    ENTRY(teviNormRel_L2_32f_C3CMR, gate16, required),
  };
}

}  // namespace exercise
