// Where something moved, and when: the motion history image, cut into pieces that moved together.
#include <cmath>
#include <cstdint>

#include "cli/command.h"
#include "cli/paint.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class Show { overlay, history, segments };

struct Options {
  Show show = Show::overlay;
  int threshold = 20, duration = 12, least = 0;
  double gap = 1.5;
};

// A connected piece of the history. Its times rise along its way: `dx`, `dy` are the slopes of place over time.
struct Segment {
  TevRect box{};
  int pixels = 0;
  Tev32f newest = 0;
  double x = 0, y = 0, dx = 0, dy = 0;  // its middle, and pixels a frame
};

Image<Tev32f> motionHistory(const std::vector<Picture>& frames, const Options& o, Result& result) {
  const TevSize size = frames.front().size();
  Image<Tev32f> history(size);
  Image<Tev8u> before = grey8(frames.front()), moved(size);
  Progress progress("history", static_cast<int>(frames.size()) - 1);
  for (std::size_t i = 1; i < frames.size(); ++i) {
    Image<Tev8u> frame = grey8(frames[i]);
    result.timed([&] {
      TEV_CHECK(teviAbsDiff_8u_C1R, before.data(), before.step(), frame.data(), frame.step(), moved.data(),
                moved.step(), size);
      // Differences up to the threshold are noise.
      TEV_CHECK(teviThreshold_Val_8u_C1R, moved.data(), moved.step(), moved.data(), moved.step(), size,
                static_cast<Tev8u>(o.threshold + 1), 0, tevCmpLess);
      TEV_CHECK(teviUpdateMotionHistory_8u32f_C1IR, moved.data(), moved.step(), history.data(), history.step(), size,
                static_cast<Tev32f>(i), static_cast<Tev32f>(o.duration));
    });
    before = std::move(frame);
    progress.step();
  }
  return history;
}

// Regions whose times differ by at most `gap` from neighbour to neighbour, largest first. `labels` numbers them.
std::vector<Segment> segments(const Image<Tev32f>& history, double gap, int least, Image<Tev32s>& labels,
                              Result& result) {
  // Values that no time and no gap reaches: pixels without motion, and pixels of a piece that is being filled.
  constexpr Tev32f still = -1e9F, filled = -2e9F;
  Image<Tev32f> left = history;
  for (Tev32f& time : left.elements)
    if (!(time > 0)) time = still;
  int size = 0;
  TEV_CHECK(teviFloodFillGetSize_Grad, left.size, &size);
  std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
  const auto limit = static_cast<Tev32f>(gap);
  std::vector<Segment> found;
  for (int y = 0; y < left.height(); ++y)
    for (int x = 0; x < left.width(); ++x) {
      if (!(left.at(x, y) > 0)) continue;
      TevConnectedRegion region{};
      result.timed([&] {
        TEV_CHECK(teviFloodFill_Grad8Con_32f_C1IR, left.data(), left.step(), left.size, TevPoint{x, y}, filled, limit,
                  limit, &region, buffer.data());
      });
      Segment segment;
      segment.box = region.rect;
      std::int64_t sumX = 0, sumY = 0;
      double sumT = 0, sumTT = 0, sumXT = 0, sumYT = 0;  // whole numbers: exact
      const TevRect& box = region.rect;
      const auto each = [&](auto work) {
        for (int py = box.y; py < box.y + box.height; ++py)
          for (int px = box.x; px < box.x + box.width; ++px)
            if (left.at(px, py) == filled) work(px, py);
      };
      each([&](int px, int py) {
        const double time = history.at(px, py);
        ++segment.pixels;
        sumX += px, sumY += py;
        sumT += time, sumTT += time * time, sumXT += px * time, sumYT += py * time;
        segment.newest = std::max(segment.newest, history.at(px, py));
      });
      const bool kept = segment.pixels >= least;
      if (kept) {
        const double n = segment.pixels, spread = n * sumTT - sumT * sumT;
        segment.x = static_cast<double>(sumX) / n;
        segment.y = static_cast<double>(sumY) / n;
        if (spread > 0) {
          segment.dx = (n * sumXT - static_cast<double>(sumX) * sumT) / spread;
          segment.dy = (n * sumYT - static_cast<double>(sumY) * sumT) / spread;
        }
        found.push_back(segment);
      }
      const auto label = static_cast<Tev32s>(found.size());
      each([&](int px, int py) {
        left.at(px, py) = still;
        if (kept) labels.at(px, py) = label;
      });
    }
  std::stable_sort(found.begin(), found.end(), [](const Segment& a, const Segment& b) { return a.pixels > b.pixels; });
  return found;
}

