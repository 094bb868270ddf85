#include "shape/Gaps.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <utility>

namespace QuorlanProgram::Import {

namespace {

constexpr double kSmallestSolid = 1e-12;  ///< [m3]

using Edge = std::pair<std::uint32_t, std::uint32_t>;

/// How often each edge is walked more than the other way round, by its ends; only those that are.
std::map<Edge, int> FindBorder(FacetedBRep const& shape) {
    std::map<Edge, int> counts;
    auto const walk = [&](std::vector<std::uint32_t> const& loop) {
        for (std::size_t i = 0; i < loop.size(); ++i) {
            auto const a = loop[i];
            auto const b = loop[(i + 1) % loop.size()];
            counts[{std::min(a, b), std::max(a, b)}] += a < b ? 1 : -1;
        }
    };
    for (auto const& face : shape.faces) walk(face);
    for (auto const& entry : shape.holes) {
        for (auto const& hole : entry.second) walk(hole);
    }
    for (auto at = counts.begin(); at != counts.end();) at = at->second == 0 ? counts.erase(at) : std::next(at);
    return counts;
}

/// The loops that walk every border edge the other way; nothing where they are not simple.
std::optional<std::vector<std::vector<std::uint32_t>>> TraceBorder(FacetedBRep const& shape) {
    std::map<std::uint32_t, std::uint32_t> next;
    for (auto const& [edge, count] : FindBorder(shape)) {
        if (std::abs(count) != 1) return std::nullopt;
        auto const [from, to] = count > 0 ? std::pair(edge.second, edge.first) : edge;
        if (!next.emplace(from, to).second) return std::nullopt;
    }
    std::vector<std::vector<std::uint32_t>> loops;
    while (!next.empty()) {
        auto& loop = loops.emplace_back();
        for (auto at = next.begin(); at != next.end(); at = next.find(loop.back())) {
            loop.push_back(at->second);
            next.erase(at);
        }
    }
    return loops;
}

bool IsPlane(FacetedBRep const& shape, std::vector<std::uint32_t> const& indices) {
    Loop loop;
    for (auto const index : indices) loop.push_back(shape.vertices[index]);
    auto const area = GetAreaVector(loop);
    auto const size = GeometryObjectLib::Length(area);
    return size > 0 && std::all_of(loop.begin(), loop.end(), [&](Vertex const& v) {
               return std::abs(GeometryObjectLib::Dot(v - loop.front(), area)) <= kGapFlatness * size;
           });
}

}  // namespace

std::size_t CloseGaps(FacetedBRep& shape) {
    auto const loops = TraceBorder(shape);
    if (!loops || loops->empty()) return 0;
    if (!std::all_of(loops->begin(), loops->end(), [&](auto const& loop) { return IsPlane(shape, loop); })) return 0;
    auto closed = shape;
    closed.faces.insert(closed.faces.end(), loops->begin(), loops->end());
    // A sheet closed by its own back is no solid.
    if (!IsClosed(closed) || !(std::abs(GetVolume(closed)) > kSmallestSolid)) return 0;
    shape = std::move(closed);
    return loops->size();
}

}  // namespace QuorlanProgram::Import
