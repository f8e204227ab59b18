// Points followed from picture to picture: peaks of the smaller eigenvalue in the first one, then pyramidal optical
// flow.
#include <numeric>

#include "cli/command.h"
#include "cli/features.h"
#include "cli/paint.h"
#include "tevcv.h"

namespace cli {
namespace {

struct Options {
  int most = 300, distance = 8;
  double quality = 0.02;
  int window = 15, levels = 3, iterations = 20;
  double accuracy = 0.02, check = 1;
  double gain = 0;
};

struct Point {
  Tev32f x = 0, y = 0;
};

// A point's way through the frames; `lost` is the frame that it was not found in, 0 while it is followed.
struct Track {
  std::vector<Point> way;
  int lost = 0;
  Tev32f error = 0;
};

// Places that can be told from their neighbours in both directions, strongest first.
std::vector<Track> startingPoints(const Picture& picture, const Options& o, Result& result) {
  const TevSize roi = picture.size();
  Image<Tev32f> measure({paddedWidth(roi.width), roi.height});
  const Image<Tev8u> grey = grey8(picture);
  const Image<Tev32f> greyFine = picture.deep() ? greyFloat(picture) : Image<Tev32f>();
  result.timed([&] {
    int size = 0;
    TEV_CHECK(teviMinEigenValGetBufferSize_32f_C1R, roi, 3, 5, &size);
    int sizeBytes = 0;
    TEV_CHECK(teviMinEigenValGetBufferSize_8u32f_C1R, roi, 3, 5, &sizeBytes);
    std::vector<Tev8u> buffer(static_cast<std::size_t>(std::max(size, sizeBytes)));
    if (picture.deep())
      TEV_CHECK(teviMinEigenVal_32f_C1R, greyFine.data(), greyFine.step(), measure.data(), measure.step(), roi,
                tevCornerKernelSobel, 3, 5, buffer.data());
    else
      TEV_CHECK(teviMinEigenVal_8u32f_C1R, grey.data(), grey.step(), measure.data(), measure.step(), roi,
                tevCornerKernelSobel, 3, 5, buffer.data());
  });
  std::vector<Track> tracks;
  const auto threshold = static_cast<Tev32f>(strongest(measure, roi) * o.quality);
  for (const TevPoint& p : strongestPeaks(measure, roi, {threshold, o.most, o.distance}, result))
    tracks.push_back({{{static_cast<Tev32f>(p.x), static_cast<Tev32f>(p.y)}}, 0, 0});
  return tracks;
}

void halve(const Image<Tev8u>& image, Image<Tev8u>& smaller) {
  int size = 0;
  TEV_CHECK(teviPyrDownGetBufSize_Gauss5x5, image.width(), tevDataType8u, 1, &size);
  std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
  TEV_CHECK(teviPyrDown_Gauss5x5_8u_C1R, image.data(), image.step(), smaller.data(), smaller.step(), image.size,
            buffer.data());
}
void halve(const Image<Tev16u>& image, Image<Tev16u>& smaller) {
  const Tev16s kernel[] = {1, 4, 6, 4, 1};
  TevPyramidLayerState* state = nullptr;
  TEV_CHECK(teviPyramidLayerDownInitAlloc_16u_C1R, &state, image.size, 2, kernel, 5, 2);
  const TevStatus status = teviPyramidLayerDown_16u_C1R(image.data(), image.step(), image.size, smaller.data(),
                                                        smaller.step(), smaller.size, state);
  teviPyramidLayerDownFree_16u_C1R(state);
  check("teviPyramidLayerDown_16u_C1R", status);
}

// A picture with its smaller levels, in the record that the flow reads.
template <class T>
struct Levels {
  std::unique_ptr<TevPyramid, TevStatus (*)(TevPyramid*)> record{nullptr, teviPyramidFree};
  std::vector<Image<T>> images;

