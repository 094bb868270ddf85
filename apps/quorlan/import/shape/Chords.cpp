#include "shape/Chords.h"

#include <algorithm>
#include <cmath>

namespace QuorlanProgram::Import {

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int kFewest = 24;  ///< a bar or a bolt looks round, and its section is right to 1.2 %
constexpr int kMost = 120;

}  // namespace

int Chords::Get(double radius) const {
    auto const share = deflection_ / (std::abs(radius) * metresPerUnit_);
    if (!(share < 1)) return kFewest;  // also for what is no number
    if (!(share > 0)) return kMost;
    auto const count = std::ceil(kPi / std::acos(1 - share) / 4) * 4;
    return static_cast<int>(std::clamp(count, double{kFewest}, double{kMost}));
}

}  // namespace QuorlanProgram::Import
