// Derivative, Laplacian and lowpass filters with fixed 3x3 and 5x5 masks and the border rule on all four sides: checks,
// gates and the division of an image into strips. The stages and the drivers that run them are in tevcvconvutil.cpp.
//
// Above a member's gate the calling thread filters the first and the last k / 2 rows, which reach over the border, and
// the threads share the rows between: those are filtered from real image rows alone. Neighbouring threads both filter
// the k - 1 intermediate rows between their bands, each in its own share of the buffer.
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "frame/checks.h"
#include "frame/parallel.h"
#include "frame/rows.h"
#include "tevcv_internal/filtering.h"

using namespace tevcv;

namespace {

// ---- Operators ----

struct Kernel {
  const Tev16s* integers;
  const Tev32f* floats;

  const Tev16s* taps(Tev8u) const { return integers; }
  const Tev32f* taps(Tev32f) const { return floats; }
};

constexpr Tev16s sobelNeg3_16s[3] = {-1, -2, -1}, sobelNeg5_16s[5] = {-1, -4, -6, -4, -1};
constexpr Tev32f sobelNeg3_32f[3] = {-1, -2, -1}, sobelNeg5_32f[5] = {-1, -4, -6, -4, -1};

constexpr Kernel scharr3 = {kerScharr_3_16s, kerScharr_3_32f}, dx3 = {kerDx_3_16s, kerDx_3_32f},
                 dx5 = {kerDx_5_16s, kerDx_5_32f}, dxNeg3 = {kerDxNeg_3_16s, kerDxNeg_3_32f},
                 dxNeg5 = {kerDxNeg_5_16s, kerDxNeg_5_32f}, d2x3 = {kerD2x_3_16s, kerD2x_3_32f},
                 d2x5 = {kerD2x_5_16s, kerD2x_5_32f}, sobel3 = {kerSobel_3_16s, kerSobel_3_32f},
                 sobel5 = {kerSobel_5_16s, kerSobel_5_32f}, sobelNeg3 = {sobelNeg3_16s, sobelNeg3_32f},
                 sobelNeg5 = {sobelNeg5_16s, sobelNeg5_32f}, avr3 = {kerAvr_3_16s, kerAvr_3_32f},
                 avr5 = {kerAvr_5_16s, kerAvr_5_32f}, lap3 = {kerLap_3_16s, kerLap_3_32f};

// One run through a row and a column stage; the indices select them from the stage tables.
struct Pass {
  Kernel row, column;
  int rowIndex, columnIndex;
};

// A filter by its 3x3 and 5x5 masks. The 5x5 Laplacian has a second pass, which adds to the first one's output.
struct Operator {
  Pass mask3, mask5;
  Pass added5 = {};
};

constexpr Operator scharrHoriz = {{scharr3, dx3, 1, 1}, {}};
constexpr Operator scharrVert = {{dx3, scharr3, 0, 0}, {}};
constexpr Operator sobelHoriz = {{sobel3, dx3, 6, 1}, {sobel5, dx5, 7, 4}};
constexpr Operator sobelVert = {{dxNeg3, sobel3, 2, 2}, {dxNeg5, sobel5, 3, 3}};
constexpr Operator sobelNegVert = {{dxNeg3, sobelNeg3, 2, 11}, {dxNeg5, sobelNeg5, 3, 12}};
constexpr Operator sobelHorizSecond = {{sobel3, d2x3, 6, 5}, {sobel5, d2x5, 7, 6}};
constexpr Operator sobelVertSecond = {{d2x3, sobel3, 4, 2}, {d2x5, sobel5, 5, 3}};
constexpr Operator sobelCross = {{dxNeg3, dx3, 2, 1}, {dxNeg5, dx5, 3, 4}};
constexpr Operator laplacian = {{lap3, lap3, 10, 7}, {sobel5, d2x5, 7, 6}, {d2x5, sobel5, 5, 8}};
constexpr Operator lowpass8u = {{avr3, avr3, 8, 0}, {avr5, avr5, 9, 1}};
constexpr Operator lowpass32f = {{avr3, avr3, 8, 9}, {avr5, avr5, 9, 10}};

constexpr bool isMask(TevMaskSize mask) { return mask == tevMskSize3x3 || mask == tevMskSize5x5; }
constexpr int kernelSize(TevMaskSize mask) { return mask / 11; }

// ---- Buffer sizes ----

// How many intermediate values a pixel has in the store of rows.
enum class Store { plain = 1, paired = 2 };

// Pixels of a row of the 16-bit store, as the sizes count them.
constexpr std::int64_t storePitch(int width) { return (std::int64_t{width} + 15) / 16 * 16; }

// Scratch of the row and the column pipeline for a region, all threads together.
template <class Src, class Dst>
std::int64_t pipelineBytes(TevSize roi, int k) {
  const int rowScratch = std::is_same_v<Src, Tev32f> ? 16 * k + 32 : 4 * k + 32;
  const int columnScratch = std::is_same_v<Src, Tev32f> ? 0 : 4 * k + 32;
  const std::int64_t pointers = (std::int64_t{roi.height} + k) * int{sizeof(void*)};
  return owncvGetMaxNumThreads() * (2 * (32 + pointers) + rowScratch + columnScratch);
}

// The temporary image of the 5x5 Laplacian to 8s.
template <class Dst>
constexpr bool hasTemporary(int k, Store store) {
  return std::is_same_v<Dst, Tev8s> && store == Store::paired && k == 5;
}

// A filter's buffer: an equal share for each thread. The pipelines' scratch, which is that of all threads already, is
// counted for each thread again; callers know the size as it stands.
template <class Src, class Dst>
std::int64_t bufferBytes(TevSize roi, int k, Store store) {
  using Mid = std::conditional_t<std::is_same_v<Src, Tev32f>, Tev32f, Tev16s>;
  const int parts = static_cast<int>(store);
  const std::int64_t pitch = std::is_same_v<Mid, Tev32f> && store == Store::plain
                                 ? (std::int64_t{roi.width} + 3) / 4 * 4
                                 : storePitch(roi.width);
  std::int64_t share = parts * (pitch * int{sizeof(Mid)} * (2 * k + 15) + int{sizeof(void*)} * (3 * k + 30) + 32) + 32;
  if (hasTemporary<Dst>(k, store)) share += storePitch(roi.width) * roi.height * int{sizeof(Tev16s)} + 32;
  return owncvGetMaxNumThreads() * (share + pipelineBytes<Src, Dst>(roi, k) + 32);
}

template <class Src, class Dst>
TevStatus bufferSize(TevSize roi, TevMaskSize mask, int* pSize, Store store = Store::plain) {
  if (TevStatus s = firstFailure(notNull(pSize), region(roi), failUnless(isMask(mask), tevStatusBadMaskSize))) return s;
  *pSize = static_cast<int>(bufferBytes<Src, Dst>(roi, kernelSize(mask), store));
  return tevStatusOk;
}

// ---- Gates ----

// When a member's call runs in parallel. The members differ as they were tuned; results never do.
enum class Gate {
  wide,           // 128 rows a thread, 256 columns, more than one core on the die
  wideOrTall5x5,  // or, on any die, 256 rows a thread and the 5x5 mask
  anyWidth,       // 128 rows a thread, more than one core
  tall,           // 256 rows a thread and 256 columns, on any die
  low             // 32 rows a thread, 256 columns, more than one core
};

bool inParallel(Gate gate, TevSize roi, int k) {
  const int threads = owncvGetMaxNumThreads();
  if (threads < 2) return false;
  const bool isWide = roi.width >= 256;
  const auto rowsEach = [&](int rows) { return roi.height >= std::int64_t{rows} * threads; };
  switch (gate) {
    case Gate::wide:
      return rowsEach(128) && isWide && runomp() != 0;
    case Gate::wideOrTall5x5:
      return (rowsEach(128) && isWide && runomp() != 0) || (rowsEach(256) && isWide && k == 5);
    case Gate::anyWidth:
      return rowsEach(128) && runomp() != 0;
    case Gate::tall:
      return rowsEach(256) && isWide;
    case Gate::low:
      return rowsEach(32) && isWide && runomp() != 0;
  }
  return false;
}

// ---- Calls ----

template <class Src, class Dst>
struct Call {
  const Src* src;
  int srcStep;
  Dst* dst;
  int dstStep;
  TevSize roi;
  TevBorderType borderType;
  Src borderValue;
  Tev8u* buffer;
  int divisor = 1;  // read by the members to 8s
};

template <class Src, class Dst>
TevStatus checked(const Call<Src, Dst>& c, TevMaskSize mask) {
  return firstFailure(notNull(c.src, c.dst, c.buffer), region(c.roi), rowFits<Src>(c.srcStep, c.roi.width),
                      rowFits<Dst>(c.dstStep, c.roi.width), wholeElements<Src>(c.srcStep),
                      wholeElements<Dst>(c.dstStep),
                      failUnless(c.borderType >= tevBorderConst && c.borderType <= tevBorderMirrorR, tevStatusBadArg),
                      failUnless(c.divisor != 0, tevStatusBadArg), failUnless(isMask(mask), tevStatusBadMaskSize));
}

// Rows of an image and, as the bits that the phase drivers take, which of its ends they reach.
struct Strip {
  int firstRow, rows, phase;
};
constexpr int firstStrip = 1, middleBand = 2, lastStrip = 4, wholeImage = firstStrip | middleBand | lastStrip;

template <class Src, class Dst>
struct Drivers;
template <>
struct Drivers<Tev8u, Tev16s> {
  static constexpr auto serial = ownFilterConvolution_8u16s_C1R;
  static constexpr auto phase = ownFilterConvolution_8u16s_C1R_omp;
};
template <>
struct Drivers<Tev8u, Tev8s> {
  static constexpr auto serial = ownFilterConvolution_8u8s_C1R;
  static constexpr auto phase = ownFilterConvolution_8u8s_C1R_omp;
};
template <>
struct Drivers<Tev8u, Tev8u> {
  static constexpr auto serial = ownFilterConvolution_8u_C1R;
  static constexpr auto phase = ownFilterConvolution_8u_C1R_omp;
};
template <>
struct Drivers<Tev32f, Tev32f> {
  static constexpr auto serial = ownFilterConvolution_32f_C1R;
  static constexpr auto phase = ownFilterConvolution_32f_C1R_omp;
};

template <class Src, class Dst>
void runPass(const Call<Src, Dst>& c, const Pass& pass, int k, Strip strip, Tev8u* buffer) {
  const auto run = [&](auto* driver, auto... last) {
    driver(rows(c.src, c.srcStep)[strip.firstRow], c.srcStep, rows(c.dst, c.dstStep)[strip.firstRow], c.dstStep,
           c.roi.width, strip.rows, pass.row.taps(Src{}), k, pass.column.taps(Src{}), k, c.borderType, c.borderValue,
           buffer, pass.rowIndex, pass.columnIndex, last...);
  };
  using D = Drivers<Src, Dst>;
  if constexpr (std::is_same_v<Dst, Tev8s>)
    strip.phase == wholeImage ? run(D::serial, c.divisor) : run(D::phase, c.divisor, c.src, c.roi, strip.phase);
  else
    strip.phase == wholeImage ? run(D::serial) : run(D::phase, c.src, c.roi, strip.phase);
}

template <class Src, class Dst>
void runPasses(const Call<Src, Dst>& c, const Operator& op, int k, Strip strip, Tev8u* buffer) {
  runPass(c, k == 3 ? op.mask3 : op.mask5, k, strip, buffer);
  if (k == 5 && op.added5.row.integers) runPass(c, op.added5, k, strip, buffer);
}

// Calls filterStrip(strip, buffer) for the whole image, or for its first strip, the shares of its middle, each with an
// equal share of the buffer, and its last strip.
template <class FilterStrip>
void inStrips(bool parallel, int height, int k, Tev8u* buffer, std::int64_t bytes, FilterStrip filterStrip) {
  if (!parallel) return filterStrip(Strip{0, height, wholeImage}, buffer);
  const int top = k / 2;
  filterStrip(Strip{0, top, firstStrip}, buffer);
  const int threads = owncvGetNumThreads();
  const auto share = static_cast<std::ptrdiff_t>(bytes / threads);
  forEachShare(height - 2 * top, threads, [&](Share s) {
    filterStrip(Strip{top + s.firstRow, s.rows, middleBand}, buffer + s.index * share);
  });
  filterStrip(Strip{height - top, top, lastStrip}, buffer);
}

template <class Src, class Dst>
TevStatus filter(const Call<Src, Dst>& c, TevMaskSize mask, const Operator& op, Gate gate, Store store = Store::plain) {
  if (TevStatus s = checked(c, mask)) return s;
  const int k = kernelSize(mask);
  inStrips(inParallel(gate, c.roi, k), c.roi.height, k, c.buffer, bufferBytes<Src, Dst>(c.roi, k, store),
           [&](Strip strip, Tev8u* buffer) { runPasses(c, op, k, strip, buffer); });
  return tevStatusOk;
}

// The product of a 16-bit integer and a float is exact in double.
void scaleRow(const Tev16s* values, Tev32f factor, Tev8s* dst, int width) {
#pragma GCC ivdep
  for (int x = 0; x < width; ++x) {
    const Tev64f v = values[x] * Tev64f{factor}, low = v < -128 ? -128 : v;
    dst[x] = static_cast<Tev8s>(static_cast<int>(low > 127 ? 127 : low));
  }
}

// The 5x5 Laplacian to 8s adds its passes in a 16-bit image at the start of the buffer; what lies behind it is the
// drivers'. Its reciprocal is a float, unlike that of all other members: callers have stored results that show it.
TevStatus laplacian5To8s(const Call<Tev8u, Tev8s>& c) {
  constexpr int k = 5;
  auto* const image =
      reinterpret_cast<Tev16s*>((reinterpret_cast<std::uintptr_t>(c.buffer) + 15) & ~std::uintptr_t{15});
  const auto pitch = static_cast<int>(storePitch(c.roi.width) * int{sizeof(Tev16s)});
  const Rows<Tev16s> sums = rows(image, pitch);
  auto* const rest = reinterpret_cast<Tev8u*>(sums[c.roi.height]);
  const auto bytes = bufferBytes<Tev8u, Tev8s>(c.roi, k, Store::paired) - (rest - c.buffer);
  const Call<Tev8u, Tev16s> to16s = {c.src, c.srcStep, image, pitch, c.roi, c.borderType, c.borderValue, rest};
  const auto factor = static_cast<Tev32f>(1.0 / c.divisor);
  inStrips(inParallel(Gate::low, c.roi, k), c.roi.height, k, rest, bytes, [&](Strip strip, Tev8u* buffer) {
    runPasses(to16s, laplacian, k, strip, buffer);
    for (int y = strip.firstRow; y < strip.firstRow + strip.rows; ++y)
      scaleRow(sums[y], factor, rows(c.dst, c.dstStep)[y], c.roi.width);
  });
  return tevStatusOk;
}

}  // namespace

