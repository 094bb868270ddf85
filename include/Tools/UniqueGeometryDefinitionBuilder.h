#pragma once

#include <GeometryObjectLib/AffineTransform.h>
#include <GeometryObjectLib/FacetedBRep.h>
#include <GeometryObjectLib/GraphicsContainer.h>
#include <Quorlan/IGeometryDefinitionBuilder.h>
#include <Quorlan/ModelTypes.h>
#include <Tools/Export.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace Quorlan::Tools {

/// Writes each distinct shape of a model once: a shape that is a rotated or moved copy of an earlier one is answered
/// with the earlier definition and the transform between the two.
///
///     UniqueGeometryDefinitionBuilder unique(modelBuilder.GetGeometryDefinitionBuilder());
///     AffineTransform toDefinition;
///     auto const definition = unique.Add(shape, &toDefinition);
///     // place the instance with: placement of the shape * inverse of toDefinition
///
/// Every `Add` returns the index of the definition, and sets `*transform` to the rigid transform that maps the given
/// shape onto it: the identity for a definition written by this very call, unless the shape was re-centred.
///
/// What a copy is: the same number of vertices; every vertex within 1e-5 of its counterpart (1e-7 with texture
/// coordinates) after the transform, position by position; the same outer and inner loops, index by index. Permuted
/// vertices, rotated loops and mirror images are not copies. Of several earlier shapes that fit, the first wins.
/// A shape of fewer than 3 vertices gives the index `kInvalidIndex` with `*transform` as it was. A shape whose vertices
/// all lie on one line, or whose frame is too small to tell (|X x Y|^2 <= 1e-15 for two edges X and Y from its first
/// vertex to far ones), is written each time it is added.
///
/// The four overloads keep their shapes apart from each other. The target is borrowed and must outlive this object.
/// REQUIRES for every `Add`: `transform` is not null.
/// COST: linear in the shape, whatever number of shapes came before; a copy of every new shape is kept.
class QUORLAN_TOOLS_API UniqueGeometryDefinitionBuilder {
public:
    explicit UniqueGeometryDefinitionBuilder(IGeometryDefinitionBuilder& target);
    ~UniqueGeometryDefinitionBuilder();

    UniqueGeometryDefinitionBuilder(UniqueGeometryDefinitionBuilder const&) = delete;
    UniqueGeometryDefinitionBuilder& operator=(UniqueGeometryDefinitionBuilder const&) = delete;

    /// A plain shape. One that lies far from the origin (its box's centre more than 100 box diagonals away) is compared
    /// and written with the box's centre moved to the origin; `*transform` then includes that move.
    GeometryDefinitionIndex_t Add(FacetedBRep const& shape, AffineTransform* transform);

    /// A shape with one normal per vertex; another number of normals gives `kInvalidIndex`.
    ///
    /// A copy must also have the earlier normals, each within 1e-5 after the rotation of `*transform` was applied to
    /// the earlier one. As that rotation leads from the given shape to the earlier one, moved copies are always
    /// recognised, rotated ones only where rotating twice leaves every normal as it was, as for a half turn. Where the
    /// positions fit and the normals do not, the shape is written anew each time.
    GeometryDefinitionIndex_t Add(std::pair<FacetedBRep, std::vector<Vertex>> const& shapeWithNormals,
                                  AffineTransform* transform);

    /// A shape with one texture coordinate pair (u, v) per vertex; another number of pairs gives `kInvalidIndex`.
    ///
    /// A copy must also have the earlier pairs, |du| and |dv| at most 1e-5. Where the positions fit and the pairs do
    /// not, the shape is written anew each time.
    GeometryDefinitionIndex_t Add(std::pair<FacetedBRep, std::vector<std::pair<float, float>>> const& shapeWithUVs,
                                  AffineTransform* transform);

    /// Line graphics; a container without lines and arcs gives `kInvalidIndex` with `*transform` as it was.
    ///
    /// A copy has the same number of lines and of arcs, and one rigid motion brings, in order, the end points of the
    /// lines and the centres, start points, end points and axes (as unit steps, and scaled by the sweep angle) of the
    /// arcs to within 1e-5 of the earlier ones. Containers of collinear lines are recognised too; one whose points
    /// all coincide is written each time. Nothing is re-centred.
    GeometryDefinitionIndex_t Add(GeometryObjectLib::GraphicsContainer const& graphics, AffineTransform* transform);

    /// Copies, over all overloads, whose transform (before a re-centring is added) rotates: an axis differs from the
    /// unit axis by more than 1e-5.
    std::uint32_t GetTransformedCount() const;

    /// Copies that do not rotate and lie more than 1e-5 away from their definition.
    std::uint32_t GetTranslatedCount() const;

    /// All other copies.
    std::uint32_t GetIdenticalCount() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace Quorlan::Tools
