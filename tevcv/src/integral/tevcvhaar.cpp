// One stage of a boosted Haar cascade: built from the caller's arrays, applied at every position that earlier stages
// have left.
//
// A weak classifier compares a weighted sum of rectangle sums, four table reads each, with its threshold times the norm
// of the position, and votes one of two values. Votes are added in stored order and compared with the stage's
// threshold.
//
// Selected positions are evaluated 32 at a time: neighbours where a run of them is selected, else whatever the
// mask gives next. Float sums are defined in extended precision. They are formed in double precision with a bound on
// how far each may be off, and a position where some comparison lies within its bound is evaluated again as defined.
// Rejected positions are never read: the tables may not reach there.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "frame/arithmetic.h"
#include "frame/checks.h"
#include "frame/parallel.h"
#include "frame/rows.h"
#include "integral/shares.h"
#include "tevcv/integral.h"
#include "tevcv/memory.h"
#include "tevcv_internal/integral.h"

using namespace tevcv;

namespace {

using State = TevHaarClassifierState;
using Classifier = TevHaarClassifier;
using Feature = TevHaarFeature;

constexpr TevHaarValue valueOf(Tev32f v) { return {.f = v}; }
constexpr TevHaarValue valueOf(Tev32s v) { return {.s = v}; }

template <class W>
W get(TevHaarValue v) {
  if constexpr (std::is_integral_v<W>)
    return v.s;
  else
    return v.f;
}

// ---- Building ----

struct Corner {
  Tev32s col, row;
};

void setCorners(Feature& f, Corner a, Corner b, Corner c, Corner d) {
  f.colA = a.col, f.rowA = a.row;
  f.colB = b.col, f.rowB = b.row;
  f.colC = c.col, f.rowC = c.row;
  f.colD = d.col, f.rowD = d.row;
}

void setUprightCorners(Feature& f, TevRect r) {
  const Tev32s right = wrapAdd(r.x, r.width), bottom = wrapAdd(r.y, r.height);
  setCorners(f, {right, bottom}, {r.x, bottom}, {right, r.y}, {r.x, r.y});
}

// The rectangle hangs from its corner D: w steps down to the right, h steps down to the left.
void setTiltedCorners(Feature& f, TevRect r) {
  const Tev32s right = wrapAdd(r.x, r.width);
  setCorners(f, {wrapSub(right, r.height), wrapAdd(wrapAdd(r.y, r.width), r.height)},
             {wrapSub(r.x, r.height), wrapAdd(r.y, r.height)}, {right, wrapAdd(r.y, r.width)}, {r.x, r.y});
}

// The rectangle stands on its corner A, the upright one's bottom-left corner.
void setStandingCorners(Feature& f, TevRect r) {
  const Tev32s right = wrapAdd(r.x, r.width), bottom = wrapAdd(r.y, r.height);
  setCorners(f, {r.x, bottom}, {wrapSub(r.x, r.height), r.y}, {right, wrapSub(bottom, r.width)},
             {wrapSub(right, r.height), wrapSub(r.y, r.width)});
}

// Right and bottom edges stand in boundWidth and boundHeight while the features come in, and boundX and boundY are
// added to them all the same. Old programs store and compare these numbers, so the sums stay as they are, although they
// do not always give the true bounding box.
void extendBound(State& state, TevRect r, const Feature& f) {
  state.boundX = std::min(state.boundX, r.x);
  state.boundY = std::min(state.boundY, r.y);
  if (f.colA > std::int64_t{state.boundX} + state.boundWidth) state.boundWidth = f.colA;
  if (f.rowA > std::int64_t{state.boundY} + state.boundHeight) state.boundHeight = f.rowA;
}

// The caller's arrays.
template <class W>
struct Description {
  const TevRect* rects;
  const W *weights, *thresholds, *belows, *aboves;
  const Tev32s* counts;
  int length;
};

// Fills a stage classifier by classifier.
template <class W>
class Builder {
 public:
  Builder(State& state, const Description<W>& from, bool tilted)
      : state_(state),
        from_(from),
        tilted_(tilted),
        classifier_(state.classifiers),
        feature_(reinterpret_cast<Feature*>(state.classifiers + from.length)) {}

  // Appends the chosen classifiers in the caller's order, and tells how many they are.
  template <class Chosen>
  int append(Chosen chosen) {
    int first = 0, appended = 0;
    for (int k = 0; k < from_.length; first += from_.counts[k++])
      if (chosen(from_.counts[k])) append(k, first), ++appended;
    return appended;
  }

  bool refused() const { return refused_; }
  bool allFirstWeightsMinusOne() const { return allFirstWeightsMinusOne_; }

