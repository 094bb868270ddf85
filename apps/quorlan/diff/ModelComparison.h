#pragma once

#include "diff/EntityComparison.h"

#include <optional>
#include <string>
#include <vector>

namespace QuorlanProgram {

/// One entity that is not the same in two models.
struct EntityChange {
    enum class Kind { Added, Modified, Deleted };
    struct quantities_s {
        double volume = 0;  ///< [m3]
        double area = 0;    ///< [m2]
    };

    Kind kind{};
    std::string guid;
    std::string name;                                   ///< the new one, unless deleted
    std::string className;                              ///< the property "Class" of the set "IFC"; empty for none
    ModelContent::entity_s const* oldEntity = nullptr;  ///< null if added
    ModelContent::entity_s const* newEntity = nullptr;  ///< null if deleted
    EntityDifference difference;                        ///< if modified
    std::optional<quantities_s> oldQuantities;          ///< of entities with shapes
    std::optional<quantities_s> newQuantities;
};

struct ModelDifference {
    std::vector<EntityChange> changes;  ///< added and modified in the order of the new model, then deleted
    std::size_t unchanged = 0;

    std::size_t Count(EntityChange::Kind kind) const;
};

/// Compares two models entity by entity, by GUID.
ModelDifference CompareModels(ModelContent const& oldModel, ModelContent const& newModel, Tolerances const& tolerances);

/// The increment that leads from the old model to the new one.
std::vector<char> WriteIncrement(ModelDifference const& difference, ModelContent const& newModel);

/// What a merged model does not hold of what its base and increment say; empty for a good merge.
std::vector<std::string> CheckMerge(ModelContent const& base, ModelContent const& increment, ModelContent const& merged,
                                    Tolerances const& tolerances);

}  // namespace QuorlanProgram
