#include "model/BufferWriter.h"

#include "model/BufferGate.h"

#include <algorithm>
#include <new>

namespace Quorlan {
namespace {

using flatbuffers::FlatBufferBuilder;
using flatbuffers::Offset;
using flatbuffers::Vector;

/// [bytes] What the tables around the content may take at most.
constexpr std::size_t kTailSize = 4096;

/// FlatBuffers itself only asserts that a buffer stays below 2 GiB. What cannot be had in one piece is a failed
/// allocation, so that readers and writers of foreign models throw nothing else.
void RequireSpace(FlatBufferBuilder const& builder, std::size_t bytes) {
    if (bytes >= kMaxBufferSize - kTailSize || builder.GetSize() >= kMaxBufferSize - kTailSize - bytes) {
        throw std::bad_array_new_length();
    }
}

template <class T>
Offset<Vector<T const*>> WriteStructs(FlatBufferBuilder& builder, T const* structs, std::size_t count) {
    RequireSpace(builder, count * sizeof(T));
    return builder.CreateVectorOfStructs(structs, count);
}

template <class T>
Offset<Vector<T const*>> WriteStructs(FlatBufferBuilder& builder, std::vector<T> const& structs) {
    return WriteStructs(builder, structs.data(), structs.size());
}

Offset<flatbuffers::String> WriteString(FlatBufferBuilder& builder, std::string const& text) {
    RequireSpace(builder, text.size() + 8);
    return builder.CreateString(text);
}

Offset<Vector<Offset<flatbuffers::String>>> WriteStrings(FlatBufferBuilder& builder,
                                                         std::vector<std::string> const& texts) {
    std::vector<Offset<flatbuffers::String>> offsets;
    offsets.reserve(texts.size());
    for (auto const& text : texts) offsets.push_back(WriteString(builder, text));
    RequireSpace(builder, offsets.size() * sizeof(offsets[0]));
    return builder.CreateVector(offsets);
}

template <class Table>
Offset<Vector<Offset<Table>>> WriteTables(FlatBufferBuilder& builder, std::vector<Offset<Table>> const& tables) {
    RequireSpace(builder, tables.size() * sizeof(tables[0]));
    return builder.CreateVector(tables);
}

Offset<Vector<std::uint16_t>> WriteLoop(FlatBufferBuilder& builder, std::uint16_t const* indices, std::size_t count) {
    RequireSpace(builder, count * sizeof(*indices) + 32);
    return builder.CreateVector(indices, count);
}

/// The vector of one kind of BRep. Scratch vectors serve all shapes of the kind.
template <class Table, class StoredVertex, std::size_t Attributes, class CreateTable>
Offset<Vector<Offset<Table>>> WriteBReps(FlatBufferBuilder& builder, ShapeStore<Attributes> const& store,
                                         CreateTable const& createTable) {
    static_assert(sizeof(StoredVertex) == ShapeStore<Attributes>::kStride * sizeof(float));
    std::vector<Offset<Schema::FaceTable>> faces;
    std::vector<Offset<Schema::HoleTable>> holes;
    std::vector<Offset<Table>> tables;
    tables.reserve(store.GetBReps().size());
    for (StoredBRep const& brep : store.GetBReps()) {
        faces.clear();
        StoredRun const* const loops = store.GetFaces(brep.faces);
        for (std::size_t i = 0; i < brep.faces.count; ++i) {
            faces.push_back(
                Schema::CreateFaceTable(builder, WriteLoop(builder, store.GetLoop(loops[i]), loops[i].count)));
        }
        holes.clear();
        StoredHole const* const stored = store.GetHoles(brep.holes);
        for (std::size_t i = 0; i < brep.holes.count; ++i) {
            auto const loop = WriteLoop(builder, store.GetLoop(stored[i].loop), stored[i].loop.count);
            holes.push_back(Schema::CreateHoleTable(builder, stored[i].face, loop));
        }
        auto const* const vertices = reinterpret_cast<StoredVertex const*>(store.GetFloats(brep.vertices));
        auto const vertexVector = WriteStructs(builder, vertices, brep.vertices.count / store.kStride);
        auto const faceVector = WriteTables(builder, faces);  // one by one: arguments have no order of evaluation
        auto const holeVector = WriteTables(builder, holes);
        tables.push_back(createTable(builder, faceVector, holeVector, vertexVector));
    }
    return WriteTables(builder, tables);
}

Offset<Vector<Offset<Schema::GraphicsContainerTable>>> WriteGraphics(FlatBufferBuilder& builder,
                                                                     DefinitionWriter const& definitions) {
    std::vector<Offset<Schema::GraphicsContainerTable>> tables;
    tables.reserve(definitions.graphics.size());
    for (auto const& [segments, arcs] : definitions.graphics) {
        auto const segmentVector = WriteStructs(builder, definitions.segments.data() + segments.first, segments.count);
        auto const arcVector = WriteStructs(builder, definitions.arcs.data() + arcs.first, arcs.count);
        tables.push_back(Schema::CreateGraphicsContainerTable(builder, segmentVector, arcVector));
    }
    return WriteTables(builder, tables);
}

Offset<Vector<Offset<Schema::Texture>>> WriteTextures(FlatBufferBuilder& builder, TextureWriter const& writer) {
    std::vector<Offset<Schema::Texture>> tables;
    for (auto const& [type, data] : writer.textures) {
        RequireSpace(builder, data.size() + 32);
        auto const bytes = builder.CreateVector(reinterpret_cast<std::uint8_t const*>(data.data()), data.size());
        tables.push_back(Schema::CreateTexture(builder, static_cast<std::uint32_t>(type), bytes));
    }
    return WriteTables(builder, tables);
}

Offset<Schema::Entities> WriteEntities(FlatBufferBuilder& builder, EntityWriter const& writer) {
    auto const records = WriteStructs(builder, writer.records);
    auto const guids = WriteStructs(builder, writer.guids);
    auto const texts = WriteStrings(builder, writer.texts);
    auto const identifierTexts = WriteStrings(builder, writer.identifierTexts);
    auto const keys = WriteStructs(builder, writer.geometricKeys);
    return Schema::CreateEntities(builder, records, guids, texts, identifierTexts, keys);
}

Offset<Schema::OwnerHistories> WriteOwnerHistories(FlatBufferBuilder& builder, OwnerHistoryWriter const& writer) {
    std::vector<Offset<Schema::OwnerPart>> parts;
    parts.reserve(writer.parts.size());
    for (auto const& part : writer.parts) {
        auto const user = WriteString(builder, part.user);
        auto const organization = WriteString(builder, part.organization);
        auto const application = WriteString(builder, part.application);
        parts.push_back(Schema::CreateOwnerPart(builder, user, organization, application));
    }
    std::vector<Offset<Schema::OwnerHistory>> histories;
    histories.reserve(writer.histories.size());
    for (auto const& history : writer.histories) {
        auto const user = WriteString(builder, history.link.lastModifyingUser);
        auto const application = WriteString(builder, history.link.lastModifyingApplication);
        histories.push_back(Schema::CreateOwnerHistory(builder, history.part, history.record, user, application));
    }
    auto const partVector = WriteTables(builder, parts);
    auto const records = WriteStructs(builder, writer.records);
    auto const historyVector = WriteTables(builder, histories);
    auto const links = WriteStructs(builder, writer.links);
    return Schema::CreateOwnerHistories(builder, partVector, records, historyVector, links);
}

Offset<Schema::Geometry> WriteGeometry(FlatBufferBuilder& builder, ModelContent const& content) {
    DefinitionWriter const& definitions = content.definitions;
    auto const textures = WriteTextures(builder, content.textures);
    auto const breps = WriteBReps<Schema::FacetedBRepTable, Schema::PositionVertex>(builder, definitions.breps,
                                                                                    Schema::CreateFacetedBRepTable);
    auto const brepsWithUV = WriteBReps<Schema::FacetedBRepWithUVTable, Schema::UVVertex>(
        builder, definitions.brepsWithUV, Schema::CreateFacetedBRepWithUVTable);
    auto const brepsWithNormal = WriteBReps<Schema::FacetedBRepWithNormalTable, Schema::NormalVertex>(
        builder, definitions.brepsWithNormal, Schema::CreateFacetedBRepWithNormalTable);
    auto const graphics = WriteGraphics(builder, definitions);
    auto const layers = WriteStrings(builder, content.layers.names);
    auto const placements = WriteStructs(builder, content.instances.placements);
    auto const materials = WriteStructs(builder, content.materials.materials);
    auto const definitionVector = WriteStructs(builder, definitions.definitions);
    auto const instances = WriteStructs(builder, content.instances.instances);
    return Schema::CreateGeometry(builder, placements, materials, layers, definitionVector, instances, textures, breps,
                                  brepsWithUV, brepsWithNormal, graphics);
}

/// Readers find the entries of an entity by bisection; within an entity the order of writing stays.
Offset<Schema::Properties> WriteProperties(FlatBufferBuilder& builder, PropertyWriter const& writer) {
    auto const isBefore = [](Schema::PropertyEntry const& a, Schema::PropertyEntry const& b) {
        return a.entity() < b.entity();
    };
    std::vector<Schema::PropertyEntry> sorted;
    bool const isSorted = std::is_sorted(writer.entries.begin(), writer.entries.end(), isBefore);
    if (!isSorted) {
        sorted = writer.entries;
        std::stable_sort(sorted.begin(), sorted.end(), isBefore);
    }
    auto const entries = WriteStructs(builder, isSorted ? writer.entries : sorted);
    auto const strings = WriteStrings(builder, writer.strings);
    return Schema::CreateProperties(builder, entries, strings);
}

/// [bytes] What strings take: a length, a terminating zero, rounding, and the offset that leads to them.
std::size_t EstimateSize(std::vector<std::string> const& texts) {
    std::size_t size = texts.size() * 12;
    for (auto const& text : texts) size += text.size();
    return size;
}

template <class T>
std::size_t SizeOf(std::vector<T> const& structs) {
    return structs.size() * sizeof(T);
}

/// [bytes] About what the buffer takes. Writing into one allocation of this size, of which the system provides only
/// what is used, spares growing and copying again and again; where it is too small, the buffer grows.
std::size_t EstimateSize(ModelContent const& content) {
    auto const& [entities, histories, materials, layers, textures, definitions, instances, properties] = content;
    std::size_t size = std::size_t{1} << 16;
    size += SizeOf(entities.records) + SizeOf(entities.guids) + SizeOf(entities.geometricKeys);
    size += EstimateSize(entities.texts) + EstimateSize(entities.identifierTexts);
    size += SizeOf(histories.records) + SizeOf(histories.links) + histories.histories.size() * 64;
    size += SizeOf(definitions.definitions) + SizeOf(definitions.segments) + SizeOf(definitions.arcs);
    size += definitions.breps.EstimateSize() + definitions.brepsWithUV.EstimateSize() +
            definitions.brepsWithNormal.EstimateSize() + definitions.graphics.size() * 40;
    size += SizeOf(instances.instances) + SizeOf(instances.placements);
    size += SizeOf(properties.entries) + EstimateSize(properties.strings);
    for (auto const& texture : textures.textures) size += texture.second.size();
    return std::min(size, kMaxBufferSize);
}

}  // namespace

std::vector<char> WriteModelBuffer(ModelContent const& content) {
    FlatBufferBuilder builder(EstimateSize(content));
    auto const entities = WriteEntities(builder, content.entities);
    auto const ownerHistories = WriteOwnerHistories(builder, content.ownerHistories);
    auto const geometry = WriteGeometry(builder, content);
    auto const properties = WriteProperties(builder, content.properties);
    Schema::FinishModelBuffer(builder, Schema::CreateModel(builder, entities, ownerHistories, geometry, properties));
    auto const* const bytes = reinterpret_cast<char const*>(builder.GetBufferPointer());
    return {bytes, bytes + builder.GetSize()};
}

}  // namespace Quorlan
