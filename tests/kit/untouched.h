// An erroneous call writes nothing: EXPECT_FAILS runs a call and compares every output's bytes, row padding included,
// before and after.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "kit/image.h"
#include "kit/memory.h"

namespace kit {

template <class T, int channels>
std::vector<unsigned char> bytesOf(const Image<T, channels>& image) {
  return image.bytes();
}
inline std::vector<unsigned char> bytesOf(const Buffer& buffer) {
  return {buffer.data(), buffer.data() + buffer.size()};
}
template <class T>
requires std::is_trivially_copyable_v<T> std::vector<unsigned char> bytesOf(const T& value) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(&value);
  return {bytes, bytes + sizeof value};
}

// Runs `call` and tells whether it returned `status` and left every output as it was.
template <class Call, class... Output>
testing::AssertionResult failsUntouched(TevStatus status, Call call, const Output&... outputs) {
  const std::vector<std::vector<unsigned char>> before = {bytesOf(outputs)...};
  const TevStatus returned = call();
  if (returned != status) return testing::AssertionFailure() << "returned " << returned << ", expected " << status;
  const std::vector<std::vector<unsigned char>> after = {bytesOf(outputs)...};
  if (before != after) return testing::AssertionFailure() << "returned " << status << " but wrote to an output";
  return testing::AssertionSuccess();
}

}  // namespace kit

// EXPECT_FAILS(status, call expression, outputs...)
#define EXPECT_FAILS(status, call, ...) \
  EXPECT_TRUE(kit::failsUntouched(status, [&] { return call; } __VA_OPT__(, ) __VA_ARGS__))
