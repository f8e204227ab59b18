// What the norms of two images share: accumulators over differences, the quotient of a relative norm and its zero
// denominator.
#pragma once

#include "statistics/extended_sum.h"
#include "statistics/norms.h"

namespace tevcv {

// An accumulator over the distances of two images' integers.
template <class T, template <class> class Accumulator>
struct OfDistances : Accumulator<std::make_unsigned_t<T>> {
  void add(const T* a, const T* b, const Tev8u* mask, int n) {
    this->addTerms(n, [=](int i) { return keptWhere(mask[i], distance(a[i], b[i])); });
  }
};

// The largest |x| of floats compared as floats: a NaN is never the largest.
struct LargestFloat : LargestOfAll {
  void add(const Tev32f* p, const Tev8u* mask, int n) {
    Tev32s top = largest_;
    for (int i = 0; i < n; ++i) {
      const Tev32s pattern = patternWhere(mask[i], p[i], magnitudeBits);
      const Tev32s number = pattern > infinityBits ? 0 : pattern;
      top = number > top ? number : top;
    }
    largest_ = top;
  }
  Tev64f value() const { return std::bit_cast<Tev32f>(largest_); }

 private:
  Tev32s largest_ = 0;
};

// The largest |a - b| of floats, by definition the extended difference rounded to double. Rounding keeps order: the
// pixel that wins is among those whose difference, rounded to float, is largest, and floats are quick to compare. Only
// where a block reaches the largest float so far is the rest of its differences, which float drops, looked at.
struct LargestFloatDistance : LargestOfAll {
  void add(const Tev32f* a, const Tev32f* b, const Tev8u* mask, int n) {
    Tev32s top = 0;
    for (int i = 0; i < n; ++i) {
      const Tev32s pattern = patternWhere(mask[i], a[i] - b[i], magnitudeBits);
      const Tev32s number = pattern > infinityBits ? 0 : pattern;
      top = number > top ? number : top;
    }
    if (top < rounded_) return;
    rounded_ = top;
    largest_ = std::max(
        largest_, top < infinityBits ? refined(a, b, mask, n, std::bit_cast<Tev32f>(top)) : extended(a, b, mask, n));
  }
  Tev64f value() const { return largest_; }

 private:
  // The largest difference of those that round to `top`: `top` plus the largest of their rounding errors. The error of
  // a float subtraction is a float, and this is its classical computation.
  static Tev64f refined(const Tev32f* a, const Tev32f* b, const Tev8u* mask, int n, Tev32f top) {
    constexpr Tev32s none = std::numeric_limits<Tev32s>::min();
    Tev32s largest = none;
    for (int i = 0; i < n; ++i) {
      const Tev32f x = keptWhere(mask[i], a[i]), y = keptWhere(mask[i], b[i]);
      const Tev32f difference = x - y, minusY = difference - x;
      const Tev32f error = (x - (difference - minusY)) - (y + minusY);
      const Tev32s pattern = std::bit_cast<Tev32s>(difference < 0 ? -error : error);
      const Tev32s order = pattern < 0 ? pattern ^ magnitudeBits : pattern;  // patterns in the order of their floats
      const Tev32s candidate = std::fabs(difference) == top ? order : none;
      largest = candidate > largest ? candidate : largest;
    }
    const Tev32s pattern = largest < 0 ? largest ^ magnitudeBits : largest;
    return static_cast<Tev64f>(Extended{top} + Extended{std::bit_cast<Tev32f>(pattern)});
  }

  // A difference beyond the largest float is infinite as a float and finite in extended precision.
  static Tev64f extended(const Tev32f* a, const Tev32f* b, const Tev8u* mask, int n) {
    Extended largest = 0;
    for (int i = 0; i < n; ++i) {
      const Extended x = keptWhere(mask[i], a[i]), y = keptWhere(mask[i], b[i]);
      const Extended difference = std::fabs(x - y);
      largest = difference > largest ? difference : largest;
    }
    return static_cast<Tev64f>(largest);
  }

  Tev32s rounded_ = 0;
  Tev64f largest_ = 0;
};

// The terms of L1 and L2. A double whose last bits, those of `roundingBits`, are 0 has a term that is exact in double.
struct Magnitude {
  static constexpr std::uint64_t roundingBits = 0;
  template <class Float>
  static Float of(Float x) {
    return std::fabs(x);
  }
};
struct Square {
  static constexpr std::uint64_t roundingBits = (1 << 27) - 1;  // 26 bits remain, and their square has 52
  template <class Float>
  static Float of(Float x) {
    return x * x;
  }
};

// A sum of floats' terms in extended precision, in scan order through the whole region, never stored before its end.
template <class Term, class Base>
struct FloatSum {
  using Value = Extended;

  void endRow() {}
  Value value() const { return sum_.value(); }
  static Value merged(Value first, Value later) { return first + later; }
  static Tev64f result(Value total) { return Base::result(static_cast<Tev64f>(total)); }

