#pragma once

#include <Quorlan/IModelReader.h>
#include <Quorlan/ModelBuilder.h>

#include <cstdint>

namespace QuorlanProgram {

/// What of a model's entities a single entity cannot hold.
struct CombineLosses {
    std::uint32_t entities = 0;        ///< that became one: which shape was whose is not kept
    std::uint32_t shapeless = 0;       ///< of these, without an instance, so that nothing shows where they stood
    std::uint32_t olderHistories = 0;  ///< of entities with several links, all but the last
};

/// Writes the names, properties and owner histories of all entities of a model as property sets of one entity.
///
/// A set is named after the entity it came from, by GUID, identifier text or place in the model, and after its own
/// name: "2O2Fr$t4X7Zf8NOew3FLOH/Pset_WallCommon". The entity's name stands in the set "2O2Fr$t4X7Zf8NOew3FLOH", its
/// owner history in "2O2Fr$t4X7Zf8NOew3FLOH/OwnerHistory".
CombineLosses KeepEntities(Quorlan::ModelBuilder& builder, Quorlan::EntityIndex_t entity,
                           Quorlan::IModelReader const& source);

}  // namespace QuorlanProgram
