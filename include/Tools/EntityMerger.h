#pragma once

#include <GeometryObjectLib/AffineTransform.h>
#include <Quorlan/Guid.h>
#include <Quorlan/IModelReader.h>
#include <Quorlan/ModelBuilder.h>
#include <Tools/Export.h>

#include <memory>
#include <string>
#include <vector>

namespace Quorlan::Tools {

namespace Increments {
class ContentCopier;
}

/// Composes one model out of whole other models: every source becomes a single entity of the model being built.
///
///     Quorlan::Tools::EntityMerger merger;
///     merger.Add(chair, chairGuid, besideTheTable, L"Chair", Quorlan::OwnerHistoryChangeAction::ADDED);
///     merger.Add(table, tableGuid, {}, L"Table", Quorlan::OwnerHistoryChangeAction::ADDED);
///     std::vector<char> const room = merger.GetResult();
///
/// Shapes that are rigid copies of one another, and equal materials, textures and layers, are written once over the
/// whole life of the merger. Nothing checks whether a GUID was added before.
class QUORLAN_TOOLS_API EntityMerger : public ModelBuilder {
public:
    EntityMerger();
    ~EntityMerger() override;

    /// Writes all geometry of a model as one new entity with an owner history that carries `action`.
    ///
    /// `placement` (rigid) becomes the placement of the entity and is composed, as the outer transform, with the
    /// placement of every instance. The placements of the source's entities are not looked at: to keep world positions,
    /// hand over a source whose entities stand at the identity, and the identity. Instances keep the order of the
    /// source; those without a shape, or whose BRep has fewer than 3 vertices, are left out. Entities, properties and
    /// owner histories of the source are not copied.
    ///
    /// COST: linear in the size of the source. `reader` is not kept.
    void Add(IModelReader const& reader, _GUID const& guid, GeometryObjectLib::AffineTransform const& placement,
             std::wstring const& text, OwnerHistoryChangeAction action);

    /// Records entities as deleted: a bare entity per GUID, in order, all linked to one owner history with the action
    /// DELETED, which is written even for an empty list.
    void AddAsDeleted(std::vector<_GUID> const& guids);

    /// The model buffer of everything added so far.
    std::vector<char> GetResult() const;

private:
    std::unique_ptr<Increments::ContentCopier> content_;
};

}  // namespace Quorlan::Tools