// ---- Filters with a mask ----

#define TEV_MASK_FILTER_8U16S(name, ...)                                                                       \
  TevStatus name(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep, TevSize roiSize, TevMaskSize mask,   \
                 TevBorderType borderType, Tev8u borderValue, Tev8u* buffer) {                                 \
    return filter<Tev8u, Tev16s>({src, srcStep, dst, dstStep, roiSize, borderType, borderValue, buffer}, mask, \
                                 __VA_ARGS__);                                                                 \
  }
#define TEV_MASK_FILTER_8U8S(name, ...)                                                                                \
  TevStatus name(const Tev8u* src, int srcStep, Tev8s* dst, int dstStep, TevSize roiSize, TevMaskSize mask,            \
                 TevBorderType borderType, Tev8u borderValue, int divisor, Tev8u* buffer) {                            \
    return filter<Tev8u, Tev8s>({src, srcStep, dst, dstStep, roiSize, borderType, borderValue, buffer, divisor}, mask, \
                                __VA_ARGS__);                                                                          \
  }
#define TEV_MASK_FILTER_32F(name, ...)                                                                          \
  TevStatus name(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize, TevMaskSize mask,   \
                 TevBorderType borderType, Tev32f borderValue, Tev8u* buffer) {                                 \
    return filter<Tev32f, Tev32f>({src, srcStep, dst, dstStep, roiSize, borderType, borderValue, buffer}, mask, \
                                  __VA_ARGS__);                                                                 \
  }

