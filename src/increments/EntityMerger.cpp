#include <Tools/EntityMerger.h>

#include "increments/ContentCopier.h"
#include "increments/OwnerHistories.h"

namespace Quorlan::Tools {
namespace {

using namespace Increments;
using GeometryObjectLib::Matrix4;

DoubleFrame ToDoubleFrame(Matrix4 const& matrix) {
    return {matrix.GetColumn(3), matrix.GetColumn(0), matrix.GetColumn(1), matrix.GetColumn(2)};
}

/// Composes the caller's placement with the instance placements of a source.
class PlacementComposer {
public:
    PlacementComposer(IGeometryReader const& source, Matrix4 const& outer)
        : source_(source), outer_(outer), outerIsIdentity_(outer.m == Matrix4().m) {}

    /// `outer` after the source's placement after the inverse of `move` (null for none). Under the identity, stored
    /// axes are kept to the bit.
    PlacementRecord Compose(std::uint32_t placementIndex, DefinitionMove const* move) const {
        PlacementRecord placement;
        DoubleFrame frame;
        if (outerIsIdentity_) {
            source_.GetPlacementRecord(placement, placementIndex);
            if (move != nullptr) frame = Increments::ToDoubleFrame(placement);
        } else {
            AffineTransform inner;
            source_.GetPlacement(inner, placementIndex);
            frame = ToDoubleFrame(outer_ * inner.matrix);
            placement = ToPlacementRecord(frame);
        }
        return move == nullptr ? placement : PlaceMoved(placement, frame, *move);
    }

private:
    IGeometryReader const& source_;
    Matrix4 const& outer_;
    bool outerIsIdentity_;
};

}  // namespace

EntityMerger::EntityMerger() : content_(std::make_unique<ContentCopier>(*this)) {}
EntityMerger::~EntityMerger() = default;

void EntityMerger::Add(IModelReader const& reader, _GUID const& guid, AffineTransform const& placement,
                       std::wstring const& text, OwnerHistoryChangeAction action) {
    IGeometryReader const& geometry = reader.GetGeometry();
    auto const everyOf = [](std::uint32_t count) { return std::vector<bool>(count, true); };
    auto const definitions = content_->CopyDefinitions(geometry, everyOf(geometry.GetDefinitionCount()));
    auto const materials = content_->CopyMaterials(geometry, everyOf(geometry.GetMaterialCount()));
    auto const layers = content_->CopyLayers(geometry, everyOf(geometry.GetExtraContentCount()));

    EntityIndex_t const entity = GetEntityWriter().AddEntity(guid, text, placement);
    IInstanceWriter& instances = GetInstanceWriter();
    PlacementComposer const composer(geometry, placement.matrix);
    InstanceRecord instance;
    for (std::uint32_t i = 0, count = geometry.GetInstanceCount(); i < count; ++i) {
        geometry.GetInstance(instance, i);
        std::uint32_t const definition = LookUp(definitions.indices, instance.definitionIndex);
        if (definition == kInvalidIndex) continue;
        instances.AddInstanceAt(
            entity, GeometryDefinitionIndex_t{definition}, LookUp(materials, instance.materialIndex),
            LookUp(layers, instance.layerIndex),
            composer.Compose(instance.placementIndex, definitions.FindMove(instance.definitionIndex)));
    }
    IOwnerHistoryWriter& histories = GetOwnerHistoryWriter();
    histories.LinkOwnerHistory(entity, AddBareOwnerHistory(histories, action));
}

void EntityMerger::AddAsDeleted(std::vector<_GUID> const& guids) { AddDeletedEntities(*this, guids); }

std::vector<char> EntityMerger::GetResult() const { return Create(); }

}  // namespace Quorlan::Tools
