#include "tevcv_internal/distance.h"

#include <bit>
#include <cstdint>
#include <limits>
#include <vector>

#include "kit/kit.h"

using kit::grid;
using kit::Image;
using kit::Random;

namespace {

// Gradients as grids of their x and y parts.
struct Parts {
  Image<Tev16s> x, y;
};

template <int channels>
Parts parts(const Image<Tev16s, 2 * channels>& g, int channel = 0) {
  Parts p{Image<Tev16s>(g.width(), g.height()), Image<Tev16s>(g.width(), g.height())};
  for (int y = 0; y < g.height(); ++y)
    for (int x = 0; x < g.width(); ++x) {
      p.x.set(x, y, g.at(x, y, 2 * channel));
      p.y.set(x, y, g.at(x, y, 2 * channel + 1));
    }
  return p;
}

Image<Tev8u> everywhere(int width, int height) {
  Image<Tev8u> mask(width, height);
  mask.fill(1);
  return mask;
}

const auto& slope() {
  static const auto image = grid<Tev8u>({{10, 20, 50, 40}, {10, 30, 50, 0}, {255, 0, 9, 7}});
  return image;
}

}  // namespace

TEST(NoZero, CountsAndBoxesWhatIsSet) {
  const auto mask = grid<Tev8u>({{0, 0, 0, 0, 0}, {0, 0, 7, 0, 0}, {0, 255, 0, 1, 0}, {0, 0, 0, 0, 0}});
  int count = 0;
  TevRect box{};
  owncvNoZero_8u(mask.data(), mask.step(), 5, 4, &count, &box);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(box.x, 1);
  EXPECT_EQ(box.y, 1);
  EXPECT_EQ(box.width, 3);
  EXPECT_EQ(box.height, 2);
  owncvNoZero_8u(mask.data(), mask.step(), 5, 1, &count, &box);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(box.x, -1);
  EXPECT_EQ(box.y, -1);
  EXPECT_EQ(box.width, 0);
  EXPECT_EQ(box.height, 0);
}

TEST(FillNoZero, ListsPositiveDistancesWithTheirIndexInTheLowBits) {
  constexpr float nan = std::numeric_limits<float>::quiet_NaN();
  const auto t = grid<Tev32f>({{0, 1.5F, -2}, {3, nan, 1.0e-40F}});
  std::vector<Tev64f> list(5, -1);
  EXPECT_EQ(owncvFillNoZero_32f(t.data(), t.step(), 3, 2, list.data(), 5), 3);
  const auto bits = [&](int i) { return std::bit_cast<std::uint64_t>(list[size_t(i)]); };
  EXPECT_EQ(bits(0), std::bit_cast<std::uint64_t>(1.5) | 1);
  EXPECT_EQ(bits(1), std::bit_cast<std::uint64_t>(3.0) | 3);
  EXPECT_EQ(bits(2), std::bit_cast<std::uint64_t>(double{1.0e-40F}) | 5);
  EXPECT_EQ(list[3], -1);
  // No more than asked for.
  list.assign(5, -1);
  EXPECT_EQ(owncvFillNoZero_32f(t.data(), t.step(), 3, 2, list.data(), 1), 1);
  EXPECT_EQ(list[1], -1);
}

TEST(Gradient, IsTwiceTheCentralDifferenceAndOneDifferenceOnTheEdge) {
  Image<Tev16s, 2> g(4, 3);
  owncvGradient_8u16s_C1MR(slope().data(), slope().step(), everywhere(4, 3).data(), 4, g.data(), g.step(), 4, 3);
  EXPECT_SAME_IMAGE(parts<1>(g).x, grid<Tev16s>({{10, 80, 40, -10}, {20, 80, -60, -50}, {-255, -492, 14, -2}}));
  EXPECT_SAME_IMAGE(parts<1>(g).y, grid<Tev16s>({{0, 10, 0, -40}, {490, -40, -82, -66}, {245, -30, -41, 7}}));
}

TEST(AbsGradient, SumsTheMagnitudesOfBothDifferencesAndDoublesTheOneOnTheEdge) {
  Image<Tev16s, 2> g(4, 3);
  owncvAbsGradient_8u16s_C1MR(slope().data(), slope().step(), everywhere(4, 3).data(), 4, g.data(), g.step(), 4, 3);
  EXPECT_SAME_IMAGE(parts<1>(g).x, grid<Tev16s>({{20, 40, 40, 20}, {40, 40, 70, 100}, {510, 264, 11, 4}}));
  EXPECT_SAME_IMAGE(parts<1>(g).y, grid<Tev16s>({{0, 20, 0, 80}, {245, 40, 41, 47}, {490, 60, 82, 14}}));
}

