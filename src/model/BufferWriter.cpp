#include "model/BufferWriter.h"

#include "model/BufferGate.h"

#include <algorithm>

namespace Quorlan {
namespace {

/// Where a buffer's tables stand, so that their slots can lead to what is written after them. A slot is the place of a
/// field in the order in which the layout lists it.
struct Tables {
    explicit Tables(BufferSink& sink);

    ShapeLayouts shapes;
    std::size_t ownerPartLayout;
    std::size_t ownerHistoryLayout;
    std::size_t textureLayout;
    std::size_t graphicsLayout;
    std::size_t entities = 0;
    std::size_t ownerHistories = 0;
    std::size_t geometry = 0;
    std::size_t properties = 0;
};

constexpr std::size_t kHeaderSize = 8;  ///< [bytes] the offset of the root and the identifier

Tables::Tables(BufferSink& sink)
    : shapes(sink),
      ownerPartLayout(sink.AppendLayout(
          {Schema::OwnerPart::VT_USER, Schema::OwnerPart::VT_ORGANIZATION, Schema::OwnerPart::VT_APPLICATION})),
      ownerHistoryLayout(sink.AppendLayout({Schema::OwnerHistory::VT_PART, Schema::OwnerHistory::VT_RECORD,
                                            Schema::OwnerHistory::VT_LASTMODIFYINGUSER,
                                            Schema::OwnerHistory::VT_LASTMODIFYINGAPPLICATION})),
      textureLayout(sink.AppendLayout({Schema::Texture::VT_TYPE, Schema::Texture::VT_DATA})),
      graphicsLayout(
          sink.AppendLayout({Schema::GraphicsContainerTable::VT_SEGMENTS, Schema::GraphicsContainerTable::VT_ARCS})) {
    using namespace Schema;
    auto const append = [&sink](std::initializer_list<flatbuffers::voffset_t> fields) {
        return sink.AppendTable(sink.AppendLayout(fields), fields.size());
    };
    std::size_t const model =
        append({Model::VT_ENTITIES, Model::VT_OWNERHISTORIES, Model::VT_GEOMETRY, Model::VT_PROPERTIES});
    sink.SetOffset(0, model);
    std::size_t slot = model;
    auto const link = [&](std::size_t table) {
        sink.SetOffset(slot += 4, table);
        return table;
    };
    entities = link(append({Entities::VT_RECORDS, Entities::VT_GUIDS, Entities::VT_TEXTS, Entities::VT_IDENTIFIERTEXTS,
                            Entities::VT_GEOMETRICKEYS}));
    ownerHistories = link(append({OwnerHistories::VT_PARTS, OwnerHistories::VT_RECORDS, OwnerHistories::VT_HISTORIES,
                                  OwnerHistories::VT_LINKS}));
    geometry =
        link(append({Geometry::VT_PLACEMENTS, Geometry::VT_MATERIALS, Geometry::VT_LAYERS, Geometry::VT_DEFINITIONS,
                     Geometry::VT_INSTANCES, Geometry::VT_TEXTURES, Geometry::VT_FACETEDBREPS, Geometry::VT_BREPSWITHUV,
                     Geometry::VT_BREPSWITHNORMAL, Geometry::VT_GRAPHICSCONTAINERS}));
    properties = link(append({Properties::VT_ENTRIES, Properties::VT_STRINGS}));
}

/// [bytes] What the texts take at most, with the offsets that lead to them.
std::size_t EstimateSize(TextPool const& texts) { return texts.GetCount() * 12 + texts.GetCharacterCount(); }

/// The collected texts and behind them the stored ones, which are none where `stored` is null.
void WriteTexts(BufferSink& sink, std::size_t table, std::size_t slot, TextPool const& texts,
                StoredContent const* stored = nullptr) {
    std::size_t const storedCount = stored == nullptr ? 0 : stored->GetTextCount();
    TextAppender appender(sink, sink.AppendOffsets(table, slot, texts.GetCount() + storedCount));
    for (std::size_t i = 0; i < texts.GetCount(); ++i) appender.Add(texts.Get(i));
    if (storedCount != 0) stored->WriteTexts(appender);
    appender.Flush();
}

/// The collected structs and behind them those that `write` appends, which are none where `stored` is null.
template <class Collected, class Stored, class Write>
void WriteStructs(BufferSink& sink, std::size_t table, std::size_t slot, Collected const& collected, Stored* stored,
                  Write write) {
    using T = typename Collected::value_type;
    std::size_t const length = sink.BeginVector(table, slot, collected.size(), alignof(T));
    sink.AppendCopy(collected.data(), collected.size() * sizeof(T));
    if (stored != nullptr) {
        ElementWriter<T> out(sink);
        (stored->*write)(out);
        std::size_t const count = collected.size() + out.Finish();
        flatbuffers::WriteScalar(sink.At(length), static_cast<flatbuffers::uoffset_t>(count));
    }
    sink.Align(4, 0);
}

void WriteEntities(BufferSink& sink, std::size_t table, EntityWriter const& writer, StoredContent const* stored) {
    WriteStructs(sink, table, 0, writer.records, stored, &StoredContent::WriteEntities);
    WriteStructs(sink, table, 1, writer.guids, stored, &StoredContent::WriteGuids);
    WriteTexts(sink, table, 2, writer.texts, stored);
    WriteTexts(sink, table, 3, writer.identifierTexts);
    sink.AppendVector(table, 4, writer.geometricKeys);
}

/// Appends one table per element and the vector that leads to them. `writeSlots` is given the position of slot 0.
template <class Elements, class WriteSlots>
void WriteTables(BufferSink& sink, std::size_t vectorOfTables, std::size_t slot, std::size_t layout,
                 std::size_t slotCount, Elements const& elements, WriteSlots const& writeSlots) {
    std::size_t offset = sink.AppendOffsets(vectorOfTables, slot, elements.size());
    std::size_t const size = 4 + 4 * slotCount;
    std::size_t position = sink.GetSize();
    sink.Append(elements.size() * size);
    for (auto const& element : elements) {
        sink.SetOffset(offset, position);
        flatbuffers::WriteScalar(sink.At(position), static_cast<flatbuffers::soffset_t>(position - layout));
        writeSlots(position + 4, element);
        offset += 4;
        position += size;
    }
}

/// Parts and histories share the texts of their users, organizations and applications: few people write a model.
void WriteOwnerHistories(BufferSink& sink, Tables const& tables, OwnerHistoryWriter const& writer,
                         StoredContent const* stored) {
    std::size_t const table = tables.ownerHistories;
    TextPool const& texts = writer.texts.GetAll();
    std::size_t const partsSize = writer.parts.size() * (4 + 16);
    std::size_t const historiesSize = writer.histories.size() * (4 + 20);

    // The texts stand behind both vectors of tables; where, follows from the sizes.
    WriteStructs(sink, table, 1, writer.records, stored, &StoredContent::WriteHistoryRecords);
    WriteStructs(sink, table, 3, writer.links, stored, &StoredContent::WriteHistoryLinks);
    sink.Align(4, 0);
    std::vector<std::size_t> textPositions;
    textPositions.reserve(texts.GetCount());
    std::size_t position = sink.GetSize() + 4 + partsSize + 4 + historiesSize;
    for (std::size_t i = 0; i < texts.GetCount(); ++i) {
        textPositions.push_back(position);
        position += SizeOfText(texts.Get(i).size());
    }
    WriteTables(sink, table, 0, tables.ownerPartLayout, 3, writer.parts, [&](std::size_t slots, auto const& part) {
        sink.SetOffset(slots, textPositions[part.user]);
        sink.SetOffset(slots + 4, textPositions[part.organization]);
        sink.SetOffset(slots + 8, textPositions[part.application]);
    });
    WriteTables(sink, table, 2, tables.ownerHistoryLayout, 4, writer.histories,
                [&](std::size_t slots, auto const& history) {
                    flatbuffers::WriteScalar(sink.At(slots), history.part);
                    flatbuffers::WriteScalar(sink.At(slots + 4), history.record);
                    sink.SetOffset(slots + 8, textPositions[history.lastModifyingUser]);
                    sink.SetOffset(slots + 12, textPositions[history.lastModifyingApplication]);
                });
    for (std::size_t i = 0; i < texts.GetCount(); ++i) {
        std::size_t const size = SizeOfText(texts.Get(i).size());
        WriteText(sink.Append(size), size, texts.Get(i));
    }
}

void WriteShapes(BufferSink& sink, Tables const& tables, std::size_t slot, DefinitionWriter const& writer,
                 BRepKind kind) {
    auto const& shapes = writer.GetShapes(kind);
    std::size_t offset = sink.AppendOffsets(tables.geometry, slot, shapes.size());
    for (std::size_t i = 0; i < shapes.size(); ++i, offset += 4) {
        sink.SetOffset(offset, sink.GetSize());
        writer.WriteShape(sink, tables.shapes, kind, i);
    }
}

void WriteGraphics(BufferSink& sink, Tables const& tables, std::size_t slot, DefinitionWriter const& definitions) {
    std::size_t offset = sink.AppendOffsets(tables.geometry, slot, definitions.graphics.size());
    for (auto const& [segments, arcs] : definitions.graphics) {
        std::size_t const table = sink.AppendTable(tables.graphicsLayout, 2);
        sink.SetOffset(offset, table);
        sink.AppendVector(table, 0, definitions.segments.data() + segments.first, segments.count);
        sink.AppendVector(table, 1, definitions.arcs.data() + arcs.first, arcs.count);
        offset += 4;
    }
}

void WriteTextures(BufferSink& sink, Tables const& tables, std::size_t slot, TextureWriter const& writer) {
    std::size_t offset = sink.AppendOffsets(tables.geometry, slot, writer.textures.size());
    for (auto const& [type, data] : writer.textures) {
        std::size_t const table = sink.AppendTable(tables.textureLayout, 2);
        sink.SetOffset(offset, table);
        flatbuffers::WriteScalar(sink.At(table + 4), static_cast<std::uint32_t>(type));
        sink.AppendVector(table, 1, data);
        offset += 4;
    }
}

void WriteGeometry(BufferSink& sink, Tables const& tables, ModelContent const& content) {
    std::size_t const table = tables.geometry;
    DefinitionWriter const& definitions = content.definitions;
    WriteStructs(sink, table, 0, content.instances.placements, content.stored, &StoredContent::WritePlacements);
    sink.AppendVector(table, 1, content.materials.materials);
    WriteTexts(sink, table, 2, content.layers.names);
    sink.AppendVector(table, 3, definitions.definitions);
    WriteStructs(sink, table, 4, content.instances.instances, content.stored, &StoredContent::WriteInstances);
    WriteTextures(sink, tables, 5, content.textures);
    WriteShapes(sink, tables, 6, definitions, BRepKind::kPlain);
    WriteShapes(sink, tables, 7, definitions, BRepKind::kWithUV);
    WriteShapes(sink, tables, 8, definitions, BRepKind::kWithNormal);
    WriteGraphics(sink, tables, 9, definitions);
}

/// Readers find the entries of an entity by bisection; within an entity the order of writing stays. Stored entities
/// come behind the collected ones, and so do their entries.
void WriteProperties(BufferSink& sink, std::size_t table, PropertyWriter const& writer, StoredContent* stored) {
    auto const isBefore = [](Schema::PropertyEntry const& a, Schema::PropertyEntry const& b) {
        return a.entity() < b.entity();
    };
    if (std::is_sorted(writer.entries.begin(), writer.entries.end(), isBefore)) {
        WriteStructs(sink, table, 0, writer.entries, stored, &StoredContent::WriteProperties);
    } else {
        auto sorted = writer.entries;
        std::stable_sort(sorted.begin(), sorted.end(), isBefore);
        WriteStructs(sink, table, 0, sorted, stored, &StoredContent::WriteProperties);
    }
    WriteTexts(sink, table, 1, writer.strings.GetAll());
}

template <class Vector>
std::size_t SizeOf(Vector const& structs) {
    return structs.size() * sizeof(structs[0]);
}

std::size_t EstimateSize(DefinitionWriter const& definitions) {
    std::size_t size = SizeOf(definitions.definitions) + SizeOf(definitions.segments) + SizeOf(definitions.arcs) +
                       definitions.graphics.size() * 40;
    for (BRepKind const kind : {BRepKind::kPlain, BRepKind::kWithUV, BRepKind::kWithNormal}) {
        for (StoredShape const& shape : definitions.GetShapes(kind))
            size += 4 + shape.counts.GetBlockSize(StrideOf(kind));
    }
    return size;
}

/// [bytes] What the buffer takes at most, so that it is written into one allocation. The system provides only what is
/// touched of it.
std::size_t EstimateSize(ModelContent const& content) {
    auto const& [entities, histories, materials, layers, textures, definitions, instances, properties, stored] =
        content;
    std::size_t size = 4096;  // the tables around the content, and what aligns it
    if (stored != nullptr) size += stored->EstimateSize();
    size += SizeOf(entities.records) + SizeOf(entities.guids) + SizeOf(entities.geometricKeys);
    size += EstimateSize(entities.texts) + EstimateSize(entities.identifierTexts);
    size += SizeOf(histories.records) + SizeOf(histories.links) + histories.histories.size() * 24 +
            histories.parts.size() * 20 + EstimateSize(histories.texts.GetAll());
    size += EstimateSize(definitions) + SizeOf(materials.materials) + EstimateSize(layers.names);
    size += SizeOf(instances.instances) + SizeOf(instances.placements);
    size += SizeOf(properties.entries) + EstimateSize(properties.strings.GetAll());
    for (auto const& texture : textures.textures) size += texture.second.size() + 32;
    return std::min(size, kMaxBufferSize);
}

}  // namespace

std::vector<char> WriteModelBuffer(ModelContent const& content) {
    BufferSink sink(EstimateSize(content));
    std::memcpy(sink.Append(kHeaderSize) + 4, Schema::ModelIdentifier(), 4);
    Tables const tables(sink);
    WriteEntities(sink, tables.entities, content.entities, content.stored);
    WriteOwnerHistories(sink, tables, content.ownerHistories, content.stored);
    WriteGeometry(sink, tables, content);
    WriteProperties(sink, tables.properties, content.properties, content.stored);
    return sink.Take();
}

}  // namespace Quorlan
