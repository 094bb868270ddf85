#include <Tools/QuantificationBuilder.h>

#include "analysis/BRepMeter.h"
#include "model/ModelView.h"

#include <Tools/PlacementBuilder.h>

#include <utility>

namespace Quorlan::Tools {
namespace {

/// The faceted BRep of a definition; empty for another kind and where the buffer lacks it.
std::optional<BRepView> FindFacetedBRep(Schema::Geometry const& geometry, std::uint32_t definition) {
    auto const& info = *geometry.definitions()->Get(definition);
    if (info.kind() != kFacetedBRep || info.kindIndex() >= CountOf(geometry.facetedBReps())) return std::nullopt;
    return FindBRep(geometry, info.kind(), info.kindIndex());
}

}  // namespace

QuantificationBuilder::QuantificationBuilder(void const* buffer) {
    if (!HasModelIdentifier(buffer)) return;
    PlacementBuilder placements;
    if (!instances_.Build(buffer) || !placements.Build(buffer)) return;

    placements_ = std::move(placements.getPlacements());
    buffer_ = buffer;
}

bool QuantificationBuilder::Build(unsigned int entity) {
    if (buffer_ == nullptr) return false;
    volume_ = 0;
    area_ = 0;
    centerOfGravity_ = Vertex();
    auto const& instancesByEntities = instances_.GetInstancesByEntities();
    if (entity >= instancesByEntities.size()) return false;
    auto const& geometry = *Schema::GetModel(buffer_)->geometry();
    if (geometry.definitions() == nullptr) return false;

    shapes_.resize(geometry.definitions()->size());
    BRepMeter meter;
    for (unsigned int const instance : instancesByEntities[entity]) {
        std::uint32_t const definition = geometry.instances()->Get(instance)->definitionIndex();
        if (definition >= shapes_.size()) continue;
        shape_s& shape = shapes_[definition];
        if (!shape.isMeasured) {
            shape.isMeasured = true;
            if (auto const brep = FindFacetedBRep(geometry, definition)) {
                BRepQuantities const measured = meter.Measure(*brep);
                shape = {true, true, measured.area, measured.volume, measured.centroid};
            }
        }
        if (!shape.isFacetedBRep) continue;
        volume_ += shape.volume;
        area_ += shape.area;
        centerOfGravity_ = centerOfGravity_ + TransformPoint(placements_[instance], shape.centroid) * shape.volume;
    }
    // A volume that is not a number counts as unequal to zero.
    if (volume_ != 0) centerOfGravity_ = centerOfGravity_ / volume_;
    return true;
}

}  // namespace Quorlan::Tools