TEV_MASK_FILTER_8U8S(teviFilterSobelHorizBorder_8u8s_C1R, sobelHoriz, Gate::wideOrTall5x5)
TEV_MASK_FILTER_8U16S(teviFilterSobelHorizBorder_8u16s_C1R, sobelHoriz, Gate::wideOrTall5x5)
TEV_MASK_FILTER_32F(teviFilterSobelHorizBorder_32f_C1R, sobelHoriz, Gate::wide)

TEV_MASK_FILTER_8U8S(teviFilterSobelVertBorder_8u8s_C1R, sobelVert, Gate::wide)
TEV_MASK_FILTER_8U16S(teviFilterSobelVertBorder_8u16s_C1R, sobelVert, Gate::wide)
TEV_MASK_FILTER_32F(teviFilterSobelVertBorder_32f_C1R, sobelVert, Gate::wideOrTall5x5)

TEV_MASK_FILTER_8U8S(teviFilterSobelNegVertBorder_8u8s_C1R, sobelNegVert, Gate::wide)
TEV_MASK_FILTER_8U16S(teviFilterSobelNegVertBorder_8u16s_C1R, sobelNegVert, Gate::wide)
TEV_MASK_FILTER_32F(teviFilterSobelNegVertBorder_32f_C1R, sobelNegVert, Gate::wideOrTall5x5)

