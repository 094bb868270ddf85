#include "model/BufferVerifier.h"

#include "model/BufferGate.h"
#include "model/ModelView.h"
#include "model/PropertyValue.h"
#include "model/TableVerifiers.h"

#include <algorithm>
#include <type_traits>

namespace Quorlan {
namespace {

/// The generated verification, field by field in the same order, with the sizes of shapes taken on the way.
class ModelVerifier {
public:
    ModelVerifier(std::vector<char> const& buffer, VerifiedModel& out, ShapeScans* scans)
        : buffer_(buffer), verifier_(MakeVerifier(buffer)), faces_(buffer), runs_(buffer), out_(out), scans_(scans) {}

    bool VerifyModel(Schema::Model const& model) {
        auto const& table = AsTable(model);
        return table.VerifyTableStart(verifier_) &&                          //
               table.VerifyOffset(verifier_, Schema::Model::VT_ENTITIES) &&  //
               verifier_.VerifyTable(model.entities()) &&                    //
               table.VerifyOffset(verifier_, Schema::Model::VT_OWNERHISTORIES) &&
               (model.ownerHistories() == nullptr || VerifyOwnerHistories(*model.ownerHistories())) &&
               table.VerifyOffset(verifier_, Schema::Model::VT_GEOMETRY) &&
               (model.geometry() == nullptr || VerifyGeometry(*model.geometry())) &&
               table.VerifyOffset(verifier_, Schema::Model::VT_PROPERTIES) &&
               verifier_.VerifyTable(model.properties()) && verifier_.EndTable();
    }

    std::size_t VerifyRootOffset() const { return verifier_.VerifyOffset(0); }

private:
    bool VerifyOwnerHistories(Schema::OwnerHistories const& histories) {
        using H = Schema::OwnerHistories;
        auto const& table = AsTable(histories);
        auto const has = [&](flatbuffers::voffset_t field) { return table.VerifyOffset(verifier_, field); };
        return table.VerifyTableStart(verifier_) && has(H::VT_PARTS) && verifier_.VerifyVector(histories.parts()) &&
               VerifyOwnerTables(histories.parts(), out_.longestOwnerPart) && has(H::VT_RECORDS) &&
               verifier_.VerifyVector(histories.records()) && has(H::VT_HISTORIES) &&
               verifier_.VerifyVector(histories.histories()) &&
               VerifyOwnerTables(histories.histories(), out_.longestOwnerHistory) && has(H::VT_LINKS) &&
               verifier_.VerifyVector(histories.links()) && verifier_.EndTable();
    }

    template <class Table>
    bool VerifyOwnerTables(flatbuffers::Vector<flatbuffers::Offset<Table>> const* tables, std::uint64_t& longest) {
        return tables == nullptr || OwnerTableVerifier<Table>(buffer_).Verify(*tables, longest);
    }

    bool VerifyGeometry(Schema::Geometry const& geometry) {
        using G = Schema::Geometry;
        auto const& table = AsTable(geometry);
        auto const has = [&](flatbuffers::voffset_t field) { return table.VerifyOffset(verifier_, field); };
        return table.VerifyTableStart(verifier_) &&                                               //
               has(G::VT_PLACEMENTS) && verifier_.VerifyVector(geometry.placements()) &&          //
               has(G::VT_MATERIALS) && verifier_.VerifyVector(geometry.materials()) &&            //
               has(G::VT_LAYERS) && verifier_.VerifyVector(geometry.layers()) &&                  //
               verifier_.VerifyVectorOfStrings(geometry.layers()) &&                              //
               has(G::VT_DEFINITIONS) && verifier_.VerifyVector(geometry.definitions()) &&        //
               has(G::VT_INSTANCES) && verifier_.VerifyVector(geometry.instances()) &&            //
               has(G::VT_TEXTURES) && verifier_.VerifyVector(geometry.textures()) &&              //
               verifier_.VerifyVectorOfTables(geometry.textures()) &&                             //
               has(G::VT_FACETEDBREPS) && VerifyShapes(kFacetedBRep, geometry.facetedBReps()) &&  //
               has(G::VT_BREPSWITHUV) && VerifyShapes(kBRepWithUV, geometry.brepsWithUV()) &&     //
               has(G::VT_BREPSWITHNORMAL) && VerifyShapes(kBRepWithNormal, geometry.brepsWithNormal()) &&
               has(G::VT_GRAPHICSCONTAINERS) && VerifyShapes(kGraphicsContainer, geometry.graphicsContainers()) &&
               verifier_.EndTable();
    }

    template <class Table>
    bool VerifyShapes(DefinitionKind kind, flatbuffers::Vector<flatbuffers::Offset<Table>> const* shapes) {
        if (!verifier_.VerifyVector(shapes)) return false;
        auto& sizes = out_.shapeSizes[kind];
        sizes.resize(CountOf(shapes));
        if (scans_ != nullptr) (*scans_)[kind].reserve(sizes.size());
        for (std::uint32_t i = 0; i < sizes.size(); ++i) {
            ShapeScan* const scan = scans_ == nullptr ? nullptr : &(*scans_)[kind].emplace_back();
            if (!VerifyShape(*shapes->Get(i), sizes[i], scan)) return false;
        }
        return true;
    }

