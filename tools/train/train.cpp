// Trains the cascade of the detection example.
//   train FACES.npy OUT.h SEED PICTURE.png...
//
// FACES.npy holds 25 x 25 patches as doubles from 0 to 1, the first half faces, the second half not. Faces are
// mirrored, turned, shifted and scaled a little to make many of few. What is no face comes from the second half and
// from all windows of the pictures that the stages so far let through: each stage learns from the mistakes of those
// before it.
//
// A stage is an additive model of stumps over features of two or three rectangles, upright and tilted, fitted by gentle
// AdaBoost (J. Friedman, T. Hastie, R. Tibshirani, Additive logistic regression, 2000). Its threshold is set so that it
// keeps nearly all faces, and it grows until it rejects enough of the rest (P. Viola, M. Jones, Rapid object detection
// using a boosted cascade of simple features, 2001).
//
// Tables, norms and stages are the library's own, so that what is learned is what is applied.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "detector.h"
#include "picture.h"

namespace {

using example::Picture;
using example::Stage;
using example::Tables;

constexpr int window = 25, patchPixels = window * window;

// What a run aims at.
constexpr int mostStages = 20;
constexpr int mostClassifiers = 70;      // of one stage
constexpr int variantsOfAFace = 24;      // half of them mirrored
constexpr int mostNegatives = 4000;      // of one stage
constexpr int leastNegatives = 100;      // with fewer mistakes left to learn from, the cascade is done
constexpr int candidateFeatures = 5000;  // of one stage, drawn anew for each
constexpr double hitRate = 0.996;        // of the faces that a stage keeps
constexpr double falseRate = 0.45;       // of the rest

// SplitMix64: the same numbers everywhere.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  std::uint64_t bits() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
  }
  int below(int n) { return static_cast<int>(bits() % static_cast<std::uint64_t>(n)); }
  double between(double low, double high) { return low + (high - low) * static_cast<double>(bits() >> 11) * 0x1p-53; }

 private:
  std::uint64_t state_;
};

// ---- Samples ----

using Patch = std::array<Tev8u, patchPixels>;

// The patches of an .npy file of doubles in C order; none where it is anything else.
std::vector<Patch> readPatches(const char* path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  const std::size_t patchBytes = patchPixels * sizeof(double);
  std::vector<Patch> patches;
  if (bytes.size() < 10 || std::memcmp(bytes.data(), "\x93NUMPY", 6) != 0) return patches;
  const std::size_t header = 10 + static_cast<unsigned char>(bytes[8]) + 256U * static_cast<unsigned char>(bytes[9]);
  const std::string text(bytes.data() + 10, std::min(header, bytes.size()) - 10);
  if (text.find("'<f8'") == std::string::npos || text.find("25, 25)") == std::string::npos) return patches;
  for (std::size_t at = header; at + patchBytes <= bytes.size(); at += patchBytes) {
    Patch patch;
    for (std::size_t i = 0; i < patchPixels; ++i) {
      double v;
      std::memcpy(&v, bytes.data() + at + i * sizeof v, sizeof v);
      patch[i] = static_cast<Tev8u>(std::clamp(v, 0.0, 1.0) * 255 + 0.5);
    }
    patches.push_back(patch);
  }
  return patches;
}

// A patch seen from a little elsewhere: mirrored, turned, scaled and shifted about its middle; its edges go on outside.
Patch moved(const Patch& from, bool mirror, double angle, double scale, double dx, double dy) {
  Patch result;
  const double c = std::cos(angle) * scale, s = std::sin(angle) * scale, middle = (window - 1) / 2.0;
  const auto at = [&](int x, int y) {
    return double(from[static_cast<std::size_t>(std::clamp(y, 0, window - 1) * window + std::clamp(x, 0, window - 1))]);
  };
  for (int y = 0; y < window; ++y)
    for (int x = 0; x < window; ++x) {
      const double u = mirror ? middle - x : x - middle, v = y - middle;
      const double sx = middle + c * u - s * v + dx, sy = middle + s * u + c * v + dy;
      const int ix = static_cast<int>(std::floor(sx)), iy = static_cast<int>(std::floor(sy));
      const double fx = sx - ix, fy = sy - iy;
      const double top = at(ix, iy) * (1 - fx) + at(ix + 1, iy) * fx;
      const double bottom = at(ix, iy + 1) * (1 - fx) + at(ix + 1, iy + 1) * fx;
      result[static_cast<std::size_t>(y * window + x)] = static_cast<Tev8u>(top * (1 - fy) + bottom * fy + 0.5);
    }
  return result;
}