TEV_MASK_FILTER_8U8S(teviFilterSobelHorizSecondBorder_8u8s_C1R, sobelHorizSecond, Gate::wide)
TEV_MASK_FILTER_8U16S(teviFilterSobelHorizSecondBorder_8u16s_C1R, sobelHorizSecond, Gate::wide)
TEV_MASK_FILTER_32F(teviFilterSobelHorizSecondBorder_32f_C1R, sobelHorizSecond, Gate::wide)

TEV_MASK_FILTER_8U8S(teviFilterSobelVertSecondBorder_8u8s_C1R, sobelVertSecond, Gate::wide)
TEV_MASK_FILTER_8U16S(teviFilterSobelVertSecondBorder_8u16s_C1R, sobelVertSecond, Gate::wide)
TEV_MASK_FILTER_32F(teviFilterSobelVertSecondBorder_32f_C1R, sobelVertSecond, Gate::wide)

TEV_MASK_FILTER_8U8S(teviFilterSobelCrossBorder_8u8s_C1R, sobelCross, Gate::wide)
TEV_MASK_FILTER_8U16S(teviFilterSobelCrossBorder_8u16s_C1R, sobelCross, Gate::wide)
TEV_MASK_FILTER_32F(teviFilterSobelCrossBorder_32f_C1R, sobelCross, Gate::wideOrTall5x5)

