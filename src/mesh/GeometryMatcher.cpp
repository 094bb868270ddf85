#include "mesh/GeometryMatcher.h"

#include <GeometryObjectLib/Matrix4.h>

#include <algorithm>
#include <cmath>

namespace Quorlan::Tools {
namespace {

using GeometryObjectLib::Cross;
using GeometryObjectLib::Dot;
using GeometryObjectLib::Length;
using GeometryObjectLib::Matrix4;

constexpr std::uint64_t kNoKey = ~std::uint64_t{0};
constexpr std::uint32_t kSignatureFactor = 1521134295;  // 0x5AAAAAD7
constexpr double kSmallestDeterminant = 1e-15;          ///< of a reference frame, [model units^4]

/// Width of a cell of sizes in tolerances. A query looks at the sizes within 2 tolerances on either side: at this
/// width it meets a second cell in one case of eight, and shapes of different size rarely share a cell.
constexpr double kCellWidthInTolerances = 32;

/// A run of steps s -> index - s * factor, composed into the one step s -> offset + s * scale (modulo 2^32).
struct FoldedRun {
    std::uint32_t scale = 1;
    std::uint32_t offset = 0;

    void Append(std::uint32_t index) {
        scale = 0u - scale * kSignatureFactor;
        offset = index - offset * kSignatureFactor;
    }
};

/// The farthest of `vertices` by `measureSquared`. Lengths decide, not their squares: two different squares may have
/// the same root, and then the earlier vertex stays. 0 if none is farther than 0.
template <class Measure>
std::uint32_t FindFarthest(std::vector<Vertex> const& vertices, Measure const& measureSquared) {
    std::uint32_t farthest = 0;
    double largestSquare = 0;
    double largest = 0;
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        double const square = measureSquared(vertices[i]);
        if (!(square > largestSquare)) continue;
        double const length = std::sqrt(square);
        if (!(length > largest)) continue;
        farthest = static_cast<std::uint32_t>(i);
        largestSquare = square;
        largest = length;
    }
    return farthest;
}

bool IsFinite(Vertex const& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

bool Contains(std::vector<Vertex> const& vertices, ReferencePair const& pair) {
    return vertices.size() > pair.first && vertices.size() > pair.second;
}

double MeasureSize(std::vector<Vertex> const& vertices, ReferencePair const& pair) {
    return Length(vertices[pair.first] - vertices[0]) + Length(vertices[pair.second] - vertices[0]);
}

/// The inverse of a reference frame: the rows of its linear part, and the frame's origin as they map it.
struct InverseFrame {
    Vertex rows[3];
    Vertex origin;
};

std::optional<InverseFrame> Invert(ReferenceFrame const& frame) {
    double const determinant = Dot(frame.z, frame.z);  // X . (Y x Z), as Z is X x Y
    InverseFrame inverse;
    inverse.rows[0] = Cross(frame.y, frame.z) / determinant;
    inverse.rows[1] = Cross(frame.z, frame.x) / determinant;
    inverse.rows[2] = frame.z / determinant;
    inverse.origin = {Dot(inverse.rows[0], frame.origin), Dot(inverse.rows[1], frame.origin),
                      Dot(inverse.rows[2], frame.origin)};
    for (Vertex const& row : inverse.rows) {
        if (!IsFinite(row)) return std::nullopt;
    }
    if (!IsFinite(inverse.origin)) return std::nullopt;
    return inverse;
}

/// A rigid transform as three unit axes and a translation.
struct RigidTransform {
    Vertex x;
    Vertex y;
    Vertex z;
    Vertex translation;

    Vertex operator()(Vertex const& p) const { return x * p.x + y * p.y + z * p.z + translation; }

    Matrix4 ToMatrix() const {
        Matrix4 matrix;
        matrix.m = {x.x, y.x, z.x, translation.x, x.y, y.y, z.y, translation.y,
                    x.z, y.z, z.z, translation.z, 0,   0,   0,   1};
        return matrix;
    }
};

/// The product of a frame with an inverse frame, its linear part made orthonormal from its first two columns. The
/// translation is the product's own. Empty where an axis has no length.
std::optional<RigidTransform> MakeRigid(ReferenceFrame const& stored, InverseFrame const& inverse) {
    auto const map = [&stored](double a, double b, double c) { return stored.x * a + stored.y * b + stored.z * c; };
    auto const& r = inverse.rows;
    Vertex const x = map(r[0].x, r[1].x, r[2].x);
    Vertex const z = Cross(x, map(r[0].y, r[1].y, r[2].y));
    Vertex const y = Cross(z, x);

    RigidTransform const rigid{x / Length(x), y / Length(y), z / Length(z),
                               stored.origin - map(inverse.origin.x, inverse.origin.y, inverse.origin.z)};
    if (!IsFinite(rigid.x) || !IsFinite(rigid.y) || !IsFinite(rigid.z) || !IsFinite(rigid.translation)) {
        return std::nullopt;
    }
    return rigid;
}

/// Vertices are compared position by position. One that is not a number agrees with nothing.
bool HasSameVertices(RigidTransform const& rigid, std::vector<Vertex> const& vertices,
                     std::vector<Vertex> const& stored, double tolerance) {
    double const toleranceSquared = tolerance * tolerance;
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        Vertex const difference = rigid(vertices[i]) - stored[i];
        if (!(Dot(difference, difference) <= toleranceSquared)) return false;
    }
    return true;
}

/// Hands the loops of `shape` to `visit` in order: outer loop, number of inner loops (as a loop of one), inner loops of
/// each face. Stops where `visit` returns false.
template <class Visit>
bool VisitLoops(FacetedBRep const& shape, Visit const& visit) {
    auto entry = shape.holes.begin();
    for (std::size_t face = 0; face < shape.faces.size(); ++face) {
        auto const& outer = shape.faces[face];
        while (entry != shape.holes.end() && entry->first < face) ++entry;
        bool const hasHoles = entry != shape.holes.end() && entry->first == face;
        auto const innerCount = static_cast<std::uint32_t>(hasHoles ? entry->second.size() : 0);
        if (!visit(outer, innerCount)) return false;
        if (!hasHoles) continue;
        for (auto const& inner : entry->second) {
            if (!visit(inner, 0)) return false;
        }
    }
    return true;
}

/// The loops of a shape in one run: before each loop its length and the number of inner loops that follow it.
std::vector<std::uint32_t> FlattenLoops(FacetedBRep const& shape) {
    std::size_t length = 0;
    VisitLoops(shape, [&](auto const& loop, std::uint32_t) { return length += 2 + loop.size(), true; });
    std::vector<std::uint32_t> flat;
    flat.reserve(length);
    VisitLoops(shape, [&](auto const& loop, std::uint32_t innerCount) {
        flat.push_back(static_cast<std::uint32_t>(loop.size()));
        flat.push_back(innerCount);
        flat.insert(flat.end(), loop.begin(), loop.end());
        return true;
    });
    return flat;
}

bool HasSameLoops(FacetedBRep const& shape, std::vector<std::uint32_t> const& flat) {
    std::size_t position = 0;
    bool const agree = VisitLoops(shape, [&](auto const& loop, std::uint32_t innerCount) {
        if (flat.size() - position < 2 + loop.size()) return false;
        if (flat[position] != loop.size() || flat[position + 1] != innerCount) return false;
        auto const begin = flat.begin() + static_cast<std::ptrdiff_t>(position) + 2;
        position += 2 + loop.size();
        return std::equal(loop.begin(), loop.end(), begin);
    });
    return agree && position == flat.size();
}

}  // namespace

