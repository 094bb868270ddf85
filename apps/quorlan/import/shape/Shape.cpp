#include "shape/Shape.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <tuple>
#include <utility>

namespace QuorlanProgram::Import {

namespace {

using GeometryObjectLib::Cross;
using GeometryObjectLib::Dot;

constexpr std::uint32_t kNoVertex = 0xFFFFFFFF;

/// Also false for coordinates that are not a number.
bool IsUsable(Loop const& loop) {
    auto const isUsable = [](double c) { return std::abs(c) <= kLargestCoordinate; };
    return std::all_of(loop.begin(), loop.end(),
                       [&](Vertex const& v) { return isUsable(v.x) && isUsable(v.y) && isUsable(v.z); });
}

Loop Reversed(Loop loop) {
    std::reverse(loop.begin(), loop.end());
    return loop;
}

Loop ToPoints(FacetedBRep const& shape, std::vector<std::uint32_t> const& indices) {
    Loop loop;
    loop.reserve(indices.size());
    for (auto const index : indices) loop.push_back(shape.vertices[index]);
    return loop;
}

template <typename Visit>
void ForEachLoop(FacetedBRep const& shape, std::size_t face, Visit&& visit) {
    visit(shape.faces[face]);
    for (std::size_t i = 0; i < shape.GetInnerLoopCount(face); ++i) visit(shape.GetInnerLoop(face, i));
}

/// A shape that takes over faces of another one as long as they fit.
class FaceCollector {
public:
    FaceCollector(FacetedBRep const& source, std::size_t vertexLimit)
        : source_(source), limit_(vertexLimit), map_(source.vertices.size(), kNoVertex) {}

    bool Add(std::size_t face) {
        std::set<std::uint32_t> fresh;
        ForEachLoop(source_, face, [&](auto const& loop) {
            for (auto const index : loop) {
                if (map_[index] == kNoVertex) fresh.insert(index);
            }
        });
        if (shape_.vertices.size() + fresh.size() > limit_) return false;
        for (auto const index : fresh) {
            map_[index] = static_cast<std::uint32_t>(shape_.vertices.size());
            used_.push_back(index);
            shape_.vertices.push_back(source_.vertices[index]);
        }
        auto const holeCount = source_.GetInnerLoopCount(face);
        for (std::size_t i = 0; i < holeCount; ++i) {
            shape_.holes[shape_.faces.size()].push_back(Mapped(source_.GetInnerLoop(face, i)));
        }
        shape_.faces.push_back(Mapped(source_.faces[face]));
        return true;
    }

    bool IsEmpty() const { return shape_.faces.empty(); }

    FacetedBRep Take() {
        for (auto const index : used_) map_[index] = kNoVertex;
        used_.clear();
        return std::exchange(shape_, {});
    }

private:
    std::vector<std::uint32_t> Mapped(std::vector<std::uint32_t> loop) const {
        for (auto& index : loop) index = map_[index];
        return loop;
    }

