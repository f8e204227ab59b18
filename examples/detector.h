// A cascade of Haar stages, run over a picture at several scales. The example and the trainer share it, so that a stage
// is learned on the numbers that it meets later.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <vector>

#include "tevcv.h"

namespace example {

// A cascade as plain arrays, in the form in which the library takes a stage: the rectangles of all classifiers one
// behind the other, and for each stage how many classifiers it has and what its votes must reach.
struct CascadeView {
  int window;  // side of the square that the rectangles lie in
  const TevRect* rects;
  const Tev32f* weights;
  const Tev32s* counts;  // rectangles of each classifier
  const Tev8u* tilted;   // 1 where a classifier's rectangles are tilted by 45 degrees
  const Tev32f *thresholds, *belows, *aboves;
  const Tev32s* stageLengths;  // classifiers of each stage
  const Tev32f* stageThresholds;
  int stageCount;
};

// One stage, built by the library and freed with its owner.
class Stage {
 public:
  Stage(const CascadeView& c, int stage) : threshold_(c.stageThresholds[stage]) {
    int classifier = 0, rect = 0;
    for (int i = 0; i < stage; ++i) classifier += c.stageLengths[i];
    for (int i = 0; i < classifier; ++i) rect += c.counts[i];
    TevHaarClassifierState* state = nullptr;
    if (teviHaarClassifierInitAlloc_32f(&state, c.rects + rect, c.weights + rect, c.thresholds + classifier,
                                        c.belows + classifier, c.aboves + classifier, c.counts + classifier,
                                        c.stageLengths[stage]) == tevStatusOk)
      teviTiltHaarFeatures_32f(c.tilted + classifier, 1, state);
    state_.reset(state);
  }
  const TevHaarClassifierState* state() const { return state_.get(); }
  Tev32f threshold() const { return threshold_; }

 private:
  struct Free {
    void operator()(TevHaarClassifierState* s) const { teviHaarClassifierFree_32f(s); }
  };
  std::unique_ptr<TevHaarClassifierState, Free> state_;
  Tev32f threshold_;
};

// A grey picture with the tables that the stages read, for windows of one size.
class Tables {
 public:
  // Pixels without padding, at least as large as the window.
  Tables(const Tev8u* pixels, TevSize size, int window)
      : size_(size),
        positions_{size.width - window + 1, size.height - window + 1},
        sum_(cells(1)),
        tilt_(cells(2)),
        norm_(static_cast<std::size_t>(positions_.width) * static_cast<std::size_t>(positions_.height)),
        mask_(norm_.size()) {
    std::vector<Tev64f> sqr(sum_.size());
    const int step = sumStep(), sqrStep = (size.width + 1) * 8;
    teviSqrIntegral_8u32s64f_C1R(pixels, size.width, sum_.data(), step, sqr.data(), sqrStep, size, 0, 0);
    teviTiltedIntegral_8u32s_C1R(pixels, size.width, tilt_.data(), tiltStep(), size, 0);
    // The rim of the window is not part of the norm: it shows hair and background.
    teviRectStdDev_32s32f_C1R(sum_.data(), step, sqr.data(), sqrStep, norm_.data(), positions_.width * 4, positions_,
                              {1, 1, window - 2, window - 2});
    // Windows without contrast have nothing to show, and a norm of 0 would pass every stage.
    constexpr Tev32f leastContrast = 10;
    std::transform(norm_.begin(), norm_.end(), mask_.begin(), [](Tev32f n) { return Tev8u{n >= leastContrast}; });
  }

  // Clears the mask where the stage rejects, and tells how many windows are left.
  int apply(const Stage& stage) {
    Tev32s left = 0;
    teviApplyMixedHaarClassifier_32s32f_C1R(sum_.data(), sumStep(), tilt_.data(), tiltStep(), norm_.data(),
                                            positions_.width * 4, mask_.data(), positions_.width, positions_, &left,
                                            stage.threshold(), stage.state());
    return left;
  }
  int apply(const std::vector<Stage>& stages) {
    int left = static_cast<int>(std::count(mask_.begin(), mask_.end(), 1));
    for (const Stage& stage : stages) {
      if (left == 0) break;
      left = apply(stage);
    }
    return left;
  }

  TevSize size() const { return size_; }
  TevSize positions() const { return positions_; }
  bool isLeft(int x, int y) const { return mask_[index(x, y)] != 0; }
  Tev32f norm(int x, int y) const { return norm_[index(x, y)]; }
  Tev32s sum(int x, int y) const { return sum_[static_cast<std::size_t>(y * (size_.width + 1) + x)]; }
  // The tilted table has one column and one row more in front.
  Tev32s tilt(int x, int y) const { return tilt_[static_cast<std::size_t>((y + 1) * (size_.width + 2) + x + 1)]; }

 private:
  std::size_t cells(int border) const {
    return static_cast<std::size_t>(size_.width + border) * static_cast<std::size_t>(size_.height + border);
  }
  std::size_t index(int x, int y) const { return static_cast<std::size_t>(y * positions_.width + x); }
  int sumStep() const { return (size_.width + 1) * 4; }
  int tiltStep() const { return (size_.width + 2) * 4; }

