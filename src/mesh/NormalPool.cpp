#include "mesh/NormalPool.h"

#include "mesh/LaneTools.h"

#include <cmath>
#include <cstring>

namespace Quorlan::Tools {
namespace {

using GeometryObjectLib::VectorLanes;

/// Two normals are one when their squared distance, taken in single precision, is below 1.0000000000000002e-10, the
/// square of 1e-5 in double precision. No float lies between that and this one, so that both tests agree.
constexpr float kEqualDistanceSquared = 1e-10F;
static_assert(static_cast<double>(kEqualDistanceSquared) > 1.0000000000000002e-10);

/// A search goes on in the first child down to this far below the node's coordinate.
constexpr float kDescentTolerance = -4e-5F;

/// Adding this to a component rounds it to whole steps of 1/1024, with 0, 1 and halves in the midst of a step.
constexpr float kStepRounding = 12288;

/// A node is tight for a search if its plane is closer than this or itself closer than 1e-5 plus this: four times kNear
/// covers its diagonal and the rounding of all differences (1.2e-7 each for components up to 1).
constexpr float kRoom = 4 * NormalPool::kNear;
constexpr float kRoomySquared = (1e-5F + kRoom) * (1e-5F + kRoom);

std::uint32_t BitsOf(float value) {
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof(bits));
    return bits;
}

/// The same for all normals of a cell.
std::uint32_t HashOfCell(Vector3f const& normal) {
    std::uint32_t const hash = BitsOf(normal.x + kStepRounding) * 0x9E3779B1u ^
                               BitsOf(normal.y + kStepRounding) * 0x85EBCA77u ^
                               BitsOf(normal.z + kStepRounding) * 0xC2B2AE3Du;
    return (hash ^ hash >> 15) * 0x2C1B3C6Du;
}

bool AreSame(Vector3f const& a, Vector3f const& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

}  // namespace

void NormalPool::Clear(std::uint32_t expectedCount) {
    size_ = 0;
    way_.size = 0;
    cellBits_ = kFewestCellBits;
    while (cellBits_ < kMostCellBits && 1u << cellBits_ < expectedCount) ++cellBits_;
    if (++generation_ == 0) {
        cells_.clear();
        generation_ = 1;
    }
    if (cells_.size() < std::size_t{1} << cellBits_) cells_.resize(std::size_t{1} << cellBits_);
}

std::uint16_t NormalPool::FindOrAdd(Vector3f const& normal) {
    if (!IsFinite(normal)) return Search(normal);
    std::uint32_t const hash = HashOfCell(normal);
    Cell* const cells = &cells_[(hash >> (32 - cellBits_)) & ~1u];
    auto const isUsed = [&](Cell const& cell) { return cell.generation == generation_; };
    for (Cell const* cell = cells; cell != cells + 2; ++cell) {
        if (cell->hash != hash || !isUsed(*cell)) continue;
        if (AreSame(At(cell->index).normal, normal) || IsCertain(cell->index, normal)) return cell->index;
    }
    std::uint16_t const index = Search(normal);
    Cell& cell = isUsed(cells[0]) && cells[0].hash != hash ? cells[1] : cells[0];
    if (index != kNone) cell = {hash, index, generation_};
    return index;
}

NormalPool::Agreement NormalPool::FollowLastWay(Vector3f const& normal) const {
    // The axes of twelve nodes in a row are x, y, z four times over.
    Float4 const axes[3] = {{normal.x, normal.y, normal.z, normal.x},
                            {normal.y, normal.z, normal.x, normal.y},
                            {normal.z, normal.x, normal.y, normal.z}};
    auto const n = Broadcast(normal);
    auto tight = Float4(0.0F) < Float4(0.0F);
    for (std::uint32_t begin = 0; begin < way_.size; begin += Way::kChunk) {
        unsigned leaves = 0;
        for (std::uint32_t k = 0; k < 3; ++k) {
            std::uint32_t const i = begin + 4 * k;
            auto const offset = n - VectorLanes<Float4>{Load(&way_.x[i]), Load(&way_.y[i]), Load(&way_.z[i])};
            Float4 const distanceSquared = Dot(offset, offset);
            Float4 const difference = axes[k] - Load(&way_.onAxis[i]);
            auto const isFirst = difference >= Float4(kDescentTolerance);
            auto const wasFirst = Load(&way_.side[i]) <= Float4(0.0F);
            leaves |= ToBits((isFirst & !wasFirst) | (wasFirst & !isFirst) |
                             (distanceSquared < Float4(kEqualDistanceSquared)))
                      << 4 * k;
            tight = tight | (Abs(difference - Float4(kDescentTolerance)) <= Float4(kRoom)) |
                    (distanceSquared <= Float4(kRoomySquared));
        }
        if (leaves == 0) continue;
        std::uint32_t const depth = begin + CountZerosBelow(leaves);
        if (depth >= way_.size) break;
        return {depth, IsAny(tight)};
    }
    return {way_.size, IsAny(tight)};
}

std::uint16_t NormalPool::Search(Vector3f const& normal) {
    auto const [depth, wasTight] = FollowLastWay(normal);
    way_.size = depth;
    bool isTight = wasTight;
    std::array<float, 3> const n{normal.x, normal.y, normal.z};
    std::uint32_t axis = depth % 3;
    // Where the search stands: at child `side` of `parent`, which is `current` and has the coordinate `onAxis`.
    std::uint32_t parent = kNone;
    std::uint32_t side = 0;
    std::uint32_t current = size_ == 0 ? kNone : 0;
    float onAxis = size_ == 0 ? 0.0F : At(0).normal.x;
    if (depth > 0) {
        parent = way_.nodes[depth - 1];
        side = way_.side[depth - 1] > 0 ? 1 : 0;
        current = At(parent).children[side];
        onAxis = At(parent).childrenOnAxis[side];
    }
    while (current != kNone) {
        Node const& node = At(current);
        float const difference = n[axis] - onAxis;
        side = difference >= kDescentTolerance ? 0 : 1;
        Vector3f const offset = normal - node.normal;
        float const distanceSquared = Dot(offset, offset);
        if (distanceSquared < kEqualDistanceSquared) return static_cast<std::uint16_t>(current);
        isTight |= std::fabs(difference - kDescentTolerance) <= kRoom || distanceSquared <= kRoomySquared;
        if (way_.size < Way::kCapacity) way_.Append(node.normal, onAxis, side, current);
        parent = current;
        onAxis = node.childrenOnAxis[side];
        current = node.children[side];
        axis = axis == 2 ? 0 : axis + 1;
    }
    if (size_ == kNone) return kNone;
    auto const added = static_cast<std::uint16_t>(size_);
    if (parent != kNone) {
        nodes_[parent].children[side] = added;
        nodes_[parent].childrenOnAxis[side] = n[axis];
    }
    if (size_ == nodes_.size()) nodes_.emplace_back();
    Node& node = nodes_[size_++];
    node.normal = normal;
    node.children = {kNone, kNone};
    node.isRoomy = !isTight;
    return added;
}

}  // namespace Quorlan::Tools