std::vector<Patch> variants(const std::vector<Patch>& faces, Random& random) {
  std::vector<Patch> result;
  for (const Patch& face : faces)
    for (int i = 0; i < variantsOfAFace; ++i) {
      const double amount = i < 2 ? 0 : 1;  // the face itself and its mirror image come first
      result.push_back(moved(face, i % 2, amount * random.between(-0.15, 0.15), 1 + amount * random.between(-0.1, 0.08),
                             amount * random.between(-1, 1), amount * random.between(-1, 1)));
    }
  return result;
}

Tables tablesOf(const Patch& patch) { return Tables(patch.data(), {window, window}, window); }

// ---- Features ----

// Rectangles and weights of a feature; the weights even out the areas, so that it sees no plain brightness.
struct Feature {
  int count = 0;
  bool tilted = false;
  TevRect rects[3] = {};
  Tev32f weights[3] = {};

  void add(TevRect r, Tev32f weight) { rects[count] = r, weights[count++] = weight; }
};

// A random feature that lies inside the window: two or three bands side by side, a frame, or a checker of four.
Feature draw(Random& random) {
  for (;;) {
    Feature f;
    f.tilted = random.below(4) == 0;
    const bool across = random.below(2);
    const int kind = random.below(f.tilted ? 2 : 4);  // 2 bands, 3 bands, frame, checker
    const int cellsX = kind == 3 ? 2 : kind == 2 ? 3 : across ? kind + 2 : 1;
    const int cellsY = kind == 3 ? 2 : kind == 2 ? 3 : across ? 1 : kind + 2;
    const int w = 1 + random.below(window / cellsX), h = 1 + random.below(window / cellsY);
    const TevRect all = {random.below(window), random.below(window), w * cellsX, h * cellsY};
    if (w * h < 3) continue;
    if (f.tilted) {
      if (all.x - all.height < 0 || all.x + all.width > window - 1 || all.y + all.width + all.height > window) continue;
    } else if (all.x + all.width > window || all.y + all.height > window) {
      continue;
    }
    // Steps to the neighbouring cell; along a tilted side they go down, too.
    const auto cell = [&](int i, int j) -> TevRect {
      if (!f.tilted) return {all.x + i * w, all.y + j * h, w, h};
      return {all.x + i * w - j * h, all.y + i * w + j * h, w, h};
    };
    f.add(all, -1);
    if (kind == 0) f.add(across ? cell(1, 0) : cell(0, 1), 2);
    if (kind == 1) f.add(across ? cell(1, 0) : cell(0, 1), 3);
    if (kind == 2) f.add(cell(1, 1), 9);
    if (kind == 3) f.add(cell(0, 0), 2), f.add(cell(1, 1), 2);
    return f;
  }
}

// The feature's value as the library forms it, in norms of the window.
float valueOf(const Feature& f, const Tables& t) {
  double sum = 0;
  for (int i = 0; i < f.count; ++i) {
    const TevRect r = f.rects[i];
    const Tev32s area = f.tilted ? t.tilt(r.x + r.width - r.height, r.y + r.width + r.height) -
                                       t.tilt(r.x - r.height, r.y + r.height) - t.tilt(r.x + r.width, r.y + r.width) +
                                       t.tilt(r.x, r.y)
                                 : t.sum(r.x + r.width, r.y + r.height) - t.sum(r.x, r.y + r.height) -
                                       t.sum(r.x + r.width, r.y) + t.sum(r.x, r.y);
    sum += double(f.weights[i]) * area;
  }
  return static_cast<float>(sum / t.norm(0, 0));
}

// ---- The cascade as it grows ----

struct Cascade {
  std::vector<TevRect> rects;
  std::vector<Tev32f> weights;
  std::vector<Tev32s> counts;
  std::vector<Tev8u> tilted;
  std::vector<Tev32f> thresholds, belows, aboves;
  std::vector<Tev32s> stageLengths;
  std::vector<Tev32f> stageThresholds;

