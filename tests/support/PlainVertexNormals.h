#pragma once

#include "support/RawModel.h"

#include <array>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace Quorlan::Testing {

/// A render mesh as `VertexNormalBuilder` makes it, by the plain rules: linked lists, one tree walk for every corner,
/// every polygon through earcut. Slow and easy to check; the builder must give the same bits.
///
/// REQUIRES: every index of `brep` is in range.
class PlainVertexNormals {
public:
    std::vector<std::array<std::uint16_t, 3>> triangles;
    std::vector<std::array<std::uint16_t, 2>> corners;  ///< normal, position
    std::vector<Vector3f> positions;
    std::vector<Vector3f> normals;

    PlainVertexNormals(RawBRep const& brep, float angle);

private:
    static constexpr std::uint32_t kNoLink = 0xFFFFFFFF;

    struct IncidentFace {
        std::uint32_t next;
        std::uint32_t face;
    };
    struct TreeNode {
        Vector3f normal;
        std::uint32_t first;
        std::uint32_t second;
    };

    void AddIncidence(std::vector<std::uint16_t> const& loop, std::uint32_t face);
    void AddFace(std::uint32_t face, std::vector<std::vector<std::uint16_t>> const& loops);
    std::vector<std::uint16_t> CutEars(std::uint32_t face, std::vector<std::vector<std::uint16_t>> const& loops) const;
    std::uint16_t GetCorner(std::uint16_t vertex, std::uint32_t face);
    std::uint16_t FindOrAddNormal(Vector3f const& normal);
    void FinishCorners();

    float threshold_;
    std::vector<Vector3f> faceNormals_;
    std::vector<std::uint32_t> firstIncident_;
    std::vector<std::uint32_t> lastIncident_;
    std::vector<IncidentFace> incidentFaces_;
    std::vector<TreeNode> tree_;
};

}  // namespace Quorlan::Testing
