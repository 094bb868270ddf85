#pragma once

#include "mesh/BRepLoops.h"
#include "mesh/NormalPool.h"

#include <Tools/VertexNormalBuilder.h>

#include <cstdint>
#include <vector>

namespace Quorlan::Tools {

/// The corners of one mesh: which normal a face has at a vertex, and which pairs of normal and vertex there are.
class CornerBuilder {
public:
    static constexpr std::uint16_t kNone = 65535;

    /// Starts a mesh. REQUIRES: `loops`, `positions` and `corners` outlive the mesh; `positions` holds `vertexCount`.
    void Begin(BRepLoops const& loops, Vector3f const* positions, std::uint32_t vertexCount, float angle,
               std::vector<VertexNormalBuilder::corner_s>& corners);

    /// Writes the corner of `face` at each vertex of one of its loops; kNone where there is no room for another corner.
    void GetCorners(std::uint32_t face, LoopRange loop, std::uint16_t* out);

    /// Gives every corner its position.
    void Finish();

    Vector3f const& GetFaceNormal(std::uint32_t face) const { return faceNormals_[face]; }
    NormalPool const& GetNormals() const { return normals_; }

private:
    void ComputeFaceNormals(std::uint32_t vertexCount);
    void CollectIncidentFaces(std::uint32_t vertexCount);
    std::uint16_t GetCorner(std::uint16_t vertex, std::uint32_t face);
    std::uint16_t GetCornerWithNormal(std::uint16_t vertex, std::uint16_t normal);
    std::uint16_t GetFlatNormal(std::uint32_t face);

    BRepLoops const* loops_ = nullptr;
    Vector3f const* positions_ = nullptr;
    std::vector<VertexNormalBuilder::corner_s>* corners_ = nullptr;
    float threshold_ = 0;  ///< cosine of the crease angle

    std::vector<Vector3f> faceNormals_;
    std::vector<std::uint16_t> flatNormals_;     ///< per face the index of its own normal, once it was asked for
    std::vector<std::uint32_t> incidentBegins_;  ///< per vertex into incidentFaces_, and the end
    std::vector<std::uint32_t> incidentFaces_;   ///< once per occurrence in a loop: by outer loops, then by holes
    NormalPool normals_;
};

}  // namespace Quorlan::Tools
