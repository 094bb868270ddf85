#include "ifc/IfcGeometry.h"

#include <ifcpp/IFC4/include/IfcAxis1Placement.h>
#include <ifcpp/IFC4/include/IfcExtrudedAreaSolid.h>
#include <ifcpp/IFC4/include/IfcRevolvedAreaSolid.h>
#include <ifcpp/geometry/Carve/GeometryConverter.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <optional>

#include "cut/KernelMesh.h"
#include "ifc/FaceReader.h"
#include "ifc/ItemKinds.h"
#include "ifc/Placement.h"
#include "shape/CoplanarFaces.h"
#include "shape/Overlap.h"

namespace QuorlanProgram::Import {

namespace {

constexpr double kKernelTolerance = 1.5e-5;  ///< [units of the file] that the kernel is made for
constexpr int kDeepestBoolean = 500;         ///< operands within operands beyond this meet themselves

carve::math::Matrix ToKernel(Matrix4 const& m) {
    return {m.m[0], m.m[1], m.m[2],  m.m[3],  m.m[4],  m.m[5],  m.m[6],  m.m[7],
            m.m[8], m.m[9], m.m[10], m.m[11], m.m[12], m.m[13], m.m[14], m.m[15]};
}

void AddMeshes(ShapeBuilder& builder, MeshSet const& set) {
    for (auto const* mesh : set.meshes) {
        if (!mesh) continue;
        for (auto const* face : mesh->faces) {
            if (!face || !face->edge) continue;
            Loop loop;
            auto const* edge = face->edge;
            do {
                loop.push_back({edge->vert->v.x, edge->vert->v.y, edge->vert->v.z});
                edge = edge->next;
            } while (edge && edge != face->edge);
            builder.AddFace(loop);
        }
    }
}

/// The openings that reach into parts of a body which are not closed, and those that are not closed themselves.
std::size_t CountUncut(ItemShapeData const& data, std::vector<FacetedBRep> const& tools,
                       std::vector<FacetedBRep> const& openTools) {
    std::size_t count = 0;
    for (auto const& set : data.m_meshsets_open) {
        auto const part = ToPlainShape(*set);
        count += static_cast<std::size_t>(
            std::count_if(tools.begin(), tools.end(), [&](auto const& tool) { return BoxesOverlap(part, tool); }));
    }
    for (auto const& set : data.m_meshsets) {
        auto const part = ToPlainShape(*set);
        count += static_cast<std::size_t>(std::count_if(openTools.begin(), openTools.end(),
                                                        [&](auto const& tool) { return BoxesOverlap(part, tool); }));
    }
    return count;
}

FacetedBRep Outward(FacetedBRep shape) {
    if (IsClosed(shape) && GetVolume(shape) < 0) Flip(shape);
    return shape;
}

}  // namespace

struct IfcGeometry::Kernel {
    explicit Kernel(std::shared_ptr<BuildingModel> model) : converter(model) {}

    RepresentationConverter& GetItems() { return *converter.getRepresentationConverter(); }

    template <typename Work>
    bool Try(Work&& work) {
        try {
            work();
            return true;
        } catch (carve::exception const& exception) {
            log->Add(exception.str());
        } catch (std::bad_alloc const&) {
            throw;
        } catch (std::exception const& exception) {
            log->Add(exception.what());
        } catch (...) {
            log->Add("the geometry kernel gave up without a reason");
        }
        return false;
    }

    std::shared_ptr<ItemShapeData> Mesh(std::shared_ptr<IfcRepresentationItem> const& item) {
        if (auto const result = std::dynamic_pointer_cast<IfcBooleanResult>(item)) return MeshBoolean(*result);
        if (auto const solid = std::dynamic_pointer_cast<IfcRevolvedAreaSolid>(item)) SetChordsOfRevolution(*solid);
        auto data = std::make_shared<ItemShapeData>();
        Try([&] {
            if (auto const shape = std::dynamic_pointer_cast<IfcGeometricRepresentationItem>(item)) {
                GetItems().convertIfcGeometricRepresentationItem(shape, data);
            } else if (auto const topology = std::dynamic_pointer_cast<IfcTopologicalRepresentationItem>(item)) {
                GetItems().convertTopologicalRepresentationItem(topology, data);
            }
        });
        TakeClosedFaces(*data, *item);
        return data;
    }

    /// What the kernel leaves open is taken as it is read by polygons, where these are closed.
    void TakeClosedFaces(ItemShapeData& data, IfcRepresentationItem const& item) {
        if (!data.m_meshsets.empty() || data.m_meshsets_open.empty()) return;
        auto const faces = ReadFaces(item, metresPerUnit);
        if (!faces || !faces->shape.holes.empty() || faces->shape.faces.empty() || !IsClosed(faces->shape)) return;
        Try([&] {
            data.m_meshsets = {ToMeshSet(faces->shape)};
            data.m_meshsets_open.clear();
        });
    }

