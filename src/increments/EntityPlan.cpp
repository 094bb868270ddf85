#include "increments/EntityPlan.h"

namespace Quorlan::Tools::Increments {

using Action = OwnerHistoryChangeAction;

std::optional<Action> CombineActions(Action base, Action increment) {
    bool const baseHasIt = base == Action::NOCHANGE || base == Action::ADDED;
    switch (increment) {
        case Action::NOCHANGE:
        case Action::ADDED: return base == Action::MODIFIED || base == Action::DELETED ? Action::MODIFIED : increment;
        case Action::MODIFIED: return baseHasIt ? Action::ADDED : Action::MODIFIED;
        case Action::DELETED: return baseHasIt ? std::nullopt : std::optional(Action::DELETED);
        default: return std::nullopt;
    }
}

EntityPlan::EntityPlan(EntityGuidIndex const& base, EntityGuidIndex const& increment) {
    fromBase.reserve(base.GetEntries().size());
    for (auto const& entry : base.GetEntries()) {
        if (increment.Find(entry) == nullptr) fromBase.emplace_back(entry.action, entry.entity);
    }
    fromIncrement.reserve(increment.GetEntries().size());
    for (auto const& entry : increment.GetEntries()) {
        if (entry.action > Action::DELETED) continue;
        auto const* const before = base.Find(entry);
        auto const action = before == nullptr ? entry.action : CombineActions(before->action, entry.action);
        if (action) fromIncrement.emplace_back(*action, entry.entity);
    }
}

}  // namespace Quorlan::Tools::Increments