  void add(const Feature& f, Tev32f threshold, Tev32f below, Tev32f above) {
    rects.insert(rects.end(), f.rects, f.rects + f.count);
    weights.insert(weights.end(), f.weights, f.weights + f.count);
    counts.push_back(f.count);
    tilted.push_back(f.tilted);
    thresholds.push_back(threshold);
    belows.push_back(below);
    aboves.push_back(above);
  }
  example::CascadeView view() const {
    return {window,
            rects.data(),
            weights.data(),
            counts.data(),
            tilted.data(),
            thresholds.data(),
            belows.data(),
            aboves.data(),
            stageLengths.data(),
            stageThresholds.data(),
            static_cast<int>(stageLengths.size())};
  }
};

bool passes(const std::vector<Stage>& stages, const Patch& patch) { return tablesOf(patch).apply(stages) == 1; }

// Up to mostNegatives windows that all stages so far take for faces: from the patches that are none, and from the
// pictures at every scale. Every such window of the pictures has the same chance.
std::vector<Patch> mistakes(const std::vector<Stage>& stages, const std::vector<Patch>& others,
                            const std::vector<Picture>& pictures, Random& random) {
  std::vector<Patch> found;
  for (const Patch& patch : others)
    if (passes(stages, patch)) found.push_back(patch);
  const std::size_t fixed = found.size();
  std::uint64_t seen = 0;
  for (const Picture& picture : pictures)
    for (double scale = 1; std::min(picture.size.width, picture.size.height) / scale >= 2 * window; scale *= 1.2) {
      const TevSize size = {int(picture.size.width / scale), int(picture.size.height / scale)};
      const auto pixels = example::shrunk(picture.data(), picture.size, size);
      Tables tables(pixels.data(), size, window);
      if (tables.apply(stages) == 0) continue;
      for (int y = 0; y < tables.positions().height; ++y)
        for (int x = 0; x < tables.positions().width; ++x) {
          if (!tables.isLeft(x, y)) continue;
          ++seen;
          std::size_t place = found.size();
          if (place >= mostNegatives) {
            const std::uint64_t drawn = random.bits() % seen;
            if (drawn >= mostNegatives - fixed) continue;
            place = fixed + static_cast<std::size_t>(drawn);
          } else {
            found.emplace_back();
          }
          for (int j = 0; j < window; ++j)
            std::copy_n(&pixels[static_cast<std::size_t>((y + j) * size.width + x)], window,
                        &found[place][static_cast<std::size_t>(j * window)]);
        }
    }
  std::printf("  %llu mistakes in the pictures, %zu of the patches\n", static_cast<unsigned long long>(seen), fixed);
  return found;
}

// A picture in one of its sixteen aspects: turned and mirrored, and also with dark and light exchanged. None of them
// shows a face that the cascade is to find if the picture shows none.
Picture aspect(const Picture& from, int which) {
  const bool transpose = which & 1, flipX = which & 2, flipY = which & 4, negative = which & 8;
  const TevSize size = transpose ? TevSize{from.size.height, from.size.width} : from.size;
  Picture result = example::makePicture(size, 1);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      const int u = transpose ? y : x, v = transpose ? x : y;
      const Tev8u pixel = from.data()[std::ptrdiff_t{flipY ? from.size.height - 1 - v : v} * from.step() +
                                      (flipX ? from.size.width - 1 - u : u)];
      result.data()[std::ptrdiff_t{y} * result.step() + x] = static_cast<Tev8u>(negative ? 255 - pixel : pixel);
    }
  return result;
}

// ---- One stage ----

// The values of a feature at all samples, in steps of equal width between its least and its greatest.
struct Column {
  Feature feature;
  float least, width;
  std::vector<Tev8u> steps;
};
constexpr int stepCount = 256;

struct Stump {
  std::size_t column;
  int step;  // values from this one on are above
  double below, above, error = std::numeric_limits<double>::infinity();
};