TEST(Gradient, OfASinglePixelIsZero) {
  const auto one = grid<Tev8u>({{200}});
  const auto time = grid<Tev32f>({{3}});
  Image<Tev16s, 2> g(1, 1), zero(1, 1);
  zero.fill(0);
  owncvGradient_8u16s_C1MR(one.data(), 1, one.data(), 1, g.fill(9).data(), g.step(), 1, 1);
  EXPECT_SAME_IMAGE(g, zero);
  owncvAbsGradient_8u16s_C1MR(one.data(), 1, one.data(), 1, g.fill(9).data(), g.step(), 1, 1);
  EXPECT_SAME_IMAGE(g, zero);
  owncvGradient_32f16s_C1MR_Sfs(time.data(), 4, one.data(), 1, g.fill(9).data(), g.step(), 1, 1, -12);
  EXPECT_SAME_IMAGE(g, zero);
}

TEST(Gradient, OfDistancesIsScaledAndTruncated) {
  const auto t = grid<Tev32f>({{0, 0.75F, 2}, {1, 0.7F, -0.00030517578F}});
  Image<Tev16s, 2> g(3, 2);
  owncvGradient_32f16s_C1MR_Sfs(t.data(), t.step(), everywhere(3, 2).data(), 3, g.data(), g.step(), 3, 2, -12);
  EXPECT_SAME_IMAGE(parts<1>(g).x, grid<Tev16s>({{3072, 4096, 5120}, {-1228, -2048, -2868}}));
  EXPECT_SAME_IMAGE(parts<1>(g).y, grid<Tev16s>({{4096, -204, -8193}, {4096, -204, -8193}}));
  owncvGradient_32f16s_C1MR_Sfs(t.data(), t.step(), everywhere(3, 2).data(), 3, g.data(), g.step(), 3, 2, 0);
  EXPECT_SAME_IMAGE(parts<1>(g).x, grid<Tev16s>({{0, 1, 1}, {0, 0, 0}}));
}

TEST(Gradient, IsStoredWhereTheMaskIsSetAndForEachChannel) {
  Random random;
  for (int trial = 0; trial < 30; ++trial) {
    const int w = random.between(1, 9), h = random.between(1, 9);
    const auto src = random.image<Tev8u, 3>(w, h);
    const auto mask = random.mask(w, h), unknown = random.mask(w, h);
    Image<Tev8u> channel(w, h);
    Image<Tev16s, 6> g(w, h);
    Image<Tev16s, 2> g1(w, h), selected(w, h);
    for (int form = 0; form < 4; ++form) {
      g.fill(-7);
      const auto plain3 = form == 0 ? owncvGradient_8u16s_C3MR : owncvAbsGradient_8u16s_C3MR;
      const auto plain1 = form == 0 ? owncvGradient_8u16s_C1MR : owncvAbsGradient_8u16s_C1MR;
      const auto known3 = form == 2 ? owncvModGradient_8u16s_C3MR : owncvModAbsGradient_8u16s_C3MR;
      const auto known1 = form == 2 ? owncvModGradient_8u16s_C1MR : owncvModAbsGradient_8u16s_C1MR;
      if (form < 2)
        plain3(src.data(), src.step(), mask.data(), mask.step(), g.data(), g.step(), w, h);
      else
        known3(src.data(), src.step(), mask.data(), mask.step(), unknown.data(), unknown.step(), g.data(), g.step(), w,
               h);
      for (int c = 0; c < 3; ++c) {
        for (int y = 0; y < h; ++y)
          for (int x = 0; x < w; ++x) channel.set(x, y, src.at(x, y, c));
        g1.fill(-7);
        const auto all = everywhere(w, h);
        if (form < 2)
          plain1(channel.data(), w, all.data(), w, g1.data(), g1.step(), w, h);
        else
          known1(channel.data(), w, all.data(), w, unknown.data(), unknown.step(), g1.data(), g1.step(), w, h);
        for (int y = 0; y < h; ++y)
          for (int i = 0; i < 2 * w; ++i) selected.set(i, y, mask.at(i / 2, y) ? g1.get(i, y) : Tev16s{-7});
        ASSERT_SAME_IMAGE(parts<3>(g, c).x, parts<1>(selected).x);
        ASSERT_SAME_IMAGE(parts<3>(g, c).y, parts<1>(selected).y);
      }
    }
  }
}

