#include <Tools/Increments/Merge.h>

#include "increments/EntityPlan.h"
#include "increments/OpenedModel.h"

#include <Tools/Increments/IncrementModelBuilder.h>

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
    IModelReader const& baseReader = base.GetReader();
    IModelReader const& changeReader = change.GetReader();
    EntityPlan const plan{EntityGuidIndex(baseReader), EntityGuidIndex(changeReader)};

    IncrementModelBuilder builder;
    builder.BorrowShapes();
    builder.Add(baseReader, plan.fromBase);
    builder.Add(changeReader, ToFullModelList(plan));
    result_ = builder.GetResult();
    return true;
}

std::vector<char> Merge::GetResult() { return std::exchange(result_, {}); }

}  // namespace Quorlan::Tools::Increments
