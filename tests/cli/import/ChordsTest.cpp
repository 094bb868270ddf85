#include "shape/Chords.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace QuorlanProgram::Import {
namespace {

constexpr double kPi = 3.14159265358979323846;

TEST(Chords, KeepWithinTheDeflection) {
    for (double deflection : {1e-4, 1e-3, 1e-2}) {
        for (double radius = 0.01; radius < 3; radius *= 1.3) {
            auto const count = Chords(deflection).Get(radius);
            EXPECT_EQ(count % 4, 0);
            EXPECT_GE(count, 24);
            EXPECT_LE(count, 120);
            auto const sagitta = radius * (1 - std::cos(kPi / count));
            EXPECT_TRUE(count == 120 || sagitta <= deflection * (1 + 1e-9));
            auto const fewer = radius * (1 - std::cos(kPi / (count - 4)));
            EXPECT_TRUE(count == 24 || fewer > deflection * (1 - 1e-9));
        }
    }
}

TEST(Chords, HaveLimitsForWhatIsNoRadius) {
    EXPECT_EQ(Chords().Get(0), 24);
    EXPECT_EQ(Chords().Get(std::nan("")), 24);
    EXPECT_EQ(Chords().Get(1e300), 120);
    EXPECT_EQ(Chords().Get(std::numeric_limits<double>::infinity()), 120);
}

TEST(Chords, FollowTheUnitOfTheRadius) { EXPECT_EQ(Chords().In(0.001).Get(2000), Chords().Get(2)); }

}  // namespace
}  // namespace QuorlanProgram::Import
