#include "CombinedEntity.h"

#include "EntityLabel.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace QuorlanProgram {
namespace {

using Quorlan::EntityIndex_t;
using Quorlan::IModelReader;
using Quorlan::kInvalidIndex;
using Quorlan::PropertyRecord;

/// What identifies an entity, or else its place. No two entities have the same.
class KeyMaker {
public:
    explicit KeyMaker(Quorlan::IEntityReader const& entities) : entities_(entities) {}

    std::string Make(std::uint32_t entity) {
        auto key = Identify(entity);
        auto const count = ++counts_[key];
        return count == 1 ? key : fmt::format("{} ({})", key, count);
    }

private:
    std::string Identify(std::uint32_t entity) const {
        Quorlan::EntityIdentifier identifier;
        std::string key;
        switch (entities_.GetIdentifier(identifier, entity).kind) {
            case 0: entities_.GetGuidText(key, identifier.reference); break;
            case 1: entities_.GetIdentifierString(key, identifier.reference); break;
            case 3: key = entities_.GetIdentifierText(identifier.reference); break;
            default: break;
        }
        return key.empty() ? fmt::format("entity {}", entity) : key;
    }

    Quorlan::IEntityReader const& entities_;
    std::unordered_map<std::string, std::uint32_t> counts_;
};

/// The reference of each entity's last link, and how many links came before it.
std::pair<std::vector<std::uint32_t>, std::uint32_t> FindHistories(IModelReader const& source) {
    std::vector<std::uint32_t> references(source.GetEntities().GetCount(), kInvalidIndex);
    std::uint32_t olderCount = 0;
    Quorlan::OwnerHistoryLink link;
    for (std::uint32_t i = 0; i < source.GetOwnerHistories().GetLinkCount(); ++i) {
        source.GetOwnerHistories().GetLink(link, i);
        auto const entity = static_cast<std::uint32_t>(link.entity);
        if (entity >= references.size()) continue;
        if (references[entity] != kInvalidIndex) ++olderCount;
        references[entity] = link.reference;
    }
    return {std::move(references), olderCount};
}

std::vector<PropertyRecord> ToProperties(Quorlan::IOwnerHistoryReader const& histories, std::uint32_t reference,
                                         std::string const& set) {
    Quorlan::OwnerPart part;
    Quorlan::OwnerHistoryRecord record;
    Quorlan::OwnerHistoryLinkRecord link;
    histories.GetOwnerPart(part, histories.GetOwnerPartIndex(reference));
    histories.GetOwnerHistory(record, histories.GetOwnerHistoryIndex(reference));
    histories.GetOwnerHistoryLinkRecord(link, reference);
    std::vector<PropertyRecord> properties;
    auto const addText = [&](char const* name, std::string const& text) {
        if (!text.empty()) properties.push_back({set, name, text});
    };
    addText("User", part.user);
    addText("Organization", part.organization);
    addText("Application", part.application);
    addText("LastModifyingUser", link.lastModifyingUser);
    addText("LastModifyingApplication", link.lastModifyingApplication);
    properties.push_back({set, "State", std::int64_t{record.state}});
    properties.push_back({set, "ChangeAction", static_cast<std::int64_t>(record.changeAction)});
    properties.push_back({set, "CreationDate", record.creationDate});
    properties.push_back({set, "LastModifiedDate", record.lastModifiedDate});
    return properties;
}

std::uint32_t CountShapeless(IModelReader const& source) {
    std::vector<bool> hasInstance(source.GetEntities().GetCount());
    Quorlan::InstanceRecord instance;
    for (std::uint32_t i = 0; i < source.GetGeometry().GetInstanceCount(); ++i) {
        source.GetGeometry().GetInstance(instance, i);
        hasInstance[instance.entityIndex] = true;
    }
    return static_cast<std::uint32_t>(std::count(hasInstance.begin(), hasInstance.end(), false));
}

}  // namespace

CombineLosses KeepEntities(Quorlan::ModelBuilder& builder, EntityIndex_t entity, IModelReader const& source) {
    auto const& entities = source.GetEntities();
    auto& writer = builder.GetPropertyWriter();
    CombineLosses losses;
    losses.entities = entities.GetCount();
    auto const [references, olderCount] = FindHistories(source);
    losses.olderHistories = olderCount;
    KeyMaker keys(entities);
    PropertyRecord property;
    for (std::uint32_t i = 0; i < entities.GetCount(); ++i) {
        auto const key = keys.Make(i);
        writer.AddProperty(entity, {key, "Name", LabelOf(entities, i).name});
        for (std::uint32_t p = 0; p < source.GetProperties().GetPropertyCount(EntityIndex_t{i}); ++p) {
            source.GetProperties().GetProperty(property, EntityIndex_t{i}, p);
            property.set = key + '/' + property.set;
            writer.AddProperty(entity, property);
        }
        if (references[i] == kInvalidIndex) continue;
        for (auto const& part : ToProperties(source.GetOwnerHistories(), references[i], key + "/OwnerHistory")) {
            writer.AddProperty(entity, part);
        }
    }
    losses.shapeless = CountShapeless(source);
    return losses;
}

}  // namespace QuorlanProgram
