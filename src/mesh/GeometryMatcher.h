#pragma once

#include "mesh/KeyIndex.h"
#include "mesh/ShapeLoops.h"

#include <GeometryObjectLib/AffineTransform.h>
#include <GeometryObjectLib/FacetedBRep.h>
#include <Quorlan/ModelTypes.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace Quorlan::Tools {

/// Two vertices that span, with vertex 0, the reference frame of a shape: the one farthest from vertex 0, and the one
/// farthest from the line through both. Of equally far vertices the first is taken.
struct ReferencePair {
    std::uint32_t first = kInvalidIndex;
    std::uint32_t second = kInvalidIndex;
};

inline bool operator==(ReferencePair const& a, ReferencePair const& b) {
    return a.first == b.first && a.second == b.second;
}

/// Empty for fewer than 3 vertices and where no vertex is off the others' point or line.
std::optional<ReferencePair> FindReferencePair(std::vector<Vertex> const& vertices);

/// The axes X = v[first] - v[0], Y = v[second] - v[0] and Z = X x Y at v[0]; nothing is normalised.
struct ReferenceFrame {
    Vertex origin;
    Vertex x;
    Vertex y;
    Vertex z;
};

/// Empty for a pair beyond the vertices, and unless the frame's determinant is greater than 1e-15.
std::optional<ReferenceFrame> MakeReferenceFrame(std::vector<Vertex> const& vertices, ReferencePair const& pair);

/// What the matcher keeps of a shape.
struct MatcherEntry {
    ReferenceFrame frame;
    double size = 0;  ///< sum of the lengths of the frame's X and Y
    std::uint32_t signature = 0;
    ReferencePair pair;
    std::uint64_t nextInCell = KeyIndex::kNone;  ///< the next larger key of the same cell
    std::uint64_t lastInCell = KeyIndex::kNone;  ///< kept by the first of a cell
    std::vector<Vertex> vertices;
    std::vector<std::uint32_t> loops;  ///< flattened
};

/// Finds, among the shapes of earlier queries, the first of which a shape is a rigid copy.
///
/// Shapes are told apart in the order of cost: by signature, then by the lengths of two edges, then vertex by vertex,
/// then loop by loop. Lengths are looked up in a grid rather than compared one by one, so that a query among many
/// shapes with the same loops costs as much as among few.
class GeometryMatcher {
public:
    /// `tolerance` [model units] is the farthest that a vertex may lie from its counterpart.
    explicit GeometryMatcher(double tolerance);

    /// RETURNS true if `shape` is a copy of an earlier shape: `key` is that shape's and `transform` maps `shape` onto
    /// it. Otherwise the shape is new: `key` is the next one, counted from 0, and `transform` the identity. A new shape
    /// without a reference frame gets a key too, but is never found again.
    bool Query(FacetedBRep const& shape, std::uint64_t& key, AffineTransform& transform) {
        return Query(shape.vertices, shape, key, transform);
    }

    /// The same for the shape with these vertices and the loops of `loops`.
    bool Query(std::vector<Vertex> const& vertices, FacetedBRep const& loops, std::uint64_t& key,
               AffineTransform& transform);

    std::uint64_t GetCallCount() const { return callCount_; }
    std::uint64_t GetNewShapeCount() const { return entries_.size(); }

private:
    struct Match;
    struct Sought;

    /// A pair that occurs with a signature.
    struct SeenPair {
        ReferencePair pair;
        std::uint64_t hash;  ///< of the signature and the pair
    };

    /// The hash of where the shapes of one signature, one pair and about one size are found. Others may share it; the
    /// entries tell.
    static std::uint64_t CellKey(std::uint64_t pairHash, std::int64_t cell);
    SeenPair const& FindOrAddPair(std::uint32_t signature, ReferencePair const& pair);
    std::int64_t CellOf(double size) const;

    void FindFirst(std::uint32_t signature, std::vector<Vertex> const& vertices, FacetedBRep const& loops,
                   Match& match) const;
    void FindInCell(std::uint64_t first, Sought const& sought, Match& match) const;
    void Register(std::uint64_t key);

    double tolerance_;
    double cellsPerUnit_;
    std::uint64_t callCount_ = 0;
    std::vector<MatcherEntry> entries_;
    std::vector<std::vector<SeenPair>> pairs_;  ///< those that occur, by signature
    KeyIndex pairsBySignature_;                 ///< into `pairs_`
    KeyIndex firstByCell_;                      ///< the smallest key
};

}  // namespace Quorlan::Tools