TEV_MASK_FILTER_8U16S(teviFilterLaplacianBorder_8u16s_C1R, laplacian, Gate::wide, Store::paired)
TEV_MASK_FILTER_32F(teviFilterLaplacianBorder_32f_C1R, laplacian, Gate::wide, Store::paired)
TevStatus teviFilterLaplacianBorder_8u8s_C1R(const Tev8u* src, int srcStep, Tev8s* dst, int dstStep, TevSize roiSize,
                                             TevMaskSize mask, TevBorderType borderType, Tev8u borderValue, int divisor,
                                             Tev8u* buffer) {
  const Call<Tev8u, Tev8s> c = {src, srcStep, dst, dstStep, roiSize, borderType, borderValue, buffer, divisor};
  if (mask != tevMskSize5x5) return filter(c, mask, laplacian, Gate::low, Store::paired);
  if (TevStatus s = checked(c, mask)) return s;
  return laplacian5To8s(c);
}

TEV_MASK_FILTER_32F(teviFilterLowpassBorder_32f_C1R, lowpass32f, Gate::wide)
TevStatus teviFilterLowpassBorder_8u_C1R(const Tev8u* src, int srcStep, Tev8u* dst, int dstStep, TevSize roiSize,
                                         TevMaskSize mask, TevBorderType borderType, Tev8u borderValue, Tev8u* buffer) {
  return filter<Tev8u, Tev8u>({src, srcStep, dst, dstStep, roiSize, borderType, borderValue, buffer}, mask, lowpass8u,
                              Gate::wide);
}

