#pragma once

#include <Quorlan/ModelStorage.h>
#include <Tools/BoundingBoxBuilder.h>
#include <Tools/ConnectIdentifierResolver.h>
#include <Tools/EntityMerger.h>
#include <Tools/GraphicsContainerBuilder.h>
#include <Tools/Increments/IncrementModelBuilder.h>
#include <Tools/InstancesByEntitiesBuilder.h>
#include <Tools/LodLineBuilder.h>
#include <Tools/Picking/ModelInstancesPicker.h>
#include <Tools/Picking/ModelPicker.h>
#include <Tools/PlacementBuilder.h>
#include <Tools/QaabBuilder.h>
#include <Tools/QuantificationBuilder.h>
#include <Tools/VertexNormalBuilder.h>

#include <cstddef>
#include <unordered_set>
#include <vector>

/// Runs every tool that trusts its buffer, for tests and fuzzers of what a validated buffer must never do to them.
namespace TestSupport {

inline void RunAnalysis(std::vector<char> const& model, Quorlan::IModelReader const& reader) {
    using namespace Quorlan::Tools;
    BoundingBoxBuilder boxes;
    boxes.Build(model.data());
    boxes.Build(reader);
    PlacementBuilder().Build(model.data());
    InstancesByEntitiesBuilder().Build(model.data());
    LodLineBuilder().Build(model.data());

    GraphicsContainerBuilder graphics;
    graphics.Build(model.data());
    Quorlan::Tools::GraphicsContainer container;
    for (unsigned i = 0; i <= graphics.GetCount(); ++i) graphics.GetGraphicsContainer(i, container);

    QuantificationBuilder quantities(model.data());
    for (std::uint32_t i = 0; i <= reader.GetEntities().GetCount(); ++i) quantities.Build(i);
    VertexNormalBuilder mesh;
    for (std::uint32_t i = 0; i < reader.GetGeometry().GetDefinitionCount(); ++i) mesh.Build(model, i, 0.5f);
}

inline void RunPicks(std::vector<char> const& model) {
    using namespace Quorlan::Tools;
    QaabBuilder builder;
    if (!builder.Build(model.data())) return;
    GeometryObjectLib::QuantizedAxisAlignedBoxTree const tree(builder.getOrigin(), builder.getBvhQuantization(),
                                                              builder.getNodes());
    std::unordered_set<Quorlan::EntityIndex_t> const hidden;
    Picking::ModelPicker picker;
    for (double const side : {-50.0, 50.0}) {
        GeometryObjectLib::Vertex const eye{side, side / 2, 30};
        picker.SetViewProjection(
            Picking::ViewProjection::FromPerspective(eye, -1.0 / Length(eye) * eye, {0, 0, 1}, 1.0, 640, 480));
        picker.PickSurfaces(model, {}, hidden, tree);
        picker.PickEdges(model, {}, hidden, tree, 40);
        picker.PickLines(model, {}, hidden, tree, 2000);
        picker.SetDisabledLayers({L"lines", L""});
        picker.SetDynamicClippingPlanes({{{0, 0, 1}, 2}});
    }
    // Every instance without the tree in between.
    BoundingBoxBuilder boxes;
    boxes.Build(model.data());
    std::vector<unsigned> all(boxes.getBoundingBoxes().size());
    for (unsigned i = 0; i < all.size(); ++i) all[i] = i;
    Picking::ModelInstancesPicker instances;
    using Picking::GeometryType;
    instances.PickSurfaces(model, {}, all);
    instances.PickEdges({GeometryType::FACETED_BREP, GeometryType::BREP_WITH_NORMAL, GeometryType::BREP_WITH_UV,
                         GeometryType::GRAPHICS_CONTAINER, GeometryType::NONE},
                        model, {}, all, 1e9);
}

inline void RunWriters(Quorlan::IModelReader const& reader) {
    using namespace Quorlan;
    using namespace Quorlan::Tools;
    std::vector<std::pair<OwnerHistoryChangeAction, EntityIndex_t>> all;
    for (std::uint32_t i = 0; i < reader.GetEntities().GetCount(); ++i) {
        all.emplace_back(OwnerHistoryChangeAction::MODIFIED, EntityIndex_t{i});
    }
    Increments::IncrementModelBuilder increment;
    increment.Add(reader, all);
    increment.GetResult();
    EntityMerger merger;
    merger.Add(reader, {}, {}, L"all", OwnerHistoryChangeAction::ADDED);
    merger.GetResult();
    auto const resolver = CreateConnectIdentifierResolver(reader, std::vector<EntityBox_t>(all.size()), 1, 1);
    std::vector<EntityIndex_t> found;
    if (resolver.resolver) resolver.resolver->Resolve("AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA", found);
}

/// REQUIRES: ModelValidator::Build(model) is true.
inline void RunEveryTool(std::vector<char> const& model) {
    auto const storage = Quorlan::ModelStorage::FromBuffer(model);
    if (storage.HasError()) return;
    RunAnalysis(model, storage.GetModelReader());
    RunPicks(model);
    RunWriters(storage.GetModelReader());
}

}  // namespace TestSupport