// The stump whose votes come closest to the labels (1 and -1) in the weighted least squares.
Stump bestStump(const std::vector<Column>& columns, const std::vector<double>& weights,
                const std::vector<double>& labels) {
  Stump best{};
  for (std::size_t k = 0; k < columns.size(); ++k) {
    double weight[stepCount] = {}, label[stepCount] = {};
    for (std::size_t i = 0; i < weights.size(); ++i) {
      weight[columns[k].steps[i]] += weights[i];
      label[columns[k].steps[i]] += weights[i] * labels[i];
    }
    double allWeight = 0, allLabel = 0;
    for (int s = 0; s < stepCount; ++s) allWeight += weight[s], allLabel += label[s];
    double lowWeight = 0, lowLabel = 0;
    for (int s = 1; s < stepCount; ++s) {
      lowWeight += weight[s - 1];
      lowLabel += label[s - 1];
      const double highWeight = allWeight - lowWeight, highLabel = allLabel - lowLabel;
      if (lowWeight < 1e-9 || highWeight < 1e-9) continue;
      const double below = lowLabel / lowWeight, above = highLabel / highWeight;
      const double error = allWeight - lowLabel * below - highLabel * above;
      if (error < best.error) best = {k, s, below, above, error};
    }
  }
  return best;
}

// Adds a stage to the cascade.
void grow(Cascade& cascade, const std::vector<Patch>& faces, const std::vector<Patch>& negatives, Random& random) {
  std::vector<Tables> tables;
  for (const Patch& p : faces) tables.push_back(tablesOf(p));
  for (const Patch& p : negatives) tables.push_back(tablesOf(p));
  const std::size_t n = tables.size(), faceCount = faces.size();

  std::vector<Column> columns;
  std::vector<float> values(n);
  for (int k = 0; k < candidateFeatures; ++k) {
    Column c{draw(random), 0, 0, std::vector<Tev8u>(n)};
    std::transform(tables.begin(), tables.end(), values.begin(),
                   [&](const Tables& t) { return valueOf(c.feature, t); });
    const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
    c.least = *least;
    c.width = (*greatest - *least) / stepCount;
    if (!(c.width > 0)) continue;
    for (std::size_t i = 0; i < n; ++i)
      c.steps[i] = static_cast<Tev8u>(std::clamp((values[i] - c.least) / c.width, 0.0F, stepCount - 1.0F));
    columns.push_back(std::move(c));
  }

  std::vector<double> labels(n), weights(n), votes(n);
  for (std::size_t i = 0; i < n; ++i) {
    labels[i] = i < faceCount ? 1 : -1;
    weights[i] = 0.5 / double(i < faceCount ? faceCount : n - faceCount);
  }
  int length = 0;
  double threshold = 0, kept = 1;
  while (length < mostClassifiers && kept > falseRate) {
    const Stump stump = bestStump(columns, weights, labels);
    const Column& c = columns[stump.column];
    const auto below = static_cast<Tev32f>(stump.below), above = static_cast<Tev32f>(stump.above);
    const float at = c.least + static_cast<float>(stump.step) * c.width;
    cascade.add(c.feature, at, below, above);
    ++length;
    double sum = 0;
    for (std::size_t i = 0; i < n; ++i) {
      const Tev32f vote = valueOf(c.feature, tables[i]) >= at ? above : below;
      votes[i] += vote;
      weights[i] *= std::exp(-labels[i] * vote);
      sum += weights[i];
    }
    for (double& w : weights) w /= sum;
    std::vector<double> faceVotes(votes.begin(), votes.begin() + static_cast<std::ptrdiff_t>(faceCount));
    const auto last = faceVotes.begin() + static_cast<std::ptrdiff_t>(double(faceCount) * (1 - hitRate));
    std::nth_element(faceVotes.begin(), last, faceVotes.end());
    threshold = *last - 1e-5;  // the threshold is stored as a float
    kept = double(std::count_if(votes.begin() + static_cast<std::ptrdiff_t>(faceCount), votes.end(),
                                [&](double v) { return v >= threshold; })) /
           double(n - faceCount);
  }
  cascade.stageLengths.push_back(length);
  cascade.stageThresholds.push_back(static_cast<Tev32f>(threshold));
  std::printf("stage %zu: %d classifiers on %zu faces and %zu others, %.1f%% of these kept\n",
              cascade.stageLengths.size(), length, faceCount, n - faceCount, 100 * kept);
}

// ---- The file ----

