#include "IfcGeometry.h"

#include <ifcpp/IFC4/include/IfcArbitraryClosedProfileDef.h>
#include <ifcpp/IFC4/include/IfcDerivedProfileDef.h>
#include <ifcpp/IFC4/include/IfcDirection.h>
#include <ifcpp/IFC4/include/IfcExtrudedAreaSolid.h>
#include <ifcpp/IFC4/include/IfcExtrudedAreaSolidTapered.h>
#include <ifcpp/IFC4/include/IfcParameterizedProfileDef.h>
#include <ifcpp/IFC4/include/IfcPositiveLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcReal.h>
#include <ifcpp/geometry/Carve/GeometryConverter.h>

#include <exception>
#include <optional>

#include "CoplanarFaces.h"
#include "FaceReader.h"
#include "Overlap.h"
#include "Placement.h"

namespace QuorlanProgram::Import {

namespace {

using MeshSet = carve::mesh::MeshSet<3>;
using MeshSetPointer = std::shared_ptr<MeshSet>;

constexpr double kKernelTolerance = 1.5e-5;  ///< [units of the file] that the kernel is made for
constexpr int kDeepestBoolean = 500;         ///< operands within operands beyond this meet themselves
constexpr double kVolumeTolerance = 1e-9;    ///< [-] a cut that changes less of a volume changes nothing
constexpr double kNudge = 2e-5;              ///< [-] by which a tool is scaled for a second try

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

FacetedBRep ToShape(MeshSet const& set) {
    ShapeBuilder builder;
    AddMeshes(builder, set);
    return builder.Take();
}

/// Outer loop first and no more than one of them.
bool IsSimpleProfile(IfcProfileDef const* profile) {
    if (auto const* derived = dynamic_cast<IfcDerivedProfileDef const*>(profile)) {
        return IsSimpleProfile(derived->m_ParentProfile.get());
    }
    return dynamic_cast<IfcParameterizedProfileDef const*>(profile) ||
           dynamic_cast<IfcArbitraryClosedProfileDef const*>(profile);
}

std::optional<Vertex> ToDirection(IfcExtrudedAreaSolid const& solid, double metresPerUnit) {
    if (!solid.m_ExtrudedDirection || !solid.m_Depth) return std::nullopt;
    auto const& ratios = solid.m_ExtrudedDirection->m_DirectionRatios;
    if (ratios.size() < 3 || !ratios[0] || !ratios[1] || !ratios[2]) return std::nullopt;
    Vertex const direction{ratios[0]->m_value, ratios[1]->m_value, ratios[2]->m_value};
    auto const length = GeometryObjectLib::Length(direction);
    if (!(length > 0)) return std::nullopt;
    return direction * (solid.m_Depth->m_value * metresPerUnit / length);
}

/// True if the boxes have more in common than a touch.
bool BoxesMeet(MeshSet const& a, MeshSet const& b) {
    auto const boxA = a.getAABB();
    auto const boxB = b.getAABB();
    for (unsigned i = 0; i < 3; ++i) {
        auto const depth = boxA.extent.v[i] + boxB.extent.v[i] - std::abs(boxA.pos.v[i] - boxB.pos.v[i]);
        if (!(depth > kThinnestOverlap)) return false;
    }
    return true;
}

/// The tool, scaled about its centre by a share far below what is built, so that faces which coincide with faces of the
/// body no longer do.
MeshSetPointer Scaled(MeshSet const& tool, double factor) {
    MeshSetPointer scaled(tool.clone());
    auto const centre = tool.getAABB().pos;
    for (auto& vertex : scaled->vertex_storage) vertex.v = centre + (vertex.v - centre) * factor;
    for (auto* mesh : scaled->meshes) mesh->recalc();
    return scaled;
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
        auto data = std::make_shared<ItemShapeData>();
        Try([&] {
            if (auto const shape = std::dynamic_pointer_cast<IfcGeometricRepresentationItem>(item)) {
                GetItems().convertIfcGeometricRepresentationItem(shape, data);
            } else if (auto const topology = std::dynamic_pointer_cast<IfcTopologicalRepresentationItem>(item)) {
                GetItems().convertTopologicalRepresentationItem(topology, data);
            }
        });
        return data;
    }

    /// The kernel's own boolean results leave out a cut that fails without a word; here it is tried again and counted.
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
        for (auto& set : body->m_meshsets) {
            for (auto const& tool : tools->m_meshsets) {
                if (isDifference)
                    CutOpening(set, *tool);
                else
                    Intersect(set, *tool);
            }
        }
        return body;
    }

