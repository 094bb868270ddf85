#pragma once

#include <GeometryObjectLib/FacetedBRep.h>
#include <GeometryObjectLib/Matrix4.h>

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

/// Faceted shapes as they are made of IFC geometry.
namespace QuorlanProgram::Import {

using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::Matrix4;
using GeometryObjectLib::Vertex;

using Loop = std::vector<Vertex>;

constexpr double kWeldDistance = 1e-6;       ///< [m] far below what is built, above the noise of the geometry kernel
constexpr double kLargestCoordinate = 1e12;  ///< [m] beyond it a point is none

/// Collects faces given by points into one shape whose vertices occur once.
///
/// Points within one cell of a grid of `kWeldDistance` are one vertex. Loops lose repeated points and, where fewer than
/// three remain, vanish.
class ShapeBuilder {
public:
    /// Adds a face with its holes. Holes are turned so that they run against the outer loop. RETURNS false if nothing
    /// of the outer loop remains or a coordinate is no number; then nothing is added.
    bool AddFace(Loop const& outer, std::vector<Loop> const& holes = {});

    /// The faces that were not added, and those among them whose coordinates are no numbers or beyond all measure.
    std::size_t GetDroppedCount() const { return dropped_; }
    std::size_t GetAbsurdCount() const { return absurd_; }

    /// The shape, and an empty builder again but for these counts.
    FacetedBRep Take();

private:
    using Key = std::array<std::int64_t, 3>;
    struct KeyHash {
        std::size_t operator()(Key const& key) const;
    };

    std::vector<std::uint32_t> AddLoop(Loop const& loop);

    FacetedBRep shape_;
    std::size_t dropped_ = 0;
    std::size_t absurd_ = 0;
    std::unordered_map<Key, std::uint32_t, KeyHash> indices_;
};

/// The prism over a plane area: `loops` in the XY plane, the outer one first, then its holes, in any direction. Caps
/// keep their holes; every edge gives one side. Empty if there is no outer loop or `direction` lies in the plane.
FacetedBRep Extrude(std::vector<Loop> const& loops, Vertex const& direction);

/// Twice the area times the unit normal of a loop, exact for plane loops (Newell's sum).
Vertex GetAreaVector(Loop const& loop);

/// The volume that a closed shape with outward faces encloses; negative where the faces look inward.
double GetVolume(FacetedBRep const& shape);

/// True where every edge is walked as often in one direction as in the other: the faces have no border, and neighbours
/// agree on which side is outside. Bodies that touch themselves along an edge are closed too. COST: n log n.
bool IsClosed(FacetedBRep const& shape);

/// Reverses every loop.
void Flip(FacetedBRep& shape);

/// Moves every vertex, and turns the loops round where `matrix` mirrors.
void Transform(FacetedBRep& shape, Matrix4 const& matrix);

Matrix4 MakeTranslation(Vertex const& offset);

/// The inverse of a rotation and translation.
Matrix4 InvertRigid(Matrix4 const& matrix);

/// True where `matrix` is a rotation and a translation, to within `kRigidTolerance`.
bool IsRigid(Matrix4 const& matrix);
constexpr double kRigidTolerance = 1e-6;  ///< [-] of the entries of the product of the axes with each other

/// Cuts a shape into shapes of at most `vertexLimit` vertices, each with whole faces, in face order. A face with more
/// vertices than that is left out. REQUIRES: vertexLimit >= 3.
std::vector<FacetedBRep> SplitShape(FacetedBRep const& shape, std::size_t vertexLimit);

}  // namespace QuorlanProgram::Import