TEST(ModGradient, LooksAtKnownNeighboursAlone) {
  // One unknown pixel: its neighbours take the difference on their other side, the edge counts as unknown.
  const auto unknown = grid<Tev8u>({{0, 0, 0, 0}, {0, 255, 0, 0}, {0, 0, 0, 0}});
  Image<Tev16s, 2> g(4, 3);
  g.fill(1000);
  owncvModGradient_8u16s_C1MR(slope().data(), slope().step(), everywhere(4, 3).data(), 4, unknown.data(), 4, g.data(),
                              g.step(), 4, 3);
  EXPECT_SAME_IMAGE(parts<1>(g).x, grid<Tev16s>({{10, 1000, 1000, -10}, {0, 1000, -50, -50}, {-255, 1000, 1000, -2}}));
  EXPECT_SAME_IMAGE(parts<1>(g).y, grid<Tev16s>({{0, 0, 0, -40}, {1000, 1000, 1000, 1000}, {245, 0, -41, 7}}));
  g.fill(1000);
  owncvModAbsGradient_8u16s_C1MR(slope().data(), slope().step(), everywhere(4, 3).data(), 4, unknown.data(), 4,
                                 g.data(), g.step(), 4, 3);
  EXPECT_SAME_IMAGE(parts<1>(g).x, grid<Tev16s>({{20, 1000, 1000, 20}, {0, 1000, 100, 100}, {510, 1000, 1000, 4}}));
  EXPECT_SAME_IMAGE(parts<1>(g).y, grid<Tev16s>({{0, 0, 0, 80}, {1000, 1000, 1000, 1000}, {490, 0, 82, 14}}));
}

TEST(ModGradientPoint, CorrectsThePixelAndItsFourNeighboursInsideTheImage) {
  Random random;
  for (int trial = 0; trial < 60; ++trial) {
    const int w = random.between(1, 7), h = random.between(1, 7);
    const int x0 = random.between(0, w - 1), y0 = random.between(0, h - 1);
    const auto unknown = random.mask(w, h);
    Image<Tev8u> around(w, h);
    around.fill(0);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x)
        if (std::abs(x - x0) + std::abs(y - y0) <= 1) around.set(x, y, 1);
    const auto src1 = random.image<Tev8u>(w, h);
    const auto src3 = random.image<Tev8u, 3>(w, h);
    Image<Tev16s, 2> g1(w, h), e1(w, h);
    Image<Tev16s, 6> g3(w, h), e3(w, h);
    const Tev8u* const u = unknown.data();
    const int us = unknown.step();
    g1.fill(5), e1.fill(5), g3.fill(5), e3.fill(5);
    owncvModGradientPoint_8u16s_C1MR(src1.data(), src1.step(), u, us, g1.data(), g1.step(), w, h, x0, y0);
    owncvModGradient_8u16s_C1MR(src1.data(), src1.step(), around.data(), w, u, us, e1.data(), e1.step(), w, h);
    ASSERT_SAME_IMAGE(g1, e1);
    owncvModGradientPoint_8u16s_C3MR(src3.data(), src3.step(), u, us, g3.data(), g3.step(), w, h, x0, y0);
    owncvModGradient_8u16s_C3MR(src3.data(), src3.step(), around.data(), w, u, us, e3.data(), e3.step(), w, h);
    ASSERT_SAME_IMAGE(g3, e3);
    g1.fill(5), e1.fill(5), g3.fill(5), e3.fill(5);
    owncvModAbsGradientPoint_8u16s_C1MR(src1.data(), src1.step(), u, us, g1.data(), g1.step(), w, h, x0, y0);
    owncvModAbsGradient_8u16s_C1MR(src1.data(), src1.step(), around.data(), w, u, us, e1.data(), e1.step(), w, h);
    ASSERT_SAME_IMAGE(g1, e1);
    owncvModAbsGradientPoint_8u16s_C3MR(src3.data(), src3.step(), u, us, g3.data(), g3.step(), w, h, x0, y0);
    owncvModAbsGradient_8u16s_C3MR(src3.data(), src3.step(), around.data(), w, u, us, e3.data(), e3.step(), w, h);
    ASSERT_SAME_IMAGE(g3, e3);
  }
}