 private:
  void append(int k, int first) {
    *classifier_++ = {.count = from_.counts[k],
                      .features = feature_,
                      .threshold = valueOf(from_.thresholds[k]),
                      .belowValue = valueOf(from_.belows[k]),
                      .aboveValue = valueOf(from_.aboves[k]),
                      .indexAndTilt = wrapAdd(wrapMul(k, 256), Tev32s{tilted_})};
    allFirstWeightsMinusOne_ &= from_.weights[first] == -1;
    for (int i = first; i < first + from_.counts[k]; ++i) {
      const TevRect r = from_.rects[i];
      Feature& f = *feature_++;
      tilted_ ? setTiltedCorners(f, r) : setUprightCorners(f, r);
      f.weight = valueOf(from_.weights[i]);
      refused_ |= r.x < 0 || r.y < 0 || r.width < 1 || r.height < 1;
      refused_ |= tilted_ && r.height > std::int64_t{r.x} + 1;  // would reach left of the table's first column
      extendBound(state_, r, f);
    }
    state_.totalFeatures += from_.counts[k];
  }

  State& state_;
  const Description<W>& from_;
  bool tilted_;
  Classifier* classifier_;
  Feature* feature_;
  bool refused_ = false;
  bool allFirstWeightsMinusOne_ = true;
};

template <class W>
TevStatus initAlloc(State** pState, const Description<W>& from, bool tilted) {
  if (TevStatus s = firstFailure(
          notNull(pState, from.rects, from.weights, from.thresholds, from.belows, from.aboves, from.counts),
          failUnless(from.length >= 0, tevStatusBadSize)))
    return s;
  std::int64_t features = 0;
  for (int k = 0; k < from.length; ++k) {
    if (from.counts[k] < 1) return tevStatusBadSize;
    features += from.counts[k];
  }
  const std::int64_t size = std::int64_t{sizeof(State)} + std::int64_t{sizeof(Classifier)} * from.length +
                            std::int64_t{sizeof(Feature)} * features;
  constexpr std::int64_t largestBlock = INT32_MAX - 64;  // the allocator counts in 32 bits and adds a little
  Tev8u* const block = size <= largestBlock ? tevsMalloc_8u(static_cast<int>(size)) : nullptr;
  if (!block) return tevStatusNoMemory;

  State& state = *reinterpret_cast<State*>(block);
  const TevRect first = from.rects[0];
  state.classifierCount = from.length;
  state.featureCount = static_cast<Tev32s>(features);
  state.classifiers = reinterpret_cast<Classifier*>(&state + 1);
  state.boundX = first.x;
  state.boundY = first.y;
  state.boundWidth = tilted ? wrapSub(first.width, first.height) : first.width;
  state.boundHeight = tilted ? wrapAdd(first.width, first.height) : first.height;
  state.flags = tilted;
  state.twoFeatureCount = 0;
  state.twoOrThreeFeatureCount = 0;
  state.totalFeatures = 0;

  Builder<W> builder(state, from, tilted);
  if (tilted) {
    builder.append([](int) { return true; });
  } else {
    state.twoFeatureCount = builder.append([](int count) { return count == 2; });
    state.twoOrThreeFeatureCount = state.twoFeatureCount + builder.append([](int count) { return count == 3; });
    builder.append([](int count) { return count != 2 && count != 3; });
    state.allFirstWeightsMinusOne = builder.allFirstWeightsMinusOne();
  }
  if (builder.refused()) {
    tevsFree(block);
    *pState = nullptr;
    return tevStatusBadArg;
  }
  state.boundWidth = wrapSub(state.boundWidth, state.boundX);
  state.boundHeight = wrapSub(state.boundHeight, state.boundY);
  *pState = &state;
  return tevStatusOk;
}

TevStatus freeState(State* state) {
  if (!state) return tevStatusNullPtr;
  tevsFree(state);
  return tevStatusOk;
}

TevStatus windowSize(const State* state, TevSize* pSize) {
  if (TevStatus s = notNull(state, pSize)) return s;
  TevSize size = {0, 0};
  for (int k = 0; k < state->classifierCount; ++k) {
    const Classifier& c = state->classifiers[k];
    for (int i = 0; i < c.count; ++i) {
      size.width = std::max(size.width, c.features[i].colC);
      size.height = std::max(size.height, c.features[i].rowA);
    }
  }
  *pSize = size;
  return tevStatusOk;
}

TevStatus tiltFeatures(const Tev8u* select, int anchorFlag, State* state) {
  if (TevStatus s = firstFailure(notNull(state, select))) return s;
  if (state->flags & 1) return tevStatusBadArg;
  const int count = state->classifierCount;
  Classifier* const classifiers = state->classifiers;
  if (std::none_of(select, select + std::max(count, 0), [](Tev8u s) { return s != 0; })) return tevStatusOk;
  for (int i = 0; i < count; ++i) {
    if (!select[i]) continue;
    Classifier* const c =
        std::find_if(classifiers, classifiers + count, [i](const Classifier& k) { return k.indexAndTilt >> 8 == i; });
    if (c == classifiers + count) continue;
    // The position is dropped, not kept beside the flag: a later search for position 0 stops at this record. Callers
    // depend on the field being exactly 1.
    c->indexAndTilt = 1;
    for (Feature* f = c->features; f != c->features + c->count; ++f) {
      const TevRect r = {f->colD, f->rowD, wrapSub(f->colA, f->colD), wrapSub(f->rowA, f->rowD)};
      anchorFlag ? setTiltedCorners(*f, r) : setStandingCorners(*f, r);
    }
  }
  state->flags |= 1;
  return tevStatusOk;
}

// ---- Applying ----

// Where a feature's corners lie in a table, in elements from the position.
struct Offsets {
  std::ptrdiff_t a, b, c, d;
};

Tev32s offset(Tev32s col, Tev32s row, int stepElements) { return wrapAdd(wrapMul(row, stepElements), col); }

Offsets offsetsOf(const Feature& f, int stepElements) {
  return {offset(f.colA, f.rowA, stepElements), offset(f.colB, f.rowB, stepElements),
          offset(f.colC, f.rowC, stepElements), offset(f.colD, f.rowD, stepElements)};
}

// Corners worked out at each read.
struct PlainCorners {
  int stepElements;

