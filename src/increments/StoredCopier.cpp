#include "increments/StoredCopier.h"

#include "increments/EntityCopies.h"
#include "model/PropertyValue.h"
#include "model/WideText.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace Quorlan::Tools::Increments {
namespace {

using EntityList = std::vector<std::pair<OwnerHistoryChangeAction, EntityIndex_t>>;

/// Makes room for more elements, by doubling where many small calls follow one another.
template <class Vector>
void ReserveMore(Vector& elements, std::size_t count) {
    std::size_t const needed = elements.size() + count;
    if (needed <= elements.capacity()) return;
    std::size_t const roomForAnIncrement = needed / 16;
    elements.reserve(std::max(needed + roomForAnIncrement, 2 * elements.capacity()));
}

std::string_view ViewOf(flatbuffers::String const* text) {
    return text == nullptr ? std::string_view() : text->string_view();
}

bool IsAscii(std::string_view text) {
    std::size_t position = 0;
    for (; position + 8 <= text.size(); position += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + position, 8);
        if ((word & 0x8080808080808080) != 0) return false;
    }
    return std::all_of(text.begin() + position, text.end(), [](char c) { return (c & 0x80) == 0; });
}

/// A stored text as it is stored again once it has been a wide text: bytes that are no UTF-8 are replaced.
class TextCleaner {
public:
    std::string_view Clean(std::string_view text) {
        if (IsAscii(text)) return text;
        FromUtf8(text, wide_);
        cleaned_ = ToUtf8(wide_);
        return cleaned_;
    }

private:
    std::wstring wide_;
    std::string cleaned_;
};

/// Where each of a source's elements went. Elements that do not exist are told apart by their index too.
class IndexMap {
public:
    explicit IndexMap(std::uint32_t count) : indices_(count, kInvalidIndex) {}

    template <class Write>
    std::uint32_t FindOrWrite(std::uint32_t source, Write write) {
        std::uint32_t& index =
            source < indices_.size() ? indices_[source] : others_.try_emplace(source, kInvalidIndex).first->second;
        if (index == kInvalidIndex) index = write();
        return index;
    }

private:
    std::vector<std::uint32_t> indices_;
    std::unordered_map<std::uint32_t, std::uint32_t> others_;
};

/// Copies owner histories as `OwnerHistoryCopier` does.
class StoredHistoryCopier {
public:
    StoredHistoryCopier(Schema::Model const& source, OwnerHistoryWriter& writer)
        : source_(source.ownerHistories()),
          writer_(writer),
          references_(source.entities()->records()->size(), kInvalidIndex),
          parts_(source_ == nullptr ? 0 : CountOf(source_->parts())) {
        if (source_ == nullptr) return;
        for (std::uint32_t i = 0; i < CountOf(source_->links()); ++i) {
            auto const* const link = source_->links()->Get(i);
            if (link->entity() < references_.size()) references_[link->entity()] = link->reference();
        }
    }

    void Copy(std::uint32_t sourceEntity, EntityIndex_t copy, OwnerHistoryChangeAction action) {
        auto const* const history =
            source_ == nullptr ? nullptr : FindElement(source_->histories(), references_[sourceEntity]);
        std::uint32_t const sourcePart = history == nullptr ? kInvalidIndex : history->part();
        std::uint32_t const part = parts_.FindOrWrite(sourcePart, [&] { return CopyPart(sourcePart); });
        std::uint32_t const record = CopyRecord(history == nullptr ? kInvalidIndex : history->record(), action);
        std::uint32_t const user = CopyText(user_, history == nullptr ? nullptr : history->lastModifyingUser());
        std::uint32_t const application =
            CopyText(application_, history == nullptr ? nullptr : history->lastModifyingApplication());
        writer_.LinkOwnerHistory(copy, writer_.Add(part, record, user, application));
    }

private:
    std::uint32_t CopyPart(std::uint32_t sourcePart) {
        auto const* const part = source_ == nullptr ? nullptr : FindElement(source_->parts(), sourcePart);
        OwnerPart copy;
        if (part != nullptr) {
            copy = {std::string(ViewOf(part->user())), std::string(ViewOf(part->organization())),
                    std::string(ViewOf(part->application()))};
        }
        return writer_.AddOwnerPart(copy);
    }

    std::uint32_t CopyRecord(std::uint32_t sourceRecord, OwnerHistoryChangeAction action) {
        auto const* const record = source_ == nullptr ? nullptr : FindElement(source_->records(), sourceRecord);
        auto const bits = static_cast<std::uint32_t>(action);
        if (record == nullptr) {
            writer_.records.emplace_back(0u, bits, 0, 0);
        } else {
            writer_.records.emplace_back(record->state(), bits, record->creationDate(), record->lastModifiedDate());
        }
        return static_cast<std::uint32_t>(writer_.records.size() - 1);
    }

