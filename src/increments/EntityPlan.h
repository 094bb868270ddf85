#pragma once

#include "increments/EntityGuidIndex.h"

#include <optional>
#include <utility>
#include <vector>

namespace Quorlan::Tools::Increments {

/// What becomes of an entity that both models name; empty: it is not written. Actions above DELETED in the increment
/// drop the entity.
std::optional<OwnerHistoryChangeAction> CombineActions(OwnerHistoryChangeAction base,
                                                       OwnerHistoryChangeAction increment);

/// Which entities a model and an increment over it supply to their combination, each with its new change action.
struct EntityPlan {
    std::vector<std::pair<OwnerHistoryChangeAction, EntityIndex_t>> fromBase;
    std::vector<std::pair<OwnerHistoryChangeAction, EntityIndex_t>> fromIncrement;

    /// What the increment names is taken from it; the base supplies the rest, with its actions.
    EntityPlan(EntityGuidIndex const& base, EntityGuidIndex const& increment);
};

}  // namespace Quorlan::Tools::Increments
