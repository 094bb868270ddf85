#include "diff/ModelComparison.h"

#include "ChangeActions.h"
#include "EntityLabel.h"
#include "diff/DifferenceReport.h"

#include <Tools/Identifiers.h>
#include <Tools/Increments/IncrementModelBuilder.h>
#include <Tools/QuantificationBuilder.h>

#include <algorithm>
#include <utility>
#include <variant>

namespace QuorlanProgram {
namespace {

using Entity = ModelContent::entity_s;
using Kind = EntityChange::Kind;
using Quorlan::OwnerHistoryChangeAction;

std::string ClassOf(ModelContent const& model, Entity const& entity) {
    for (auto const& property : model.GetProperties(entity)) {
        auto const* const text = std::get_if<std::string>(&property.value);
        if (text && property.set == "IFC" && property.name == "Class") return *text;
    }
    return {};
}

/// Measures entities of one model on demand.
class Meter {
public:
    explicit Meter(ModelContent const& model) : builder_(model.GetBytes().data()) {}

    std::optional<EntityChange::quantities_s> Measure(Entity const* entity) {
        if (!entity || entity->parts.empty() || !builder_.Build(entity->index)) return std::nullopt;
        return EntityChange::quantities_s{builder_.GetVolume(), builder_.GetArea()};
    }

private:
    Quorlan::Tools::QuantificationBuilder builder_;
};

EntityChange MakeChange(Kind kind, Entity const* oldEntity, Entity const* newEntity, ModelContent const& model) {
    EntityChange change;
    change.kind = kind;
    change.oldEntity = oldEntity;
    change.newEntity = newEntity;
    auto const& entity = newEntity ? *newEntity : *oldEntity;
    change.guid = entity.guid;
    change.name = LabelOf(model.GetReader().GetEntities(), entity.index).name;
    change.className = ClassOf(model, entity);
    return change;
}

void Measure(ModelDifference& difference, ModelContent const& oldModel, ModelContent const& newModel) {
    if (difference.changes.empty()) return;
    Meter oldMeter(oldModel), newMeter(newModel);
    for (auto& change : difference.changes) {
        change.oldQuantities = oldMeter.Measure(change.oldEntity);
        change.newQuantities = newMeter.Measure(change.newEntity);
    }
}

}  // namespace

std::size_t ModelDifference::Count(Kind kind) const {
    return static_cast<std::size_t>(std::count_if(changes.begin(), changes.end(),
                                                  [kind](EntityChange const& change) { return change.kind == kind; }));
}

ModelDifference CompareModels(ModelContent const& oldModel, ModelContent const& newModel,
                              Tolerances const& tolerances) {
    ModelDifference out;
    for (auto const& entity : newModel.GetEntities()) {
        auto const* const before = oldModel.Find(entity.guid);
        if (!before) {
            out.changes.push_back(MakeChange(Kind::Added, nullptr, &entity, newModel));
            continue;
        }
        auto difference = CompareEntities(oldModel, *before, newModel, entity, tolerances);
        if (difference.IsNone()) {
            ++out.unchanged;
            continue;
        }
        out.changes.push_back(MakeChange(Kind::Modified, before, &entity, newModel));
        out.changes.back().difference = std::move(difference);
    }
    for (auto const& entity : oldModel.GetEntities()) {
        if (newModel.Find(entity.guid)) continue;
        out.changes.push_back(MakeChange(Kind::Deleted, &entity, nullptr, oldModel));
    }
    Measure(out, oldModel, newModel);
    return out;
}

std::vector<char> WriteIncrement(ModelDifference const& difference, ModelContent const& newModel) {
    std::vector<std::pair<OwnerHistoryChangeAction, Quorlan::EntityIndex_t>> written;
    std::vector<_GUID> deleted;
    for (auto const& change : difference.changes) {
        if (change.kind == Kind::Deleted) {
            Quorlan::Tools::IfcGuidToGuid(change.guid, deleted.emplace_back());
            continue;
        }
        bool const isAdded = change.kind == Kind::Added;
        written.emplace_back(isAdded ? OwnerHistoryChangeAction::ADDED : OwnerHistoryChangeAction::MODIFIED,
                             Quorlan::EntityIndex_t{change.newEntity->index});
    }
    Quorlan::Tools::Increments::IncrementModelBuilder builder;
    builder.Add(newModel.GetReader(), written);
    if (!deleted.empty()) builder.AddAsDeleted(deleted);
    return builder.GetResult();
}

std::vector<std::string> CheckMerge(ModelContent const& base, ModelContent const& increment, ModelContent const& merged,
                                    Tolerances const& tolerances) {
    std::vector<std::string> problems;
    std::size_t expected = 0;
    auto const expect = [&](ModelContent const& source, Entity const& entity) {
        ++expected;
        auto const* const found = merged.Find(entity.guid);
        if (!found) {
            problems.push_back(entity.guid + ": is missing");
            return;
        }
        auto const difference = CompareEntities(source, entity, merged, *found, tolerances);
        if (!difference.IsNone()) problems.push_back(entity.guid + ": " + Describe(difference));
    };
    for (auto const& entity : base.GetEntities()) {
        if (!increment.Find(entity.guid)) expect(base, entity);
    }
    auto const actions = ChangeActionsOf(increment.GetReader());
    for (auto const& entity : increment.GetEntities()) {
        if (actions[entity.index] < OwnerHistoryChangeAction::DELETED) expect(increment, entity);
    }
    if (merged.GetReader().GetEntities().GetCount() != expected && problems.empty()) {
        problems.push_back("the merged model holds entities that neither model gives it");
    }
    return problems;
}

}  // namespace QuorlanProgram
