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

constexpr std::uint64_t kNoKey = KeyIndex::kNone;
constexpr double kSmallestDeterminant = 1e-15;  ///< of a reference frame, [model units^4]

/// Width of a cell of sizes in tolerances. A query looks at the sizes within 2 tolerances on either side: at this
/// width it meets a second cell in one case of eight, and shapes of different size rarely share a cell.
constexpr double kCellWidthInTolerances = 32;

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

std::uint64_t Mix(std::uint64_t value) {
    constexpr std::uint64_t kFactor = 0xD6E8FEB86659FD93;  // odd, half of its bits set
    value = (value ^ value >> 32) * kFactor;
    return value ^ value >> 32;
}

bool Contains(std::vector<Vertex> const& vertices, ReferencePair const& pair) {
    return vertices.size() > pair.first && vertices.size() > pair.second;
}

double MeasureSize(std::vector<Vertex> const& vertices, ReferencePair const& pair) {
    return Length(vertices[pair.first] - vertices[0]) + Length(vertices[pair.second] - vertices[0]);
}

/// The inverse of a reference frame: the rows of its linear part, and the frame's origin as they map it. Where the
/// determinant is out of range its values are zero or no numbers, and nothing matches.
struct InverseFrame {
    Vertex rows[3];
    Vertex origin;

    explicit InverseFrame(ReferenceFrame const& frame) {
        double const determinant = Dot(frame.z, frame.z);  // X . (Y x Z), as Z is X x Y
        rows[0] = Cross(frame.y, frame.z) / determinant;
        rows[1] = Cross(frame.z, frame.x) / determinant;
        rows[2] = frame.z / determinant;
        origin = {Dot(rows[0], frame.origin), Dot(rows[1], frame.origin), Dot(rows[2], frame.origin)};
    }
};

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

Vertex Normalize(Vertex const& v) { return v / Length(v); }

/// The product of a frame with an inverse frame, its linear part made orthonormal from its first two columns. The
/// translation is the product's own. Where an axis has no length, its values are no numbers.
RigidTransform MakeRigid(ReferenceFrame const& stored, InverseFrame const& inverse) {
    auto const map = [&stored](double a, double b, double c) { return stored.x * a + stored.y * b + stored.z * c; };
    auto const& r = inverse.rows;
    Vertex const x = map(r[0].x, r[1].x, r[2].x);
    Vertex const z = Cross(x, map(r[0].y, r[1].y, r[2].y));
    Vertex const y = Cross(z, x);
    return {Normalize(x), Normalize(y), Normalize(z),
            stored.origin - map(inverse.origin.x, inverse.origin.y, inverse.origin.z)};
}

