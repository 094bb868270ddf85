#include "ifc/FaceReader.h"

#include <ifcpp/IFC4/include/IfcBoolean.h>
#include <ifcpp/IFC4/include/IfcCartesianPoint.h>
#include <ifcpp/IFC4/include/IfcCartesianPointList3D.h>
#include <ifcpp/IFC4/include/IfcClosedShell.h>
#include <ifcpp/IFC4/include/IfcFaceBasedSurfaceModel.h>
#include <ifcpp/IFC4/include/IfcFaceOuterBound.h>
#include <ifcpp/IFC4/include/IfcFaceSurface.h>
#include <ifcpp/IFC4/include/IfcFacetedBrep.h>
#include <ifcpp/IFC4/include/IfcFacetedBrepWithVoids.h>
#include <ifcpp/IFC4/include/IfcIndexedPolygonalFace.h>
#include <ifcpp/IFC4/include/IfcIndexedPolygonalFaceWithVoids.h>
#include <ifcpp/IFC4/include/IfcLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcOpenShell.h>
#include <ifcpp/IFC4/include/IfcPlane.h>
#include <ifcpp/IFC4/include/IfcPolyLoop.h>
#include <ifcpp/IFC4/include/IfcPolygonalFaceSet.h>
#include <ifcpp/IFC4/include/IfcPositiveInteger.h>
#include <ifcpp/IFC4/include/IfcShellBasedSurfaceModel.h>
#include <ifcpp/IFC4/include/IfcTriangulatedFaceSet.h>

#include <algorithm>
#include <cmath>

#include "shape/Gaps.h"
#include "shape/NestedLoops.h"
#include "shape/Shape.h"

namespace QuorlanProgram::Import {

namespace {

using GeometryObjectLib::Length;

class FaceReader {
public:
    /// `splitsNested`: loops within holes are faces of their own; otherwise they are holes like the others.
    explicit FaceReader(double metresPerUnit, bool splitsNested = false)
        : metresPerUnit_(metresPerUnit), splitsNested_(splitsNested) {}

    bool AddShell(IfcConnectedFaceSet const* shell) {
        if (!shell) return true;
        return std::all_of(shell->m_CfsFaces.begin(), shell->m_CfsFaces.end(),
                           [&](auto const& face) { return !face || AddFace(*face); });
    }

    /// A shell of a solid: its faces look away from the inside, or towards it for a void.
    bool AddClosedShell(std::vector<FacetedBRep>& out, IfcConnectedFaceSet const* shell, bool isVoid) {
        if (!AddShell(shell)) return false;
        out.push_back(builder_.Take());
        if (IsClosed(out.back()) && (GetVolume(out.back()) < 0) != isVoid) Flip(out.back());
        return true;
    }

    bool AddFaceSet(IfcTessellatedFaceSet const& set) {
        if (!set.m_Coordinates) return true;
        for (auto const& coordinates : set.m_Coordinates->m_CoordList) {
            Vertex point;
            if (coordinates.size() == 3 && coordinates[0] && coordinates[1] && coordinates[2]) {
                point = {coordinates[0]->m_value, coordinates[1]->m_value, coordinates[2]->m_value};
            }
            points_.push_back(metresPerUnit_ * point);
        }
        if (auto const* polygons = dynamic_cast<IfcPolygonalFaceSet const*>(&set)) return AddPolygons(*polygons);
        if (auto const* triangles = dynamic_cast<IfcTriangulatedFaceSet const*>(&set)) return AddTriangles(*triangles);
        return false;
    }

    /// The faces so far; a closed set of them that look inward is turned.
    ReadShape Take() {
        auto shape = builder_.Take();
        if (IsClosed(shape) && GetVolume(shape) < 0) Flip(shape);
        return {std::move(shape), builder_.GetDroppedCount(), 0};
    }

    std::size_t GetDroppedCount() const { return builder_.GetDroppedCount(); }

private:
    using Indices = std::vector<std::shared_ptr<IfcPositiveInteger>>;

    bool AddFace(IfcFace const& face) {
        if (auto const* surface = dynamic_cast<IfcFaceSurface const*>(&face)) {
            if (!dynamic_cast<IfcPlane const*>(surface->m_FaceSurface.get())) return false;
        }
        std::vector<Loop> loops;
        std::size_t outer = 0;
        bool isOuterGiven = false;
        for (auto const& bound : face.m_Bounds) {
            if (!bound) continue;
            auto const* polygon = dynamic_cast<IfcPolyLoop const*>(bound->m_Bound.get());
            if (!polygon) return false;
            loops.push_back(ToLoop(*polygon));
            if (bound->m_Orientation && !bound->m_Orientation->m_value) {
                std::reverse(loops.back().begin(), loops.back().end());
            }
            auto const isOuter = dynamic_cast<IfcFaceOuterBound const*>(bound.get()) != nullptr;
            auto const isLarger = Length(GetAreaVector(loops.back())) > Length(GetAreaVector(loops[outer]));
            if ((isOuter && !isOuterGiven) || (isLarger && !isOuterGiven)) outer = loops.size() - 1;
            isOuterGiven = isOuterGiven || isOuter;
        }
        AddLoops(loops, outer);
        return true;
    }

    void AddLoops(std::vector<Loop>& loops, std::size_t outer) {
        if (loops.empty()) return;
        if (splitsNested_ && loops.size() > 2) {
            for (auto const& face : SplitNestedLoops(std::move(loops))) builder_.AddFace(face.outer, face.holes);
            return;
        }
        std::swap(loops[0], loops[outer]);
        builder_.AddFace(loops.front(), {loops.begin() + 1, loops.end()});
    }