    bool VerifyShape(Schema::GraphicsContainerTable const& container, std::uint64_t& size, ShapeScan*) {
        if (!container.Verify(verifier_)) return false;
        size = std::uint64_t{CountOf(container.segments())} * sizeof(Schema::LineSegment) +
               std::uint64_t{CountOf(container.arcs())} * sizeof(Schema::ArcSegment);
        return true;
    }

    template <class Table>
    bool VerifyShape(Table const& shape, std::uint64_t& size, ShapeScan* scan) {
        using VertexStruct = std::remove_reference_t<decltype(*shape.vertices()->Get(0))>;
        if (!AsTable(shape).VerifyTableStart(verifier_)) return false;
        if (scan != nullptr && runs_.Scan(&shape, sizeof(VertexStruct), faces_.GetFacesLeft(), *scan)) {
            size = scan->indexCount * std::uint64_t{sizeof(std::uint16_t)} +
                   scan->counts.vertices * std::uint64_t{sizeof(VertexStruct)};
            faces_.Count(scan->counts.faces);
            return CountHoles(shape.holes()) && verifier_.EndTable();
        }
        if (!VerifyParts(shape, size)) return false;
        size += std::uint64_t{CountOf(shape.vertices())} * sizeof(VertexStruct);
        if (scan != nullptr && runs_.Learn(BRepView(shape))) {
            runs_.Scan(&shape, sizeof(VertexStruct), CountOf(shape.faces()), *scan);
        }
        return true;
    }

    template <class Table>
    bool VerifyParts(Table const& shape, std::uint64_t& size) {
        auto const& table = AsTable(shape);
        return table.VerifyOffset(verifier_, Table::VT_FACES) && verifier_.VerifyVector(shape.faces()) &&
               VerifyFaces(shape.faces(), size) && table.VerifyOffset(verifier_, Table::VT_HOLES) &&
               verifier_.VerifyVector(shape.holes()) && VerifyHoles(shape.holes(), size) &&
               table.VerifyOffset(verifier_, Table::VT_VERTICES) && verifier_.VerifyVector(shape.vertices()) &&
               verifier_.EndTable();
    }

    bool VerifyFaces(flatbuffers::Vector<flatbuffers::Offset<Schema::FaceTable>> const* faces, std::uint64_t& size) {
        return faces == nullptr || faces_.Verify(verifier_, *faces, size);
    }

    bool VerifyHoles(flatbuffers::Vector<flatbuffers::Offset<Schema::HoleTable>> const* holes, std::uint64_t& size) {
        for (std::uint32_t i = 0; i < CountOf(holes); ++i) {
            auto const& hole = *holes->Get(i);
            if (!hole.Verify(verifier_)) return false;
            size += std::uint64_t{CountOf(hole.innerLoop())} * sizeof(std::uint16_t);
        }
        return true;
    }

    /// Counts the tables of holes that were verified elsewhere as the verifier counts all others.
    bool CountHoles(flatbuffers::Vector<flatbuffers::Offset<Schema::HoleTable>> const* holes) {
        for (std::uint32_t i = 0; i < CountOf(holes); ++i) {
            if (!AsTable(*holes->Get(i)).VerifyTableStart(verifier_) || !verifier_.EndTable()) return false;
        }
        return true;
    }

