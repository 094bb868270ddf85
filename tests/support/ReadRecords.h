#pragma once

#include "support/RawModel.h"

#include <Quorlan/ModelStorage.h>

#include <cstdint>
#include <vector>

namespace Quorlan::Testing {

/// The entities' placements, placements, definitions and instances of a buffer, for the plain computations.
inline RawModel ReadRecords(std::vector<char> const& buffer) {
    auto const storage = ModelStorage::FromBuffer(buffer);
    auto const& entities = storage.GetModelReader().GetEntities();
    auto const& geometry = storage.GetModelReader().GetGeometry();
    RawModel records;
    records.entities->resize(entities.GetCount());
    for (std::uint32_t i = 0; i < entities.GetCount(); ++i) entities.GetPlacementRecord((*records.entities)[i], i);
    records.placements->resize(geometry.GetPlacementCount());
    for (std::uint32_t i = 0; i < geometry.GetPlacementCount(); ++i) {
        geometry.GetPlacementRecord((*records.placements)[i], i);
    }
    records.instances->resize(geometry.GetInstanceCount());
    for (std::uint32_t i = 0; i < geometry.GetInstanceCount(); ++i) geometry.GetInstance((*records.instances)[i], i);
    auto const narrow = [](GeometryObjectLib::Vertex const& v) {
        return Vector3f{static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)};
    };
    for (std::uint32_t i = 0; i < geometry.GetDefinitionCount(); ++i) {
        DefinitionBounds bounds;
        geometry.GetDefinitionBounds(bounds, i);
        records.definitions->push_back({1, i, narrow(bounds.min), narrow(bounds.max)});
    }
    return records;
}

}  // namespace Quorlan::Testing
