#include "increments/StoredComposition.h"

#include "model/BufferWriter.h"

namespace Quorlan::Tools::Increments {

/// The parts, one behind the other.
class StoredComposition::Content final : public StoredContent {
public:
    Content(std::vector<StoredPart> const& parts, UniqueTexts& strings) : parts_(parts), strings_(strings) {}

    std::size_t EstimateSize() const override {
        std::size_t size = 0;
        for (StoredPart const& part : parts_) size += part.EstimateSize();
        return size;
    }
    std::size_t GetTextCount() const override { return parts_.empty() ? 0 : parts_.back().GetNext().text; }

    void WriteEntities(ElementWriter<Schema::EntityRecord>& out) const override {
        for (StoredPart const& part : parts_) part.WriteEntities(out);
    }
    void WriteGuids(ElementWriter<Schema::Guid>& out) const override {
        for (StoredPart const& part : parts_) part.WriteGuids(out);
    }
    void WriteTexts(TextAppender& out) const override {
        for (StoredPart const& part : parts_) part.WriteTexts(out);
    }
    void WriteHistoryRecords(ElementWriter<Schema::OwnerHistoryRecord>& out) const override {
        for (StoredPart const& part : parts_) part.WriteHistoryRecords(out);
    }
    void WriteHistoryLinks(ElementWriter<Schema::OwnerHistoryLink>& out) const override {
        for (StoredPart const& part : parts_) part.WriteHistoryLinks(out);
    }
    void WritePlacements(ElementWriter<Schema::Placement>& out) const override {
        for (StoredPart const& part : parts_) part.WritePlacements(out);
    }
    void WriteInstances(ElementWriter<Schema::Instance>& out) const override {
        for (StoredPart const& part : parts_) part.WriteInstances(out);
    }
    void WriteProperties(ElementWriter<Schema::PropertyEntry>& out) override {
        for (StoredPart const& part : parts_) part.WriteProperties(out, strings_);
    }

private:
    std::vector<StoredPart> const& parts_;
    UniqueTexts& strings_;
};

// The writers of a plain builder are the library's own.
StoredComposition::StoredComposition()
    : histories_(static_cast<OwnerHistoryWriter&>(builder_.GetOwnerHistoryWriter())) {
    content_.BorrowShapes();
}

void StoredComposition::Add(BufferModelReader const& source, EntityList const& entities) {
    StoredNumbers const first = parts_.empty() ? StoredNumbers() : parts_.back().GetNext();
    ReserveMore(histories_.histories, entities.size());
    parts_.emplace_back(source, entities, first, histories_, content_);
}

std::vector<char> StoredComposition::Write() {
    auto& properties = static_cast<PropertyWriter&>(builder_.GetPropertyWriter());
    Content stored(parts_, properties.strings);
    return WriteModelBuffer({static_cast<EntityWriter&>(builder_.GetEntityWriter()), histories_,
                             static_cast<MaterialWriter&>(builder_.GetMaterialWriter()),
                             static_cast<LayerWriter&>(builder_.GetLayerWriter()),
                             static_cast<TextureWriter&>(builder_.GetTextureWriter()),
                             static_cast<DefinitionWriter&>(builder_.GetGeometryDefinitionBuilder()),
                             static_cast<InstanceWriter&>(builder_.GetInstanceWriter()), properties, &stored});
}

}  // namespace Quorlan::Tools::Increments