template <class T>
void writeArray(std::FILE* out, const char* type, const char* name, const std::vector<T>& values, const char* format) {
  std::fprintf(out, "inline constexpr %s %s[] = {", type, name);
  std::size_t column = 0;
  for (const T& v : values) {
    char text[64];
    std::snprintf(text, sizeof text, format, v);
    const bool wrap = column == 0 || column + std::strlen(text) + 2 > 110;
    if (wrap) column = 0;
    column += static_cast<std::size_t>(std::fprintf(out, wrap ? "\n    %s," : " %s,", text));
  }
  std::fprintf(out, "\n};\n");
}

bool write(const char* path, const Cascade& c, std::uint64_t seed) {
  std::FILE* const out = std::fopen(path, "w");
  if (!out) return false;
  std::fprintf(out,
               "// Faces seen from the front, as a cascade of %zu stages over windows of %d x %d pixels. Written by\n"
               "// tools/train with seed %llu; see its README.md.\n"
               "// clang-format off\n#pragma once\n\n#include \"detector.h\"\n\nnamespace example::faces {\n\n",
               c.stageLengths.size(), window, window, static_cast<unsigned long long>(seed));
  std::fprintf(out, "inline constexpr TevRect rects[] = {");
  for (std::size_t i = 0; i < c.rects.size(); ++i)
    std::fprintf(out, "%s{%d, %d, %d, %d},", i % 6 == 0 ? "\n    " : " ", c.rects[i].x, c.rects[i].y, c.rects[i].width,
                 c.rects[i].height);
  std::fprintf(out, "\n};\n");
  writeArray(out, "Tev32f", "weights", c.weights, "%g");
  writeArray(out, "Tev32s", "counts", c.counts, "%d");
  writeArray(out, "Tev8u", "tilted", c.tilted, "%d");
  writeArray(out, "Tev32f", "thresholds", c.thresholds, "%.9g");
  writeArray(out, "Tev32f", "belows", c.belows, "%.9g");
  writeArray(out, "Tev32f", "aboves", c.aboves, "%.9g");
  writeArray(out, "Tev32s", "stageLengths", c.stageLengths, "%d");
  writeArray(out, "Tev32f", "stageThresholds", c.stageThresholds, "%.9g");
  std::fprintf(
      out,
      "\ninline constexpr CascadeView cascade = {%d, rects, weights, counts, tilted, thresholds, belows, aboves,\n"
      "                                        stageLengths, stageThresholds, %zu};\n\n"
      "}  // namespace example::faces\n",
      window, c.stageLengths.size());
  return std::fclose(out) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 5) {
    std::fprintf(stderr, "usage: %s FACES.npy OUT.h SEED PICTURE.png...\n", argv[0]);
    return 2;
  }
  const std::vector<Patch> patches = readPatches(argv[1]);
  if (patches.size() < 2) {
    std::fprintf(stderr, "%s: no patches of %d x %d doubles\n", argv[1], window, window);
    return 2;
  }
  const auto middle = patches.begin() + static_cast<std::ptrdiff_t>(patches.size() / 2);
  const std::uint64_t seed = std::strtoull(argv[3], nullptr, 10);
  Random random(seed);
  std::vector<Patch> faces = variants({patches.begin(), middle}, random);
  std::vector<Patch> others(middle, patches.end());
  for (std::size_t i = 0, n = others.size(); i < n; ++i) others.push_back(moved(others[i], true, 0, 1, 0, 0));
  std::vector<Picture> pictures;
  for (int i = 4; i < argc; ++i) {
    const Picture picture = example::readPicture(argv[i], 1);
    if (picture.pixels.empty()) return 2;
    for (int which = 0; which < 16; ++which) pictures.push_back(aspect(picture, which));
  }

  Cascade cascade;
  for (int stage = 0; stage < mostStages; ++stage) {
    const std::vector<Stage> stages = example::build(cascade.view());
    // The stages are applied by the library from here on: a face that they lose is lost.
    std::erase_if(faces, [&](const Patch& p) { return !passes(stages, p); });
    std::printf("%zu faces are left\n", faces.size());
    const std::vector<Patch> negatives = mistakes(stages, others, pictures, random);
    if (negatives.size() < leastNegatives) break;
    grow(cascade, faces, negatives, random);
    std::fflush(stdout);
  }
  if (!write(argv[2], cascade, seed)) {
    std::fprintf(stderr, "%s: cannot be written\n", argv[2]);
    return 2;
  }
  return 0;
}
