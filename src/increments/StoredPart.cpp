#include "increments/StoredPart.h"

#include "increments/IndexMap.h"
#include "model/PropertyValue.h"

#include <algorithm>

namespace Quorlan::Tools::Increments {
namespace {

Schema::Placement Store(PlacementRecord const& placement) {
    auto const& o = placement.origin;
    auto const& x = placement.xAxis;
    auto const& y = placement.yAxis;
    return {o[0], o[1], o[2], {x[0], x[1], x[2]}, {y[0], y[1], y[2]}};
}

/// The placement of an instance whose shape was moved by `move`.
Schema::Placement PlaceStored(Schema::Placement const& placement, DefinitionMove const& move) {
    PlacementRecord const record = ToRecord(&placement);
    return Store(PlaceMoved(record, ToDoubleFrame(record), move));
}

void Mark(std::vector<bool>& used, std::uint32_t index) {
    if (index < used.size()) used[index] = true;
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

/// Copies entries of one source, whose strings are written when they are met first.
class EntryCopier {
public:
    EntryCopier(Schema::Properties const& source, UniqueTexts& strings)
        : source_(source.strings()), strings_(strings), written_(CountOf(source_)) {}

    void Copy(Schema::PropertyEntry const& entry, std::uint32_t entity, ElementWriter<Schema::PropertyEntry>& out) {
        std::uint32_t const set = CopyString(entry.set());
        std::uint32_t const name = CopyString(entry.name());
        out.Add(entity, set, name, KindOf(entry), CopyValue(entry));
    }

private:
    static std::uint32_t KindOf(Schema::PropertyEntry const& entry) {
        return entry.valueKind() <= kBooleanProperty ? entry.valueKind() : kTextProperty;
    }

    std::uint64_t CopyValue(Schema::PropertyEntry const& entry) {
        switch (entry.valueKind()) {
            case kDoubleProperty:
            case kIntegerProperty: return entry.value();
            case kBooleanProperty: return entry.value() != 0 ? 1 : 0;
            default: break;
        }
        bool const fits = entry.valueKind() == kTextProperty && entry.value() < kInvalidIndex;
        return CopyString(fits ? static_cast<std::uint32_t>(entry.value()) : kInvalidIndex);
    }

    std::uint32_t CopyString(std::uint32_t index) {
        return written_.FindOrWrite(index, [&] { return strings_.Add(ViewOf(FindElement(source_, index))); });
    }

    flatbuffers::Vector<flatbuffers::Offset<flatbuffers::String>> const* source_;
    UniqueTexts& strings_;
    IndexMap written_;
};

std::size_t EstimateSize(Schema::Properties const* properties) {
    if (properties == nullptr) return 0;
    std::size_t size = CountOf(properties->entries()) * sizeof(Schema::PropertyEntry);
    for (std::uint32_t i = 0; i < CountOf(properties->strings()); ++i) {
        constexpr std::size_t kSizeWithoutCharacters = 12;
        size += kSizeWithoutCharacters + properties->strings()->Get(i)->size();
    }
    return size;
}

}  // namespace

StoredPart::StoredPart(BufferModelReader const& source, EntityList const& list, StoredNumbers const& first,
                       OwnerHistoryWriter& histories, ContentCopier& content)
    : source_(source),
      model_(source.GetModel()),
      records_(*model_.entities()->records()),
      texts_(model_.entities()->texts()),
      first_(first),
      next_(first),
      copies_(records_.size(), list.size()) {
    CopyEntities(list, histories);
    if (!copies_.GetAll().empty()) CopyContent(content);
}

void StoredPart::CopyEntities(EntityList const& list, OwnerHistoryWriter& writer) {
    StoredHistories histories(model_, writer);
    references_.reserve(list.size());
    for (auto const& [action, index] : list) {
        auto const entity = static_cast<std::uint32_t>(index);
        if (entity >= records_.size()) continue;
        auto const& record = *records_.Get(entity);
        if (record.identifierKind() != 0) continue;
        std::size_t const textSize = GetText(record.textReference()).size();
        if (textSize != 0) ++next_.text;
        textSize_ += textSize;
        references_.push_back({record.identifierReference(), record.textReference(),
                               histories.Copy(entity, next_.historyRecord++), action});
        copies_.Append(entity, EntityIndex_t{next_.entity++});
    }
    next_.guid += next_.entity - first_.entity;
    next_.history += next_.entity - first_.entity;
}

void StoredPart::CopyContent(ContentCopier& content) {
    Schema::Geometry const& geometry = *model_.geometry();
    auto const* const instances = geometry.instances();
    if (CountOf(instances) == 0) return;
    std::vector<bool> usedDefinitions(CountOf(geometry.definitions()));
    for (auto const* instance : *instances) {
        if (copies_.IsCopied(instance->entityIndex())) Mark(usedDefinitions, instance->definitionIndex());
    }
    definitions_ = content.CopyDefinitions(source_.GetGeometry(), usedDefinitions);

    std::vector<bool> usedMaterials(CountOf(geometry.materials()));
    std::vector<bool> usedLayers(CountOf(geometry.layers()));
    ForEachInstance([&](Schema::Instance const& instance) {
        copies_.ForEachCopy(instance.entityIndex(), [&](EntityIndex_t) { ++next_.instance; });
        Mark(usedMaterials, instance.materialIndex());
        Mark(usedLayers, instance.layerIndex());
    });
    materials_ = content.CopyMaterials(source_.GetGeometry(), usedMaterials);
    layers_ = content.CopyLayers(source_.GetGeometry(), usedLayers);
}

template <class Visit>
void StoredPart::ForEachInstance(Visit visit) const {
    if (definitions_.indices.empty()) return;
    for (auto const* instance : *model_.geometry()->instances()) {
        bool const isWritten = copies_.IsCopied(instance->entityIndex()) &&
                               LookUp(definitions_.indices, instance->definitionIndex()) != kInvalidIndex;
        if (isWritten) visit(*instance);
    }
}

std::size_t StoredPart::EstimateSize() const {
    constexpr std::size_t kEntitySize = sizeof(Schema::EntityRecord) + sizeof(Schema::Guid) +
                                        sizeof(Schema::OwnerHistoryRecord) + sizeof(Schema::OwnerHistoryLink);
    constexpr std::size_t kInstanceSize = sizeof(Schema::Placement) + sizeof(Schema::Instance);
    constexpr std::size_t kTextSizeWithoutCharacters = 12;
    constexpr std::size_t kMostCleanedBytes = 3;  // what replaces one that is no UTF-8
    return copies_.GetAll().size() * kEntitySize + (next_.text - first_.text) * kTextSizeWithoutCharacters +
           textSize_ * kMostCleanedBytes + (next_.instance - first_.instance) * kInstanceSize +
           Increments::EstimateSize(model_.properties());
}

void StoredPart::WriteEntities(ElementWriter<Schema::EntityRecord>& out) const {
    std::uint32_t guid = first_.guid;
    std::uint32_t text = first_.text;
    bool const haveAllText = next_.text - first_.text == copies_.GetAll().size();
    for (auto const& copy : copies_.GetAll()) {
        auto const& record = *records_.Get(copy.source);
        bool const hasText = haveAllText || !GetText(record.textReference()).empty();
        out.Add(0u, guid++, hasText ? text++ : kInvalidIndex, 0u, record.placement());
    }
}

void StoredPart::WriteGuids(ElementWriter<Schema::Guid>& out) const {
    auto const* const guids = model_.entities()->guids();
    Schema::Guid const noGuid{};
    for (References const& references : references_) {
        auto const* const guid = FindElement(guids, references.guid);
        out.Add(guid == nullptr ? noGuid : *guid);
    }
}

void StoredPart::WriteHistoryRecords(ElementWriter<Schema::OwnerHistoryRecord>& out) const {
    auto const* const histories = model_.ownerHistories();
    auto const* const records = histories == nullptr ? nullptr : histories->records();
    for (References const& references : references_) {
        auto const* const record = FindElement(records, references.historyRecord);
        auto const action = static_cast<std::uint32_t>(references.action);
        if (record == nullptr) {
            out.Add(0u, action, 0, 0);
        } else {
            out.Add(record->state(), action, record->creationDate(), record->lastModifiedDate());
        }
    }
}

void StoredPart::WriteHistoryLinks(ElementWriter<Schema::OwnerHistoryLink>& out) const {
    std::uint32_t history = first_.history;
    for (auto const& copy : copies_.GetAll()) out.Add(static_cast<std::uint32_t>(copy.entity), history++);
}

void StoredPart::WritePlacements(ElementWriter<Schema::Placement>& out) const {
    auto const* const placements = model_.geometry()->placements();
    ForEachInstance([&](Schema::Instance const& instance) {
        auto const* const move = definitions_.FindMove(instance.definitionIndex());
        auto const& placement = *placements->Get(instance.placementIndex());
        copies_.ForEachCopy(instance.entityIndex(), [&](EntityIndex_t) {
            if (move == nullptr) {
                out.Add(placement);
            } else {
                out.Add(PlaceStored(placement, *move));
            }
        });
    });
}

void StoredPart::WriteInstances(ElementWriter<Schema::Instance>& out) const {
    std::uint32_t next = first_.instance;
    ForEachInstance([&](Schema::Instance const& instance) {
        copies_.ForEachCopy(instance.entityIndex(), [&](EntityIndex_t entity) {
            out.Add(next++, static_cast<std::uint32_t>(entity), definitions_.indices[instance.definitionIndex()],
                    LookUp(materials_, instance.materialIndex()), LookUp(layers_, instance.layerIndex()));
        });
    });
}

void StoredPart::WriteProperties(ElementWriter<Schema::PropertyEntry>& out, UniqueTexts& strings) const {
    auto const* const properties = model_.properties();
    if (properties == nullptr || CountOf(properties->entries()) == 0) return;
    auto const& all = *properties->entries();
    EntryCopier entries(*properties, strings);
    EntryFinder finder(source_.GetStoredProperties(), all, copies_.GetAll().size());
    for (auto const& copy : copies_.GetAll()) {
        auto const [first, last] = finder.Find(copy.source);
        auto const entity = static_cast<std::uint32_t>(copy.entity);
        for (std::uint32_t i = first; i < last; ++i) entries.Copy(*all.Get(i), entity, out);
    }
}

}  // namespace Quorlan::Tools::Increments
