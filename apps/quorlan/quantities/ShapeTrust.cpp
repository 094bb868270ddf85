#include "quantities/ShapeTrust.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace QuorlanProgram {
namespace {

using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::Vertex;

/// [m2] Twice the area below which a face is no plane; the length of Newell's normal.
constexpr double kDegenerateNormal = 1e-7;

/// For each vertex, the first one at its position.
std::vector<std::uint32_t> WeldVertices(std::vector<Vertex> const& vertices) {
    std::map<std::array<double, 3>, std::uint32_t> first;
    std::vector<std::uint32_t> welded(vertices.size());
    for (std::uint32_t i = 0; i < vertices.size(); ++i) {
        auto const& v = vertices[i];
        welded[i] = first.try_emplace({v.x, v.y, v.z}, i).first->second;
    }
    return welded;
}

template <class Visit>
void ForEachLoop(FacetedBRep const& shape, Visit const& visit) {
    for (auto const& loop : shape.faces) visit(loop);
    for (auto const& [face, loops] : shape.holes) {
        for (auto const& loop : loops) visit(loop);
    }
}

/// How often an edge, its ends in ascending order, is used in that direction and in the other.
using EdgeUses = std::map<std::pair<std::uint32_t, std::uint32_t>, std::array<unsigned, 2>>;

EdgeUses CountEdges(FacetedBRep const& shape) {
    auto const welded = WeldVertices(shape.vertices);
    EdgeUses uses;
    ForEachLoop(shape, [&](std::vector<std::uint32_t> const& loop) {
        for (std::size_t i = 0; i < loop.size(); ++i) {
            std::uint32_t const from = welded[loop[i]];
            std::uint32_t const to = welded[loop[(i + 1) % loop.size()]];
            if (from != to) ++uses[std::minmax(from, to)][from < to ? 0 : 1];
        }
    });
    return uses;
}

Vertex ComputeNormal(FacetedBRep const& shape, std::vector<std::uint32_t> const& loop) {
    Vertex normal;
    for (std::size_t i = 0; i < loop.size(); ++i) {
        normal = normal + Cross(shape.vertices[loop[i]] - shape.vertices[loop[0]],
                                shape.vertices[loop[(i + 1) % loop.size()]] - shape.vertices[loop[0]]);
    }
    return normal;
}

/// Six times the signed volume of a closed shape: every loop as a fan of tetrahedra to one point, holes included.
double ComputeSignedVolume(FacetedBRep const& shape) {
    double volume = 0;
    Vertex const origin = shape.vertices.empty() ? Vertex{} : shape.vertices[0];
    ForEachLoop(shape, [&](std::vector<std::uint32_t> const& loop) {
        for (std::size_t i = 1; i + 1 < loop.size(); ++i) {
            volume += Dot(shape.vertices[loop[0]] - origin,
                          Cross(shape.vertices[loop[i]] - origin, shape.vertices[loop[i + 1]] - origin));
        }
    });
    return volume;
}

}  // namespace

ShapeTrust ExamineShape(FacetedBRep const& shape) {
    ShapeTrust trust;
    for (auto const& [edge, uses] : CountEdges(shape)) {
        if (uses[0] + uses[1] == 1) {
            trust.isOpen = true;
        } else if (uses[0] != uses[1]) {
            trust.isTwisted = true;
        }
    }
    trust.hasDegenerateFace = std::any_of(shape.faces.begin(), shape.faces.end(), [&](auto const& loop) {
        return Length(ComputeNormal(shape, loop)) < kDegenerateNormal;
    });
    trust.isInverted = trust.IsClosed() && ComputeSignedVolume(shape) < 0;
    return trust;
}

}  // namespace QuorlanProgram