    /// The kernel's own boolean results leave out a cut that fails without a word; here each is checked.
    std::shared_ptr<ItemShapeData> MeshBoolean(IfcBooleanResult const& result) {
        if (!result.m_Operator || !result.m_FirstOperand || !result.m_SecondOperand || depth == kDeepestBoolean) {
            return std::make_shared<ItemShapeData>();
        }
        ++depth;
        auto body = MeshOperand(result.m_FirstOperand, nullptr);
        auto const tools = MeshOperand(result.m_SecondOperand, body);
        --depth;
        if (result.m_Operator->m_enum == IfcBooleanOperator::ENUM_UNION) {
            // Solids that overlap show the same surface as their union, but for what lies inside.
            body->addItemData(tools);
            return body;
        }
        auto const isDifference = result.m_Operator->m_enum == IfcBooleanOperator::ENUM_DIFFERENCE;
        CutAll(*body, ToSolids(*tools), isDifference ? BooleanOperation::kDifference : BooleanOperation::kIntersection);
        return body;
    }

    static std::vector<FacetedBRep> ToSolids(ItemShapeData const& data) {
        std::vector<FacetedBRep> solids;
        for (auto const& set : data.m_meshsets) solids.push_back(Outward(ToPlainShape(*set)));
        return solids;
    }

    /// Cuts every closed part of an item. RETURNS whether one changed.
    bool CutAll(ItemShapeData& data, std::vector<FacetedBRep> const& tools, BooleanOperation operation) {
        bool isCut = false;
        std::vector<MeshSetPointer> kept;
        for (auto& set : data.m_meshsets) {
            auto solid = Outward(ToPlainShape(*set));
            bool isChanged = false;
            for (auto const& tool : tools) isChanged = cuts.Apply(solid, tool, operation) || isChanged;
            isCut = isCut || isChanged;
            if (isChanged && !solid.faces.empty()) Try([&] { set = ToMeshSet(solid); });
            if (!isChanged || !solid.faces.empty()) kept.push_back(set);
        }
        data.m_meshsets = std::move(kept);
        return isCut;
    }

    std::shared_ptr<ItemShapeData> MeshOperand(std::shared_ptr<IfcBooleanOperand> const& operand,
                                               std::shared_ptr<ItemShapeData> const& other) {
        auto const item = std::dynamic_pointer_cast<IfcRepresentationItem>(operand);
        if (std::dynamic_pointer_cast<IfcBooleanResult>(item) || std::dynamic_pointer_cast<IfcTessellatedItem>(item)) {
            return Mesh(item);
        }
        auto data = std::make_shared<ItemShapeData>();
        auto const halfSpace = std::dynamic_pointer_cast<IfcHalfSpaceSolid>(operand);
        if (halfSpace && (!halfSpace->m_BaseSurface || !halfSpace->m_AgreementFlag)) {
            log->Add("a half space has no surface or no side");  // which the kernel takes for granted
            return data;
        }
        Try([&] { GetItems().getSolidConverter()->convertIfcBooleanOperand(operand, data, other); });
        return data;
    }

    std::shared_ptr<ItemShapeData> MeshPlaced(PlacedItem const& placed) {
        auto data = Mesh(placed.item);
        if (!Try([&] { data->applyTransformToItem(ToKernel(placed.placement)); })) *data = ItemShapeData();
        return data;
    }

    std::vector<std::vector<carve::geom::vector<2>>> ReadProfile(std::shared_ptr<IfcProfileDef> profile) {
        std::vector<std::vector<carve::geom::vector<2>>> loops;
        Try([&] { loops = GetItems().getProfileCache()->getProfileConverter(profile)->getCoordinates(); });
        return loops;
    }

    FacetedBRep ToWholeShape(ItemShapeData const& data) const {
        ShapeBuilder builder;
        for (auto const& set : data.m_meshsets) AddMeshes(builder, *set);
        for (auto const& set : data.m_meshsets_open) AddMeshes(builder, *set);
        if (builder.GetAbsurdCount() > 0) return {};  // a body that has a corner nowhere is none
        return Outward(joinsFaces ? JoinCoplanarFaces(builder.Take()) : builder.Take());
    }

    /// The kernel asks for the chords of a revolved solid without its radius.
    void SetChordsOfRevolution(IfcRevolvedAreaSolid const& solid) {
        auto const* axis = solid.m_Axis.get();
        auto const* origin = axis ? axis->m_Location.get() : nullptr;
        double radius = 0;
        for (auto const& path : ReadProfile(solid.m_SweptArea)) {
            for (auto const& p : path) {
                auto const at = [&](std::size_t i) {
                    return origin && i < origin->m_Coordinates.size() && origin->m_Coordinates[i]
                               ? origin->m_Coordinates[i]->m_value * metresPerUnit
                               : 0.0;
                };
                radius = std::max(radius, std::hypot(p.x - at(0), p.y - at(1)));
            }
        }
        converter.getGeomSettings()->setNumVerticesPerCircle(chords.Get(radius));
    }

