#pragma once

#include "geometry/LaneMoves.h"
#include "model/ModelView.h"

#include <GeometryObjectLib/FacetedBRep.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// How the ray builders see a BRep. The algorithms are templates over an access, of which there are two with the same
/// members: one for a shape in memory, one for a shape in a model buffer.
namespace Quorlan::Tools::Picking {

using GeometryObjectLib::Float4;
using GeometryObjectLib::LoadTriple;
using GeometryObjectLib::Mask4;
using GeometryObjectLib::VectorLanes;

/// A loop of vertex indices where it lies: 32 bits wide in memory, 16 bits wide in a buffer.
template <class Index>
struct LoopView {
    Index const* indices = nullptr;
    std::size_t size = 0;

    Index operator[](std::size_t i) const { return indices[i]; }
    Index const* begin() const { return indices; }
    Index const* end() const { return indices + size; }
};

/// A hole: an inner loop and the face it belongs to.
template <class Index>
struct HoleView {
    std::uint64_t face = 0;
    LoopView<Index> loop;
};

/// A shape in memory. Positions are narrowed to single precision where they are read.
class FacetedBRepAccess {
public:
    explicit FacetedBRepAccess(GeometryObjectLib::FacetedBRep const& brep) : brep_(brep) {
        for (auto const& [face, loops] : brep.holes) {
            for (auto const& loop : loops) holes_.push_back({face, {loop.data(), loop.size()}});
        }
    }

    Vector3f GetPosition(std::size_t index) const { return GeometryObjectLib::ToVector3f(brep_.vertices[index]); }

    /// The same in the lanes x, y, z, 0.
    Float4 GetPositionLanes(std::size_t index) const {
        Vector3f const p = GetPosition(index);
        return {p.x, p.y, p.z, 0};
    }

    std::size_t GetFaceCount() const { return brep_.faces.size(); }
    LoopView<std::uint32_t> GetFace(std::size_t face) const {
        return {brep_.faces[face].data(), brep_.faces[face].size()};
    }
    /// By ascending face, each face's in their order.
    std::size_t GetHoleCount() const { return holes_.size(); }
    HoleView<std::uint32_t> GetHole(std::size_t hole) const { return holes_[hole]; }

    /// Calls visit(face index, loop) for the outer loops in ascending face order.
    template <class Visit>
    void ForEachFace(Visit&& visit) const {
        for (std::size_t face = 0; face < brep_.faces.size(); ++face) visit(std::uint64_t{face}, GetFace(face));
    }

    /// Calls visit(face index, loop) for the inner loops.
    template <class Visit>
    void ForEachHole(Visit&& visit) const {
        for (auto const& hole : holes_) visit(hole.face, hole.loop);
    }

private:
    GeometryObjectLib::FacetedBRep const& brep_;
    std::vector<HoleView<std::uint32_t>> holes_;
};

/// A shape in a model buffer. Faces and holes whose table or loop is absent are passed over.
class StoredBRepAccess {
public:
    explicit StoredBRepAccess(BRepView const& brep) : brep_(brep) {}

    Vector3f GetPosition(std::size_t index) const { return brep_.GetPosition(static_cast<std::uint32_t>(index)); }

    /// The same in the lanes x, y, z, 0. Before the first vertex stands the length of their vector.
    Float4 GetPositionLanes(std::size_t index) const { return LoadTriple(brep_.vertices + index * brep_.vertexStride); }

    std::size_t GetFaceCount() const { return CountOf(brep_.faces); }
    /// An empty loop where the face or its loop is absent.
    LoopView<std::uint16_t> GetFace(std::size_t face) const {
        auto const* const table = brep_.faces->Get(static_cast<std::uint32_t>(face));
        return table == nullptr || table->outerLoop() == nullptr ? LoopView<std::uint16_t>()
                                                                 : View(*table->outerLoop());
    }
    /// In the order of the hole vector.
    std::size_t GetHoleCount() const { return CountOf(brep_.holes); }
    /// An empty loop where the hole or its loop is absent.
    HoleView<std::uint16_t> GetHole(std::size_t hole) const {
        auto const* const table = brep_.holes->Get(static_cast<std::uint32_t>(hole));
        if (table == nullptr || table->innerLoop() == nullptr) return {};
        return {table->face(), View(*table->innerLoop())};
    }

    /// Calls visit(face index, loop) for the outer loops in ascending face order.
    template <class Visit>
    void ForEachFace(Visit&& visit) const {
        for (std::size_t face = 0; face < GetFaceCount(); ++face) {
            auto const loop = GetFace(face);
            if (loop.indices != nullptr) visit(std::uint64_t{face}, loop);
        }
    }

    /// Calls visit(face index, loop) for the inner loops.
    template <class Visit>
    void ForEachHole(Visit&& visit) const {
        for (std::size_t i = 0; i < GetHoleCount(); ++i) {
            auto const hole = GetHole(i);
            if (hole.loop.indices != nullptr) visit(hole.face, hole.loop);
        }
    }

private:
    static LoopView<std::uint16_t> View(flatbuffers::Vector<std::uint16_t> const& loop) {
        return {loop.data(), loop.size()};
    }

    BRepView brep_;
};

/// The BRep of a kind in a model buffer; empty where the geometry, the vector, the element or its vertices are absent.
/// REQUIRES: `index` is below the length of the vector of that kind.
inline std::optional<BRepView> FindBRep(std::vector<char> const& modelBuffer, DefinitionKind kind,
                                        std::uint32_t index) {
    auto const* const geometry = FindGeometry(modelBuffer);
    if (geometry == nullptr) return std::nullopt;
    return Quorlan::FindBRep(*geometry, kind, index);
}

}  // namespace Quorlan::Tools::Picking
