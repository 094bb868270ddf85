#pragma once

#include <GeometryObjectLib/Vector3f.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

namespace Quorlan::Tools {

using GeometryObjectLib::Vector3f;

/// Not so for a vector with a component that is infinite or not a number: such a normal equals none, itself included.
inline bool IsFinite(Vector3f const& v) { return v.x - v.x == 0 && v.y - v.y == 0 && v.z - v.z == 0; }

/// The distinct normals of one mesh, in order of their first use.
///
/// A search tree over the axes x, y, z in turn (Bentley, "Multidimensional Binary Search Trees Used for Associative
/// Searching", 1975) in which a search stops at the first node on its way that is closer than 1e-5. Which of several
/// close normals answers, and whether one on the other side of a node's plane is found, thus depends on the order of
/// insertion: the tree is part of the result. Three shortcuts give its answers sooner, never others:
/// - the same normal gets the same answer again, and one next to a pooled normal that one where no node on its way
/// could
///   decide otherwise (`IsCertain`), if the coarse cell of space that it lies in remembers it (`Cell`);
/// - a search compares all nodes of the last search's way at once and leaves it where it decides otherwise (`Way`).
class NormalPool {
public:
    static constexpr std::uint16_t kNone = 65535;

    /// Normals whose components differ by no more than this, as rounding makes them differ, are near: no more than 7e-6
    /// apart and so equal for a search that meets them.
    static constexpr float kNear = 4e-6F;

    /// Forgets all normals; memory is kept. The number of normals to expect makes it faster, but is no limit.
    void Clear(std::uint32_t expectedCount = 0);

    std::uint32_t GetSize() const { return size_; }
    Vector3f const& Get(std::uint32_t index) const { return At(index).normal; }

    /// The index of the pooled normal that the tree gives for `normal`, which is added if there is none; kNone if it
    /// would be the 65536th.
    std::uint16_t FindOrAdd(Vector3f const& normal);

    /// True only if FindOrAdd(normal) is certain to return `index`. Cheap.
    bool IsCertain(std::uint16_t index, Vector3f const& normal) const {
        Node const& node = At(index);
        return std::fabs(normal.x - node.normal.x) <= kNear && std::fabs(normal.y - node.normal.y) <= kNear &&
               std::fabs(normal.z - node.normal.z) <= kNear && node.isRoomy;
    }

private:
    static constexpr std::uint32_t kFewestCellBits = 6;
    static constexpr std::uint32_t kMostCellBits = 16;

    /// A node knows by which coordinates its children will decide, so that a search need not wait for a child to arrive
    /// from memory before it knows where to go on from there.
    struct alignas(32) Node {
        Vector3f normal;
        std::array<float, 2> childrenOnAxis;
        std::array<std::uint16_t, 2> children;  ///< kNone where there is none
        bool isRoomy;                           ///< every search for a normal within kNear of this one ends here
    };

    /// An answer for a normal of a cell of space. Two cells of the same hash but for its last bits stand side by side.
    struct Cell {
        std::uint32_t hash;
        std::uint16_t index;
        std::uint16_t generation;  ///< another than the pool's: empty
    };

    /// The nodes that a search passed, from the root on, laid out for comparing many at once. Chunks hold whole rounds
    /// of axes.
    struct Way {
        static constexpr std::uint32_t kChunk = 12;
        static constexpr std::uint32_t kCapacity = 10 * kChunk;

        std::array<float, kCapacity> x, y, z;
        std::array<float, kCapacity> onAxis;  ///< the coordinate that the node decides by
        std::array<float, kCapacity> side;    ///< 0 where the search went on in the first child, else 1
        std::array<std::uint16_t, kCapacity> nodes;
        std::uint32_t size = 0;

        /// REQUIRES: size is below the capacity.
        void Append(Vector3f const& normal, float decidesBy, std::uint32_t takenSide, std::uint32_t node) {
            x[size] = normal.x;
            y[size] = normal.y;
            z[size] = normal.z;
            onAxis[size] = decidesBy;
            side[size] = static_cast<float>(takenSide);
            nodes[size++] = static_cast<std::uint16_t>(node);
        }
    };

    /// How far a search agrees with the last one.
    struct Agreement {
        std::uint32_t depth;
        bool isTight;  ///< some node or plane on the way was so close that near normals may go elsewhere
    };

    Node const& At(std::uint32_t index) const { return nodes_[index]; }
    Agreement FollowLastWay(Vector3f const& normal) const;
    std::uint16_t Search(Vector3f const& normal);

    std::vector<Node> nodes_;  ///< those in use, the root first, and what earlier meshes left
    std::uint32_t size_ = 0;
    std::uint16_t generation_ = 1;
    std::uint32_t cellBits_ = kFewestCellBits;
    std::vector<Cell> cells_ = std::vector<Cell>(std::size_t{1} << kFewestCellBits);
    Way way_{};
};

}  // namespace Quorlan::Tools
