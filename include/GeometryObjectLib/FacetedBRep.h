#pragma once

#include <GeometryObjectLib/Vertex.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace GeometryObjectLib {

/// A faceted boundary representation: planar faces given as loops of indices into one list of vertices.
///
/// An outer loop runs counter-clockwise seen from outside the solid, an inner loop (a hole) the other way round. Faces
/// without holes have no entry in `holes`. The type is a value; copying it copies all three containers.
struct FacetedBRep {
    std::vector<Vertex> vertices;                                            ///< in definition coordinates
    std::vector<std::vector<std::uint32_t>> faces;                           ///< one outer loop per face
    std::map<std::uint64_t, std::vector<std::vector<std::uint32_t>>> holes;  ///< face index to its inner loops

    std::vector<Vertex> const& GetVertices() const { return vertices; }
    std::size_t GetFaceCount() const { return faces.size(); }

    /// REQUIRES: `face` is below the face count.
    std::vector<std::uint32_t> const& GetOuterLoop(std::size_t face) const { return faces[face]; }

    std::size_t GetInnerLoopCount(std::uint64_t face) const {
        auto const entry = holes.find(face);
        return entry == holes.end() ? 0 : entry->second.size();
    }

    /// REQUIRES: `loop` is below the inner-loop count of `face`.
    std::vector<std::uint32_t> const& GetInnerLoop(std::uint64_t face, std::size_t loop) const {
        return holes.find(face)->second[loop];
    }

    std::vector<std::vector<std::uint32_t>> const& GetFaces() const { return faces; }

    /// Its size is the number of faces that have holes.
    std::map<std::uint64_t, std::vector<std::vector<std::uint32_t>>> const& GetInnerLoops() const { return holes; }
};

}  // namespace GeometryObjectLib
