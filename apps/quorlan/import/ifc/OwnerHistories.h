#pragma once

#include <Quorlan/ModelBuilder.h>

#include <map>
#include <string>
#include <tuple>
#include <unordered_map>

class IfcOwnerHistory;

namespace QuorlanProgram::Import {

/// Writes the owner histories of a file, each once however many products share it.
///
/// A change action or a state that the file leaves open is 0 (no change; readable and writable), as is NOTDEFINED.
class OwnerHistories {
public:
    explicit OwnerHistories(Quorlan::IOwnerHistoryWriter& writer) : writer_(writer) {}

    /// Links an entity with its history. Null is no history.
    void Link(Quorlan::EntityIndex_t entity, IfcOwnerHistory const* history);

    std::size_t GetCount() const { return histories_.size(); }

private:
    std::uint32_t Write(IfcOwnerHistory const& history);

    Quorlan::IOwnerHistoryWriter& writer_;
    std::unordered_map<IfcOwnerHistory const*, std::uint32_t> histories_;
    std::map<std::tuple<std::string, std::string, std::string>, std::uint32_t> parts_;
};

}  // namespace QuorlanProgram::Import
