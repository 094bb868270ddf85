#include "shape/Overlap.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace QuorlanProgram::Import {

namespace {

using GeometryObjectLib::Cross;
using GeometryObjectLib::Dot;
using GeometryObjectLib::Length;

constexpr double kTwoPi = 6.28318530717958647692;
constexpr int kSamplesPerAxis = 5;
constexpr double kInside = 0.9;  ///< [-] a larger winding number is inside

struct Box {
    Vertex min{std::numeric_limits<double>::max(), std::numeric_limits<double>::max(),
               std::numeric_limits<double>::max()};
    Vertex max{std::numeric_limits<double>::lowest(), std::numeric_limits<double>::lowest(),
               std::numeric_limits<double>::lowest()};
};

Box GetBox(FacetedBRep const& shape) {
    Box box;
    for (auto const& v : shape.vertices) {
        box.min = {std::min(box.min.x, v.x), std::min(box.min.y, v.y), std::min(box.min.z, v.z)};
        box.max = {std::max(box.max.x, v.x), std::max(box.max.y, v.y), std::max(box.max.z, v.z)};
    }
    return box;
}

Box GetCommonBox(FacetedBRep const& a, FacetedBRep const& b) {
    auto const boxA = GetBox(a);
    auto const boxB = GetBox(b);
    return {{std::max(boxA.min.x, boxB.min.x), std::max(boxA.min.y, boxB.min.y), std::max(boxA.min.z, boxB.min.z)},
            {std::min(boxA.max.x, boxB.max.x), std::min(boxA.max.y, boxB.max.y), std::min(boxA.max.z, boxB.max.z)}};
}

double GetThinnest(Box const& box) {
    return std::min({box.max.x - box.min.x, box.max.y - box.min.y, box.max.z - box.min.z});
}

/// Half the solid angle of a triangle seen from the origin.
double GetHalfAngle(Vertex const& a, Vertex const& b, Vertex const& c) {
    auto const la = Length(a);
    auto const lb = Length(b);
    auto const lc = Length(c);
    return std::atan2(Dot(a, Cross(b, c)), la * lb * lc + Dot(a, b) * lc + Dot(a, c) * lb + Dot(b, c) * la);
}

double GetHalfAngle(FacetedBRep const& shape, std::vector<std::uint32_t> const& loop, Vertex const& point) {
    double sum = 0;
    for (std::size_t i = 1; i + 1 < loop.size(); ++i) {
        sum += GetHalfAngle(shape.vertices[loop[0]] - point, shape.vertices[loop[i]] - point,
                            shape.vertices[loop[i + 1]] - point);
    }
    return sum;
}

}  // namespace

double GetWindingNumber(FacetedBRep const& shape, Vertex const& point) {
    double sum = 0;
    for (auto const& face : shape.faces) sum += GetHalfAngle(shape, face, point);
    for (auto const& entry : shape.holes) {
        for (auto const& hole : entry.second) sum += GetHalfAngle(shape, hole, point);
    }
    return sum / kTwoPi;
}

bool BoxesOverlap(FacetedBRep const& a, FacetedBRep const& b) {
    auto const common = GetCommonBox(a, b);
    return GetThinnest(common) > kThinnestOverlap;
}

bool OverlapAtSamples(FacetedBRep const& a, FacetedBRep const& b) {
    auto const [min, max] = GetCommonBox(a, b);
    if (!(GetThinnest({min, max}) > kThinnestOverlap)) return false;
    auto const at = [](double lo, double hi, int i) { return lo + (hi - lo) * (i + 0.5) / kSamplesPerAxis; };
    for (int i = 0; i < kSamplesPerAxis * kSamplesPerAxis * kSamplesPerAxis; ++i) {
        Vertex const point{at(min.x, max.x, i % kSamplesPerAxis),
                           at(min.y, max.y, i / kSamplesPerAxis % kSamplesPerAxis),
                           at(min.z, max.z, i / kSamplesPerAxis / kSamplesPerAxis)};
        if (GetWindingNumber(b, point) > kInside && GetWindingNumber(a, point) > kInside) return true;
    }
    return false;
}

}  // namespace QuorlanProgram::Import
