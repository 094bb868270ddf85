#pragma once

#include <Quorlan/ModelBuilder.h>
#include <Quorlan/ModelTypes.h>

#include <cstdint>
#include <random>
#include <vector>

namespace Quorlan::Testing {

/// Writes entities that have something of everything: instances of shapes of all kinds, repeated, turned, moved and far
/// from their origin, with and without materials, textures and layers; properties and owner histories.
class SceneWriter {
public:
    explicit SceneWriter(ModelBuilder& builder);

    /// An entity whose content is a function of its number and its revision.
    EntityIndex_t AddEntity(std::uint32_t number, std::uint32_t revision, OwnerHistoryChangeAction action);

    /// An entity with a GUID, a link to an owner history with `action`, and nothing else.
    EntityIndex_t AddBareEntity(std::uint32_t number, OwnerHistoryChangeAction action);

private:
    GeometryDefinitionIndex_t AddShape(std::mt19937& random);
    std::uint32_t AddMaterial(std::mt19937& random);
    void AddHistory(EntityIndex_t entity, std::uint32_t revision, OwnerHistoryChangeAction action);
    void AddProperties(EntityIndex_t entity, std::uint32_t number, std::uint32_t revision);

    ModelBuilder& builder_;
};

/// A model of bare entities, numbered from 0, with these actions.
std::vector<char> WriteBareModel(std::vector<OwnerHistoryChangeAction> const& actions);

}  // namespace Quorlan::Testing