    std::vector<char> const& buffer_;
    flatbuffers::Verifier verifier_;
    FaceVerifier faces_;
    RunScanner runs_;
    VerifiedModel& out_;
    ShapeScans* scans_;
};

/// The verifier checks where a vector's length stands, not where its elements do.
template <class T>
bool IsAligned(flatbuffers::Vector<T const*> const* vector) {
    return CountOf(vector) == 0 || reinterpret_cast<std::uintptr_t>(vector->Data()) % alignof(T) == 0;
}

bool IsAligned(Schema::Model const& model) {
    if (!IsAligned(model.entities()->records()) || !IsAligned(model.entities()->geometricKeys())) return false;
    if (!IsAligned(model.geometry()->placements())) return false;
    if (model.ownerHistories() != nullptr && !IsAligned(model.ownerHistories()->records())) return false;
    return model.properties() == nullptr || IsAligned(model.properties()->entries());
}

using Strings = flatbuffers::Vector<flatbuffers::Offset<flatbuffers::String>>;

std::uint64_t SizeOf(Strings const* texts, std::uint64_t index) {
    return index < CountOf(texts) ? texts->Get(static_cast<std::uint32_t>(index))->size() : 0;
}

std::uint64_t SizeOfLongest(Strings const* texts) {
    std::uint64_t longest = 0;
    for (std::uint32_t i = 0; i < CountOf(texts); ++i) longest = std::max(longest, SizeOf(texts, i));
    return longest;
}

std::uint64_t SizeOfLayersAndTextures(Schema::Geometry const& geometry) {
    std::uint64_t size = 0;
    for (std::uint32_t i = 0; i < CountOf(geometry.layers()); ++i) size += SizeOf(geometry.layers(), i);
    for (std::uint32_t i = 0; i < CountOf(geometry.textures()); ++i) {
        size += CountOf(geometry.textures()->Get(i)->data());
    }
    return size;
}

std::uint64_t SizeOfDefinitions(VerifiedModel const& model) {
    auto const* const definitions = model.root->geometry()->definitions();
    std::uint64_t size = 0;
    for (std::uint32_t i = 0; i < CountOf(definitions); ++i) {
        auto const& definition = *definitions->Get(i);
        if (definition.kind() >= model.shapeSizes.size()) continue;
        auto const& sizes = model.shapeSizes[definition.kind()];
        if (definition.kindIndex() < sizes.size()) size += sizes[definition.kindIndex()];
    }
    return size;
}

std::uint64_t SizeOfOwnerTexts(Schema::OwnerHistories const& histories) {
    std::uint64_t size = 0;
    for (std::uint32_t i = 0; i < CountOf(histories.links()); ++i) {
        std::uint32_t const index = histories.links()->Get(i)->reference();
        if (index < CountOf(histories.histories())) size += SizeOfTexts(*histories.histories()->Get(index));
    }
    for (std::uint32_t i = 0; i < CountOf(histories.parts()); ++i) size += SizeOfTexts(*histories.parts()->Get(i));
    return size;
}

std::uint64_t SizeOfProperties(Schema::Properties const& properties) {
    std::uint64_t size = 0;
    auto const* const strings = properties.strings();
    for (std::uint32_t i = 0; i < CountOf(properties.entries()); ++i) {
        auto const& entry = *properties.entries()->Get(i);
        size += SizeOf(strings, entry.set()) + SizeOf(strings, entry.name());
        if (entry.valueKind() == kTextProperty) size += SizeOf(strings, entry.value());
    }
    return size;
}

/// The texts of entities and owner histories.
std::uint64_t SizeOfTexts(Schema::Model const& model) {
    std::uint64_t size = 0;
    auto const& entities = *model.entities();
    for (auto const* const record : *entities.records()) {
        size += SizeOf(entities.texts(), record->textReference());
        bool const hasIdentifierText = record->identifierKind() % 2 == 1;
        if (hasIdentifierText) size += SizeOf(entities.identifierTexts(), record->identifierReference());
    }
    if (model.ownerHistories() != nullptr) size += SizeOfOwnerTexts(*model.ownerHistories());
    return size;
}

/// As if the longest texts were named every time.
std::uint64_t BoundSizeOfTexts(VerifiedModel const& verified) {
    auto const& model = *verified.root;
    auto const& entities = *model.entities();
    std::uint64_t size = SizeOfLongest(entities.texts()) + SizeOfLongest(entities.identifierTexts());
    size *= entities.records()->size();
    if (model.ownerHistories() != nullptr) {
        auto const& histories = *model.ownerHistories();
        size += verified.longestOwnerHistory * CountOf(histories.links());
        size += verified.longestOwnerPart * CountOf(histories.parts());
    }
    return size;
}

std::uint64_t SizeOfContent(VerifiedModel const& model) {
    return SizeOfLayersAndTextures(*model.root->geometry()) + SizeOfDefinitions(model);
}

}  // namespace

VerifiedModel VerifyBuffer(std::vector<char> const& buffer, ShapeScans* scans) {
    VerifiedModel result;
    if (buffer.size() < 8 || buffer.size() >= kMaxBufferSize || !HasModelIdentifier(buffer)) return result;
    ModelVerifier verifier(buffer, result, scans);
    if (verifier.VerifyRootOffset() == 0) return result;
    auto const* const root = Schema::GetModel(buffer.data());
    if (!verifier.VerifyModel(*root)) return result;
    bool const isWhole =
        root->entities() != nullptr && root->entities()->records() != nullptr && root->geometry() != nullptr;
    if (isWhole && IsAligned(*root)) result.root = root;
    return result;
}

std::uint64_t ComputeCopiedSize(VerifiedModel const& model) { return SizeOfContent(model) + SizeOfTexts(*model.root); }

std::uint64_t ComputePropertySize(VerifiedModel const& model) {
    return model.root->properties() == nullptr ? 0 : SizeOfProperties(*model.root->properties());
}

bool IsCopyBounded(VerifiedModel const& model, std::size_t bufferSize) {
    std::uint64_t const limit = kMaxContentFactor * bufferSize;
    return SizeOfContent(model) + BoundSizeOfTexts(model) <= limit || ComputeCopiedSize(model) <= limit;
}

}  // namespace Quorlan