    GeometryConverter converter;
    MessageLog* log = nullptr;
    SolidCuts cuts;
    Chords chords;
    double metresPerUnit = 1;
    bool joinsFaces = true;
    int depth = 0;
};

IfcGeometry::IfcGeometry(std::shared_ptr<BuildingModel> const& model, double metresPerUnit, ShapeOptions const& options,
                         MessageLog& log)
    : kernel_(std::make_unique<Kernel>(model)), metresPerUnit_(metresPerUnit) {
    kernel_->log = &log;
    kernel_->chords = options.chords;
    kernel_->metresPerUnit = metresPerUnit;
    kernel_->joinsFaces = options.joinsFaces;
    auto& settings = *kernel_->converter.getGeomSettings();
    settings.setNumVerticesPerCircleGivenRadius(
        [chords = options.chords](double radius) { return chords.Get(radius); });
    settings.setHandleStyledItems(false);
    settings.setHandleLayerAssignments(false);
    ListenTo<StatusCallback>(kernel_->converter, log);
    carve::setEpsilon(kKernelTolerance * metresPerUnit);
}

IfcGeometry::~IfcGeometry() = default;

ConvertedShape IfcGeometry::Convert(std::shared_ptr<IfcRepresentationItem> const& item) {
    ConvertedShape converted;
    converted.isSolid = IsSolid(*item);
    if (auto faces = ReadFaces(*item, metresPerUnit_)) {
        converted.shape = std::move(faces->shape);
        converted.droppedFaces = faces->droppedFaces;
        converted.addedFaces = faces->addedFaces;
        converted.isAsModelled = true;
        return converted;
    }
    auto const solid = std::dynamic_pointer_cast<IfcExtrudedAreaSolid>(item);
    if (solid && IsPrism(*solid)) {
        auto const direction = ReadExtrusion(*solid, metresPerUnit_);
        std::vector<Loop> loops;
        for (auto const& path : kernel_->ReadProfile(solid->m_SweptArea)) {
            loops.emplace_back();
            for (auto const& point : path) loops.back().push_back({point.x, point.y, 0});
        }
        converted.shape = direction ? Extrude(loops, *direction) : FacetedBRep();
        Transform(converted.shape, PlacementReader(metresPerUnit_).GetLocal(solid->m_Position.get()));
        converted.isAsModelled = !converted.shape.faces.empty();
        if (converted.isAsModelled) return converted;
    }
    auto const before = kernel_->cuts.GetCount();
    auto const data = kernel_->Mesh(item);
    converted.shape = kernel_->ToWholeShape(*data);
    converted.cuts = kernel_->cuts.GetCount() - before;
    return converted;
}

std::vector<CutShape> IfcGeometry::Cut(std::vector<PlacedItem> const& body, std::vector<PlacedItem> const& openings) {
    std::vector<FacetedBRep> tools;
    std::vector<FacetedBRep> openTools;
    for (auto const& opening : openings) {
        auto const data = kernel_->MeshPlaced(opening);
        for (auto& solid : Kernel::ToSolids(*data)) tools.push_back(std::move(solid));
        for (auto const& set : data->m_meshsets_open) openTools.push_back(ToPlainShape(*set));
    }
    std::vector<CutShape> cuts;
    for (auto const& placed : body) {
        auto& cut = cuts.emplace_back();
        auto const before = kernel_->cuts.GetCount();
        auto const data = kernel_->MeshPlaced(placed);
        auto const within = kernel_->cuts.GetCount();
        cut.isCut = kernel_->CutAll(*data, tools, BooleanOperation::kDifference);
        cut.converted.cuts = kernel_->cuts.GetCount() - (cut.isCut ? before : within);
        cut.converted.cuts.wrong += CountUncut(*data, tools, openTools);
        cut.converted.isSolid = IsSolid(*placed.item);
        if (auto const faces = ReadFaces(*placed.item, metresPerUnit_)) cut.converted.addedFaces = faces->addedFaces;
        if (cut.isCut) cut.converted.shape = kernel_->ToWholeShape(*data);
    }
    return cuts;
}

Loop IfcGeometry::ConvertCurve(std::shared_ptr<IfcRepresentationItem> const& item) {
    Loop points;
    auto const curve = std::dynamic_pointer_cast<IfcCurve>(item);
    if (!curve) return points;
    std::vector<vec3> path;
    std::vector<vec3> starts;
    kernel_->Try([&] { kernel_->GetItems().getCurveConverter()->convertIfcCurve(curve, path, starts); });
    for (auto const& p : path) points.push_back({p.x, p.y, p.z});
    return points;
}

}  // namespace QuorlanProgram::Import