    std::shared_ptr<ItemShapeData> MeshOperand(std::shared_ptr<IfcBooleanOperand> const& operand,
                                               std::shared_ptr<ItemShapeData> const& other) {
        auto const item = std::dynamic_pointer_cast<IfcRepresentationItem>(operand);
        if (std::dynamic_pointer_cast<IfcBooleanResult>(item) || std::dynamic_pointer_cast<IfcTessellatedItem>(item)) {
            return Mesh(item);
        }
        auto data = std::make_shared<ItemShapeData>();
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

    static FacetedBRep ToWholeShape(ItemShapeData const& data) {
        ShapeBuilder builder;
        for (auto const& set : data.m_meshsets) AddMeshes(builder, *set);
        for (auto const& set : data.m_meshsets_open) AddMeshes(builder, *set);
        auto shape = JoinCoplanarFaces(builder.Take());
        if (IsClosed(shape) && GetVolume(shape) < 0) Flip(shape);
        return shape;
    }

    MeshSetPointer Combine(MeshSet const& body, MeshSet const& tool, carve::csg::CSG::OP operation) {
        MeshSetPointer a(body.clone());
        MeshSetPointer b(tool.clone());
        MeshSetPointer result;
        Try([&] { CSG_Adapter::computeCSG(a, b, operation, result, &silent, nullptr); });
        return result;
    }

    /// Body minus tool; null if the result is no smaller solid.
    MeshSetPointer Subtract(MeshSet const& body, MeshSet const& tool, double bodyVolume) {
        auto result = Combine(body, tool, carve::csg::CSG::A_MINUS_B);
        if (!result) return nullptr;
        auto const volume = GetVolume(ToShape(*result));
        return volume > 0 && volume < bodyVolume * (1 - kVolumeTolerance) ? result : nullptr;
    }

    /// Cuts one tool from `body`, with second tries where it reaches into the body and the kernel fails. RETURNS
    /// whether the body changed.
    bool CutOpening(MeshSetPointer& body, MeshSet const& tool) {
        if (!BoxesMeet(*body, tool)) return false;
        auto const before = ToShape(*body);
        auto const volume = GetVolume(before);
        auto result = Subtract(*body, tool, volume);
        if (!result && !OverlapAtSamples(before, ToShape(tool))) return false;
        for (auto const factor : {1 + kNudge, 1 - kNudge}) {
            if (!result) result = Subtract(*body, *Scaled(tool, factor), volume);
        }
        if (!result) {
            ++missedCuts;
            return false;
        }
        body = result;
        return true;
    }

    void Intersect(MeshSetPointer& body, MeshSet const& tool) {
        auto const result = Combine(*body, tool, carve::csg::CSG::INTERSECTION);
        if (result)
            body = result;
        else
            ++missedCuts;
    }

    int depth = 0;
    std::size_t missedCuts = 0;
    GeometryConverter converter;
    StatusCallback silent;  ///< what the kernel says about a cut that is tried and judged by its result
    MessageLog* log = nullptr;
};

IfcGeometry::IfcGeometry(std::shared_ptr<BuildingModel> const& model, double metresPerUnit, int verticesPerCircle,
                         MessageLog& log)
    : kernel_(std::make_unique<Kernel>(model)), metresPerUnit_(metresPerUnit) {
    kernel_->log = &log;
    auto& settings = *kernel_->converter.getGeomSettings();
    settings.setNumVerticesPerCircle(verticesPerCircle);
    settings.setHandleStyledItems(false);
    settings.setHandleLayerAssignments(false);
    ListenTo<StatusCallback>(kernel_->converter, log);
    carve::setEpsilon(kKernelTolerance * metresPerUnit);
}

IfcGeometry::~IfcGeometry() = default;

ConvertedShape IfcGeometry::Convert(std::shared_ptr<IfcRepresentationItem> const& item) {
    if (auto faces = ReadFaces(*item, metresPerUnit_)) return {std::move(*faces), true};

    auto const solid = std::dynamic_pointer_cast<IfcExtrudedAreaSolid>(item);
    if (solid && !std::dynamic_pointer_cast<IfcExtrudedAreaSolidTapered>(solid) &&
        IsSimpleProfile(solid->m_SweptArea.get())) {
        auto const direction = ToDirection(*solid, metresPerUnit_);
        std::vector<Loop> loops;
        for (auto const& path : kernel_->ReadProfile(solid->m_SweptArea)) {
            loops.emplace_back();
            for (auto const& point : path) loops.back().push_back({point.x, point.y, 0});
        }
        auto prism = direction ? Extrude(loops, *direction) : FacetedBRep();
        Transform(prism, PlacementReader(metresPerUnit_).GetLocal(solid->m_Position.get()));
        if (!prism.faces.empty()) return {std::move(prism), true};
    }

    auto const missedBefore = kernel_->missedCuts;
    auto const data = kernel_->Mesh(item);
    ConvertedShape converted;
    converted.shape = kernel_->ToWholeShape(*data);
    converted.missedCuts = kernel_->missedCuts - missedBefore;
    return converted;
}

std::vector<CutShape> IfcGeometry::Cut(std::vector<PlacedItem> const& body, std::vector<PlacedItem> const& openings) {
    std::vector<MeshSetPointer> tools;
    for (auto const& opening : openings) {
        auto const data = kernel_->MeshPlaced(opening);
        tools.insert(tools.end(), data->m_meshsets.begin(), data->m_meshsets.end());
    }
    std::vector<CutShape> cuts;
    for (auto const& placed : body) {
        auto& cut = cuts.emplace_back();
        auto const missedBefore = kernel_->missedCuts;
        auto const data = kernel_->MeshPlaced(placed);
        auto const missedWithin = kernel_->missedCuts;
        for (auto& set : data->m_meshsets) {
            for (auto const& tool : tools) cut.isCut = kernel_->CutOpening(set, *tool) || cut.isCut;
        }
        cut.missedCuts = kernel_->missedCuts - (cut.isCut ? missedBefore : missedWithin);
        if (cut.isCut) cut.shape = kernel_->ToWholeShape(*data);
    }
    return cuts;
}

}  // namespace QuorlanProgram::Import