  static bool areTilted(const Classifier&) { return false; }
  Offsets of(const Classifier&, const Feature& f) const { return offsetsOf(f, stepElements); }
};

// Corners worked out beforehand, four for each feature in stored order.
struct IndexedCorners {
  const Feature* firstFeature;
  const Tev32s* index;

  static bool areTilted(const Classifier&) { return false; }
  Offsets of(const Classifier&, const Feature& f) const {
    const Tev32s* const corners = index + 4 * (&f - firstFeature);
    return {corners[0], corners[1], corners[2], corners[3]};
  }
};

// Upright classifiers read one table and tilted ones another.
struct MixedCorners {
  int stepElements, tiltedStepElements;

  static bool areTilted(const Classifier& c) { return c.indexAndTilt & 1; }
  Offsets of(const Classifier& c, const Feature& f) const {
    return offsetsOf(f, areTilted(c) ? tiltedStepElements : stepElements);
  }
};

// A rectangle's sum. That of an integer table wraps.
Extended rectangle(const Tev32f* p, const Offsets& o) {
  return static_cast<Extended>(p[o.a]) - p[o.b] - p[o.c] + p[o.d];
}
Tev32s alternatingSum(Tev32s a, Tev32s b, Tev32s c, Tev32s d) { return wrapAdd(wrapSub(wrapSub(a, b), c), d); }
Tev32s rectangle(const Tev32s* p, const Offsets& o) { return alternatingSum(p[o.a], p[o.b], p[o.c], p[o.d]); }

bool isSmallInteger(Tev32f v) { return v == std::trunc(v) && std::fabs(v) <= 1 << 16; }

// A bound on the roundings of the sum of the votes in double precision; none where the votes are small whole numbers.
Tev64f voteSlackOf(const State& state) {
  Tev64f largest = 0;
  bool whole = true;
  for (const Classifier *c = state.classifiers, *end = c + state.classifierCount; c != end; ++c) {
    whole &= isSmallInteger(c->aboveValue.f) && isSmallInteger(c->belowValue.f);
    largest += std::fabs(static_cast<Tev64f>(c->aboveValue.f)) + std::fabs(static_cast<Tev64f>(c->belowValue.f));
  }
  if (std::isnan(largest)) return std::numeric_limits<Tev64f>::infinity();  // its votes may never be cast
  return whole ? 0 : largest * (state.classifierCount + 1) * 0x1p-52;
}

// A few small whole weights in each classifier: over an integer table, a weighted sum is a whole number that a double
// holds.
bool hasFewSmallWeights(const State& state) {
  return std::all_of(state.classifiers, state.classifiers + std::max(state.classifierCount, 0),
                     [](const Classifier& c) {
                       return c.count < 32 && std::all_of(c.features, c.features + c.count,
                                                          [](const Feature& f) { return isSmallInteger(f.weight.f); });
                     });
}

// The arithmetic of the forms. Element is the type of weights, thresholds, votes and norms; Sum holds a classifier's
// weighted sum and Vote the stage's. Integers wrap, so they stand in unsigned words.
struct Floats {
  using Element = Tev32f;
  using Sum = Extended;
  using Vote = Extended;

  template <class Difference>
  static Sum product(Tev32f weight, Difference d) {
    return static_cast<Extended>(weight) * static_cast<Extended>(d);
  }
  static bool isAbove(Sum s, Tev32f threshold, Tev32f norm) { return static_cast<Extended>(threshold) * norm <= s; }
  static bool isBelow(Vote v, Tev32f threshold) { return v < threshold; }

  explicit Floats(const State& state, int = 0)
      : voteSlack(voteSlackOf(state)), fewSmallWeights(hasFewSmallWeights(state)) {}
  Tev64f voteSlack;  // how far the sum of the votes in double precision may be off
  bool fewSmallWeights;
};

struct Integers {
  using Element = Tev32s;
  using Sum = std::uint32_t;
  using Vote = std::uint32_t;

  static Sum product(Tev32s weight, Tev32s d) { return static_cast<Sum>(wrapMul(weight, d)); }
  static bool isAbove(Sum s, Tev32s threshold, Tev32s norm) {
    return wrapMul(threshold, norm) <= static_cast<Tev32s>(s);
  }
  static bool isBelow(Vote v, Tev32s threshold) { return static_cast<Tev32s>(v) < threshold; }

  explicit Integers(const State&, int = 0) {}
};

// Products of 32 bits, widened, summed and shifted left in 64.
struct WideIntegers {
  using Element = Tev32s;
  using Sum = std::uint64_t;
  using Vote = std::uint32_t;

