#include "cut/SolidCuts.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "shape/Overlap.h"

namespace QuorlanProgram::Import {

namespace {

constexpr double kVolumeTolerance = 1e-6;  ///< [-] of the body's volume, by which its parts may miss it
constexpr double kSmallestVolume = 1e-9;   ///< [m3] a cubic millimetre is no part
constexpr double kNudges[] = {1, 1 + 2e-5, 1 - 2e-5};

struct Box {
    Vertex min{1e300, 1e300, 1e300};
    Vertex max{-1e300, -1e300, -1e300};
};

Box GetBox(FacetedBRep const& shape) {
    Box box;
    for (auto const& v : shape.vertices) {
        box.min = {std::min(box.min.x, v.x), std::min(box.min.y, v.y), std::min(box.min.z, v.z)};
        box.max = {std::max(box.max.x, v.x), std::max(box.max.y, v.y), std::max(box.max.z, v.z)};
    }
    return box;
}

FacetedBRep Scaled(FacetedBRep shape, double factor) {
    auto const box = GetBox(shape);
    auto const centre = 0.5 * (box.min + box.max);
    for (auto& v : shape.vertices) v = centre + factor * (v - centre);
    return shape;
}

/// A body taken apart by a tool.
struct Parts {
    FacetedBRep outside;
    FacetedBRep inside;
};

/// RETURNS nothing where the parts do not make up the body, or touch nothing of it although the solids overlap.
std::optional<Parts> TakeApart(FacetedBRep const& body, double volume, FacetedBRep const& tool) {
    auto outside = CombineInKernel(body, tool, BooleanOperation::kDifference);
    auto inside = CombineInKernel(body, tool, BooleanOperation::kIntersection);
    if (!outside || !inside) return std::nullopt;
    auto const slack = kVolumeTolerance * volume + kSmallestVolume;
    auto const insideVolume = GetVolume(*inside);
    // The kernel answers with the whole body where nothing of it is left.
    if (std::abs(insideVolume - volume) <= slack && std::abs(GetVolume(*outside) - volume) <= slack) *outside = {};
    if (std::abs(GetVolume(*outside) + insideVolume - volume) > slack) return std::nullopt;
    if (insideVolume <= slack && OverlapAtSamples(body, tool)) return std::nullopt;
    return Parts{std::move(*outside), std::move(*inside)};
}

}  // namespace

CutCount& CutCount::operator+=(CutCount const& other) {
    made += other.made;
    nudged += other.nudged;
    exact += other.exact;
    wrong += other.wrong;
    return *this;
}

CutCount operator-(CutCount const& a, CutCount const& b) {
    return {a.made - b.made, a.nudged - b.nudged, a.exact - b.exact, a.wrong - b.wrong};
}

bool SolidCuts::Apply(FacetedBRep& body, FacetedBRep const& tool, BooleanOperation operation) {
    auto const isDifference = operation == BooleanOperation::kDifference;
    auto const volume = GetVolume(body);
    auto const slack = kVolumeTolerance * volume + kSmallestVolume;
    if (!BoxesOverlap(body, tool)) {
        if (isDifference) return false;
        body = {};
        ++count_.made;
        return true;
    }
    for (auto const factor : kNudges) {
        auto parts = TakeApart(body, volume, factor == 1 ? tool : Scaled(tool, factor));
        if (!parts) continue;
        auto& result = isDifference ? parts->outside : parts->inside;
        if (std::abs(GetVolume(result) - volume) <= slack) return false;
        body = std::move(result);
        ++count_.made;
        if (factor != 1) ++count_.nudged;
        return true;
    }
    auto exact = CombineExactly(body, tool, operation);
    if (!exact) {
        ++count_.wrong;
        return false;
    }
    if (std::abs(GetVolume(*exact) - volume) <= slack) return false;
    body = std::move(*exact);
    ++count_.made;
    ++count_.exact;
    return true;
}

}  // namespace QuorlanProgram::Import
