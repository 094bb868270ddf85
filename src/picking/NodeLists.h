#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

namespace Quorlan::Tools::Picking {

/// Node indices without a first value; they are written before they are read. Few need no memory from the heap.
class IndexList {
public:
    IndexList() = default;
    IndexList(IndexList const&) = delete;
    IndexList& operator=(IndexList const&) = delete;

    std::uint32_t* GetData() { return grown_ == nullptr ? first_ : grown_.get(); }
    std::uint32_t const* GetData() const { return grown_ == nullptr ? first_ : grown_.get(); }
    std::size_t GetCapacity() const { return capacity_; }

    void Grow() {
        std::unique_ptr<std::uint32_t[]> larger(new std::uint32_t[2 * capacity_]);
        std::copy_n(GetData(), capacity_, larger.get());
        grown_ = std::move(larger);
        capacity_ *= 2;
    }

private:
    static constexpr std::size_t kFirstCapacity = 512;

    std::size_t capacity_ = kFirstCapacity;
    std::unique_ptr<std::uint32_t[]> grown_;
    std::uint32_t first_[kFirstCapacity];
};

/// The nodes of a tree that a walk from level to level has met. What is met is written in any case and then counted or
/// not, so that no branch depends on an answer.
class MetNodes {
public:
    /// The leaves are kept in `list`, which outlives this.
    explicit MetNodes(IndexList& list) : leafList_(list), inner_(innerList_.GetData()), leaves_(list.GetData()) {}

    std::uint32_t GetInner(std::size_t i) const { return inner_[i]; }
    std::size_t GetInnerCount() const { return innerCount_; }
    std::size_t GetLeafCount() const { return leafCount_; }

    void SortLeaves() { std::sort(leaves_, leaves_ + leafCount_); }

    void Add(std::size_t node, std::int32_t escapeOrItem, bool isMet) {
        inner_[innerCount_] = leaves_[leafCount_] = static_cast<std::uint32_t>(node);
        innerCount_ += static_cast<std::size_t>(isMet & (escapeOrItem < 0));
        leafCount_ += static_cast<std::size_t>(isMet & (escapeOrItem >= 0));
        MakeRoom();
    }

private:
    void MakeRoom() {
        if (std::max(innerCount_, leafCount_) < leafList_.GetCapacity()) return;
        innerList_.Grow();
        leafList_.Grow();
        inner_ = innerList_.GetData();
        leaves_ = leafList_.GetData();
    }

    IndexList innerList_;
    IndexList& leafList_;
    std::uint32_t* inner_;  // their children are visited in this order
    std::uint32_t* leaves_;
    std::size_t innerCount_ = 0;
    std::size_t leafCount_ = 0;
};

}  // namespace Quorlan::Tools::Picking
