#pragma once

#include <Quorlan/Guid.h>
#include <Quorlan/IModelReader.h>
#include <Quorlan/ModelBuilder.h>
#include <Tools/Export.h>

#include <memory>
#include <utility>
#include <vector>

namespace Quorlan::Tools::Increments {

class ContentCopier;

/// Writes an increment: chosen entities of one or more models, each tagged with a change action, and bare entries for
/// deleted GUIDs.
///
///     IncrementModelBuilder builder;
///     builder.Add(reader, {{OwnerHistoryChangeAction::MODIFIED, wall}, {OwnerHistoryChangeAction::ADDED, door}});
///     builder.AddAsDeleted({windowGuid});
///     std::vector<char> const increment = builder.GetResult();
///
/// An entity comes with its text, placement, instances, shapes, materials, textures, layers, properties and owner
/// history. Shapes that are rigid copies of one another, and equal materials, textures and layers, are written once
/// over the whole life of the builder. Placements are copied to the bit. Only where a shape was recognised as a moved
/// copy, or was re-centred because it lay far from its origin, does its instance take the inverse move, which keeps
/// every position to 1e-5 of the shape's size (of 1 for smaller shapes). Copying a copy changes nothing any more.
class QUORLAN_TOOLS_API IncrementModelBuilder : public ModelBuilder {
public:
    IncrementModelBuilder();
    ~IncrementModelBuilder() override;

    /// Writes entities of a model in the order of the list, each with the change action beside it.
    ///
    /// An entity that no GUID identifies writes nothing; one that is listed twice is written twice. Its owner history
    /// is that of its last link, with the action replaced; without a link it has empty parts. Instances keep the order
    /// of the model; those without a shape, or whose BRep has fewer than 3 vertices, are left out, and a material or
    /// layer that does not exist becomes none.
    ///
    /// COST: linear in the size of the model, also for a short list; shapes, materials and textures that the entities
    /// do not use are not read. `reader` is not kept.
    void Add(IModelReader const& reader,
             std::vector<std::pair<OwnerHistoryChangeAction, EntityIndex_t>> const& entities);

    /// Writes a bare entity per GUID, in order: no text, the identity as placement, and one owner history with the
    /// action DELETED for all of them, which is written even for an empty list.
    void AddAsDeleted(std::vector<_GUID> const& guids);

    /// The model buffer of everything added so far.
    std::vector<char> GetResult() const;

private:
    std::unique_ptr<ContentCopier> content_;
};

}  // namespace Quorlan::Tools::Increments