  static Sum product(Tev32s weight, Tev32s d) { return static_cast<Sum>(std::int64_t{wrapMul(weight, d)}); }
  bool isAbove(Sum s, Tev32s threshold, Tev32s norm) const {
    return std::int64_t{threshold} * norm <= static_cast<std::int64_t>((s & kept) << shift);
  }
  static bool isBelow(Vote v, Tev32s threshold) { return static_cast<Tev32s>(v) < threshold; }

  WideIntegers(const State&, int scaleFactor)
      : shift(-std::max(scaleFactor, -63)), kept(scaleFactor > -64 ? ~Sum{0} : 0) {}
  int shift;
  Sum kept;  // nothing where all bits are shifted out
};

// A stage, its threshold, and the arithmetic in which it is applied.
template <class Form>
struct Stage {
  using Element = typename Form::Element;

  const State& state;
  Element threshold;
  Form form;
};

// The cells of the tables under a position's top-left corner. Both are the same where there is one table.
template <class T>
struct Place {
  const T *upright, *tilted;

  const T* in(bool tiltedTable) const { return tiltedTable ? tilted : upright; }
};

// The definition: whether a position stays selected.
template <class Form, class Corners, class T>
bool stays(const Stage<Form>& stage, const Corners& corners, typename Form::Element norm, Place<T> place) {
  using Element = typename Form::Element;
  typename Form::Vote votes = 0;
  for (const Classifier *c = stage.state.classifiers, *end = c + stage.state.classifierCount; c != end; ++c) {
    const T* const p = place.in(corners.areTilted(*c));
    typename Form::Sum sum = 0;
    for (const Feature *f = c->features, *last = f + c->count; f != last; ++f)
      sum += stage.form.product(get<Element>(f->weight), rectangle(p, corners.of(*c, *f)));
    const bool above = stage.form.isAbove(sum, get<Element>(c->threshold), norm);
    votes += static_cast<typename Form::Vote>(get<Element>(above ? c->aboveValue : c->belowValue));
  }
  return !stage.form.isBelow(votes, stage.threshold);
}

// ---- Many positions together ----

constexpr int lanes = 32;

// A rectangle's sum in double precision, and the size of the terms that were rounded. The differences of an integer
// table are exact.
Tev64f sumInDouble(Tev32f a, Tev32f b, Tev32f c, Tev32f d) { return static_cast<Tev64f>(a) - b - c + d; }
Tev64f sumInDouble(Tev32s a, Tev32s b, Tev32s c, Tev32s d) { return alternatingSum(a, b, c, d); }
Tev32f sizeOfTerms(Tev32f a, Tev32f b, Tev32f c, Tev32f d) {
  return std::fabs(a) + std::fabs(b) + std::fabs(c) + std::fabs(d);
}
Tev32f sizeOfTerms(Tev32s a, Tev32s b, Tev32s c, Tev32s d) {
  return std::fabs(static_cast<Tev32f>(alternatingSum(a, b, c, d)));
}

// Neighbours in one row.
template <class T, class Element>
struct Neighbours {
  Place<T> first;
  const Element* norms;
  Tev8u* masks;

  static constexpr int count() { return lanes; }
  Place<T> place(int i) const { return {first.upright + i, first.tilted + i}; }
  Element norm(int i) const { return norms[i]; }
  Tev8u& mask(int i) const { return masks[i]; }

  // A feature's corners at all lanes: they lie side by side.
  struct Cells {
    const T *pa, *pb, *pc, *pd;

    Cells(const Neighbours& n, bool tilted, const Offsets& o)
        : pa(n.first.in(tilted) + o.a),
          pb(n.first.in(tilted) + o.b),
          pc(n.first.in(tilted) + o.c),
          pd(n.first.in(tilted) + o.d) {}
    T difference(int i) const { return alternatingSum(pa[i], pb[i], pc[i], pd[i]); }
    Tev64f sum(int i) const { return sumInDouble(pa[i], pb[i], pc[i], pd[i]); }
    Tev32f terms(int i) const { return sizeOfTerms(pa[i], pb[i], pc[i], pd[i]); }
  };
};

// Positions from anywhere, in the order of the image. Lanes that are not taken repeat the last position.
template <class T, class Element>
class Scattered {
 public:
  int count() const { return count_; }
  bool isFull() const { return count_ == lanes; }
  void clear() { count_ = 0; }
  void add(Place<T> place, Element norm, Tev8u* mask) {
    places_[false][count_] = place.upright;
    places_[true][count_] = place.tilted;
    norms_[count_] = norm;
    masks_[count_++] = mask;
  }
  void fillUp() {
    for (const T*(&places)[lanes] : places_) std::fill(places + count_, places + lanes, places[count_ - 1]);
    std::fill(norms_ + count_, norms_ + lanes, norms_[count_ - 1]);
  }

  Place<T> place(int i) const { return {places_[false][i], places_[true][i]}; }
  Element norm(int i) const { return norms_[i]; }
  Tev8u& mask(int i) const { return *masks_[i]; }

  // A feature's corners at all lanes, gathered; of an integer table, the differences.
  struct Cells {
    static constexpr bool integers = std::is_integral_v<T>;
    T values[integers ? 1 : 4][lanes];

