#include "shape/PlaneGroups.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <utility>

#include "shape/CoplanarFaces.h"

namespace QuorlanProgram::Import {

namespace {

using GeometryObjectLib::Cross;
using GeometryObjectLib::Dot;
using GeometryObjectLib::Length;
using Edge = std::pair<std::uint32_t, std::uint32_t>;

constexpr double kTwoPi = 6.28318530717958647692;
constexpr double kAreaSlack = 1e-6;            ///< [-] by which a skin may be larger than what it covers
constexpr double kTiny = 1e-300;               ///< keeps a quotient finite
constexpr std::size_t kMostSkinGroups = 2000;  ///< beyond it, skins are not looked for: the search is quadratic

bool IsOnPlane(PlaneGroup const& group, Vertex const& point) {
    return std::abs(Dot(point - group.origin, group.normal)) <= kCoplanarDistance;
}

/// Finds the groups, each grown from its largest face.
class Grouping {
public:
    explicit Grouping(FacetedBRep const& shape) : shape_(shape), isTaken_(shape.faces.size()) {
        for (std::size_t face = 0; face < shape.faces.size(); ++face) {
            auto const& loop = shape.faces[face];
            for (std::size_t i = 0; i < loop.size(); ++i) faceOfEdge_[{loop[i], loop[(i + 1) % loop.size()]}] = face;
        }
    }

    std::vector<PlaneGroup> Find() {
        std::vector<double> areas;
        for (auto const& face : shape_.faces) areas.push_back(Length(GetAreaVector(shape_, face)));
        std::vector<std::size_t> order(areas.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
        std::stable_sort(order.begin(), order.end(), [&](auto a, auto b) { return areas[a] > areas[b]; });
        std::vector<PlaneGroup> groups;
        for (auto const face : order) {
            if (!isTaken_[face]) groups.push_back(Grow(face));
        }
        return groups;
    }

private:
    PlaneGroup Grow(std::size_t seed) {
        PlaneGroup group;
        group.faces.push_back(seed);
        isTaken_[seed] = true;
        auto const area = GetAreaVector(shape_, shape_.faces[seed]);
        if (!(Length(area) > 0)) return group;
        group.origin = shape_.vertices[shape_.faces[seed][0]];
        group.normal = area / Length(area);
        auto const side = shape_.vertices[shape_.faces[seed][1]] - group.origin;
        group.u = side / Length(side);
        group.v = Cross(group.normal, group.u);
        auto const isOnPlane = [&](std::uint32_t vertex) { return IsOnPlane(group, shape_.vertices[vertex]); };
        for (std::size_t i = 0; i < group.faces.size(); ++i) {
            auto const& loop = shape_.faces[group.faces[i]];
            for (std::size_t j = 0; j < loop.size(); ++j) {
                auto const neighbour = faceOfEdge_.find({loop[(j + 1) % loop.size()], loop[j]});
                if (neighbour == faceOfEdge_.end() || isTaken_[neighbour->second]) continue;
                auto const& other = shape_.faces[neighbour->second];
                if (!std::all_of(other.begin(), other.end(), isOnPlane)) continue;
                isTaken_[neighbour->second] = true;
                group.faces.push_back(neighbour->second);
            }
        }
        return group;
    }

    FacetedBRep const& shape_;
    std::vector<bool> isTaken_;
    std::map<Edge, std::size_t> faceOfEdge_;
};

/// Walks round the outline of a group.
class Outline {
public:
    Outline(FacetedBRep const& shape, PlaneGroup const& group) : shape_(shape), group_(group) {}