 protected:
  ExtendedSum sum_;
};

template <class Term, class Base>
struct FloatDistanceSum : FloatSum<Term, Base> {
  void add(const Tev32f* a, const Tev32f* b, const Tev8u* mask, int n) {
    Tev64f term[shortBlock];
    std::uint64_t inexact = 0;
    for (int i = 0; i < n; ++i) {
      const Tev64f x = keptWhere(mask[i], a[i]), y = keptWhere(mask[i], b[i]), d = x - y;
      term[i] = Term::of(d);
      // The double d is the difference itself if and only if d + y gives x and x - d gives y.
      inexact |= std::bit_cast<std::uint64_t>((d + y) - x) | std::bit_cast<std::uint64_t>((x - d) - y) |
                 (std::bit_cast<std::uint64_t>(d) & Term::roundingBits);
    }
    if (inexact << 1 == 0)  // a zero may have a sign
      this->sum_.add(term, n);
    else
      this->sum_.addEach(
          n, [=](int i) { return Term::of(Extended{keptWhere(mask[i], a[i])} - Extended{keptWhere(mask[i], b[i])}); });
  }
};

template <class Term, class Base>
struct FloatMagnitudeSum : FloatSum<Term, Base> {
  void add(const Tev32f* p, const Tev8u* mask, int n) {
    Tev64f term[shortBlock];
    for (int i = 0; i < n; ++i) term[i] = Term::of(Tev64f{keptWhere(mask[i], p[i])});
    this->sum_.add(term, n);
  }
};

// ---- Norms of a difference. ----

template <class T>
TevStatus checkPair(const T* src1, int src1Step, const T* src2, int src2Step, const Tev8u* mask, int maskStep,
                    TevSize roi, int channels, int coi, const Tev64f* pValue) {
  return firstFailure(notNull(src1, src2, mask, pValue), region(roi), rowFits<T>(src1Step, roi.width, channels),
                      rowFits<T>(src2Step, roi.width, channels), rowFits<Tev8u>(maskStep, roi.width),
                      wholeElements<T>(src1Step), wholeElements<T>(src2Step), channelOfInterest(coi));
}

template <template <class> class Measure, int channels, class T>
TevStatus normDiff(const T* src1, int src1Step, const T* src2, int src2Step, const Tev8u* mask, int maskStep,
                   TevSize roi, int coi, Tev64f* pValue, Gate gate) {
  if (TevStatus s = checkPair(src1, src1Step, src2, src2Step, mask, maskStep, roi, channels, coi, pValue)) return s;
  const MaskedRegion<T, channels, 2> pair = {
      {rows(src1 + (coi - 1), src1Step), rows(src2 + (coi - 1), src2Step)}, rows(mask, maskStep), roi};
  typename Measure<T>::Value total;
  if (TevStatus s = measureRegion<Measure<T>>(pair, gate, total)) return s;
  *pValue = Measure<T>::result(total);
  return tevStatusOk;
}

// ---- Relative norms: the norm of the difference over the norm of the second image. ----

template <class Number>
struct Ratio {
  Number numerator, denominator;

  // One division, in extended precision. Sums of floats come to it as they are, unrounded.
  Tev64f quotient() const { return static_cast<Tev64f>(Extended{numerator} / Extended{denominator}); }
};

template <class Distances, class Magnitudes>
struct Quotient {
  using Value = Ratio<typename Distances::Value>;

  template <class T>
  void add(const T* a, const T* b, const Tev8u* mask, int n) {
    distances_.add(a, b, mask, n);
    magnitudes_.add(b, mask, n);
  }
  void endRow() {}
  Value value() const { return {distances_.value(), magnitudes_.value()}; }
  static Value merged(Value first, Value later) {
    return {Distances::merged(first.numerator, later.numerator),
            Magnitudes::merged(first.denominator, later.denominator)};
  }
  static Tev64f result(Value total) { return Distances::result(total.quotient()); }

 private:
  Distances distances_;
  Magnitudes magnitudes_;
};

template <template <class> class Measure, int channels, class T>
TevStatus normRel(const T* src1, int src1Step, const T* src2, int src2Step, const Tev8u* mask, int maskStep,
                  TevSize roi, int coi, Tev64f* pValue, Gate gate) {
  if (TevStatus s = checkPair(src1, src1Step, src2, src2Step, mask, maskStep, roi, channels, coi, pValue)) return s;
  const MaskedRegion<T, channels, 2> pair = {
      {rows(src1 + (coi - 1), src1Step), rows(src2 + (coi - 1), src2Step)}, rows(mask, maskStep), roi};
  typename Measure<T>::Value total;
  if (TevStatus s = measureRegion<Measure<T>>(pair, gate, total)) return s;
  if (total.denominator == 0) {
    // A 32-bit sum that has wrapped can make the numerator negative.
    *pValue = total.numerator > 0   ? tevConstantOfINF_64f
              : total.numerator < 0 ? tevConstantOfINF_NEG_64f
                                    : tevConstantOfNAN_64f;
    return tevStatusDivByZeroWarning;
  }
  *pValue = Measure<T>::result(total);
  return tevStatusOk;
}

}  // namespace tevcv