    Cells(const Scattered& s, bool tilted, const Offsets& o) {
      for (int i = 0; i < lanes; ++i) {
        const T* const p = s.places_[tilted][i];
        if constexpr (integers) {
          values[0][i] = rectangle(p, o);
        } else {
          // Moved as words: the processor's units for floats are busy with the arithmetic.
          std::memcpy(&values[0][i], p + o.a, sizeof(T));
          std::memcpy(&values[1][i], p + o.b, sizeof(T));
          std::memcpy(&values[2][i], p + o.c, sizeof(T));
          std::memcpy(&values[3][i], p + o.d, sizeof(T));
        }
      }
    }
    T difference(int i) const { return values[0][i]; }
    Tev64f sum(int i) const {
      if constexpr (integers)
        return values[0][i];
      else
        return sumInDouble(values[0][i], values[1][i], values[2][i], values[3][i]);
    }
    Tev32f terms(int i) const {
      if constexpr (integers)
        return std::fabs(static_cast<Tev32f>(values[0][i]));
      else
        return sizeOfTerms(values[0][i], values[1][i], values[2][i], values[3][i]);
    }
  };

 private:
  int count_ = 0;
  const T* places_[2][lanes];  // upright, tilted
  Element norms_[lanes];
  Tev8u* masks_[lanes];
};

// Clears the masks of the positions that the stage rejects, and tells how many stay.
template <class Positions, class Stays>
int thin(const Positions& positions, Stays staysAt) {
  int positive = 0;
  for (int i = 0; i < positions.count(); ++i) {
    const bool stay = staysAt(i);
    positions.mask(i) = stay ? positions.mask(i) : 0;
    positive += stay;
  }
  return positive;
}

template <class Form, class Corners, class Positions>
int applyToLanes(const Stage<Form>& stage, const Corners& corners, const Positions& positions) {
  typename Form::Vote votes[lanes] = {};
  for (const Classifier *c = stage.state.classifiers, *end = c + stage.state.classifierCount; c != end; ++c) {
    typename Form::Sum sums[lanes] = {};
    for (const Feature *f = c->features, *last = f + c->count; f != last; ++f) {
      const Tev32s weight = f->weight.s;
      const typename Positions::Cells t(positions, corners.areTilted(*c), corners.of(*c, *f));
      for (int i = 0; i < lanes; ++i) sums[i] += stage.form.product(weight, t.difference(i));
    }
    const Tev32s threshold = c->threshold.s, above = c->aboveValue.s, below = c->belowValue.s;
    for (int i = 0; i < lanes; ++i)
      votes[i] +=
          static_cast<typename Form::Vote>(stage.form.isAbove(sums[i], threshold, positions.norm(i)) ? above : below);
  }
  return thin(positions, [&](int i) { return !stage.form.isBelow(votes[i], stage.threshold); });
}

// Thins by the votes in double precision, and by the definition where these leave it open.
template <class Corners, class Positions>
int thinByVotes(const Stage<Floats>& stage, const Corners& corners, const Positions& positions, const Tev64f* votes,
                const std::int64_t* doubtful) {
  const Tev64f slack = stage.form.voteSlack, threshold = stage.threshold;
  std::int64_t stay[lanes], open[lanes], anyOpen = 0;
  for (int i = 0; i < lanes; ++i) {
    const bool atLeast = !(votes[i] - slack < threshold), atMost = !(votes[i] + slack < threshold);
    stay[i] = atLeast;
    open[i] = doubtful[i] | (atLeast != atMost);
    anyOpen |= open[i];
  }
  if (anyOpen)
    for (int i = 0; i < positions.count(); ++i)
      if (open[i]) stay[i] = stays(stage, corners, positions.norm(i), positions.place(i));
  return thin(positions, [&](int i) { return stay[i] != 0; });
}

// Calls take(weight, rectangle, isFirst) for the features of a classifier.
template <class Corners, class Positions, class Take>
void forFeatures(const Classifier& c, const Corners& corners, const Positions& positions, Take take) {
  for (const Feature *f = c.features, *last = f + c.count; f != last; ++f)
    take(f->weight.f, typename Positions::Cells(positions, corners.areTilted(c), corners.of(c, *f)), f == c.features);
}

// Weighted sums over an integer table that are exact, and so is the product that each is compared with.
template <class Corners, class Positions>
int applyExactly(const Stage<Floats>& stage, const Corners& corners, const Positions& positions) {
  Tev64f norms[lanes], votes[lanes];
  for (int i = 0; i < lanes; ++i) norms[i] = positions.norm(i), votes[i] = 0;
  for (const Classifier *c = stage.state.classifiers, *end = c + stage.state.classifierCount; c != end; ++c) {
    Tev64f sums[lanes];
    forFeatures(*c, corners, positions, [&](Tev64f weight, const typename Positions::Cells& t, bool isFirst) {
      if (isFirst)
        for (int i = 0; i < lanes; ++i) sums[i] = weight * t.sum(i);
      else
        for (int i = 0; i < lanes; ++i) sums[i] += weight * t.sum(i);
    });
    const Tev64f threshold = c->threshold.f, above = c->aboveValue.f, below = c->belowValue.f;
    for (int i = 0; i < lanes; ++i) votes[i] += threshold * norms[i] <= sums[i] ? above : below;
  }
  constexpr std::int64_t none[lanes] = {};
  return thinByVotes(stage, corners, positions, votes, none);
}

// Each sum has a bound on how far it may be off: twice the roundings of 2^-53 that each of its terms goes through. A
// lane is doubtful where a sum lies within its bound of what it is compared with; NaN and infinity make it so too.
template <class Corners, class T, template <class, class> class Positions>
int applyToLanes(const Stage<Floats>& stage, const Corners& corners, const Positions<T, Tev32f>& positions) {
  using Cells = typename Positions<T, Tev32f>::Cells;
  if (std::is_integral_v<T> && stage.form.fewSmallWeights) return applyExactly(stage, corners, positions);
  Tev64f norms[lanes], votes[lanes];
  std::int64_t doubtful[lanes];
  for (int i = 0; i < lanes; ++i) norms[i] = positions.norm(i), votes[i] = 0, doubtful[i] = 0;
  for (const Classifier *c = stage.state.classifiers, *end = c + stage.state.classifierCount; c != end; ++c) {
    constexpr Tev32f vanishing = std::numeric_limits<Tev32f>::min();  // what the smallest products may vanish to
    Tev64f sums[lanes];
    Tev32f terms[lanes];
    forFeatures(*c, corners, positions, [&](Tev32f weight, const Cells& t, bool isFirst) {
      const Tev64f wide = weight;
      const Tev32f size = std::fabs(weight);
      if (isFirst) {
        for (int i = 0; i < lanes; ++i) sums[i] = wide * t.sum(i);
        for (int i = 0; i < lanes; ++i) terms[i] = vanishing + size * t.terms(i);
      } else {
        for (int i = 0; i < lanes; ++i) sums[i] += wide * t.sum(i);
        for (int i = 0; i < lanes; ++i) terms[i] += size * t.terms(i);
      }
    });
    const Tev64f slack = (c->count + 8) * 0x1p-52;
    const Tev64f threshold = c->threshold.f, above = c->aboveValue.f, below = c->belowValue.f;
    for (int i = 0; i < lanes; ++i) {
      const Tev64f distance = threshold * norms[i] - sums[i];
      votes[i] += distance <= 0 ? above : below;
      doubtful[i] |= !(std::fabs(distance) > slack * terms[i]);
    }
  }
  return thinByVotes(stage, corners, positions, votes, doubtful);
}

// ---- A region ----

// Clears the mask where the stage rejects, and tells how many positions stay. Where there is one table, `tilt` is
// `src`.
template <class Form, class Corners, class T>
int applyToRegion(const Stage<Form>& stage, const Corners& corners, Rows<const T> src, Rows<const T> tilt,
                  Rows<const typename Form::Element> norms, Rows<Tev8u> masks, TevSize roi) {
  using Element = typename Form::Element;
  Scattered<T, Element> scattered;
  int positive = 0;
  for (int y = 0; y < roi.height; ++y) {
    const Place<T> row = {src[y], tilt[y]};
    const Element* const norm = norms[y];
    Tev8u* const mask = masks[y];
    for (int x = 0; x < roi.width; x += lanes) {
      const int end = std::min(x + lanes, roi.width);
      int selected = 0;
      for (int i = x; i < end; ++i) selected += mask[i] != 0;
      if (selected == 0) continue;
      if (selected == lanes) {
        const Place<T> first = {row.upright + x, row.tilted + x};
        positive += applyToLanes(stage, corners, Neighbours<T, Element>{first, norm + x, mask + x});
        continue;
      }
      // Listed without a branch on the mask, which nobody could predict.
      int list[lanes], listed = 0;
      for (int i = x; i < end; ++i) list[listed] = i, listed += mask[i] != 0;
      for (int k = 0; k < listed; ++k) {
        const int i = list[k];
        scattered.add({row.upright + i, row.tilted + i}, norm[i], mask + i);
        if (!scattered.isFull()) continue;
        positive += applyToLanes(stage, corners, scattered);
        scattered.clear();
      }
    }
  }
  if (scattered.count() != 0) {
    scattered.fillUp();
    positive += applyToLanes(stage, corners, scattered);
  }
  return positive;
}

template <class T>
constexpr int elements(int step) {
  return step / int{sizeof(T)};
}

// Over one table. All corners are indexed once; without memory for the index they are worked out at each read, which
// is slower and no different.
template <class Form, class T>
int applyUpright(const Stage<Form>& stage, const T* src, int srcStep, const typename Form::Element* norm, int normStep,
                 Tev8u* mask, int maskStep, TevSize roi) {
  const State& state = stage.state;
  const int step = elements<T>(srcStep);
  const auto applyWith = [&](const auto& corners) {
    const auto table = rows(src, srcStep);
    return applyToRegion(stage, corners, table, table, rows(norm, normStep), rows(mask, maskStep), roi);
  };
  Tev32s* const index = tevsMalloc_32s(4 * state.featureCount);
  if (!index) return applyWith(PlainCorners{step});
  const Feature* const features = state.classifiers->features;
  for (int i = 0; i < state.featureCount; ++i) {
    const Feature& f = features[i];
    index[4 * i] = offset(f.colA, f.rowA, step);
    index[4 * i + 1] = offset(f.colB, f.rowB, step);
    index[4 * i + 2] = offset(f.colC, f.rowC, step);
    index[4 * i + 3] = offset(f.colD, f.rowD, step);
  }
  const int positive = applyWith(IndexedCorners{features, index});
  tevsFree(index);
  return positive;
}

template <class T, class Element>
TevStatus checked(const T* src, int srcStep, const Element* norm, int normStep, const Tev8u* mask, int maskStep,
                  TevSize roi, const Tev32s* pPositive, const State* state) {
  return firstFailure(notNull(src, norm, mask, pPositive, state), region(roi), rowFits<T>(srcStep, roi.width),
                      rowFits<Element>(normStep, roi.width), rowFits<Tev8u>(maskStep, roi.width),
                      wholeElements<T>(srcStep), wholeElements<Element>(normStep));
}

template <class Form, class T>
TevStatus apply(const T* src, int srcStep, const typename Form::Element* norm, int normStep, Tev8u* mask, int maskStep,
                TevSize roi, Tev32s* pPositive, typename Form::Element threshold, const State* state) {
  if (TevStatus s = checked(src, srcStep, norm, normStep, mask, maskStep, roi, pPositive, state)) return s;
  *pPositive =
      applyUpright(Stage<Form>{*state, threshold, Form(*state)}, src, srcStep, norm, normStep, mask, maskStep, roi);
  return tevStatusOk;
}

// `scaleFactor` is 0 for the forms that have none.
template <class Form, class T>
TevStatus applyMixed(const T* src, int srcStep, const T* tilt, int tiltStep, const typename Form::Element* norm,
                     int normStep, Tev8u* mask, int maskStep, TevSize roi, Tev32s* pPositive,
                     typename Form::Element threshold, const State* state, int scaleFactor = 0) {
  if (TevStatus s =
          firstFailure(notNull(src, norm, mask, pPositive, state, tilt), region(roi), rowFits<T>(srcStep, roi.width),
                       rowFits<Tev32f>(normStep, roi.width), rowFits<T>(tiltStep, roi.width),
                       rowFits<Tev8u>(maskStep, roi.width), wholeElements<T>(srcStep), wholeElements<Tev32f>(normStep),
                       wholeElements<T>(tiltStep), failUnless(scaleFactor <= 0, tevStatusBadArg)))
    return s;
  // A tilted table has a border of its own: one row above and one column to the left.
  const MixedCorners corners = {elements<T>(srcStep), elements<T>(tiltStep)};
  const Rows<const T> tilted(rows(tilt, tiltStep)[1] + 1, tiltStep);
  *pPositive = applyToRegion(Stage<Form>{*state, threshold, Form(*state, scaleFactor)}, corners, rows(src, srcStep),
                             tilted, rows(norm, normStep), rows(mask, maskStep), roi);
  return tevStatusOk;
}

}  // namespace

