#pragma once

#include "model/ModelView.h"

#include <GeometryObjectLib/FacetedBRep.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quorlan {

/// A run of elements of one of the store's arrays.
struct StoredRun {
    std::size_t first = 0;
    std::size_t count = 0;
};

/// An inner loop and the face it belongs to.
struct StoredHole {
    std::uint16_t face = 0;
    StoredRun loop;
};

/// Where the parts of one BRep stand in the store.
struct StoredBRep {
    StoredRun vertices;  ///< counted in floats
    StoredRun faces;     ///< into the loops
    StoredRun holes;
};

/// The BReps of one kind that are to be written, in a few flat arrays: adding a shape allocates nothing of its own.
///
/// `Attributes` floats follow the three of a position (none, two texture coordinates, three normal components).
template <std::size_t Attributes>
class ShapeStore {
public:
    static constexpr std::size_t kStride = 3 + Attributes;

    /// REQUIRES: FitsIntoBuffer(shape). `writeAttributes(vertexIndex, out)` fills the attributes of a vertex.
    template <class WriteAttributes>
    void Add(GeometryObjectLib::FacetedBRep const& shape, WriteAttributes const& writeAttributes) {
        StoredBRep brep;
        brep.vertices = {floats_.size(), shape.vertices.size() * kStride};
        floats_.resize(floats_.size() + brep.vertices.count);
        float* out = floats_.data() + brep.vertices.first;
        for (std::size_t i = 0; i < shape.vertices.size(); ++i, out += kStride) {
            out[0] = static_cast<float>(shape.vertices[i].x);
            out[1] = static_cast<float>(shape.vertices[i].y);
            out[2] = static_cast<float>(shape.vertices[i].z);
            writeAttributes(i, out + 3);
        }

        brep.faces = {loops_.size(), shape.faces.size()};
        for (auto const& loop : shape.faces) loops_.push_back(AddLoop(loop));
        brep.holes.first = holes_.size();
        for (auto const& [face, loops] : shape.holes) {
            for (auto const& loop : loops) holes_.push_back({static_cast<std::uint16_t>(face), AddLoop(loop)});
        }
        brep.holes.count = holes_.size() - brep.holes.first;
        breps_.push_back(brep);
    }

    /// [bytes] About what the shapes take in a buffer, rounding and offsets included.
    std::size_t EstimateSize() const {
        return floats_.size() * sizeof(float) + indices_.size() * sizeof(std::uint16_t) + loops_.size() * 20 +
               holes_.size() * 24 + breps_.size() * 48;
    }

    std::vector<StoredBRep> const& GetBReps() const { return breps_; }
    float const* GetFloats(StoredRun const& run) const { return floats_.data() + run.first; }
    StoredRun const* GetFaces(StoredRun const& run) const { return loops_.data() + run.first; }
    StoredHole const* GetHoles(StoredRun const& run) const { return holes_.data() + run.first; }
    std::uint16_t const* GetLoop(StoredRun const& run) const { return indices_.data() + run.first; }

private:
    StoredRun AddLoop(std::vector<std::uint32_t> const& loop) {
        StoredRun const run{indices_.size(), loop.size()};
        indices_.resize(indices_.size() + loop.size());
        std::uint16_t* out = indices_.data() + run.first;
        for (std::uint32_t const index : loop) *out++ = static_cast<std::uint16_t>(index);
        return run;
    }

    std::vector<float> floats_;
    std::vector<std::uint16_t> indices_;
    std::vector<StoredRun> loops_;
    std::vector<StoredHole> holes_;
    std::vector<StoredBRep> breps_;
};

}  // namespace Quorlan
