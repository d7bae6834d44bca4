// Data views: what converts to one, and what its elements are.
#include <gtest/gtest.h>

#include <vexel/data.hpp>

namespace {

double second(vexel::Data x) { return x[1]; }

TEST(Data, ViewsEveryElementTypeAndStride) {
  const std::vector<double> doubles = {1, 2.5, 3};
  const std::array<float, 3> floats = {1, 2.5F, 3};
  const std::int32_t whole[] = {1, 2, 3};
  const std::vector<std::int64_t> large = {0, (std::int64_t{1} << 53) + 1};
  EXPECT_EQ(second(doubles), 2.5);
  EXPECT_EQ(second(std::span(doubles)), 2.5);
  EXPECT_EQ(second(floats), 2.5);
  EXPECT_EQ(second(whole), 2);
  EXPECT_EQ(second(large), 9007199254740992.0);
  EXPECT_EQ(second({1, 7, 3}), 7);
  EXPECT_EQ(second(vexel::Data(doubles.data() + 2, 3, -2)), 1);
  EXPECT_FALSE(vexel::Data().given());
  EXPECT_TRUE(vexel::Data(std::vector<double>{}).given());
}

}  // namespace