TevStatus teviHaarClassifierInitAlloc_32f(TevHaarClassifierState** pState, const TevRect* pFeature,
                                          const Tev32f* pWeight, const Tev32f* pThreshold, const Tev32f* pBelowValue,
                                          const Tev32f* pAboveValue, const Tev32s* pCount, int length) {
  return initAlloc<Tev32f>(pState, {pFeature, pWeight, pThreshold, pBelowValue, pAboveValue, pCount, length}, false);
}

TevStatus teviHaarClassifierInitAlloc_32s(TevHaarClassifierState** pState, const TevRect* pFeature,
                                          const Tev32s* pWeight, const Tev32s* pThreshold, const Tev32s* pBelowValue,
                                          const Tev32s* pAboveValue, const Tev32s* pCount, int length) {
  return initAlloc<Tev32s>(pState, {pFeature, pWeight, pThreshold, pBelowValue, pAboveValue, pCount, length}, false);
}

TevStatus teviTiltedHaarClassifierInitAlloc_32f(TevHaarClassifierState** pState, const TevRect* pFeature,
                                                const Tev32f* pWeight, const Tev32f* pThreshold,
                                                const Tev32f* pBelowValue, const Tev32f* pAboveValue,
                                                const Tev32s* pCount, int length) {
  return initAlloc<Tev32f>(pState, {pFeature, pWeight, pThreshold, pBelowValue, pAboveValue, pCount, length}, true);
}

