#pragma once

#include <Tools/Export.h>

#include <cstddef>
#include <vector>

namespace Quorlan::Tools {

/// Reduces every BRep of a model buffer to one thick line segment, its coarsest level of detail: the principal axis of
/// its vertices, cut to their extent along it, with the distance of the farthest vertex as radius.
///
/// The axis is that of the least moment of inertia of the vertices as equal masses, the direction in which they spread
/// most. Where it is not unique (a cube, a square plate), and which end is the start, is the eigen solver's choice, the
/// same on every machine. All arithmetic is in single precision: far from the origin, at 1e5 times the size of a shape,
/// the line loses its meaning.
class QUORLAN_TOOLS_API LodLineBRepBuilder {
public:
    /// In definition coordinates; all zero for a BRep of no vertices.
    struct line_s {
        float startX, startY, startZ;
        float endX, endY, endZ;
        float radius;
    };

    /// Computes the lines of all BReps.
    /// REQUIRES: `buffer` is a trusted model buffer; it is not kept after the call.
    /// RETURNS false, with no lines, if it has another identifier or lacks its entities or its geometry.
    /// COST: three passes over the vertices, and one eigen decomposition per BRep.
    bool Build(char const* buffer);

    /// The line of BRep `index` of kind 1 (plain), 6 (with texture coordinates) or 7 (with normals), as definitions
    /// name it; all zero for any other kind. It is valid until the next Build.
    /// REQUIRES: `index` is below the count.
    line_s const& GetLine(unsigned kind, unsigned index) const;

    /// The number of lines of a kind: that of its BReps, or of those before the first without a vertex vector.
    std::size_t GetLineCount(unsigned kind) const;

private:
    QUORLAN_TOOLS_LOCAL std::vector<line_s> const* FindLines(unsigned kind) const;

    std::vector<line_s> plainLines_;
    std::vector<line_s> normalLines_;
    std::vector<line_s> uvLines_;
};

}  // namespace Quorlan::Tools
