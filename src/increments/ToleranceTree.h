#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quorlan::Tools {

/// Keys of `Size` values, searched for those that differ from a given key by at most a tolerance in every value.
///
/// A balanced k-d tree without pointers (Bentley, "Multidimensional Binary Search Trees Used for Associative
/// Searching", 1975): each range of keys is split at its middle element along the value in which it is widest. Keys
/// with a value that is not a number match nothing and are left out.
template <std::size_t Size>
class ToleranceTree {
public:
    using Key = std::array<double, Size>;

    /// Key i of `keys` has the running number i.
    explicit ToleranceTree(std::vector<Key> const& keys) {
        for (std::size_t i = 0; i < keys.size(); ++i) {
            bool const isComparable =
                std::none_of(keys[i].begin(), keys[i].end(), [](double value) { return std::isnan(value); });
            if (isComparable) nodes_.push_back({keys[i], static_cast<std::uint32_t>(i), 0});
        }
        Split(0, nodes_.size());
    }

    /// The running numbers of all keys k with |k[i] - key[i]| <= tolerance for every i, in ascending order.
    std::vector<std::uint32_t> Find(Key const& key, double tolerance) const {
        std::vector<std::uint32_t> found;
        if (!(tolerance >= 0)) return found;
        Find(0, nodes_.size(), key, tolerance, found);
        std::sort(found.begin(), found.end());
        return found;
    }

private:
    struct Node {
        Key key;
        std::uint32_t number;
        std::uint32_t splitValue;  ///< which value splits the range that this node is the middle of
    };

    static constexpr std::size_t kLeafSize = 8;  ///< ranges up to this size are scanned

    void Split(std::size_t begin, std::size_t end) {
        if (end - begin <= kLeafSize) return;
        std::size_t const value = FindWidest(begin, end);
        std::size_t const middle = begin + (end - begin) / 2;
        auto const at = [this](std::size_t i) { return nodes_.begin() + static_cast<std::ptrdiff_t>(i); };
        std::nth_element(at(begin), at(middle), at(end),
                         [value](Node const& a, Node const& b) { return a.key[value] < b.key[value]; });
        nodes_[middle].splitValue = static_cast<std::uint32_t>(value);
        Split(begin, middle);
        Split(middle + 1, end);
    }

    std::size_t FindWidest(std::size_t begin, std::size_t end) const {
        std::size_t widest = 0;
        double largestWidth = 0;
        for (std::size_t value = 0; value < Size; ++value) {
            double lo = nodes_[begin].key[value];
            double hi = lo;
            for (std::size_t i = begin + 1; i < end; ++i) {
                lo = std::min(lo, nodes_[i].key[value]);
                hi = std::max(hi, nodes_[i].key[value]);
            }
            if (!(hi - lo > largestWidth)) continue;
            widest = value;
            largestWidth = hi - lo;
        }
        return widest;
    }

    void Find(std::size_t begin, std::size_t end, Key const& key, double tolerance,
              std::vector<std::uint32_t>& found) const {
        while (end - begin > kLeafSize) {
            std::size_t const middle = begin + (end - begin) / 2;
            Node const& node = nodes_[middle];
            double const distance = key[node.splitValue] - node.key[node.splitValue];
            Test(node, key, tolerance, found);
            // Keys on a side differ by at least as much as the middle does, also after rounding.
            bool const skipsLower = distance > tolerance;
            bool const skipsUpper = -distance > tolerance;
            if (!skipsLower && !skipsUpper) Find(begin, middle, key, tolerance, found);
            if (skipsUpper) {
                end = middle;
            } else {
                begin = middle + 1;
            }
        }
        for (std::size_t i = begin; i < end; ++i) Test(nodes_[i], key, tolerance, found);
    }

    static void Test(Node const& node, Key const& key, double tolerance, std::vector<std::uint32_t>& found) {
        for (std::size_t value = 0; value < Size; ++value) {
            if (!(std::abs(node.key[value] - key[value]) <= tolerance)) return;
        }
        found.push_back(node.number);
    }

    std::vector<Node> nodes_;
};

}  // namespace Quorlan::Tools
