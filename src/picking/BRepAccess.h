#pragma once

#include "model/ModelView.h"

#include <GeometryObjectLib/FacetedBRep.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

/// How the ray builders see a BRep. The algorithms are templates over an access, of which there are two with the same
/// members: one for a shape in memory, one for a shape in a model buffer.
namespace Quorlan::Tools::Picking {

/// A loop of vertex indices where it lies: 32 bits wide in memory, 16 bits wide in a buffer.
template <class Index>
struct LoopView {
    Index const* indices = nullptr;
    std::size_t size = 0;

    Index operator[](std::size_t i) const { return indices[i]; }
    Index const* begin() const { return indices; }
    Index const* end() const { return indices + size; }
};

/// A shape in memory. Positions are narrowed to single precision where they are read.
class FacetedBRepAccess {
public:
    explicit FacetedBRepAccess(GeometryObjectLib::FacetedBRep const& brep) : brep_(brep) {}

    Vector3f GetPosition(std::size_t index) const { return GeometryObjectLib::ToVector3f(brep_.vertices[index]); }

    /// Calls visit(face index, loop) for the outer loops in ascending face order.
    template <class Visit>
    void ForEachFace(Visit&& visit) const {
        for (std::size_t face = 0; face < brep_.faces.size(); ++face) {
            visit(std::uint64_t{face}, LoopView<std::uint32_t>{brep_.faces[face].data(), brep_.faces[face].size()});
        }
    }

    /// Calls visit(face index, loop) for the inner loops: by ascending face, each face's in their order.
    template <class Visit>
    void ForEachHole(Visit&& visit) const {
        for (auto const& [face, loops] : brep_.holes) {
            for (auto const& loop : loops) visit(face, LoopView<std::uint32_t>{loop.data(), loop.size()});
        }
    }

private:
    GeometryObjectLib::FacetedBRep const& brep_;
};

/// A shape in a model buffer. Faces and holes whose table or loop is absent are passed over.
class StoredBRepAccess {
public:
    explicit StoredBRepAccess(BRepView const& brep) : brep_(brep) {}

    Vector3f GetPosition(std::size_t index) const { return brep_.GetPosition(static_cast<std::uint32_t>(index)); }

    /// Calls visit(face index, loop) for the outer loops in ascending face order.
    template <class Visit>
    void ForEachFace(Visit&& visit) const {
        for (std::uint32_t face = 0; face < CountOf(brep_.faces); ++face) {
            auto const* const table = brep_.faces->Get(face);
            if (table == nullptr || table->outerLoop() == nullptr) continue;
            visit(std::uint64_t{face}, View(*table->outerLoop()));
        }
    }

    /// Calls visit(face index, loop) for the inner loops in the order of the hole vector.
    template <class Visit>
    void ForEachHole(Visit&& visit) const {
        for (std::uint32_t hole = 0; hole < CountOf(brep_.holes); ++hole) {
            auto const* const table = brep_.holes->Get(hole);
            if (table == nullptr || table->innerLoop() == nullptr) continue;
            visit(std::uint64_t{table->face()}, View(*table->innerLoop()));
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
