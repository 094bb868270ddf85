#include "increments/StoredHistories.h"

#include <string>

namespace Quorlan::Tools::Increments {

StoredHistories::StoredHistories(Schema::Model const& source, OwnerHistoryWriter& writer)
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

std::uint32_t StoredHistories::Copy(std::uint32_t sourceEntity, std::uint32_t record) {
    auto const* const history =
        source_ == nullptr ? nullptr : FindElement(source_->histories(), references_[sourceEntity]);
    std::uint32_t const sourcePart = history == nullptr ? kInvalidIndex : history->part();
    std::uint32_t const part = parts_.FindOrWrite(sourcePart, [&] { return CopyPart(sourcePart); });
    std::uint32_t const user = CopyText(user_, history == nullptr ? nullptr : history->lastModifyingUser());
    std::uint32_t const application =
        CopyText(application_, history == nullptr ? nullptr : history->lastModifyingApplication());
    writer_.Add(part, record, user, application);
    return history == nullptr ? kInvalidIndex : history->record();
}

std::uint32_t StoredHistories::CopyPart(std::uint32_t sourcePart) {
    auto const* const part = source_ == nullptr ? nullptr : FindElement(source_->parts(), sourcePart);
    OwnerPart copy;
    if (part != nullptr) {
        copy = {std::string(ViewOf(part->user())), std::string(ViewOf(part->organization())),
                std::string(ViewOf(part->application()))};
    }
    return writer_.AddOwnerPart(copy);
}

std::uint32_t StoredHistories::CopyText(CopiedText& last, flatbuffers::String const* text) {
    if (last.isSet && last.source == text) return last.index;
    std::uint32_t const index = writer_.AddText(ViewOf(text));
    if (OwnerHistoryWriter::IsShared(ViewOf(text))) last = {true, text, index};
    return index;
}

}  // namespace Quorlan::Tools::Increments