std::optional<ReferencePair> FindReferencePair(std::vector<Vertex> const& vertices) {
    if (vertices.size() < 3) return std::nullopt;
    Vertex const& start = vertices[0];
    auto const first = FindFarthest(vertices, [&](Vertex const& v) { return Dot(v - start, v - start); });
    if (first == 0) return std::nullopt;

    Vertex const direction = (vertices[first] - start) / Length(vertices[first] - start);
    auto const second = FindFarthest(vertices, [&](Vertex const& v) {
        Vertex const foot = start + direction * Dot(v - start, direction);
        return Dot(v - foot, v - foot);
    });
    if (second == 0) return std::nullopt;
    return ReferencePair{first, second};
}

std::optional<ReferenceFrame> MakeReferenceFrame(std::vector<Vertex> const& vertices, ReferencePair const& pair) {
    if (!Contains(vertices, pair)) return std::nullopt;
    Vertex const x = vertices[pair.first] - vertices[0];
    Vertex const y = vertices[pair.second] - vertices[0];
    Vertex const z = Cross(x, y);
    if (!(Dot(z, z) > kSmallestDeterminant)) return std::nullopt;  // the determinant, as Z is X x Y
    return ReferenceFrame{vertices[0], x, y, z};
}

std::uint32_t ComputeSignature(FacetedBRep const& shape, std::size_t vertexCount) {
    FoldedRun innerRun;
    for (auto const& [face, loops] : shape.holes) {
        for (auto const& loop : loops) {
            for (std::uint32_t const index : loop) innerRun.Append(index);
        }
    }
    auto signature = static_cast<std::uint32_t>((shape.holes.size() * 256 + shape.faces.size()) * 256 + vertexCount);
    for (auto const& loop : shape.faces) {
        for (std::uint32_t const index : loop) signature = index - signature * kSignatureFactor;
        signature = innerRun.offset + signature * innerRun.scale;
    }
    return signature;
}

