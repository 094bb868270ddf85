#include "ChangeActions.h"

namespace QuorlanProgram {

std::vector<Quorlan::OwnerHistoryChangeAction> ChangeActionsOf(Quorlan::IModelReader const& reader) {
    std::vector<Quorlan::OwnerHistoryChangeAction> actions(reader.GetEntities().GetCount());
    auto const& histories = reader.GetOwnerHistories();
    Quorlan::OwnerHistoryLink link;
    Quorlan::OwnerHistoryRecord record;
    for (std::uint32_t i = 0; i < histories.GetLinkCount(); ++i) {
        histories.GetLink(link, i);
        auto const entity = static_cast<std::uint32_t>(link.entity);
        if (entity >= actions.size()) continue;
        histories.GetOwnerHistory(record, histories.GetOwnerHistoryIndex(link.reference));
        actions[entity] = record.changeAction;
    }
    return actions;
}

}  // namespace QuorlanProgram
