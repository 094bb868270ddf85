#include "shape/CoplanarFaces.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>
#include <utility>

#include "shape/PlaneGroups.h"

namespace QuorlanProgram::Import {

namespace {

using GeometryObjectLib::Cross;
using GeometryObjectLib::Dot;
using GeometryObjectLib::Length;

constexpr double kVolumeTolerance = 1e-5;  ///< [-] of a volume that joining may change

/// Finds the points that are a corner of some loop.
class Corners {
public:
    explicit Corners(FacetedBRep const& shape) : shape_(shape), isCorner_(shape.vertices.size()) {}

    void Look(Indices const& loop) {
        for (std::size_t i = 0; i < loop.size(); ++i) {
            auto const before = shape_.vertices[loop[(i + loop.size() - 1) % loop.size()]];
            auto const at = shape_.vertices[loop[i]];
            auto const after = shape_.vertices[loop[(i + 1) % loop.size()]];
            auto const a = at - before;
            auto const b = after - at;
            auto const isStraight = Dot(a, b) > 0 && Length(Cross(a, b)) <= kCollinearSine * Length(a) * Length(b);
            if (!isStraight) isCorner_[loop[i]] = true;
        }
    }

    void Keep(Indices const& loop) {
        for (auto const index : loop) isCorner_[index] = true;
    }

    Loop ToLoop(Indices const& loop) const {
        Loop points;
        for (auto const index : loop) {
            if (isCorner_[index]) points.push_back(shape_.vertices[index]);
        }
        return points;
    }

private:
    FacetedBRep const& shape_;
    std::vector<bool> isCorner_;
};

FacetedBRep Build(FacetedBRep const& shape, std::vector<Polygon> const& polygons, Corners const& corners) {
    ShapeBuilder builder;
    for (auto const& polygon : polygons) {
        std::vector<Loop> holes;
        for (auto const& hole : polygon.holes) holes.push_back(corners.ToLoop(hole));
        builder.AddFace(corners.ToLoop(polygon.outer), holes);
    }
    auto joined = builder.Take();
    auto const volume = GetVolume(shape);
    auto const isSame = std::abs(GetVolume(joined) - volume) <= kVolumeTolerance * std::abs(volume);
    return isSame || !IsClosed(shape) ? joined : shape;
}

/// The shape with its coordinates freed from the kernel's noise, and with vertices, loops and faces in an order that
/// only depends on where they are: the kernel's own hangs on addresses in memory and changes from run to run.
FacetedBRep InOrder(FacetedBRep shape) {
    auto const clean = [](double c) { return std::round(c / kKernelNoise) * kKernelNoise; };
    for (auto& v : shape.vertices) v = {clean(v.x), clean(v.y), clean(v.z)};
    Indices order(shape.vertices.size());
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(), [&](auto i, auto j) {
        auto const& a = shape.vertices[i];
        auto const& b = shape.vertices[j];
        return std::tie(a.x, a.y, a.z) < std::tie(b.x, b.y, b.z);
    });
    FacetedBRep sorted;
    Indices place(order.size());
    for (auto const index : order) {
        place[index] = static_cast<std::uint32_t>(sorted.vertices.size());
        sorted.vertices.push_back(shape.vertices[index]);
    }
    auto const toPlace = [&](Indices loop) {
        for (auto& index : loop) index = place[index];
        std::rotate(loop.begin(), std::min_element(loop.begin(), loop.end()), loop.end());
        return loop;
    };
    std::vector<std::pair<Indices, std::vector<Indices>>> faces;
    for (std::size_t face = 0; face < shape.faces.size(); ++face) {
        auto& entry = faces.emplace_back(toPlace(shape.faces[face]), std::vector<Indices>());
        for (std::size_t i = 0; i < shape.GetInnerLoopCount(face); ++i) {
            entry.second.push_back(toPlace(shape.GetInnerLoop(face, i)));
        }
        std::sort(entry.second.begin(), entry.second.end());
    }
    std::sort(faces.begin(), faces.end());
    for (auto& [outer, holes] : faces) {
        if (!holes.empty()) sorted.holes[sorted.faces.size()] = std::move(holes);
        sorted.faces.push_back(std::move(outer));
    }
    return sorted;
}

}  // namespace

FacetedBRep JoinCoplanarFaces(FacetedBRep const& shape) {
    if (!shape.holes.empty()) return shape;
    std::vector<Polygon> polygons;
    Corners corners(shape);
    for (auto const& group : FindPlaneGroups(shape)) {
        auto traced = TraceOutline(shape, group);
        if (traced) {
            for (auto& polygon : *traced) {
                corners.Look(polygon.outer);
                for (auto const& hole : polygon.holes) corners.Look(hole);
                polygons.push_back(std::move(polygon));
            }
            continue;
        }
        for (auto const face : group.faces) {
            corners.Keep(shape.faces[face]);
            polygons.push_back({shape.faces[face], {}});
        }
    }
    return InOrder(Build(shape, polygons, corners));
}

}  // namespace QuorlanProgram::Import
