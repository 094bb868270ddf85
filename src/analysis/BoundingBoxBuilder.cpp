#include <Tools/BoundingBoxBuilder.h>

#include "analysis/PlacedInstances.h"

namespace Quorlan::Tools {

bool BoundingBoxBuilder::Build(AffineTransform const& transform, void const* buffer) {
    auto const model = ModelView::Open(buffer);
    if (!model || model->GetInstanceCount() == 0) return false;

    ComputeBoxes(*model, Frame(transform), boundingBoxes_);
    return true;
}

bool BoundingBoxBuilder::Build(void const* buffer) { return Build(AffineTransform(), buffer); }

bool BoundingBoxBuilder::Build(AffineTransform const& transform, IModelReader const& reader) {
    auto const& entities = reader.GetEntities();
    auto const& geometry = reader.GetGeometry();
    // A reader that loads on demand is asked for definitions and placements before the first of them is read.
    static_cast<void>(geometry.GetDefinitionCount());
    geometry.PreparePlacements();
    std::uint32_t const count = geometry.GetInstanceCount();
    if (count == 0) return false;

    Frame const caller(transform);
    boundingBoxes_.resize(count);
    InstanceRecord instance;
    DefinitionBounds bounds;
    AffineTransform placement;
    EntityIdentifier entity;
    for (std::uint32_t i = 0; i < count; ++i) {
        geometry.GetInstance(instance, i);
        geometry.GetDefinitionBounds(bounds, instance.definitionIndex);
        AxisAlignedBox3 const local{(bounds.max + bounds.min) * 0.5, (bounds.max - bounds.min) * 0.5};
        geometry.GetPlacement(placement, instance.placementIndex);
        Frame const entityFrame(entities.GetIdentifier(entity, instance.entityIndex).placement);
        boundingBoxes_[i] =
            TransformBox(caller * (entityFrame * Frame(placement)), GeometryObjectLib::ToVector3f(local.GetMin()),
                         GeometryObjectLib::ToVector3f(local.GetMax()));
    }
    return true;
}

bool BoundingBoxBuilder::Build(IModelReader const& reader) { return Build(AffineTransform(), reader); }

}  // namespace Quorlan::Tools
