#include <Tools/Increments/Merge.h>

#include "increments/EntityPlan.h"
#include "increments/OpenedModel.h"
#include "increments/StoredComposition.h"

#include <utility>

namespace Quorlan::Tools::Increments {
namespace {

/// The plan's share of the increment as a full model has it: nothing deleted, nothing marked as changed.
auto ToFullModelList(EntityPlan const& plan) {
    auto list = plan.fromIncrement;
    list.clear();
    for (auto const& [action, entity] : plan.fromIncrement) {
        if (action != OwnerHistoryChangeAction::DELETED) list.emplace_back(OwnerHistoryChangeAction::NOCHANGE, entity);
    }
    return list;
}

}  // namespace

bool Merge::Build(std::vector<char> const& fullModel, std::vector<char> const& increment) {
    std::vector<char> empty;
    OpenedModel const base(SelectBase(fullModel, empty));
    if (base.HasError()) {
        error_ = "original full is invalid";
        return false;
    }
    OpenedModel const change(increment);
    if (change.HasError()) {
        error_ = "increment is invalid";
        return false;
    }
    EntityPlan const plan{EntityGuidIndex(base.GetReader()), EntityGuidIndex(change.GetReader())};

    StoredComposition composition;
    composition.Add(base.GetReader(), plan.fromBase);
    composition.Add(change.GetReader(), ToFullModelList(plan));
    result_ = composition.Write();
    return true;
}

std::vector<char> Merge::GetResult() { return std::exchange(result_, {}); }

}  // namespace Quorlan::Tools::Increments
