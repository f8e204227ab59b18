// Distance transforms: how far every pixel is from the nearest edge or from the nearest pixel outside of an object.
#include <cmath>

#include "cli/binary.h"
#include "cli/command.h"
#include "cli/contours.h"
#include "cli/features.h"
#include "tevcv.h"

namespace cli {
namespace {

enum class From { edges, inside, outside };
enum class Method { exact, small, large };
enum class Type { floats, words, bytes };

struct Options {
  From from = From::edges;
  BinaryOptions binary;
  float low = 60, high = 140;
  Method method = Method::exact;
  int norm = tevNormL2;
  std::vector<double> weights;
  Type type = Type::floats;
  int scale = 0;
  ContourOptions contours;
};

template <class T>
Image<Tev32f> asFloats(const Image<T>& image) {
  Image<Tev32f> result(image.size);
  std::copy(image.elements.begin(), image.elements.end(), result.elements.begin());
  return result;
}

// Distances to the zeros of `zeros`, by the moves of a small or large mask.
Image<Tev32f> chamfer(const Image<Tev8u>& zeros, const Options& o, Result& result) {
  const TevSize roi = zeros.size;
  const bool small = o.method == Method::small;
  const int kernel = small ? 3 : 5;
  Tev32s whole[3] = {};
  Tev32f metrics[3] = {};
  TEV_CHECK(teviGetDistanceTransformMask_32s, kernel, o.norm, whole);
  TEV_CHECK(teviGetDistanceTransformMask_32f, kernel, o.norm, metrics);
  for (std::size_t i = 0; i < o.weights.size(); ++i) {
    metrics[i] = static_cast<Tev32f>(o.weights[i]);
    whole[i] = static_cast<Tev32s>(std::floor(o.weights[i] + 0.5));
  }
  if (o.type == Type::bytes) {
    Image<Tev8u> far(roi);
    result.timed([&] {
      check("teviDistanceTransform_8u_C1R",
            (small ? teviDistanceTransform_3x3_8u_C1R : teviDistanceTransform_5x5_8u_C1R)(
                zeros.data(), zeros.step(), far.data(), far.step(), roi, whole));
    });
    return asFloats(far);
  }
  if (o.type == Type::words) {
    Image<Tev16u> far(roi);
    result.timed([&] {
      check("teviDistanceTransform_8u16u_C1R",
            (small ? teviDistanceTransform_3x3_8u16u_C1R : teviDistanceTransform_5x5_8u16u_C1R)(
                zeros.data(), zeros.step(), far.data(), far.step(), roi, whole));
    });
    return asFloats(far);
  }
  Image<Tev32f> far(roi);
  result.timed([&] {
    check("teviDistanceTransform_8u32f_C1R",
          (small ? teviDistanceTransform_3x3_8u32f_C1R : teviDistanceTransform_5x5_8u32f_C1R)(
              zeros.data(), zeros.step(), far.data(), far.step(), roi, metrics));
  });
  return far;
}

Image<Tev32f> exact(const Image<Tev8u>& zeros, const Options& o, Result& result) {
  const TevSize roi = zeros.size;
  Image<Tev32f> far(roi);
  Image<Tev16u> words(o.type == Type::words ? roi : TevSize{});
  result.timed([&] {
    int size = 0;
    if (o.type == Type::words) {
      TEV_CHECK(teviTrueDistanceTransformGetBufferSize_8u16u_C1RSfs, roi, &size);
      std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
      TEV_CHECK(teviTrueDistanceTransform_8u16u_C1RSfs, zeros.data(), zeros.step(), words.data(), words.step(), roi,
                o.scale, buffer.data());
    } else {
      TEV_CHECK(teviTrueDistanceTransformGetBufferSize_8u32f_C1R, roi, &size);
      std::vector<Tev8u> buffer(static_cast<std::size_t>(size));
      TEV_CHECK(teviTrueDistanceTransform_8u32f_C1R, zeros.data(), zeros.step(), far.data(), far.step(), roi,
                buffer.data());
    }
  });
  return o.type == Type::words ? asFloats(words) : far;
}

}  // namespace

void distance(Program& program) {
  auto o = std::make_shared<Options>();
  Command& command = program.command("distance", "distance", "Distances from edges, or within objects",
                                     "tevcv distance photo.png --from edges --show contours -o distance.png");
  command.choice("--from", o->from, {{"edges", From::edges}, {"inside", From::inside}, {"outside", From::outside}},
                 "From Canny's edges, or inside or outside of objects");
  addBinaryOptions(command, o->binary);
  command.option("--low", o->low, "Gradient that goes on an edge").check(CLI::Range(0.0F, 1e6F));
  command.option("--high", o->high, "Gradient that starts an edge").check(CLI::Range(0.0F, 1e6F));
  command.choice("--method", o->method, {{"true", Method::exact}, {"3x3", Method::small}, {"5x5", Method::large}},
                 "True distances, or the moves of a chamfer mask");
  command.choice("--metric", o->norm, {{"inf", tevNormInf}, {"l1", tevNormL1}, {"l2", tevNormL2}},
                 "What a chamfer mask comes near to");
  command.app()
      .add_option("--weights", o->weights, "Own costs of straight, diagonal and (5x5) knight's moves")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->check(CLI::Range(0.01, 10000.0))
      ->type_name("A,B[,C]");
  command.choice("--type", o->type, {{"float", Type::floats}, {"words", Type::words}, {"bytes", Type::bytes}},
                 "Numbers; whole ones of a chamfer mask count in its own units, bytes stop at 255");
  command.option("--scale", o->scale, "True distances in words: divided by 2 to this power").check(CLI::Range(-8, 8));
  addContourOptions(command, o->contours);
  command.withTable().withDepth().eachPicture([o](const Picture& picture, Result& result) {
    if (o->low > o->high) throw UserError("--low: is above --high");
    if (!o->weights.empty()) {
      if (o->method == Method::exact) throw UserError("--weights: go with --method 3x3 and 5x5 alone");
      if (o->weights.size() != (o->method == Method::small ? 2U : 3U))
        throw UserError("--weights: --method 3x3 has two, 5x5 three");
      if (o->type != Type::floats && *std::min_element(o->weights.begin(), o->weights.end()) < 0.5)
        throw UserError("--weights: are at least 1 with --type words and bytes");
    }
    if (o->method == Method::exact && o->type == Type::bytes)
      throw UserError("--type: bytes go with --method 3x3 and 5x5 alone");
    const Image<Tev8u> grey = grey8(picture);
    Image<Tev8u> zeros;
    if (o->from == From::edges)
      zeros = inverted(edgeMap(grey, o->low, o->high, result));
    else
      zeros = binary(grey, o->binary, result);
    if (o->from == From::outside) zeros = inverted(zeros);
    if (std::find(zeros.elements.begin(), zeros.elements.end(), 0) == zeros.elements.end())
      throw UserError(picture.name + ": there is nothing to measure from; try another --from or --threshold");
    const Image<Tev32f> far = o->method == Method::exact ? exact(zeros, *o, result) : chamfer(zeros, *o, result);
    Tev32f least = 0, greatest = 0;
    TevPoint where{}, there{};
    result.timed([&] {
      TEV_CHECK(teviMinMaxIndx_32f_C1R, far.data(), far.step(), far.size, &least, &greatest, &where, &there);
    });
    result.table.columns = {"greatest", "x", "y"};
    result.table.add(greatest, there.x, there.y);
    showContours(far, picture, o->contours, result);
  });
}

}  // namespace cli
