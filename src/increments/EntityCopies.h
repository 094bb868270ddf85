#pragma once

#include <Quorlan/ModelTypes.h>

#include <cstdint>
#include <vector>

namespace Quorlan::Tools::Increments {

/// The entities that one call copied, in the order of its list, and the copies of each source entity.
class EntityCopies {
public:
    struct copy_s {
        std::uint32_t source;
        EntityIndex_t entity;
        std::uint32_t next;  ///< the next copy of the same source entity; kInvalidIndex for none
    };

    EntityCopies(std::uint32_t sourceCount, std::size_t copyCount) : ends_(sourceCount) { copies_.reserve(copyCount); }

    void Append(std::uint32_t source, EntityIndex_t entity) {
        auto const copy = static_cast<std::uint32_t>(copies_.size());
        copies_.push_back({source, entity, kInvalidIndex});
        ends_s& ends = ends_[source];
        (ends.first == kInvalidIndex ? ends.first : copies_[ends.last].next) = copy;
        ends.last = copy;
    }

    std::vector<copy_s> const& GetAll() const { return copies_; }
    std::uint32_t GetSourceCount() const { return static_cast<std::uint32_t>(ends_.size()); }

    bool IsCopied(std::uint32_t source) const { return source < ends_.size() && ends_[source].first != kInvalidIndex; }

    /// Calls `visit` with every copy of a copied source entity, in the order of the list.
    template <class Visit>
    void ForEachCopy(std::uint32_t source, Visit visit) const {
        for (std::uint32_t i = ends_[source].first; i != kInvalidIndex; i = copies_[i].next) visit(copies_[i].entity);
    }

private:
    struct ends_s {
        std::uint32_t first = kInvalidIndex;
        std::uint32_t last = kInvalidIndex;
    };

    std::vector<copy_s> copies_;
    std::vector<ends_s> ends_;  ///< by source entity
};

}  // namespace Quorlan::Tools::Increments