    Loop ToLoop(IfcPolyLoop const& polygon) const {
        Loop loop;
        loop.reserve(polygon.m_Polygon.size());
        for (auto const& point : polygon.m_Polygon) {
            // A point that is none makes the face none, rather than another one.
            Vertex v{std::nan(""), 0, 0};
            if (point && point->m_Coordinates.size() == 3) {
                auto const& c = point->m_Coordinates;
                if (c[0] && c[1] && c[2]) v = {c[0]->m_value, c[1]->m_value, c[2]->m_value};
            }
            loop.push_back(metresPerUnit_ * v);
        }
        return loop;
    }

    bool AddPolygons(IfcPolygonalFaceSet const& set) {
        for (auto const& face : set.m_Faces) {
            if (!face) continue;
            std::vector<Loop> loops{ToLoop(face->m_CoordIndex, set.m_PnIndex)};
            if (auto const* holed = dynamic_cast<IfcIndexedPolygonalFaceWithVoids const*>(face.get())) {
                for (auto const& hole : holed->m_InnerCoordIndices) loops.push_back(ToLoop(hole, set.m_PnIndex));
            }
            AddLoops(loops, 0);
        }
        return true;
    }

    bool AddTriangles(IfcTriangulatedFaceSet const& set) {
        for (auto const& triangle : set.m_CoordIndex) builder_.AddFace(ToLoop(triangle, set.m_PnIndex));
        return true;
    }

    /// Indices count from 1, through `redirection` where there is one; a loop with a wrong one is empty.
    Loop ToLoop(Indices const& indices, Indices const& redirection) const {
        auto const look = [](Indices const& table, std::size_t index) {
            auto const isInside = index >= 1 && index <= table.size() && table[index - 1];
            return isInside && table[index - 1]->m_value > 0 ? static_cast<std::size_t>(table[index - 1]->m_value) : 0;
        };
        Loop loop;
        for (std::size_t i = 1; i <= indices.size(); ++i) {
            auto index = look(indices, i);
            if (!redirection.empty()) index = look(redirection, index);
            if (index < 1 || index > points_.size()) return {};
            loop.push_back(points_[index - 1]);
        }
        return loop;
    }

    double metresPerUnit_;
    bool splitsNested_;
    std::vector<Vertex> points_;
    ShapeBuilder builder_;
};

/// One shape of several that share no vertices.
FacetedBRep Join(std::vector<FacetedBRep> const& parts) {
    FacetedBRep joined;
    auto const moved = [](std::vector<std::uint32_t> loop, std::uint32_t by) {
        for (auto& index : loop) index += by;
        return loop;
    };
    for (auto const& part : parts) {
        auto const firstVertex = static_cast<std::uint32_t>(joined.vertices.size());
        auto const firstFace = joined.faces.size();
        joined.vertices.insert(joined.vertices.end(), part.vertices.begin(), part.vertices.end());
        for (auto const& face : part.faces) joined.faces.push_back(moved(face, firstVertex));
        for (auto const& entry : part.holes) {
            for (auto const& hole : entry.second) {
                joined.holes[firstFace + entry.first].push_back(moved(hole, firstVertex));
            }
        }
    }
    return joined;
}

std::optional<ReadShape> ReadBRep(IfcFacetedBrep const& brep, double metresPerUnit, bool splitsNested) {
    FaceReader reader(metresPerUnit, splitsNested);
    std::vector<FacetedBRep> shells;
    if (!reader.AddClosedShell(shells, brep.m_Outer.get(), false)) return std::nullopt;
    if (auto const* holed = dynamic_cast<IfcFacetedBrepWithVoids const*>(&brep)) {
        for (auto const& shell : holed->m_Voids) {
            if (!reader.AddClosedShell(shells, shell.get(), true)) return std::nullopt;
        }
    }
    return ReadShape{Join(shells), reader.GetDroppedCount(), 0};
}

/// Files nest the loops of a face in ways that the standard does not define; the reading that closes the solid is
/// right.
std::optional<ReadShape> ReadBRep(IfcFacetedBrep const& brep, double metresPerUnit) {
    auto read = ReadBRep(brep, metresPerUnit, false);
    if (!read || IsClosed(read->shape)) return read;
    auto split = ReadBRep(brep, metresPerUnit, true);
    if (split && IsClosed(split->shape)) return split;
    read->addedFaces = CloseGaps(read->shape);
    if (read->addedFaces > 0 && GetVolume(read->shape) < 0) Flip(read->shape);
    return read;
}

}  // namespace

std::optional<ReadShape> ReadFaces(IfcRepresentationItem const& item, double metresPerUnit) {
    if (auto const* brep = dynamic_cast<IfcFacetedBrep const*>(&item)) return ReadBRep(*brep, metresPerUnit);

    FaceReader reader(metresPerUnit);
    if (auto const* model = dynamic_cast<IfcFaceBasedSurfaceModel const*>(&item)) {
        for (auto const& shell : model->m_FbsmFaces) {
            if (!reader.AddShell(shell.get())) return std::nullopt;
        }
        return reader.Take();
    }
    if (auto const* model = dynamic_cast<IfcShellBasedSurfaceModel const*>(&item)) {
        for (auto const& shell : model->m_SbsmBoundary) {
            if (!reader.AddShell(dynamic_cast<IfcConnectedFaceSet const*>(shell.get()))) return std::nullopt;
        }
        return reader.Take();
    }
    if (auto const* set = dynamic_cast<IfcTessellatedFaceSet const*>(&item)) {
        if (!reader.AddFaceSet(*set)) return std::nullopt;
        return reader.Take();
    }
    return std::nullopt;
}

}  // namespace QuorlanProgram::Import
