#include <gtest/gtest.h>

TEST(Shared, IsListed) {}
