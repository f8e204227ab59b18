#include "frame/arithmetic.h"

#include "frame/borders.h"
#include "frame/checks.h"
#include "frame/rows.h"
#include "kit/kit.h"

using namespace tevcv;

TEST(Saturate, ClampsToTheTypesRange) {
  EXPECT_EQ(saturate<Tev8u>(-1), 0);
  EXPECT_EQ(saturate<Tev8u>(256), 255);
  EXPECT_EQ(saturate<Tev8u>(128), 128);
  EXPECT_EQ(saturate<Tev8s>(-129), -128);
  EXPECT_EQ(saturate<Tev8s>(128), 127);
  EXPECT_EQ(saturate<Tev16u>(70000), 65535);
  EXPECT_EQ(saturate<Tev16s>(-32769), -32768);
  EXPECT_EQ(saturate<Tev16s>(std::int64_t{1} << 40), 32767);
  EXPECT_EQ(saturate<Tev32s>(std::int64_t{-1} << 40), std::numeric_limits<Tev32s>::min());
}

TEST(ScaleRule, TiesGoToTheEvenNeighbour) {
  EXPECT_EQ(shiftRightTiesToEven(1, 1), 0);
  EXPECT_EQ(shiftRightTiesToEven(2, 1), 1);
  EXPECT_EQ(shiftRightTiesToEven(3, 1), 2);
  EXPECT_EQ(shiftRightTiesToEven(-1, 1), 0);
  EXPECT_EQ(shiftRightTiesToEven(-3, 1), -2);
  for (int shift = 1; shift <= 8; ++shift)
    for (int v = -2000; v <= 2000; ++v)
      ASSERT_EQ(shiftRightTiesToEven(v, shift), static_cast<long>(std::nearbyint(std::ldexp(v, -shift))))
          << v << " >> " << shift;
}

TEST(FloatToInteger, AddsHalfAndTruncates) {
  EXPECT_EQ(addHalfAndTruncate(0.5), 1);
  EXPECT_EQ(addHalfAndTruncate(2.49F), 2);
  EXPECT_EQ(addHalfAndTruncate(-1.2), 0);
}

TEST(WrappingWords, RunModuloTheirWidth) {
  constexpr Tev32s low = std::numeric_limits<Tev32s>::min(), high = std::numeric_limits<Tev32s>::max();
  EXPECT_EQ(wrapAdd(high, 1), low);
  EXPECT_EQ(wrapSub(low, 1), high);
  EXPECT_EQ(wrapMul(high, 2), -2);
  EXPECT_EQ(wrapMul(Tev16s{300}, Tev16s{300}), static_cast<Tev16s>(90000 - 65536));
  EXPECT_EQ(wrapMul(std::int64_t{1} << 40, std::int64_t{1} << 40), 0);
}

TEST(Borders, ContinueALineForAsFarAsAKernelReaches) {
  const auto line = [](TevBorderType type, int length) {
    std::vector<int> indices;
    for (int i = -5; i < length + 5; ++i) indices.push_back(borderIndex(i, length, type));
    return indices;
  };
  using V = std::vector<int>;
  EXPECT_EQ(line(tevBorderRepl, 3), (V{0, 0, 0, 0, 0, 0, 1, 2, 2, 2, 2, 2, 2}));
  EXPECT_EQ(line(tevBorderWrap, 3), (V{1, 2, 0, 1, 2, 0, 1, 2, 0, 1, 2, 0, 1}));
  EXPECT_EQ(line(tevBorderMirror, 3), (V{1, 0, 1, 2, 1, 0, 1, 2, 1, 0, 1, 2, 1}));
  EXPECT_EQ(line(tevBorderMirrorR, 3), (V{1, 2, 2, 1, 0, 0, 1, 2, 2, 1, 0, 0, 1}));
  EXPECT_EQ(line(tevBorderConst, 2), (V{-1, -1, -1, -1, -1, 0, 1, -1, -1, -1, -1, -1}));
  for (TevBorderType type : {tevBorderRepl, tevBorderWrap, tevBorderMirror, tevBorderMirrorR})
    EXPECT_EQ(line(type, 1), V(11, 0)) << type;
  // The longest lines, whose periods no int holds.
  constexpr int longest = std::numeric_limits<int>::max() - 8;
  EXPECT_EQ(borderIndex(longest + 1, longest, tevBorderWrap), 1);
  EXPECT_EQ(borderIndex(-2, longest, tevBorderMirror), 2);
  EXPECT_EQ(borderIndex(longest + 1, longest, tevBorderMirror), longest - 3);
  EXPECT_EQ(borderIndex(-2, longest, tevBorderMirrorR), 1);
  EXPECT_EQ(borderIndex(longest + 1, longest, tevBorderMirrorR), longest - 2);
}

TEST(Checks, GiveTheFirstFailure) {
  const int value = 0;
  EXPECT_EQ(firstFailure(notNull(&value), region({1, 1})), tevStatusOk);
  EXPECT_EQ(firstFailure(notNull(&value, static_cast<int*>(nullptr)), region({0, 1})), tevStatusNullPtr);
  EXPECT_EQ(firstFailure(region({0, 1}), rowFits<Tev8u>(0, 1)), tevStatusBadSize);
  EXPECT_EQ(length(0), tevStatusBadSize);
  EXPECT_EQ(channelOfInterest(0), tevStatusBadCoi);
  EXPECT_EQ(channelOfInterest(3), tevStatusOk);
  EXPECT_EQ(channelOfInterest(4), tevStatusBadCoi);
  EXPECT_EQ(positiveStep(0), tevStatusBadStep);
}

TEST(Checks, NoWidthWrapsTheStepTest) {
  EXPECT_EQ(rowFits<Tev32f>(0, 1 << 30), tevStatusBadStep);
  EXPECT_EQ(rowFits<Tev32f>(16, 4), tevStatusOk);
  EXPECT_EQ(rowFits<Tev32f>(15, 4), tevStatusBadStep);
  EXPECT_EQ((rowFits<Tev64f>(std::numeric_limits<int>::max(), std::numeric_limits<int>::max(), 4)), tevStatusBadStep);
  EXPECT_EQ(wholeElements<Tev16u>(3), tevStatusStepNotAligned);
  EXPECT_EQ(wholeElements<Tev8u>(3), tevStatusOk);
}

TEST(RowView, StepsAreBytesOfEitherSign) {
  Tev16s data[8] = {0, 1, 2, 3, 4, 5, 6, 7};
  EXPECT_EQ(rows(data, 8)[1][0], 4);
  EXPECT_EQ(rows(data + 4, -8)[1][2], 2);
  EXPECT_EQ(rows(data, 4).from(1)[1][0], 4);
  EXPECT_EQ(wholeElementRows(data, 5)[1][0], 2);
}
