#include "model/BufferReaders.h"

namespace Quorlan {

std::uint32_t BufferOwnerHistoryReader::GetLinkCount() const {
    return histories_ == nullptr ? 0 : CountOf(histories_->links());
}

void BufferOwnerHistoryReader::GetLink(OwnerHistoryLink& out, std::uint32_t link) const {
    auto const* const record = histories_ == nullptr ? nullptr : FindElement(histories_->links(), link);
    if (record == nullptr) {
        out = {static_cast<EntityIndex_t>(kInvalidIndex), kInvalidIndex};
        return;
    }
    out = {static_cast<EntityIndex_t>(record->entity()), record->reference()};
}

std::uint32_t BufferOwnerHistoryReader::GetReferenceCount() const {
    return histories_ == nullptr ? 0 : CountOf(histories_->histories());
}

Schema::OwnerHistory const* BufferOwnerHistoryReader::FindHistory(std::uint32_t reference) const {
    return histories_ == nullptr ? nullptr : FindElement(histories_->histories(), reference);
}

std::uint32_t BufferOwnerHistoryReader::GetOwnerPartIndex(std::uint32_t reference) const {
    auto const* const history = FindHistory(reference);
    return history == nullptr ? kInvalidIndex : history->part();
}

std::uint32_t BufferOwnerHistoryReader::GetOwnerHistoryIndex(std::uint32_t reference) const {
    auto const* const history = FindHistory(reference);
    return history == nullptr ? kInvalidIndex : history->record();
}

void BufferOwnerHistoryReader::GetOwnerHistoryLinkRecord(OwnerHistoryLinkRecord& out, std::uint32_t reference) const {
    auto const* const history = FindHistory(reference);
    Assign(out.lastModifyingUser, history == nullptr ? nullptr : history->lastModifyingUser());
    Assign(out.lastModifyingApplication, history == nullptr ? nullptr : history->lastModifyingApplication());
}

void BufferOwnerHistoryReader::GetOwnerPart(OwnerPart& out, std::uint32_t index) const {
    auto const* const part = histories_ == nullptr ? nullptr : FindElement(histories_->parts(), index);
    Assign(out.user, part == nullptr ? nullptr : part->user());
    Assign(out.organization, part == nullptr ? nullptr : part->organization());
    Assign(out.application, part == nullptr ? nullptr : part->application());
}

void BufferOwnerHistoryReader::GetOwnerHistory(OwnerHistoryRecord& out, std::uint32_t index) const {
    auto const* const record = histories_ == nullptr ? nullptr : FindElement(histories_->records(), index);
    out = {};
    if (record == nullptr) return;
    out.state = record->state();
    out.changeAction = static_cast<OwnerHistoryChangeAction>(record->changeAction());
    out.creationDate = record->creationDate();
    out.lastModifiedDate = record->lastModifiedDate();
}

}  // namespace Quorlan
