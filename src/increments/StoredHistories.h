#pragma once

#include "increments/IndexMap.h"
#include "model/BufferReaders.h"
#include "model/ModelWriters.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace Quorlan::Tools::Increments {

inline std::string_view ViewOf(flatbuffers::String const* text) {
    return text == nullptr ? std::string_view() : text->string_view();
}

/// Copies owner histories of a model buffer as `OwnerHistoryCopier` does, but for their records, which are left to
/// whoever numbers them.
class StoredHistories {
public:
    StoredHistories(Schema::Model const& source, OwnerHistoryWriter& writer);

    /// Writes the owner history of an entity's last link, to which `record` is given. RETURNS its own record's index.
    std::uint32_t Copy(std::uint32_t sourceEntity, std::uint32_t record);

private:
    std::uint32_t CopyPart(std::uint32_t sourcePart);

    /// A text and where it went. Histories mostly have the texts of those before them.
    struct CopiedText {
        bool isSet = false;
        flatbuffers::String const* source = nullptr;
        std::uint32_t index = kInvalidIndex;
    };

    std::uint32_t CopyText(CopiedText& last, flatbuffers::String const* text);

    Schema::OwnerHistories const* source_;
    OwnerHistoryWriter& writer_;
    CopiedText user_;
    CopiedText application_;
    std::vector<std::uint32_t> references_;  ///< by source entity
    IndexMap parts_;
};

}  // namespace Quorlan::Tools::Increments
