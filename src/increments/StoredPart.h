#pragma once

#include "increments/ContentCopier.h"
#include "increments/EntityCopies.h"
#include "increments/StoredHistories.h"
#include "increments/TextCleaner.h"
#include "model/BufferReaders.h"
#include "model/ModelWriters.h"
#include "model/StoredContent.h"

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace Quorlan::Tools::Increments {

using EntityList = std::vector<std::pair<OwnerHistoryChangeAction, EntityIndex_t>>;

/// The numbers that the first of each kind of element of a part gets in the buffer that is written.
struct StoredNumbers {
    std::uint32_t entity = 0;
    std::uint32_t guid = 0;
    std::uint32_t text = 0;
    std::uint32_t historyRecord = 0;
    std::uint32_t history = 0;
    std::uint32_t instance = 0;
};

/// Entities of one model buffer that are to be copied, with their owner histories, instances and properties: the same
/// as reading and writing each through the public operations, without their conversions.
///
/// Making one copies what entities share: owner histories but for their records, definitions, materials and layers. The
/// rest, which is most, can then be written struct by struct, each operation once. REQUIRES: the buffer outlives it.
class StoredPart {
public:
    /// REQUIRES: `content` and `histories` write to one builder.
    StoredPart(BufferModelReader const& source, EntityList const& list, StoredNumbers const& first,
               OwnerHistoryWriter& histories, ContentCopier& content);

    /// The numbers of the first elements behind this part.
    StoredNumbers const& GetNext() const { return next_; }

    /// [bytes] What the operations write at most, if no entity is listed twice.
    std::size_t EstimateSize() const;

    void WriteEntities(ElementWriter<Schema::EntityRecord>& out) const;
    void WriteGuids(ElementWriter<Schema::Guid>& out) const;

    /// Adds the entities' texts to `out`, in their order.
    template <class Texts>
    void WriteTexts(Texts& out) const {
        TextCleaner cleaner;
        for (References const& references : references_) {
            std::string_view const text = GetText(references.text);
            if (!text.empty()) out.Add(cleaner.Clean(text));
        }
    }

    void WriteHistoryRecords(ElementWriter<Schema::OwnerHistoryRecord>& out) const;
    void WriteHistoryLinks(ElementWriter<Schema::OwnerHistoryLink>& out) const;
    void WritePlacements(ElementWriter<Schema::Placement>& out) const;
    void WriteInstances(ElementWriter<Schema::Instance>& out) const;
    void WriteProperties(ElementWriter<Schema::PropertyEntry>& out, UniqueTexts& strings) const;

private:
    /// What the source's record of a copied entity refers to, so that records are not read again for each.
    struct References {
        std::uint32_t guid;
        std::uint32_t text;
        std::uint32_t historyRecord;
        OwnerHistoryChangeAction action;  ///< of the copy
    };

    void CopyEntities(EntityList const& list, OwnerHistoryWriter& histories);
    void CopyContent(ContentCopier& content);
    std::string_view GetText(std::uint32_t reference) const { return ViewOf(FindElement(texts_, reference)); }

    /// Calls `visit` with every instance that is written, in the order of the source.
    template <class Visit>
    void ForEachInstance(Visit visit) const;

    BufferModelReader const& source_;
    Schema::Model const& model_;
    flatbuffers::Vector<Schema::EntityRecord const*> const& records_;
    flatbuffers::Vector<flatbuffers::Offset<flatbuffers::String>> const* texts_;
    StoredNumbers first_;
    StoredNumbers next_;
    EntityCopies copies_;
    LargeVector<References> references_;  ///< by copy
    std::size_t textSize_ = 0;            ///< [bytes] of the source's texts
    CopiedDefinitions definitions_;
    std::vector<std::uint32_t> materials_;
    std::vector<std::uint32_t> layers_;
};

}  // namespace Quorlan::Tools::Increments
