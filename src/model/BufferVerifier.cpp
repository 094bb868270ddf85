#include "model/BufferVerifier.h"

#include "model/BufferGate.h"
#include "model/ModelView.h"
#include "model/PropertyValue.h"

#include <algorithm>
#include <optional>
#include <type_traits>

namespace Quorlan {
namespace {

/// The nesting of the schema is six tables deep; what is deeper is no model.
constexpr flatbuffers::uoffset_t kMaxDepth = 16;

/// A table is at least its 4-byte head and is reached through a 4-byte offset, so that a buffer in which nothing is
/// shared holds at most this many. The bound keeps the verifier linear in the buffer's size.
flatbuffers::uoffset_t GetMaxTables(std::size_t size) { return static_cast<flatbuffers::uoffset_t>(size / 8 + 16); }

flatbuffers::Verifier MakeVerifier(std::vector<char> const& buffer) {
    auto const* const bytes = reinterpret_cast<std::uint8_t const*>(buffer.data());
    return flatbuffers::Verifier(bytes, buffer.size(), kMaxDepth, GetMaxTables(buffer.size()));
}

std::uint64_t SizeOf(flatbuffers::String const* text) { return text == nullptr ? 0 : text->size(); }

std::uint64_t SizeOfTexts(Schema::OwnerPart const& part) {
    return SizeOf(part.user()) + SizeOf(part.organization()) + SizeOf(part.application());
}

std::uint64_t SizeOfTexts(Schema::OwnerHistory const& history) {
    return SizeOf(history.lastModifyingUser()) + SizeOf(history.lastModifyingApplication());
}

/// The generated tables hide that they are tables.
template <class Generated>
flatbuffers::Table const& AsTable(Generated const& generated) {
    return reinterpret_cast<flatbuffers::Table const&>(generated);
}

/// Verifies faces, of which a model has more than of all else. Nearly all of them share one vtable, which is verified
/// when it is met and not again while it stays the same. The tests are those of the generated code.
class FaceVerifier {
public:
    using Faces = flatbuffers::Vector<flatbuffers::Offset<Schema::FaceTable>>;

    explicit FaceVerifier(std::vector<char> const& buffer)
        : bytes_(reinterpret_cast<std::uint8_t const*>(buffer.data())),
          bufferSize_(buffer.size()),
          facesLeft_(GetMaxTables(buffer.size())) {}

    /// Adds the bytes of all loops to `size`. REQUIRES: the vector itself has been verified.
    bool Verify(flatbuffers::Verifier& verifier, Faces const& faces, std::uint64_t& size) {
        if (faces.size() > facesLeft_) return false;
        facesLeft_ -= faces.size();
        auto const* const offsets = faces.Data();
        auto const first = static_cast<std::size_t>(offsets - bytes_);
        for (std::size_t i = 0; i < faces.size(); ++i) {
            std::size_t const face = first + 4 * i + Read<flatbuffers::uoffset_t>(first + 4 * i);
            if (!VerifyFace(verifier, face, size)) return false;
        }
        return true;
    }

    std::size_t GetFacesLeft() const { return facesLeft_; }

    /// Counts faces that were verified elsewhere. REQUIRES: they are not more than are left.
    void Count(std::size_t faces) { facesLeft_ -= faces; }

private:
    template <class T>
    T Read(std::size_t at) const {
        return flatbuffers::ReadScalar<T>(bytes_ + at);
    }

    bool Holds(std::size_t at, std::size_t length) const { return length < bufferSize_ && at <= bufferSize_ - length; }
    bool HoldsWord(std::size_t at) const { return at % 4 == 0 && Holds(at, 4); }

    bool VerifyFace(flatbuffers::Verifier& verifier, std::size_t face, std::uint64_t& size) {
        if (!HoldsWord(face)) return false;
        std::size_t const vtable = face - static_cast<std::size_t>(Read<flatbuffers::soffset_t>(face));
        if (vtable != vtable_ && !Meet(verifier, face, vtable)) return false;
        if (loopField_ == 0) return true;  // no loop

        std::size_t const field = face + loopField_;
        if (!HoldsWord(field)) return false;
        auto const offset = Read<flatbuffers::uoffset_t>(field);
        if (offset == 0 || offset > kMaxBufferSize || !HoldsWord(field + offset)) return false;
        std::size_t const loopSize = sizeof(std::uint16_t) * Read<flatbuffers::uoffset_t>(field + offset);
        size += loopSize;
        return Holds(field + offset, sizeof(flatbuffers::uoffset_t) + loopSize);
    }

    bool Meet(flatbuffers::Verifier& verifier, std::size_t face, std::size_t vtable) {
        auto const& table = *reinterpret_cast<flatbuffers::Table const*>(bytes_ + face);
        if (!table.VerifyTableStart(verifier)) return false;
        vtable_ = vtable;
        loopField_ = table.GetOptionalFieldOffset(Schema::FaceTable::VT_OUTERLOOP);
        return verifier.EndTable();
    }

    std::uint8_t const* bytes_;
    std::size_t bufferSize_;
    std::size_t facesLeft_;
    std::optional<std::size_t> vtable_;  ///< where the last one stands that has been verified
    std::size_t loopField_ = 0;          ///< what it says of the loop
};

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

    /// With a verifier of its own, whose counters the compiler can keep in registers.
    template <class Table>
    bool VerifyOwnerTables(flatbuffers::Vector<flatbuffers::Offset<Table>> const* tables, std::uint64_t& longest) {
        auto verifier = MakeVerifier(buffer_);
        for (std::uint32_t i = 0; i < CountOf(tables); ++i) {
            if (!tables->Get(i)->Verify(verifier)) return false;
            longest = std::max(longest, SizeOfTexts(*tables->Get(i)));
        }
        return true;
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
        if (scans_ != nullptr) (*scans_)[kind].resize(sizes.size());
        for (std::uint32_t i = 0; i < sizes.size(); ++i) {
            ShapeScan* const scan = scans_ == nullptr ? nullptr : &(*scans_)[kind][i];
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
        bool const isRun = scan != nullptr && runs_.Scan(&shape, sizeof(VertexStruct), faces_.GetFacesLeft(), *scan);
        if (isRun) {
            size = scan->indexCount * sizeof(std::uint16_t) + scan->counts.vertices * sizeof(VertexStruct);
            faces_.Count(scan->counts.faces);
            return CountHoles(shape.holes()) && verifier_.EndTable();
        }
        if (!VerifyParts(shape, size)) return false;
        size += std::uint64_t{CountOf(shape.vertices())} * sizeof(VertexStruct);
        if (scan != nullptr) {
            runs_.Learn(BRepView(shape));
            *scan = scanner_.Scan(BRepView(shape));
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
    ShapeScanner scanner_;
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
