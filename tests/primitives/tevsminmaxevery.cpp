#include <limits>

#include "kit/kit.h"
#include "tevcv/primitives.h"

using kit::Image;
using kit::Random;

namespace {

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

// The first operand is kept unless the second is strictly better.
template <class T>
Image<T> oracle(const Image<T>& a, const Image<T>& b, bool max) {
  Image<T> expected(a.width(), 1);
  for (int i = 0; i < a.width(); ++i) {
    const bool better = max ? b.at(i, 0) > a.at(i, 0) : b.at(i, 0) < a.at(i, 0);
    expected.set(i, 0, better ? b.at(i, 0) : a.at(i, 0));
  }
  return expected;
}

}  // namespace

TEST(ElementwiseExtrema, EqualTheDefinitionAtEveryLength) {
  Random random;
  const float specials[] = {notANumber, -notANumber, 0.0F, -0.0F, std::numeric_limits<float>::infinity(), 1.0F, -1.0F};
  const auto drawFloat = [&] { return random.oneIn(3) ? specials[random.between(0, 6)] : random.real(4); };
  for (int len = 1; len <= 80; ++len) {
    const auto a = random.image<Tev8u>(len, 1), b = random.image<Tev8u>(len, 1);
    auto d = random.image<Tev8u>(len, 1);
    tevsMaxEvery_8u(a.data(), b.data(), d.data(), len);
    ASSERT_SAME_IMAGE(d, oracle(a, b, true));
    tevsMinEvery_8u(a.data(), b.data(), d.data(), len);
    ASSERT_SAME_IMAGE(d, oracle(a, b, false));
    const auto f = random.image<Tev32f>(len, 1, drawFloat), g = random.image<Tev32f>(len, 1, drawFloat);
    auto e = random.image<Tev32f>(len, 1);
    tevsMaxEvery_32f(f.data(), g.data(), e.data(), len);
    ASSERT_SAME_IMAGE(e, oracle(f, g, true));
    tevsMinEvery_32f(f.data(), g.data(), e.data(), len);
    ASSERT_SAME_IMAGE(e, oracle(f, g, false));
    // In place, srcDst is the operand that is kept.
    auto h = g.clone();
    ASSERT_EQ(tevsMaxEvery_32f_I(f.data(), h.data(), len), tevStatusOk);
    ASSERT_SAME_IMAGE(h, oracle(g, f, true));
    h = g.clone();
    ASSERT_EQ(tevsMinEvery_32f_I(f.data(), h.data(), len), tevStatusOk);
    ASSERT_SAME_IMAGE(h, oracle(g, f, false));
    auto c = b.clone();
    ASSERT_EQ(tevsMaxEvery_8u_I(a.data(), c.data(), len), tevStatusOk);
    ASSERT_SAME_IMAGE(c, oracle(b, a, true));
    c = b.clone();
    ASSERT_EQ(tevsMinEvery_8u_I(a.data(), c.data(), len), tevStatusOk);
    ASSERT_SAME_IMAGE(c, oracle(b, a, false));
  }
}

TEST(ElementwiseExtrema, TheDestinationMayBeEitherSource) {
  Random random;
  const auto a = random.image<Tev32f>(50, 1), b = random.image<Tev32f>(50, 1);
  auto first = a.clone(), second = b.clone();
  tevsMaxEvery_32f(first.data(), b.data(), first.data(), 50);
  tevsMaxEvery_32f(a.data(), second.data(), second.data(), 50);
  EXPECT_SAME_IMAGE(first, oracle(a, b, true));
  EXPECT_SAME_IMAGE(second, oracle(a, b, true));
}

TEST(ElementwiseExtrema, TiesOfZerosAndNanKeepTheFirstOperand) {
  const Tev32f a[] = {-0.0F, 0.0F, notANumber, 1.0F}, b[] = {0.0F, -0.0F, 1.0F, notANumber};
  Tev32f d[4];
  tevsMaxEvery_32f(a, b, d, 4);
  EXPECT_TRUE(std::signbit(d[0]) && !std::signbit(d[1]) && std::isnan(d[2]) && d[3] == 1.0F);
  Tev32f inPlace[] = {0.0F, -0.0F, 1.0F, notANumber};
  EXPECT_EQ(tevsMinEvery_32f_I(a, inPlace, 4), tevStatusOk);
  EXPECT_TRUE(!std::signbit(inPlace[0]) && std::signbit(inPlace[1]) && inPlace[2] == 1.0F && std::isnan(inPlace[3]));
}

TEST(ElementwiseExtrema, CheckOnlyInPlace) {
  Tev8u b[2] = {3, 4};
  Tev32f f[2] = {3, 4};
  EXPECT_EQ(tevsMaxEvery_8u_I(nullptr, b, 0), tevStatusNullPtr);
  EXPECT_EQ(tevsMaxEvery_8u_I(b, nullptr, 0), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, tevsMaxEvery_8u_I(b, b, 0), b);
  EXPECT_EQ(tevsMinEvery_8u_I(nullptr, b, 1), tevStatusNullPtr);
  EXPECT_EQ(tevsMinEvery_8u_I(b, nullptr, 1), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, tevsMinEvery_8u_I(b, b, -1), b);
  EXPECT_EQ(tevsMaxEvery_32f_I(nullptr, f, 1), tevStatusNullPtr);
  EXPECT_EQ(tevsMaxEvery_32f_I(f, nullptr, 1), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, tevsMaxEvery_32f_I(f, f, 0), f);
  EXPECT_EQ(tevsMinEvery_32f_I(nullptr, f, 1), tevStatusNullPtr);
  EXPECT_EQ(tevsMinEvery_32f_I(f, nullptr, 1), tevStatusNullPtr);
  EXPECT_FAILS(tevStatusBadSize, tevsMinEvery_32f_I(f, f, 0), f);
  // Without a status, a length below 1 does nothing.
  const Tev8u one[] = {1, 1};
  tevsMinEvery_8u(one, one, b, 0);
  tevsMaxEvery_8u(one, one, b, -1);
  tevsMinEvery_32f(f, f, f, 0);
  tevsMaxEvery_32f(f, f, f, -1);
  EXPECT_EQ(b[0], 3);
}