    /// The polygons of the group; nothing if its outline is not simple.
    std::optional<std::vector<Polygon>> Trace() {
        if (!CollectEdges()) return std::nullopt;
        std::vector<Indices> loops;
        while (!next_.empty()) {
            auto loop = TakeLoop();
            if (loop.size() < 3) return std::nullopt;
            loops.push_back(std::move(loop));
        }
        return Sort(std::move(loops));
    }

private:
    /// Edges that two faces of the group walk in both directions are inside. RETURNS false if one is left twice.
    bool CollectEdges() {
        std::map<Edge, int> balance;
        for (auto const face : group_.faces) {
            auto const& loop = shape_.faces[face];
            for (std::size_t i = 0; i < loop.size(); ++i) {
                auto const a = loop[i];
                auto const b = loop[(i + 1) % loop.size()];
                balance[{std::min(a, b), std::max(a, b)}] += a < b ? 1 : -1;
            }
        }
        for (auto const& [edge, count] : balance) {
            if (count == 0) continue;
            if (std::abs(count) > 1) return false;
            if (count > 0)
                next_.emplace(edge.first, edge.second);
            else
                next_.emplace(edge.second, edge.first);
        }
        return true;
    }

    /// Where loops touch in a point, the walk takes the first way clockwise from the one it came: it stays with the
    /// part of the group on its left.
    Indices TakeLoop() {
        auto const start = next_.begin()->first;
        Indices loop;
        auto at = start;
        auto from = start;
        do {
            auto const [first, last] = next_.equal_range(at);
            if (first == last) return {};
            auto best = first;
            for (auto way = std::next(first); way != last; ++way) {
                if (from != at && GetTurn(from, at, way->second) < GetTurn(from, at, best->second)) best = way;
            }
            loop.push_back(at);
            from = at;
            at = best->second;
            next_.erase(best);
        } while (at != start);
        return loop;
    }

    /// The angle from the way back to the way on, clockwise, 0 to 2 pi.
    double GetTurn(std::uint32_t from, std::uint32_t at, std::uint32_t to) const {
        auto const back = shape_.vertices[from] - shape_.vertices[at];
        auto const on = shape_.vertices[to] - shape_.vertices[at];
        auto const angle =
            std::atan2(Dot(back, group_.v), Dot(back, group_.u)) - std::atan2(Dot(on, group_.v), Dot(on, group_.u));
        return angle < 0 ? angle + kTwoPi : angle;
    }

    /// One polygon of the largest loop and those that run against it as its holes; several where there are no holes.
    std::optional<std::vector<Polygon>> Sort(std::vector<Indices> loops) const {
        auto const getArea = [&](Indices const& loop) { return Dot(GetAreaVector(shape_, loop), group_.normal); };
        std::stable_sort(loops.begin(), loops.end(),
                         [&](auto const& a, auto const& b) { return std::abs(getArea(a)) > std::abs(getArea(b)); });
        std::vector<Polygon> polygons;
        std::vector<Indices> holes;
        auto const largest = loops.empty() ? 0 : getArea(loops.front());
        for (auto& loop : loops) {
            if (polygons.empty() || getArea(loop) * largest > 0)
                polygons.push_back({std::move(loop), {}});
            else
                holes.push_back(std::move(loop));
        }
        if (polygons.size() > 1 && !holes.empty()) return std::nullopt;
        if (!polygons.empty()) polygons.front().holes = std::move(holes);
        return polygons;
    }

    FacetedBRep const& shape_;
    PlaneGroup const& group_;
    std::multimap<std::uint32_t, std::uint32_t> next_;
};

/// A traced group, in the coordinates of its plane.
struct Plate {
    Vertex area;  ///< of all its faces together
    std::vector<Polygon> polygons;
};

Plate MakePlate(FacetedBRep const& shape, PlaneGroup const& group) {
    Plate plate;
    for (auto const face : group.faces) plate.area = plate.area + GetAreaVector(shape, shape.faces[face]);
    if (auto traced = TraceOutline(shape, group)) plate.polygons = std::move(*traced);
    return plate;
}

/// Lays skins onto the faces that they cover.
class SkinFinder {
public:
    SkinFinder(FacetedBRep const& shape, std::vector<PlaneGroup>& groups) : shape_(shape), groups_(groups) {
        for (auto const& group : groups) plates_.push_back(MakePlate(shape, group));
    }