    FacetedBRep const& source_;
    std::size_t limit_;
    std::vector<std::uint32_t> map_;
    std::vector<std::uint32_t> used_;
    FacetedBRep shape_;
};

}  // namespace

std::size_t ShapeBuilder::KeyHash::operator()(Key const& key) const {
    std::uint64_t hash = 0;
    for (auto const value : key) {
        hash = (hash ^ static_cast<std::uint64_t>(value)) * 0x9E3779B97F4A7C15u;
        hash ^= hash >> 29;
    }
    return static_cast<std::size_t>(hash);
}

std::vector<std::uint32_t> ShapeBuilder::AddLoop(Loop const& loop) {
    std::vector<std::uint32_t> indices;
    indices.reserve(loop.size());
    for (auto const& point : loop) {
        Key const key{std::llround(point.x / kWeldDistance), std::llround(point.y / kWeldDistance),
                      std::llround(point.z / kWeldDistance)};
        auto const entry = indices_.emplace(key, static_cast<std::uint32_t>(shape_.vertices.size()));
        if (entry.second) shape_.vertices.push_back(point);
        if (indices.empty() || indices.back() != entry.first->second) indices.push_back(entry.first->second);
    }
    while (indices.size() > 1 && indices.front() == indices.back()) indices.pop_back();
    if (indices.size() < 3) indices.clear();
    return indices;
}

bool ShapeBuilder::AddFace(Loop const& outer, std::vector<Loop> const& holes) {
    auto const areUsable = IsUsable(outer) && std::all_of(holes.begin(), holes.end(), IsUsable);
    auto outerIndices = areUsable ? AddLoop(outer) : std::vector<std::uint32_t>();
    if (!areUsable) ++absurd_;
    if (outerIndices.empty()) {
        ++dropped_;
        return false;
    }
    auto const face = shape_.faces.size();
    auto const normal = GetAreaVector(outer);
    for (auto const& hole : holes) {
        auto indices = AddLoop(Dot(GetAreaVector(hole), normal) > 0 ? Reversed(hole) : hole);
        if (!indices.empty()) shape_.holes[face].push_back(std::move(indices));
    }
    shape_.faces.push_back(std::move(outerIndices));
    return true;
}

FacetedBRep ShapeBuilder::Take() {
    indices_.clear();
    return std::exchange(shape_, {});
}

Vertex GetAreaVector(Loop const& loop) {
    Vertex sum;
    if (loop.empty()) return sum;
    for (std::size_t i = 1; i + 1 < loop.size(); ++i) sum = sum + Cross(loop[i] - loop[0], loop[i + 1] - loop[0]);
    return sum;
}

FacetedBRep Extrude(std::vector<Loop> const& loops, Vertex const& direction) {
    if (loops.empty() || loops.front().size() < 3 || direction.z == 0 || !IsUsable({direction})) return {};
    // Outer loops counter-clockwise, holes clockwise, seen against the direction: then the far cap and the sides look
    // outward as they are, and the near cap is turned.
    std::vector<Loop> near;
    for (auto const& loop : loops) {
        auto const isCounterClockwise = GetAreaVector(loop).z * direction.z > 0;
        near.push_back(isCounterClockwise == near.empty() ? loop : Reversed(loop));
    }
    auto far = near;
    for (auto& loop : far) {
        for (auto& point : loop) point = point + direction;
    }
    ShapeBuilder builder;
    builder.AddFace(far.front(), {far.begin() + 1, far.end()});
    builder.AddFace(Reversed(near.front()), {near.begin() + 1, near.end()});
    for (std::size_t i = 0; i < near.size(); ++i) {
        for (std::size_t j = 0; j < near[i].size(); ++j) {
            auto const k = (j + 1) % near[i].size();
            builder.AddFace({near[i][j], near[i][k], far[i][k], far[i][j]});
        }
    }
    return builder.Take();
}

double GetVolume(FacetedBRep const& shape) {
    if (shape.vertices.empty()) return 0;
    auto const origin = shape.vertices.front();
    double sum = 0;
    for (std::size_t face = 0; face < shape.faces.size(); ++face) {
        ForEachLoop(shape, face, [&](auto const& indices) {
            auto const loop = ToPoints(shape, indices);
            sum += Dot(loop.front() - origin, GetAreaVector(loop));
        });
    }
    return sum / 6;
}

bool IsClosed(FacetedBRep const& shape) {
    // Each edge as (smaller, larger), with the direction in which it is walked.
    std::vector<std::tuple<std::uint32_t, std::uint32_t, int>> edges;
    for (std::size_t face = 0; face < shape.faces.size(); ++face) {
        ForEachLoop(shape, face, [&](auto const& loop) {
            for (std::size_t i = 0; i < loop.size(); ++i) {
                auto const a = loop[i];
                auto const b = loop[(i + 1) % loop.size()];
                edges.emplace_back(std::min(a, b), std::max(a, b), a < b ? 1 : -1);
            }
        });
    }
    std::sort(edges.begin(), edges.end());
    for (std::size_t i = 0; i < edges.size();) {
        int sum = 0;
        auto const a = std::get<0>(edges[i]);
        auto const b = std::get<1>(edges[i]);
        for (; i < edges.size() && std::get<0>(edges[i]) == a && std::get<1>(edges[i]) == b; ++i) {
            sum += std::get<2>(edges[i]);
        }
        if (sum != 0) return false;
    }
    return true;
}

void Flip(FacetedBRep& shape) {
    for (auto& face : shape.faces) std::reverse(face.begin(), face.end());
    for (auto& entry : shape.holes) {
        for (auto& hole : entry.second) std::reverse(hole.begin(), hole.end());
    }
}

void Transform(FacetedBRep& shape, Matrix4 const& matrix) {
    for (auto& vertex : shape.vertices) vertex = TransformPoint(matrix, vertex);
    if (Dot(Cross(matrix.GetColumn(0), matrix.GetColumn(1)), matrix.GetColumn(2)) < 0) Flip(shape);
}

Matrix4 MakeTranslation(Vertex const& offset) {
    Matrix4 matrix;
    matrix(0, 3) = offset.x;
    matrix(1, 3) = offset.y;
    matrix(2, 3) = offset.z;
    return matrix;
}

Matrix4 InvertRigid(Matrix4 const& matrix) {
    Matrix4 rotation;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) rotation(row, column) = matrix(column, row);
    }
    return rotation * MakeTranslation(-1.0 * matrix.GetColumn(3));
}

bool IsRigid(Matrix4 const& matrix) {
    auto const x = matrix.GetColumn(0);
    auto const y = matrix.GetColumn(1);
    auto const z = matrix.GetColumn(2);
    auto const near = [](double value, double target) { return std::abs(value - target) <= kRigidTolerance; };
    return near(Dot(x, x), 1) && near(Dot(y, y), 1) && near(Dot(z, z), 1) && near(Dot(x, y), 0) && near(Dot(x, z), 0) &&
           near(Dot(y, z), 0) && Dot(Cross(x, y), z) > 0;
}

std::vector<FacetedBRep> SplitShape(FacetedBRep const& shape, std::size_t vertexLimit) {
    if (shape.vertices.size() <= vertexLimit) return {shape};
    std::vector<FacetedBRep> parts;
    FaceCollector collector(shape, vertexLimit);
    for (std::size_t face = 0; face < shape.faces.size(); ++face) {
        if (collector.Add(face)) continue;
        if (!collector.IsEmpty()) parts.push_back(collector.Take());
        collector.Add(face);
    }
    if (!collector.IsEmpty()) parts.push_back(collector.Take());
    return parts;
}

}  // namespace QuorlanProgram::Import
