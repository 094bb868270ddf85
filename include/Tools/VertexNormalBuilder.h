#pragma once

#include <Tools/Export.h>

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include <cstdint>
#include <memory>
#include <vector>

namespace Quorlan::Tools {

/// Turns one faceted BRep of a model buffer into a render mesh: triangles over corners, where a corner is a pair of one
/// stored vertex position and one shared normal.
///
/// A corner's normal is the mean of the normals of its face and of those faces around its vertex that differ from its
/// face by less than a crease angle; across sharper edges a vertex is split into several corners. Corner v, for every v
/// below the vertex count, is the first corner of vertex v, and (0, 0) where no face uses the vertex; further corners
/// follow. Smoothed normals closer than 1e-5 share one entry.
///
/// Triangles wind as their face's loop does. Triangles and convex quadrilaterals are split directly; everything else,
/// and every face with holes, goes through earcut (ear clipping after Held, "FIST: Fast Industrial-Strength
/// Triangulation of Polygons", 2001) in a plane projection, in the order in which earcut returns the triangles.
///
/// All indices have 16 bits: a BRep has at most 65534 corners. Beyond that, triangles name corner 65535, which does not
/// exist; everything else stays right. Faces of less than three vertices make no corners and no triangles; degenerate
/// faces get the normal (1, 0, 0). An index out of range, or a vector that is absent, is skipped.
///
/// A builder can be built again and then allocates little or nothing. Copies copy the results.
///
///     VertexNormalBuilder builder;
///     if (builder.Build(buffer, definition, 0.5f)) Draw(builder.GetTriangles(), builder.GetCorners(), ...);
class QUORLAN_TOOLS_API VertexNormalBuilder {
public:
    /// Corner indices.
    struct triangle_s {
        std::uint16_t a, b, c;
    };

    struct corner_s {
        std::uint16_t normal;    ///< into the normals
        std::uint16_t position;  ///< into the positions, and into the texture coordinates
    };

    VertexNormalBuilder();
    ~VertexNormalBuilder();
    VertexNormalBuilder(VertexNormalBuilder const& other);
    VertexNormalBuilder(VertexNormalBuilder&& other) noexcept;
    VertexNormalBuilder& operator=(VertexNormalBuilder const& other);
    VertexNormalBuilder& operator=(VertexNormalBuilder&& other) noexcept;

    /// Builds the mesh of a geometry definition of any BRep kind; `angle` [rad] is the crease angle, for BReps with
    /// stored normals always 18 degrees.
    /// REQUIRES: `buffer` is a trusted model buffer; it is not kept after the call.
    /// RETURNS false, with the results unchanged, if there is no such definition or its kind is none of 1, 6 and 7;
    /// else what the operation of its kind returns.
    bool Build(std::vector<char> const& buffer, unsigned int geometryDefinition, float angle);

    /// Builds the mesh of entry `index` of one of the three BRep vectors. All results are emptied first.
    /// RETURNS false only for a buffer of less than 8 bytes; an absent BRep gives an empty mesh.
    /// COST: linear in the loop positions, times the faces around a vertex, plus one search in the tree of normals for
    /// each distinct normal; n log n, at worst n^2, for polygons that are not convex.
    bool BuildBRep(std::vector<char> const& buffer, unsigned int index, float angle);

    /// The crease angle is 18 degrees. The stored normals then replace the smoothed ones, one per stored vertex, while
    /// the corners keep the indices of the smoothed ones: use the stored normals by position.
    bool BuildBRepWithNormal(std::vector<char> const& buffer, unsigned int index);

    /// Fills the texture coordinates too.
    bool BuildBRepWithUV(std::vector<char> const& buffer, unsigned int index, float angle);

    /// The results, in definition coordinates. The caller may change them or move them out.
    std::vector<triangle_s>& GetTriangles() { return triangles_; }
    std::vector<corner_s>& GetCorners() { return corners_; }

    /// One per stored vertex, in stored order.
    std::vector<glm::vec3>& GetPositions() { return positions_; }

    /// The distinct normals of unit length, in order of their first use.
    std::vector<glm::vec3>& GetNormals() { return normals_; }

    /// One per stored vertex, in stored order; empty for BReps without them.
    std::vector<glm::vec2>& GetTexCoords() { return texcoords_; }

private:
    class Workspace;

    template <class Table>
    QUORLAN_TOOLS_LOCAL void BuildMesh(Table const* brep, float angle);
    QUORLAN_TOOLS_LOCAL void Clear();

    std::vector<triangle_s> triangles_;
    std::vector<corner_s> corners_;
    std::vector<glm::vec3> positions_;
    std::vector<glm::vec3> normals_;
    std::vector<glm::vec2> texcoords_;
    std::unique_ptr<Workspace> workspace_;  ///< memory kept from build to build; no part of the value
};

}  // namespace Quorlan::Tools