// From blue for what is about to be forgotten over red to yellow for what moves now; strong enough to be seen.
void paintHistory(Image<Tev8u>& image, const Image<Tev32f>& history, int last, int duration) {
  const int stops[][3] = {{40, 60, 220}, {220, 40, 60}, {255, 230, 40}};
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) {
      const auto time = static_cast<int>(history.at(x, y));
      if (time == 0) continue;
      const int reach = std::max(1, std::min(duration, last - 1));
      const int place = std::clamp(256 - 256 * (last - time) / reach, 0, 256);  // 256: now
      const int* const a = stops[place / 129];
      const int* const b = a + 3;
      const int part = place < 129 ? 2 * place : 2 * (place - 128);
      for (int c = 0; c < 3; ++c) {
        const int shade = (a[c] * (256 - std::min(part, 256)) + b[c] * std::min(part, 256)) / 256;
        image.at(x, y, c) = static_cast<Tev8u>((image.at(x, y, c) + 3 * shade) / 4);
      }
    }
}

}  // namespace

void history(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("history", "motion", "Where something moved, and when",
                                     "tevcv frames photo.png --count 16 -o shots && "
                                     "tevcv history shots -o history.png --table pieces.csv");
  command.choice("--show", o->show,
                 {{"overlay", Show::overlay}, {"history", Show::history}, {"segments", Show::segments}},
                 "Times over the last frame, blue to yellow; times as grey; pieces that moved together");
  command.option("--threshold", o->threshold, "Largest difference from frame to frame that is no motion")
      .check(CLI::Range(0, 254));
  command.option("--duration", o->duration, "Frames after which motion is forgotten").check(CLI::Range(0, 1000000));
  command.option("--gap", o->gap, "Frames between neighbours of one piece at most").check(CLI::Range(0.0, 1e6));
  command.option("--least", o->least, "Pixels of a piece at least, 0: a thousandth of the picture")
      .check(CLI::Range(0, 100000000));
  command.withTable().withDepth().sequence([o](const std::vector<Picture>& frames, Result& result) {
    const TevSize size = frames.front().size();
    const int last = static_cast<int>(frames.size()) - 1;
    const Image<Tev32f> times = motionHistory(frames, *o, result);
    const int least = o->least > 0 ? o->least : std::max(1, size.width * size.height / 1000);
    Image<Tev32s> labels(size);
    const std::vector<Segment> found = segments(times, o->gap, least, labels, result);
    result.table.columns = {"x", "y", "width", "height", "pixels", "newest", "middle x", "middle y", "dx", "dy"};
    const auto rounded = [](double value) { return std::floor(value * 1e6 + 0.5) / 1e6; };
    for (const Segment& s : found)
      result.table.add(s.box.x, s.box.y, s.box.width, s.box.height, s.pixels, s.newest, rounded(s.x), rounded(s.y),
                       rounded(s.dx), rounded(s.dy));
    if (o->show == Show::history) {
      const double oldest = std::max(0, last - std::min(o->duration, last) - 1);
      result.picture = view(times, result.deep, oldest, std::max(last, 1));
      return;
    }
    Image<Tev8u> shown = o->show == Show::segments ? viewLabels(labels) : colour8(frames.back());
    if (o->show == Show::overlay) paintHistory(shown, times, last, o->duration);
    for (const Segment& s : found) {
      paintBox(shown, s.box, white, 1);
      paintArrow(shown, s.x, s.y, s.x + 4 * s.dx, s.y + 4 * s.dy, green, 2);
    }
    result.picture = shown;
  });
}

}  // namespace cli
