#include <Tools/Increments/Squash.h>

#include "increments/EntityPlan.h"
#include "increments/OpenedModel.h"
#include "increments/StoredComposition.h"

#include <utility>

namespace Quorlan::Tools::Increments {
namespace {

using Action = OwnerHistoryChangeAction;

/// The GUIDs that two increments modify and delete together. The rules are their own; they do not follow the plan.
struct ChangeLists {
    std::vector<_GUID> modified;
    std::vector<_GUID> deleted;

    ChangeLists(EntityGuidIndex const& base, EntityGuidIndex const& increment) {
        for (auto const& entry : base.GetEntries()) {
            if (increment.Find(entry) != nullptr) continue;
            if (entry.action == Action::MODIFIED) modified.push_back(entry.guid);
            if (entry.action == Action::DELETED) deleted.push_back(entry.guid);
        }
        for (auto const& entry : increment.GetEntries()) {
            auto const* const before = base.Find(entry);
            if (IsModified(before, entry.action)) modified.push_back(entry.guid);
            if (IsDeleted(before, entry.action)) deleted.push_back(entry.guid);
        }
    }

private:
    using Entry = EntityGuidIndex::entry_s;

    static bool IsModified(Entry const* before, Action action) {
        if (action == Action::MODIFIED) return before == nullptr || before->action != Action::ADDED;
        if (action != Action::ADDED || before == nullptr) return false;
        return before->action == Action::MODIFIED || before->action == Action::DELETED;
    }

    static bool IsDeleted(Entry const* before, Action action) {
        if (action != Action::DELETED) return false;
        return before == nullptr || (before->action != Action::NOCHANGE && before->action != Action::ADDED);
    }
};

}  // namespace

bool Squash::Build(std::vector<char> const& base, std::vector<char> const& increment) {
    std::vector<char> empty;
    OpenedModel const earlier(SelectBase(base, empty));
    if (earlier.HasError()) {
        error_ = "base is invalid";
        return false;
    }
    OpenedModel const later(increment);
    if (later.HasError()) {
        error_ = "increment is invalid";
        return false;
    }
    EntityGuidIndex const earlierIndex(earlier.GetReader());
    EntityGuidIndex const laterIndex(later.GetReader());
    ChangeLists lists(earlierIndex, laterIndex);
    EntityPlan const plan(earlierIndex, laterIndex);

    StoredComposition composition;
    composition.Add(earlier.GetReader(), plan.fromBase);
    composition.Add(later.GetReader(), plan.fromIncrement);
    result_ = composition.Write();
    deleted_ = std::move(lists.deleted);
    modified_ = std::move(lists.modified);
    return true;
}

std::vector<char> Squash::GetResult() { return std::exchange(result_, {}); }
std::vector<_GUID> Squash::GetDeleted() { return std::exchange(deleted_, {}); }
std::vector<_GUID> Squash::GetModified() { return std::exchange(modified_, {}); }

}  // namespace Quorlan::Tools::Increments
