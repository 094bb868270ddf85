#pragma once

#include <Quorlan/IModelReader.h>

#include <vector>

namespace QuorlanProgram {

/// The change action of every entity, by entity index: that of its last owner history, NOCHANGE without one.
std::vector<Quorlan::OwnerHistoryChangeAction> ChangeActionsOf(Quorlan::IModelReader const& reader);

}  // namespace QuorlanProgram