TevStatus teviTiltedHaarClassifierInitAlloc_32s(TevHaarClassifierState** pState, const TevRect* pFeature,
                                                const Tev32s* pWeight, const Tev32s* pThreshold,
                                                const Tev32s* pBelowValue, const Tev32s* pAboveValue,
                                                const Tev32s* pCount, int length) {
  return initAlloc<Tev32s>(pState, {pFeature, pWeight, pThreshold, pBelowValue, pAboveValue, pCount, length}, true);
}

TevStatus teviHaarClassifierFree_32f(TevHaarClassifierState* state) { return freeState(state); }

TevStatus teviHaarClassifierFree_32s(TevHaarClassifierState* state) { return freeState(state); }

TevStatus teviGetHaarClassifierSize_32f(const TevHaarClassifierState* state, TevSize* pSize) {
  return windowSize(state, pSize);
}

TevStatus teviGetHaarClassifierSize_32s(const TevHaarClassifierState* state, TevSize* pSize) {
  return windowSize(state, pSize);
}

TevStatus teviTiltHaarFeatures_32f(const Tev8u* pSelect, int anchorFlag, TevHaarClassifierState* state) {
  return tiltFeatures(pSelect, anchorFlag, state);
}

TevStatus teviTiltHaarFeatures_32s(const Tev8u* pSelect, int anchorFlag, TevHaarClassifierState* state) {
  return tiltFeatures(pSelect, anchorFlag, state);
}