// ---- Scharr filters, 3x3 alone ----

TevStatus teviFilterScharrHorizBorder_8u8s_C1R(const Tev8u* src, int srcStep, Tev8s* dst, int dstStep, TevSize roiSize,
                                               TevBorderType borderType, Tev8u borderValue, int divisor,
                                               Tev8u* buffer) {
  return filter<Tev8u, Tev8s>({src, srcStep, dst, dstStep, roiSize, borderType, borderValue, buffer, divisor},
                              tevMskSize3x3, scharrHoriz, Gate::anyWidth);
}

TevStatus teviFilterScharrHorizBorder_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep,
                                                TevSize roiSize, TevBorderType borderType, Tev8u borderValue,
                                                Tev8u* buffer) {
  return filter<Tev8u, Tev16s>({src, srcStep, dst, dstStep, roiSize, borderType, borderValue, buffer}, tevMskSize3x3,
                               scharrHoriz, Gate::anyWidth);
}

TevStatus teviFilterScharrHorizBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                              TevBorderType borderType, Tev32f borderValue, Tev8u* buffer) {
  return filter<Tev32f, Tev32f>({src, srcStep, dst, dstStep, roiSize, borderType, borderValue, buffer}, tevMskSize3x3,
                                scharrHoriz, Gate::wide);
}

TevStatus teviFilterScharrVertBorder_8u8s_C1R(const Tev8u* src, int srcStep, Tev8s* dst, int dstStep, TevSize roiSize,
                                              TevBorderType borderType, Tev8u borderValue, int divisor, Tev8u* buffer) {
  return filter<Tev8u, Tev8s>({src, srcStep, dst, dstStep, roiSize, borderType, borderValue, buffer, divisor},
                              tevMskSize3x3, scharrVert, Gate::wide);
}

TevStatus teviFilterScharrVertBorder_8u16s_C1R(const Tev8u* src, int srcStep, Tev16s* dst, int dstStep, TevSize roiSize,
                                               TevBorderType borderType, Tev8u borderValue, Tev8u* buffer) {
  return filter<Tev8u, Tev16s>({src, srcStep, dst, dstStep, roiSize, borderType, borderValue, buffer}, tevMskSize3x3,
                               scharrVert, Gate::wide);
}

TevStatus teviFilterScharrVertBorder_32f_C1R(const Tev32f* src, int srcStep, Tev32f* dst, int dstStep, TevSize roiSize,
                                             TevBorderType borderType, Tev32f borderValue, Tev8u* buffer) {
  return filter<Tev32f, Tev32f>({src, srcStep, dst, dstStep, roiSize, borderType, borderValue, buffer}, tevMskSize3x3,
                                scharrVert, Gate::tall);
}

// ---- Buffer sizes ----

#define TEV_MASK_BUFFER_SIZE(name, Src, Dst, store)               \
  TevStatus name(TevSize roiSize, TevMaskSize mask, int* pSize) { \
    return bufferSize<Src, Dst>(roiSize, mask, pSize, store);     \
  }
#define TEV_SCHARR_BUFFER_SIZE(name, Src, Dst) \
  TevStatus name(TevSize roiSize, int* pSize) { return bufferSize<Src, Dst>(roiSize, tevMskSize3x3, pSize); }

TEV_MASK_BUFFER_SIZE(teviFilterSobelHorizGetBufferSize_8u8s_C1R, Tev8u, Tev8s, Store::plain)
TEV_MASK_BUFFER_SIZE(teviFilterSobelHorizGetBufferSize_8u16s_C1R, Tev8u, Tev16s, Store::plain)
TEV_MASK_BUFFER_SIZE(teviFilterSobelHorizGetBufferSize_32f_C1R, Tev32f, Tev32f, Store::plain)