    void Join() {
        for (std::size_t skin = groups_.size(); skin-- > 0;) {
            for (std::size_t face = 0; face < groups_.size(); ++face) {
                if (face == skin || groups_[face].faces.empty() || !Covers(face, skin)) continue;
                auto joined = groups_[face];
                joined.faces.insert(joined.faces.end(), groups_[skin].faces.begin(), groups_[skin].faces.end());
                if (!TraceOutline(shape_, joined)) continue;
                groups_[face] = std::move(joined);
                plates_[face] = MakePlate(shape_, groups_[face]);
                groups_[skin].faces.clear();
                break;
            }
        }
    }

private:
    bool Covers(std::size_t face, std::size_t skin) const {
        auto const& group = groups_[face];
        auto const against = Dot(plates_[skin].area, group.normal);
        auto const along = Dot(plates_[face].area, group.normal);
        auto const isInward = along * against < 0 && std::abs(against) <= std::abs(along) * (1 + kAreaSlack);
        if (!isInward || plates_[face].polygons.size() != 1 || plates_[skin].polygons.empty()) return false;
        for (auto const index : groups_[skin].faces) {
            auto const& loop = shape_.faces[index];
            for (auto const vertex : loop) {
                if (!IsOnPlane(group, shape_.vertices[vertex])) return false;
            }
        }
        for (auto const& polygon : plates_[skin].polygons) {
            if (!Contains(group, plates_[face].polygons.front(), polygon.outer)) return false;
        }
        return true;
    }

    bool Contains(PlaneGroup const& group, Polygon const& polygon, Indices const& loop) const {
        for (auto const index : loop) {
            auto const& point = shape_.vertices[index];
            if (FindSide(group, polygon.outer, point) == Side::kOutside) return false;
            for (auto const& hole : polygon.holes) {
                if (FindSide(group, hole, point) == Side::kInside) return false;
            }
        }
        return true;
    }

    enum class Side { kOutside, kBorder, kInside };

    /// By the parity of the edges that a ray along the u axis meets.
    Side FindSide(PlaneGroup const& group, Indices const& loop, Vertex const& point) const {
        bool isInside = false;
        for (std::size_t i = 0; i < loop.size(); ++i) {
            auto const a = shape_.vertices[loop[i]] - point;
            auto const b = shape_.vertices[loop[(i + 1) % loop.size()]] - point;
            auto const along = b - a;
            auto const share = std::clamp(-Dot(a, along) / std::max(Dot(along, along), kTiny), 0.0, 1.0);
            if (Length(a + share * along) <= kCoplanarDistance) return Side::kBorder;
            auto const av = Dot(a, group.v);
            auto const bv = Dot(b, group.v);
            if ((av > 0) == (bv > 0)) continue;
            auto const crossing = Dot(a, group.u) + Dot(along, group.u) * av / (av - bv);
            if (crossing > 0) isInside = !isInside;
        }
        return isInside ? Side::kInside : Side::kOutside;
    }

    FacetedBRep const& shape_;
    std::vector<PlaneGroup>& groups_;
    std::vector<Plate> plates_;
};

}  // namespace

Vertex GetAreaVector(FacetedBRep const& shape, Indices const& loop) {
    Vertex sum;
    auto const& origin = shape.vertices[loop[0]];
    for (std::size_t i = 1; i + 1 < loop.size(); ++i) {
        sum = sum + Cross(shape.vertices[loop[i]] - origin, shape.vertices[loop[i + 1]] - origin);
    }
    return sum;
}

std::vector<PlaneGroup> FindPlaneGroups(FacetedBRep const& shape) {
    auto groups = Grouping(shape).Find();
    if (groups.size() <= kMostSkinGroups) SkinFinder(shape, groups).Join();
    return groups;
}

std::optional<std::vector<Polygon>> TraceOutline(FacetedBRep const& shape, PlaneGroup const& group) {
    return Outline(shape, group).Trace();
}

}  // namespace QuorlanProgram::Import