  TevSize size_, positions_;
  std::vector<Tev32s> sum_, tilt_;
  std::vector<Tev32f> norm_;
  std::vector<Tev8u> mask_;
};

// A grey picture made smaller: each pixel is the mean of the area that it covers.
inline std::vector<Tev8u> shrunk(const Tev8u* pixels, TevSize from, TevSize to) {
  const double fx = double(from.width) / to.width, fy = double(from.height) / to.height;
  const auto overlap = [](int cell, double begin, double end) {
    return std::max(0.0, std::min(cell + 1.0, end) - std::max<double>(cell, begin));
  };
  // First the rows, then the columns.
  std::vector<double> narrow(static_cast<std::size_t>(to.width) * static_cast<std::size_t>(from.height));
  for (int y = 0; y < from.height; ++y)
    for (int x = 0; x < to.width; ++x) {
      double sum = 0;
      for (int i = int(x * fx); i < std::min(from.width, int(std::ceil((x + 1) * fx))); ++i)
        sum += overlap(i, x * fx, (x + 1) * fx) * pixels[y * from.width + i];
      narrow[static_cast<std::size_t>(y * to.width + x)] = sum / fx;
    }
  std::vector<Tev8u> result(static_cast<std::size_t>(to.width) * static_cast<std::size_t>(to.height));
  for (int y = 0; y < to.height; ++y)
    for (int x = 0; x < to.width; ++x) {
      double sum = 0;
      for (int i = int(y * fy); i < std::min(from.height, int(std::ceil((y + 1) * fy))); ++i)
        sum += overlap(i, y * fy, (y + 1) * fy) * narrow[static_cast<std::size_t>(i * to.width + x)];
      result[static_cast<std::size_t>(y * to.width + x)] = static_cast<Tev8u>(std::min(255.0, sum / fy + 0.5));
    }
  return result;
}

// Calls visit(tables, scale) for the picture and for each smaller copy of it that still holds the window.
template <class Visit>
void forEachScale(const Tev8u* pixels, TevSize size, int window, double factor, Visit visit) {
  for (double scale = 1; size.width / scale >= window && size.height / scale >= window; scale *= factor) {
    const TevSize small = {int(size.width / scale), int(size.height / scale)};
    visit(Tables(shrunk(pixels, size, small).data(), small, window), scale);
  }
}

// A place where the cascade fires, or several of them that were taken together.
struct Hit {
  double x, y, side;
  int votes;
};

// Area of the intersection over that of the union.
inline double overlap(const Hit& a, const Hit& b) {
  const double w = std::min(a.x + a.side, b.x + b.side) - std::max(a.x, b.x);
  const double h = std::min(a.y + a.side, b.y + b.side) - std::max(a.y, b.y);
  const double both = std::max(0.0, w) * std::max(0.0, h);
  return both / (a.side * a.side + b.side * b.side - both);
}

// Non-maximum suppression: where hits crowd, the one with the most neighbours stands for all that touch it, at their
// mean place. Hits with fewer than `leastVotes` neighbours, themselves included, are chance.
inline std::vector<Hit> strongest(std::vector<Hit> hits, int leastVotes) {
  std::vector<Hit> result;
  while (!hits.empty()) {
    for (Hit& a : hits)
      a.votes =
          static_cast<int>(std::count_if(hits.begin(), hits.end(), [&](const Hit& b) { return overlap(a, b) > 0.5; }));
    const Hit best =
        *std::max_element(hits.begin(), hits.end(), [](const Hit& a, const Hit& b) { return a.votes < b.votes; });
    if (best.votes < leastVotes) break;
    Hit mean = {0, 0, 0, best.votes};
    for (const Hit& h : hits)
      if (overlap(best, h) > 0.5) mean.x += h.x, mean.y += h.y, mean.side += h.side;
    result.push_back({mean.x / best.votes, mean.y / best.votes, mean.side / best.votes, best.votes});
    std::erase_if(hits, [&](const Hit& h) { return overlap(best, h) > 0.1; });
  }
  return result;
}

inline std::vector<Stage> build(const CascadeView& cascade) {
  std::vector<Stage> stages;
  for (int i = 0; i < cascade.stageCount; ++i) stages.emplace_back(cascade, i);
  return stages;
}

// All windows of a picture that the cascade takes, at every scale. Each scale is `factor` smaller than the one before;
// done() is called after each.
template <class Done>
std::vector<Hit> scan(const Tev8u* pixels, TevSize size, const std::vector<Stage>& stages, int window, double factor,
                      Done done) {
  std::vector<Hit> hits;
  forEachScale(pixels, size, window, factor, [&](Tables tables, double scale) {
    tables.apply(stages);
    for (int y = 0; y < tables.positions().height; ++y)
      for (int x = 0; x < tables.positions().width; ++x)
        if (tables.isLeft(x, y)) hits.push_back({x * scale, y * scale, window * scale, 1});
    done();
  });
  return hits;
}
inline std::vector<Hit> scan(const Tev8u* pixels, TevSize size, const std::vector<Stage>& stages, int window) {
  return scan(pixels, size, stages, window, 1.1, [] {});
}

}  // namespace example
