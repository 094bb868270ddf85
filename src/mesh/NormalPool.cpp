#include "mesh/NormalPool.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace Quorlan::Tools {
namespace {

/// Two normals are one when their squared distance is below this: the square of 1e-5, in double precision.
constexpr double kEqualDistanceSquared = 1.0000000000000002e-10;

/// A search goes on in the first child down to this far below the node's coordinate.
constexpr float kDescentTolerance = -4e-5F;

/// Normals whose components differ by no more than this, as rounding makes them differ, are near.
constexpr float kNear = 1e-6F;

/// A way through the tree is roomy if no plane on it is closer than this and no node closer than 1e-5 plus this: four
/// times kNear covers its diagonal and the rounding of all differences (1.2e-7 each for components up to 1).
constexpr float kRoom = 4 * kNear;
constexpr float kRoomySquared = (1e-5F + kRoom) * (1e-5F + kRoom);

std::uint32_t BitsOf(float value) {
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof(bits));
    return bits;
}

bool HasSameBits(Vector3f const& a, Vector3f const& b) { return std::memcmp(&a, &b, sizeof(a)) == 0; }

}  // namespace

NormalPool::NormalPool() : recent_() {}

void NormalPool::Clear() {
    size_ = 0;
    root_ = nullptr;
    if (++generation_ == 0) {
        recent_ = {};
        generation_ = 1;
    }
}

NormalPool::Recent& NormalPool::RecentSlot(Vector3f const& normal) {
    std::uint32_t const hash =
        BitsOf(normal.x) * 0x9E3779B1u ^ BitsOf(normal.y) * 0x85EBCA77u ^ BitsOf(normal.z) * 0xC2B2AE3Du;
    return recent_[(hash ^ hash >> 15) * 0x2C1B3C6Du >> (32 - kRecentBits)];
}

std::uint16_t NormalPool::FindOrAdd(Vector3f const& normal) {
    if (!IsFinite(normal)) return Search(normal);
    Recent& recent = RecentSlot(normal);
    if (recent.generation == generation_ && HasSameBits(recent.normal, normal)) return recent.index;
    std::uint16_t const index = Search(normal);
    if (index != kNone) recent = {normal, index, generation_};
    return index;
}

bool NormalPool::IsCertain(std::uint16_t index, Vector3f const& normal) const {
    Node const& node = At(index);
    return std::fabs(normal.x - node.normal.x) <= kNear && std::fabs(normal.y - node.normal.y) <= kNear &&
           std::fabs(normal.z - node.normal.z) <= kNear && node.isRoomy;
}

std::uint16_t NormalPool::Search(Vector3f const& normal) {
    float closestPlane = std::numeric_limits<float>::max();
    float closestNode = std::numeric_limits<float>::max();
    Node** link = &root_;
    std::uint32_t axis = 0;
    while (Node* const node = *link) {
        float const difference[3] = {normal.x - node->normal.x, normal.y - node->normal.y, normal.z - node->normal.z};
        float const distanceSquared =
            difference[0] * difference[0] + difference[1] * difference[1] + difference[2] * difference[2];
        if (static_cast<double>(distanceSquared) < kEqualDistanceSquared) return node->index;
        closestNode = std::min(closestNode, distanceSquared);
        closestPlane = std::min(closestPlane, std::fabs(difference[axis] - kDescentTolerance));
        link = &node->children[difference[axis] >= kDescentTolerance ? 0 : 1];
        axis = axis == 2 ? 0 : axis + 1;
    }
    if (size_ == kNone) return kNone;
    *link = Add(normal, closestPlane > kRoom && closestNode > kRoomySquared);
    return (*link)->index;
}

NormalPool::Node* NormalPool::Add(Vector3f const& normal, bool isRoomy) {
    if (size_ / kBlockSize == blocks_.size()) blocks_.push_back(std::make_unique<Node[]>(kBlockSize));
    Node& node = blocks_[size_ / kBlockSize][size_ % kBlockSize];
    node = {normal, static_cast<std::uint16_t>(size_), isRoomy, {nullptr, nullptr}};
    ++size_;
    return &node;
}

}  // namespace Quorlan::Tools