/// Vertices are compared position by position. What is not a number, in a vertex or in the transform, agrees with
/// nothing.
bool HasSameVertices(RigidTransform const& rigid, std::vector<Vertex> const& vertices,
                     std::vector<Vertex> const& stored, double tolerance) {
    double const toleranceSquared = tolerance * tolerance;
    for (std::size_t i = 0; i < vertices.size(); ++i) {
        Vertex const difference = rigid(vertices[i]) - stored[i];
        if (!(Dot(difference, difference) <= toleranceSquared)) return false;
    }
    return true;
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

struct GeometryMatcher::Match {
    std::uint64_t key = kNoKey;  ///< the smallest that was found
    RigidTransform transform;
};

/// A shape as it is compared with the entries of one reference pair.
struct GeometryMatcher::Sought {
    std::uint32_t signature;
    ReferencePair pair;
    double size;
    std::vector<Vertex> const& vertices;
    FacetedBRep const& loops;
};

GeometryMatcher::GeometryMatcher(double tolerance)
    : tolerance_(tolerance), cellsPerUnit_(1 / (kCellWidthInTolerances * tolerance)) {}

bool GeometryMatcher::Query(std::vector<Vertex> const& vertices, FacetedBRep const& loops, std::uint64_t& key,
                            AffineTransform& transform) {
    ++callCount_;
    std::uint32_t const signature = ComputeSignature(loops, vertices.size());
    Match match;
    FindFirst(signature, vertices, loops, match);
    if (match.key != kNoKey) {
        key = match.key;
        transform = AffineTransform::FromMatrix(match.transform.ToMatrix());
        return true;
    }
    key = entries_.size();
    transform = AffineTransform();
    MatcherEntry& entry = entries_.emplace_back();
    auto const pair = FindReferencePair(vertices);
    auto const frame = pair ? MakeReferenceFrame(vertices, *pair) : std::nullopt;
    if (!frame) return false;
    entry.frame = *frame;
    entry.size = MeasureSize(vertices, *pair);
    entry.signature = signature;
    entry.pair = *pair;
    entry.vertices = vertices;
    entry.loops = FlattenLoops(loops);
    Register(key);
    return false;
}

void GeometryMatcher::FindFirst(std::uint32_t signature, std::vector<Vertex> const& vertices, FacetedBRep const& loops,
                                Match& match) const {
    auto const list = pairsBySignature_.Find(signature);
    if (list == kNoKey) return;
    ReferencePair measured;
    double firstLength = 0;
    for (auto const& [pair, pairHash] : pairs_[list]) {
        if (!Contains(vertices, pair)) continue;
        if (pair.first != measured.first) firstLength = Length(vertices[pair.first] - vertices[0]);
        measured = pair;
        double const size = firstLength + Length(vertices[pair.second] - vertices[0]);
        // The sizes s with |s - size| <= 2 tolerances all lie in these cells, as rounding keeps the order of numbers.
        std::int64_t const lastCell = CellOf(size + 2 * tolerance_);
        for (std::int64_t cell = CellOf(size - 2 * tolerance_); cell <= lastCell; ++cell) {
            std::uint64_t const first = firstByCell_.Find(CellKey(pairHash, cell));
            if (first < match.key) FindInCell(first, {signature, pair, size, vertices, loops}, match);
        }
    }
}

void GeometryMatcher::FindInCell(std::uint64_t first, Sought const& sought, Match& match) const {
    std::optional<InverseFrame> inverse;
    for (std::uint64_t key = first; key < match.key; key = entries_[key].nextInCell) {
        MatcherEntry const& entry = entries_[key];
        if (std::abs(entry.size - sought.size) > 2 * tolerance_) continue;
        if (entry.signature != sought.signature || !(entry.pair == sought.pair)) continue;
        if (entry.vertices.size() != sought.vertices.size()) continue;
        if (!inverse) {
            auto const frame = MakeReferenceFrame(sought.vertices, sought.pair);
            if (!frame) return;
            inverse.emplace(*frame);
        }
        RigidTransform const rigid = MakeRigid(entry.frame, *inverse);
        if (!HasSameVertices(rigid, sought.vertices, entry.vertices, tolerance_)) continue;
        if (HasSameLoops(sought.loops, entry.loops)) match = {key, rigid};
    }
}

GeometryMatcher::SeenPair const& GeometryMatcher::FindOrAddPair(std::uint32_t signature, ReferencePair const& pair) {
    auto list = pairsBySignature_.Find(signature);
    if (list == kNoKey) {
        list = pairs_.size();
        pairs_.emplace_back();
        pairsBySignature_.Insert(signature, list);
    }
    auto& pairs = pairs_[list];
    auto const seen = std::find_if(pairs.begin(), pairs.end(), [&](SeenPair const& s) { return s.pair == pair; });
    if (seen != pairs.end()) return *seen;
    std::uint64_t const indices = static_cast<std::uint64_t>(pair.first) << 32 | pair.second;
    return pairs.emplace_back(SeenPair{pair, Mix(Mix(signature) ^ indices)});
}

void GeometryMatcher::Register(std::uint64_t key) {
    MatcherEntry& entry = entries_[key];
    std::uint64_t const pairHash = FindOrAddPair(entry.signature, entry.pair).hash;
    std::uint64_t const cell = CellKey(pairHash, CellOf(entry.size));
    std::uint64_t const first = firstByCell_.Find(cell);
    if (first == kNoKey) {
        entry.lastInCell = key;
        firstByCell_.Insert(cell, key);
    } else {
        entries_[entries_[first].lastInCell].nextInCell = key;
        entries_[first].lastInCell = key;
    }
}

std::int64_t GeometryMatcher::CellOf(double size) const {
    constexpr double kLastCell = 4611686018427387904.0;  // 2^62: larger sizes, and those that are no number
    return static_cast<std::int64_t>(std::min(kLastCell, size * cellsPerUnit_));
}

std::uint64_t GeometryMatcher::CellKey(std::uint64_t pairHash, std::int64_t cell) {
    return pairHash + static_cast<std::uint64_t>(cell);  // near cells lie side by side and stay apart
}

}  // namespace Quorlan::Tools