TEV_MASK_BUFFER_SIZE(teviFilterSobelVertGetBufferSize_8u8s_C1R, Tev8u, Tev8s, Store::plain)
TEV_MASK_BUFFER_SIZE(teviFilterSobelVertGetBufferSize_8u16s_C1R, Tev8u, Tev16s, Store::plain)
TEV_MASK_BUFFER_SIZE(teviFilterSobelVertGetBufferSize_32f_C1R, Tev32f, Tev32f, Store::plain)

TEV_MASK_BUFFER_SIZE(teviFilterSobelNegVertGetBufferSize_8u8s_C1R, Tev8u, Tev8s, Store::plain)
TEV_MASK_BUFFER_SIZE(teviFilterSobelNegVertGetBufferSize_8u16s_C1R, Tev8u, Tev16s, Store::plain)
TEV_MASK_BUFFER_SIZE(teviFilterSobelNegVertGetBufferSize_32f_C1R, Tev32f, Tev32f, Store::plain)

TEV_MASK_BUFFER_SIZE(teviFilterSobelHorizSecondGetBufferSize_8u8s_C1R, Tev8u, Tev8s, Store::plain)
TEV_MASK_BUFFER_SIZE(teviFilterSobelHorizSecondGetBufferSize_8u16s_C1R, Tev8u, Tev16s, Store::plain)
TEV_MASK_BUFFER_SIZE(teviFilterSobelHorizSecondGetBufferSize_32f_C1R, Tev32f, Tev32f, Store::plain)

TEV_MASK_BUFFER_SIZE(teviFilterSobelVertSecondGetBufferSize_8u8s_C1R, Tev8u, Tev8s, Store::plain)
TEV_MASK_BUFFER_SIZE(teviFilterSobelVertSecondGetBufferSize_8u16s_C1R, Tev8u, Tev16s, Store::plain)
TEV_MASK_BUFFER_SIZE(teviFilterSobelVertSecondGetBufferSize_32f_C1R, Tev32f, Tev32f, Store::plain)

TEV_MASK_BUFFER_SIZE(teviFilterSobelCrossGetBufferSize_8u8s_C1R, Tev8u, Tev8s, Store::plain)
TEV_MASK_BUFFER_SIZE(teviFilterSobelCrossGetBufferSize_8u16s_C1R, Tev8u, Tev16s, Store::plain)
TEV_MASK_BUFFER_SIZE(teviFilterSobelCrossGetBufferSize_32f_C1R, Tev32f, Tev32f, Store::plain)

TEV_MASK_BUFFER_SIZE(teviFilterLaplacianGetBufferSize_8u8s_C1R, Tev8u, Tev8s, Store::paired)
TEV_MASK_BUFFER_SIZE(teviFilterLaplacianGetBufferSize_8u16s_C1R, Tev8u, Tev16s, Store::paired)
TEV_MASK_BUFFER_SIZE(teviFilterLaplacianGetBufferSize_32f_C1R, Tev32f, Tev32f, Store::paired)

TEV_MASK_BUFFER_SIZE(teviFilterLowpassGetBufferSize_8u_C1R, Tev8u, Tev8u, Store::plain)
TEV_MASK_BUFFER_SIZE(teviFilterLowpassGetBufferSize_32f_C1R, Tev32f, Tev32f, Store::plain)

TEV_SCHARR_BUFFER_SIZE(teviFilterScharrHorizGetBufferSize_8u8s_C1R, Tev8u, Tev8s)
TEV_SCHARR_BUFFER_SIZE(teviFilterScharrHorizGetBufferSize_8u16s_C1R, Tev8u, Tev16s)
TEV_SCHARR_BUFFER_SIZE(teviFilterScharrHorizGetBufferSize_32f_C1R, Tev32f, Tev32f)

TEV_SCHARR_BUFFER_SIZE(teviFilterScharrVertGetBufferSize_8u8s_C1R, Tev8u, Tev8s)
TEV_SCHARR_BUFFER_SIZE(teviFilterScharrVertGetBufferSize_8u16s_C1R, Tev8u, Tev16s)
TEV_SCHARR_BUFFER_SIZE(teviFilterScharrVertGetBufferSize_32f_C1R, Tev32f, Tev32f)