    /// A text and where it went. Histories mostly have the texts of those before them.
    struct CopiedText {
        bool isSet = false;
        flatbuffers::String const* source = nullptr;
        std::uint32_t index = kInvalidIndex;
    };

    std::uint32_t CopyText(CopiedText& last, flatbuffers::String const* text) {
        if (last.isSet && last.source == text) return last.index;
        std::uint32_t const index = writer_.AddText(ViewOf(text));
        if (OwnerHistoryWriter::IsShared(ViewOf(text))) last = {true, text, index};
        return index;
    }

    Schema::OwnerHistories const* source_;
    OwnerHistoryWriter& writer_;
    CopiedText user_;
    CopiedText application_;
    std::vector<std::uint32_t> references_;  ///< by source entity
    IndexMap parts_;
};

EntityCopies CopyEntities(StoredTarget const& target, Schema::Model const& source, EntityList const& list) {
    Schema::Entities const& entities = *source.entities();
    EntityCopies copies(entities.records()->size(), list.size());
    StoredHistoryCopier histories(source, target.ownerHistories);
    TextCleaner cleaner;
    ReserveMore(target.entities.records, list.size());
    ReserveMore(target.entities.guids, list.size());
    ReserveMore(target.ownerHistories.records, list.size());
    ReserveMore(target.ownerHistories.histories, list.size());
    ReserveMore(target.ownerHistories.links, list.size());
    Schema::Guid const noGuid{};
    for (auto const& [action, index] : list) {
        auto const entity = static_cast<std::uint32_t>(index);
        if (entity >= copies.GetSourceCount()) continue;
        auto const& record = *entities.records()->Get(entity);
        if (record.identifierKind() != 0) continue;
        auto const* const guid = FindElement(entities.guids(), record.identifierReference());
        auto const text = cleaner.Clean(ViewOf(FindElement(entities.texts(), record.textReference())));
        EntityIndex_t const copy =
            target.entities.AddStored(guid == nullptr ? noGuid : *guid, text, record.placement());
        histories.Copy(entity, copy, action);
        copies.Append(entity, copy);
    }
    return copies;
}

Schema::Placement Store(PlacementRecord const& placement) {
    auto const& o = placement.origin;
    auto const& x = placement.xAxis;
    auto const& y = placement.yAxis;
    return {o[0], o[1], o[2], {x[0], x[1], x[2]}, {y[0], y[1], y[2]}};
}

/// The placement of an instance whose shape was moved by `move`; null for none.
Schema::Placement PlaceStored(Schema::Placement const& placement, DefinitionMove const* move) {
    if (move == nullptr) return placement;
    PlacementRecord const record = ToRecord(&placement);
    return Store(PlaceMoved(record, ToDoubleFrame(record), *move));
}

void Mark(std::vector<bool>& used, std::uint32_t index) {
    if (index < used.size()) used[index] = true;
}

void CopyInstances(StoredTarget const& target, ContentCopier& content, BufferModelReader const& source,
                   EntityCopies const& copies) {
    Schema::Geometry const& geometry = *source.GetModel().geometry();
    auto const* const instances = geometry.instances();
    if (CountOf(instances) == 0) return;
    std::vector<bool> usedDefinitions(CountOf(geometry.definitions()));
    for (auto const* instance : *instances) {
        if (copies.IsCopied(instance->entityIndex())) Mark(usedDefinitions, instance->definitionIndex());
    }
    auto const definitions = content.CopyDefinitions(source.GetGeometry(), usedDefinitions);

    std::vector<bool> usedMaterials(CountOf(geometry.materials()));
    std::vector<bool> usedLayers(CountOf(geometry.layers()));
    std::size_t copyCount = 0;
    auto const isWritten = [&](Schema::Instance const& instance) {
        return copies.IsCopied(instance.entityIndex()) &&
               LookUp(definitions.indices, instance.definitionIndex()) != kInvalidIndex;
    };
    for (auto const* instance : *instances) {
        if (!isWritten(*instance)) continue;
        ++copyCount;
        Mark(usedMaterials, instance->materialIndex());
        Mark(usedLayers, instance->layerIndex());
    }
    auto const materials = content.CopyMaterials(source.GetGeometry(), usedMaterials);
    auto const layers = content.CopyLayers(source.GetGeometry(), usedLayers);

    ReserveMore(target.instances.instances, copyCount);
    ReserveMore(target.instances.placements, copyCount);
    for (auto const* instance : *instances) {
        if (!isWritten(*instance)) continue;
        Schema::Placement const placement = PlaceStored(*geometry.placements()->Get(instance->placementIndex()),
                                                        definitions.FindMove(instance->definitionIndex()));
        GeometryDefinitionIndex_t const definition{definitions.indices[instance->definitionIndex()]};
        copies.ForEachCopy(instance->entityIndex(), [&](EntityIndex_t entity) {
            target.instances.Add(entity, definition, LookUp(materials, instance->materialIndex()),
                                 LookUp(layers, instance->layerIndex()), placement);
        });
    }
}