  Levels(Image<T> image, int count) {
    TevPyramid* made = nullptr;
    TEV_CHECK(teviPyramidInitAlloc, &made, std::max(count, 1), image.size, 2);
    record.reset(made);
    images.push_back(std::move(image));
    for (int i = 1; i <= std::min(count, made->level); ++i) {
      Image<T> smaller(made->roi[i]);
      halve(images.back(), smaller);
      images.push_back(std::move(smaller));
    }
    for (std::size_t i = 0; i < images.size(); ++i) {
      made->images[i] = images[i].data();
      made->steps[i] = images[i].step();
    }
  }
  int highest() const { return static_cast<int>(images.size()) - 1; }
};

// The flow of one element type.
struct Bytes {
  using Element = Tev8u;
  static constexpr auto init = teviOpticalFlowPyrLKInitAlloc_8u_C1R;
  static constexpr auto flow = teviOpticalFlowPyrLK_8u_C1R;
  static constexpr auto free = teviOpticalFlowPyrLKFree_8u_C1R;
  static Image<Tev8u> grey(const Picture& picture) { return grey8(picture); }
};
struct Words {
  using Element = Tev16u;
  static constexpr auto init = teviOpticalFlowPyrLKInitAlloc_16u_C1R;
  static constexpr auto flow = teviOpticalFlowPyrLK_16u_C1R;
  static constexpr auto free = teviOpticalFlowPyrLKFree_16u_C1R;
  static Image<Tev16u> grey(const Picture& picture) { return grey16(picture); }
};

template <class Members>
void follow(const std::vector<Picture>& frames, std::vector<Track>& tracks, const Options& o, Result& result) {
  using T = typename Members::Element;
  const TevSize roi = frames.front().size();
  // Regions above the pictures' size: every level shares its gradients among all points.
  TevOptFlowPyrLKState* made = nullptr;
  result.timed([&] { check("flow's state", Members::init(&made, {roi.width + 1, roi.height + 1}, o.window, 0)); });
  const std::unique_ptr<TevOptFlowPyrLKState, TevStatus (*)(TevOptFlowPyrLKState*)> state(made, Members::free);
  const auto levels = [&](const Picture& picture) {
    Image<T> grey = Members::grey(picture);
    std::unique_ptr<Levels<T>> result_;
    result.timed([&] { result_ = std::make_unique<Levels<T>>(std::move(grey), o.levels); });
    return result_;
  };
  Progress progress("track", static_cast<int>(frames.size()) - 1);
  auto before = levels(frames.front());
  for (std::size_t i = 1; i < frames.size(); ++i) {
    auto after = levels(frames[i]);
    std::vector<Track*> live;
    std::vector<Point> from;
    for (Track& track : tracks)
      if (track.lost == 0) {
        live.push_back(&track);
        from.push_back(track.way.back());
      }
    if (live.empty()) break;
    const std::size_t count = live.size();
    std::vector<Point> to = from, back;
    std::vector<Tev8s> lost(count), lostBack(count);
    std::vector<Tev32f> error(count), errorBack(count);
    const auto flow = [&](const Levels<T>& a, const Levels<T>& b, const std::vector<Point>& start,
                          std::vector<Point>& end, std::vector<Tev8s>& status, std::vector<Tev32f>& difference) {
      result.timed([&] {
        check("teviOpticalFlowPyrLK",
              Members::flow(a.record.get(), b.record.get(), &start[0].x, &end[0].x, status.data(), difference.data(),
                            static_cast<int>(count), o.window, a.highest(), o.iterations,
                            static_cast<Tev32f>(o.accuracy), state.get()));
      });
    };
    flow(*before, *after, from, to, lost, error);
    if (o.check > 0) {
      back = to;
      flow(*after, *before, to, back, lostBack, errorBack);
    }
    for (std::size_t k = 0; k < count; ++k) {
      const bool inside = to[k].x >= 0 && to[k].y >= 0 && to[k].x <= static_cast<Tev32f>(roi.width - 1) &&
                          to[k].y <= static_cast<Tev32f>(roi.height - 1);
      bool good = lost[k] == 0 && inside;
      if (good && o.check > 0) {  // the way back leads home
        const double dx = static_cast<double>(back[k].x) - from[k].x, dy = static_cast<double>(back[k].y) - from[k].y;
        good = lostBack[k] == 0 && dx * dx + dy * dy <= o.check * o.check;
      }
      if (good) {
        live[k]->way.push_back(to[k]);
        live[k]->error = error[k];
      } else {
        live[k]->lost = static_cast<int>(i);
      }
    }
    before = std::move(after);
    progress.step();
  }
}

// A factor for arrows between two pictures, so that the middle one of their lengths is a thirtieth of the width.
double arrowGain(const std::vector<Track>& tracks, int width) {
  std::vector<double> squares;
  for (const Track& track : tracks) {
    const double dx = static_cast<double>(track.way.back().x) - track.way.front().x,
                 dy = static_cast<double>(track.way.back().y) - track.way.front().y;
    if (track.lost == 0) squares.push_back(dx * dx + dy * dy);
  }
  if (squares.empty()) return 1;
  const auto middle = squares.begin() + static_cast<std::ptrdiff_t>(squares.size() / 2);
  std::nth_element(squares.begin(), middle, squares.end());
  const double length = std::sqrt(*middle);
  return length > 0 ? std::clamp(std::floor(width / 30.0 / length), 1.0, 20.0) : 1;
}

// Where each point went: arrows over the first picture of two, paths over the last of a sequence.
Image<Tev8u> draw(const std::vector<Picture>& frames, const std::vector<Track>& tracks, const Options& o) {
  const bool pair = frames.size() == 2;
  Image<Tev8u> image = colour8(pair ? frames.front() : frames.back());
  const double gain = o.gain > 0 ? o.gain : pair ? arrowGain(tracks, image.width()) : 1;
  const auto nearest = [](Tev32f value) { return static_cast<int>(std::floor(static_cast<double>(value) + 0.5)); };
  for (const Track& track : tracks) {
    const Point start = track.way.front(), end = track.way.back();
    if (track.lost != 0) {
      paintCross(image, nearest(end.x), nearest(end.y), 2, red);
    } else if (pair) {
      paintArrow(image, start.x, start.y, start.x + gain * (static_cast<double>(end.x) - start.x),
                 start.y + gain * (static_cast<double>(end.y) - start.y), yellow);
      paintPoint(image, nearest(start.x), nearest(start.y), green, 2);
    } else {
      for (std::size_t i = 1; i < track.way.size(); ++i)
        paintLine(image, track.way[i - 1].x, track.way[i - 1].y, track.way[i].x, track.way[i].y, yellow);
      paintPoint(image, nearest(end.x), nearest(end.y), green, 3);
    }
  }
  return image;
}

}  // namespace

void track(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("track", "motion", "Follow points from picture to picture",
                                     "tevcv frames photo.png --count 8 --pan-x 2 -o shots && "
                                     "tevcv track shots -o tracked.png --table points.csv");
  command.option("--most", o->most, "Points to follow").check(CLI::Range(1, 1000000));
  command.option("--distance", o->distance, "Least distance of two points at the start").check(CLI::Range(1, 1000));
  command.option("--quality", o->quality, "Least strength of a point, as a share of the strongest")
      .check(CLI::Range(0.0, 1.0));
  command.option("--window", o->window, "Side of the window that is compared").check(CLI::Range(3, 101));
  command.option("--levels", o->levels, "Halvings above the picture; more find longer ways").check(CLI::Range(0, 10));
  command.option("--iterations", o->iterations, "Most steps on each level").check(CLI::Range(1, 1000));
  command.option("--accuracy", o->accuracy, "Pixels; a shorter step ends the search on a level")
      .check(CLI::Range(0.0, 10.0));
  command
      .option("--check", o->check, "Follow each point back too, and drop it if it ends farther off, in pixels; 0: no")
      .check(CLI::Range(0.0, 1000.0));
  command.option("--gain", o->gain, "Factor for the arrows between two pictures, 0: one that shows them well")
      .check(CLI::Range(0.0, 100.0));
  command.withTable().sequence([o](const std::vector<Picture>& frames, Result& result) {
    const TevSize roi = frames.front().size();
    if (std::min(roi.width, roi.height) < 3)
      throw UserError(frames.front().name + ": is too small for points to follow, 3 x 3 pixels are needed");
    std::vector<Track> tracks = startingPoints(frames.front(), *o, result);
    const bool deep = std::all_of(frames.begin(), frames.end(), [](const Picture& frame) { return frame.deep(); });
    if (deep)
      follow<Words>(frames, tracks, *o, result);
    else
      follow<Bytes>(frames, tracks, *o, result);
    result.table.columns = {"x", "y", "to x", "to y", "lost in", "error"};
    for (const Track& track : tracks)
      result.table.add(track.way.front().x, track.way.front().y, track.way.back().x, track.way.back().y, track.lost,
                       track.error);
    result.picture = draw(frames, tracks, *o);
  });
}

}  // namespace cli