TevStatus ownApplyHaarClassifier_32f_C1R(const Tev32f* src, int srcStep, const Tev32f* norm, int normStep, Tev8u* mask,
                                         int maskStep, TevSize roiSize, Tev32s* pPositive, Tev32f threshold,
                                         const TevHaarClassifierState* state) {
  *pPositive = applyUpright(Stage<Floats>{*state, threshold, Floats(*state)}, src, srcStep, norm, normStep, mask,
                            maskStep, roiSize);
  return tevStatusOk;
}

TevStatus teviApplyHaarClassifier_32f_C1R(const Tev32f* src, int srcStep, const Tev32f* norm, int normStep, Tev8u* mask,
                                          int maskStep, TevSize roiSize, Tev32s* pPositive, Tev32f threshold,
                                          const TevHaarClassifierState* state) {
  if (TevStatus s = checked(src, srcStep, norm, normStep, mask, maskStep, roiSize, pPositive, state)) return s;
  const int shares = sharesOf(roiSize);
  if (shares < 2)
    return ownApplyHaarClassifier_32f_C1R(src, srcStep, norm, normStep, mask, maskStep, roiSize, pPositive, threshold,
                                          state);
  Slots<Tev32s> positives(shares);
  forEachShare(roiSize.height, shares, [&](const Share& share) {
    const int y = share.firstRow;
    ownApplyHaarClassifier_32f_C1R(rows(src, srcStep)[y], srcStep, rows(norm, normStep)[y], normStep,
                                   rows(mask, maskStep)[y], maskStep, {roiSize.width, share.rows},
                                   &positives[share.index], threshold, state);
  });
  Tev32s positive = 0;
  for (int t = 0; t < shares; ++t) positive += positives[t];
  *pPositive = positive;
  return tevStatusOk;
}

TevStatus teviApplyHaarClassifier_32s32f_C1R(const Tev32s* src, int srcStep, const Tev32f* norm, int normStep,
                                             Tev8u* mask, int maskStep, TevSize roiSize, Tev32s* pPositive,
                                             Tev32f threshold, const TevHaarClassifierState* state) {
  return apply<Floats>(src, srcStep, norm, normStep, mask, maskStep, roiSize, pPositive, threshold, state);
}

TevStatus teviApplyHaarClassifier_32s_C1RSfs(const Tev32s* src, int srcStep, const Tev32s* norm, int normStep,
                                             Tev8u* mask, int maskStep, TevSize roiSize, Tev32s* pPositive,
                                             Tev32s threshold, const TevHaarClassifierState* state,
                                             int /*scaleFactor*/) {
  return apply<Integers>(src, srcStep, norm, normStep, mask, maskStep, roiSize, pPositive, threshold, state);
}

TevStatus teviApplyMixedHaarClassifier_32f_C1R(const Tev32f* src, int srcStep, const Tev32f* tilt, int tiltStep,
                                               const Tev32f* norm, int normStep, Tev8u* mask, int maskStep,
                                               TevSize roiSize, Tev32s* pPositive, Tev32f threshold,
                                               const TevHaarClassifierState* state) {
  return applyMixed<Floats>(src, srcStep, tilt, tiltStep, norm, normStep, mask, maskStep, roiSize, pPositive, threshold,
                            state);
}

TevStatus teviApplyMixedHaarClassifier_32s32f_C1R(const Tev32s* src, int srcStep, const Tev32s* tilt, int tiltStep,
                                                  const Tev32f* norm, int normStep, Tev8u* mask, int maskStep,
                                                  TevSize roiSize, Tev32s* pPositive, Tev32f threshold,
                                                  const TevHaarClassifierState* state) {
  return applyMixed<Floats>(src, srcStep, tilt, tiltStep, norm, normStep, mask, maskStep, roiSize, pPositive, threshold,
                            state);
}

TevStatus teviApplyMixedHaarClassifier_32s_C1RSfs(const Tev32s* src, int srcStep, const Tev32s* tilt, int tiltStep,
                                                  const Tev32s* norm, int normStep, Tev8u* mask, int maskStep,
                                                  TevSize roiSize, Tev32s* pPositive, Tev32s threshold,
                                                  const TevHaarClassifierState* state, int scaleFactor) {
  return applyMixed<WideIntegers>(src, srcStep, tilt, tiltStep, norm, normStep, mask, maskStep, roiSize, pPositive,
                                  threshold, state, scaleFactor);
}