bool GeometryMatcher::Query(std::vector<Vertex> const& vertices, FacetedBRep const& loops, std::uint64_t& key,
                            AffineTransform& transform) {
    ++callCount_;
    std::uint32_t const signature = ComputeSignature(loops, vertices.size());
    key = FindFirstMatch(signature, vertices, loops, transform);
    if (key != kNoKey) return true;

    key = entries_.size();
    transform = AffineTransform();
    MatcherEntry& entry = entries_.emplace_back();
    auto const pair = FindReferencePair(vertices);
    auto const frame = pair ? MakeReferenceFrame(vertices, *pair) : std::nullopt;
    if (!frame) return false;
    entry.frame = *frame;
    entry.size = MeasureSize(vertices, *pair);
    entry.nextInCell = kNoKey;
    entry.vertices = vertices;
    entry.loops = FlattenLoops(loops);
    Register(signature, *pair, key);
    return false;
}

std::uint64_t GeometryMatcher::FindFirstMatch(std::uint32_t signature, std::vector<Vertex> const& vertices,
                                              FacetedBRep const& loops, AffineTransform& transform) const {
    auto const bucket = pairsBySignature_.find(signature);
    if (bucket == pairsBySignature_.end()) return kNoKey;

    std::uint64_t best = kNoKey;
    RigidTransform bestTransform;
    for (ReferencePair const& pair : bucket->second) {
        if (!Contains(vertices, pair)) continue;
        double const size = MeasureSize(vertices, pair);
        std::optional<InverseFrame> inverse;
        // The sizes s with |s - size| <= 2 tolerances all lie in these cells, as rounding keeps the order of numbers.
        std::int64_t const lastCell = CellOf(size + 2 * tolerance_);
        for (std::int64_t cell = CellOf(size - 2 * tolerance_); cell <= lastCell; ++cell) {
            auto const chain = cells_.find({signature, pair, cell});
            if (chain == cells_.end()) continue;
            for (auto key = chain->second.head; key < best; key = entries_[key].nextInCell) {
                MatcherEntry const& entry = entries_[key];
                if (std::abs(entry.size - size) > 2 * tolerance_ || entry.vertices.size() != vertices.size()) continue;
                if (!inverse) {
                    auto const frame = MakeReferenceFrame(vertices, pair);
                    if (frame) inverse = Invert(*frame);
                    if (!inverse) break;
                }
                auto const rigid = MakeRigid(entry.frame, *inverse);
                if (!rigid || !HasSameVertices(*rigid, vertices, entry.vertices, tolerance_)) continue;
                if (!HasSameLoops(loops, entry.loops)) continue;
                best = key;
                bestTransform = *rigid;
            }
        }
    }
    if (best != kNoKey) transform = AffineTransform::FromMatrix(bestTransform.ToMatrix());
    return best;
}

void GeometryMatcher::Register(std::uint32_t signature, ReferencePair const& pair, std::uint64_t key) {
    auto& pairs = pairsBySignature_[signature];
    if (std::find(pairs.begin(), pairs.end(), pair) == pairs.end()) pairs.push_back(pair);

    auto const [chain, isNew] =
        cells_.try_emplace(CellId{signature, pair, CellOf(entries_[key].size)}, CellChain{key, key});
    if (isNew) return;
    entries_[chain->second.tail].nextInCell = key;
    chain->second.tail = key;
}

std::int64_t GeometryMatcher::CellOf(double size) const {
    constexpr double kLastCell = 4611686018427387904.0;  // 2^62; sizes beyond it and those that are no number
    return static_cast<std::int64_t>(std::min(kLastCell, size / (kCellWidthInTolerances * tolerance_)));
}

std::size_t GeometryMatcher::CellHash::operator()(CellId const& id) const {
    constexpr std::uint64_t kMix = 0x9E3779B97F4A7C15;  // 2^64 over the golden ratio
    std::uint64_t hash = (static_cast<std::uint64_t>(id.signature) << 32 ^ static_cast<std::uint64_t>(id.cell)) * kMix;
    hash = (hash ^ hash >> 29 ^ (static_cast<std::uint64_t>(id.pair.first) << 32 | id.pair.second)) * kMix;
    return static_cast<std::size_t>(hash ^ hash >> 32);
}

}  // namespace Quorlan::Tools