/// Finds the entries of entities that mostly follow one another as their entries do.
class EntryFinder {
public:
    /// Entities that are few beside the entries are looked up one by one.
    EntryFinder(BufferPropertyReader const& reader, flatbuffers::Vector<Schema::PropertyEntry const*> const& entries,
                std::size_t entityCount)
        : reader_(reader), first_(entries.Get(0)), count_(entries.size()) {
        auto const isBefore = [](auto const& a, auto const& b) { return a.entity() < b.entity(); };
        isSorted_ = entityCount > count_ / 32 && std::is_sorted(first_, first_ + count_, isBefore);
    }

    /// The positions of the entity's entries, first and one behind the last.
    std::pair<std::uint32_t, std::uint32_t> Find(std::uint32_t entity) {
        bool const isNext = isSorted_ && (next_ == 0 || first_[next_ - 1].entity() < entity) &&
                            (next_ == count_ || first_[next_].entity() >= entity);
        if (!isNext) {
            auto const found = reader_.FindEntries(EntityIndex_t{entity});
            next_ = found.second;
            return found;
        }
        std::uint32_t const first = next_;
        while (next_ < count_ && first_[next_].entity() == entity) ++next_;
        return {first, next_};
    }

private:
    BufferPropertyReader const& reader_;
    Schema::PropertyEntry const* first_;
    std::uint32_t count_;
    std::uint32_t next_ = 0;
    bool isSorted_ = false;
};

void CopyProperties(PropertyWriter& writer, BufferModelReader const& source, EntityCopies const& copies) {
    auto const* const properties = source.GetModel().properties();
    if (properties == nullptr || CountOf(properties->entries()) == 0) return;
    auto const* const strings = properties->strings();
    IndexMap written(CountOf(strings));
    auto const copyString = [&](std::uint32_t index) {
        return written.FindOrWrite(index, [&] { return writer.strings.Add(ViewOf(FindElement(strings, index))); });
    };
    auto const copyValue = [&](Schema::PropertyEntry const& entry) -> std::pair<std::uint32_t, std::uint64_t> {
        switch (entry.valueKind()) {
            case kDoubleProperty:
            case kIntegerProperty: return {entry.valueKind(), entry.value()};
            case kBooleanProperty: return {entry.valueKind(), entry.value() != 0 ? 1 : 0};
            default: break;
        }
        bool const fits = entry.valueKind() == kTextProperty && entry.value() < kInvalidIndex;
        return {kTextProperty, copyString(fits ? static_cast<std::uint32_t>(entry.value()) : kInvalidIndex)};
    };
    EntryFinder finder(source.GetStoredProperties(), *properties->entries(), copies.GetAll().size());
    ReserveMore(writer.entries, properties->entries()->size() / copies.GetSourceCount() * copies.GetAll().size());
    for (auto const& copy : copies.GetAll()) {
        auto const [first, last] = finder.Find(copy.source);
        for (std::uint32_t i = first; i < last; ++i) {
            auto const& entry = *properties->entries()->Get(i);
            std::uint32_t const set = copyString(entry.set());
            std::uint32_t const name = copyString(entry.name());
            auto const [kind, value] = copyValue(entry);
            writer.entries.emplace_back(static_cast<std::uint32_t>(copy.entity), set, name, kind, value);
        }
    }
}

}  // namespace

std::optional<StoredTarget> StoredTarget::Find(ModelBuilder& builder) {
    auto* const entities = dynamic_cast<EntityWriter*>(&builder.GetEntityWriter());
    auto* const ownerHistories = dynamic_cast<OwnerHistoryWriter*>(&builder.GetOwnerHistoryWriter());
    auto* const instances = dynamic_cast<InstanceWriter*>(&builder.GetInstanceWriter());
    auto* const properties = dynamic_cast<PropertyWriter*>(&builder.GetPropertyWriter());
    if (entities == nullptr || ownerHistories == nullptr || instances == nullptr || properties == nullptr) {
        return std::nullopt;
    }
    return StoredTarget{*entities, *ownerHistories, *instances, *properties};
}

void CopyStoredEntities(StoredTarget const& target, ContentCopier& content, BufferModelReader const& source,
                        EntityList const& entities) {
    EntityCopies const copies = CopyEntities(target, source.GetModel(), entities);
    if (copies.GetAll().empty()) return;
    CopyInstances(target, content, source, copies);
    CopyProperties(target.properties, source, copies);
}

}  // namespace Quorlan::Tools::Increments
