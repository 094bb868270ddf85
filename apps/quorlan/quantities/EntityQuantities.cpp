#include "quantities/EntityQuantities.h"

#include <Tools/InstancesByEntitiesBuilder.h>
#include <Tools/QuantificationBuilder.h>

#include <cmath>

namespace QuorlanProgram {
namespace {

using GeometryObjectLib::Vertex;
using Quorlan::PlacementRecord;

constexpr std::uint32_t kFacetedBRep = 1;

/// [-] How far the length of a stored axis may be from 1 before the placement counts as one that scales.
constexpr double kUnitTolerance = 1e-5;

bool Scales(PlacementRecord const& placement) {
    auto const differs = [](std::array<float, 3> const& axis) {
        double const length =
            std::sqrt(double{axis[0]} * axis[0] + double{axis[1]} * axis[1] + double{axis[2]} * axis[2]);
        return !(std::abs(length - 1) <= kUnitTolerance);
    };
    return differs(placement.xAxis) || differs(placement.yAxis);
}

char const* NameOfKind(std::uint32_t kind) {
    switch (kind) {
        case 5: return "lines left out";
        case 6: return "shapes with texture coordinates left out";
        case 7: return "shapes with normals left out";
        default: return "shapes of other kinds left out";
    }
}

}  // namespace

void Quantities::Add(Quantities const& other) {
    // A shape without volume has no centre; it must not take away that of the others.
    auto const momentOf = [](Quantities const& q) { return q.volume == 0 ? Vertex{} : q.volume * q.center; };
    double const sum = volume + other.volume;
    if (sum != 0) center = (momentOf(*this) + momentOf(other)) / sum;
    entities += other.entities;
    instances += other.instances;
    area += other.area;
    volume = sum;
    doubts.insert(other.doubts.begin(), other.doubts.end());
}

EntityQuantities::EntityQuantities(std::vector<char> const& model, Quorlan::IModelReader const& reader) {
    auto const& geometry = reader.GetGeometry();
    trust_.resize(geometry.GetDefinitionCount());
    isExamined_.resize(geometry.GetDefinitionCount());

    Quorlan::Tools::InstancesByEntitiesBuilder instances;
    if (!instances.Build(model.data())) return;
    Quorlan::Tools::QuantificationBuilder builder(model.data());
    for (unsigned const entity : instances.GetEntitiesHavingInstances()) {
        builder.Build(entity);
        entity_s entry;
        entry.entity = entity;
        entry.quantities.entities = 1;
        entry.quantities.area = builder.GetArea();
        entry.quantities.volume = builder.GetVolume();
        entry.quantities.center = builder.GetCenterOfGravity();
        Examine(entry, instances.GetInstancesByEntities()[entity], geometry);
        PlacementRecord placement;
        reader.GetEntities().GetPlacementRecord(placement, entity);
        if (Scales(placement)) entry.quantities.doubts.insert("scaled placement");
        entities_.push_back(std::move(entry));
    }
}

void EntityQuantities::Examine(entity_s& entry, std::vector<unsigned> const& instances,
                               Quorlan::IGeometryReader const& geometry) {
    auto& doubts = entry.quantities.doubts;
    for (std::size_t i = 0; i < instances.size(); ++i) {
        Quorlan::InstanceRecord instance;
        geometry.GetInstance(instance, instances[i]);
        std::string layer;
        geometry.GetLayerName(layer, instance.layerIndex);
        entry.layer = i == 0 || entry.layer == layer ? layer : "several";

        std::uint32_t const kind = geometry.GetDefinitionKind(instance.definitionIndex);
        if (kind != kFacetedBRep) {
            doubts.insert(NameOfKind(kind));
            continue;
        }
        ++entry.quantities.instances;
        PlacementRecord placement;
        geometry.GetPlacementRecord(placement, instance.placementIndex);
        if (Scales(placement)) doubts.insert("scaled placement");

        auto& trust = trust_[instance.definitionIndex];
        if (!isExamined_[instance.definitionIndex]) {
            GeometryObjectLib::FacetedBRep shape;
            geometry.GetFacetedBRep(shape, instance.definitionIndex);
            trust = ExamineShape(shape);
            isExamined_[instance.definitionIndex] = true;
        }
        if (trust.isOpen) doubts.insert("open");
        if (trust.isTwisted) doubts.insert("edges not used once in each direction");
        if (trust.isInverted) doubts.insert("inverted");
        if (trust.hasDegenerateFace) doubts.insert("faces without area");
    }
    if (!std::isfinite(entry.quantities.volume) || !std::isfinite(entry.quantities.area)) doubts.insert("not finite");
}

}  // namespace QuorlanProgram
