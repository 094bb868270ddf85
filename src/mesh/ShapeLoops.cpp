#include "mesh/ShapeLoops.h"

namespace Quorlan::Tools {
namespace {

constexpr std::uint32_t kSignatureFactor = 1521134295;  // 0x5AAAAAD7

/// A run of steps s -> index - s * factor, composed into the one step s -> offset + s * scale (modulo 2^32).
struct FoldedRun {
    std::uint32_t scale = 1;
    std::uint32_t offset = 0;

    void Append(std::uint32_t index) {
        scale = 0u - scale * kSignatureFactor;
        offset = index - offset * kSignatureFactor;
    }

    std::uint32_t ApplyTo(std::uint32_t signature) const { return offset + signature * scale; }
};

/// Hands the loops of `shape` to `visit` face by face: the outer loop with the number of inner loops that follow, then
/// each inner loop with 0. RETURNS false, having stopped there, once `visit` does.
template <class Visit>
bool VisitLoops(FacetedBRep const& shape, Visit const& visit) {
    auto entry = shape.holes.begin();
    for (std::size_t face = 0; face < shape.faces.size(); ++face) {
        auto const& outer = shape.faces[face];
        while (entry != shape.holes.end() && entry->first < face) ++entry;
        bool const hasHoles = entry != shape.holes.end() && entry->first == face;
        auto const innerCount = static_cast<std::uint32_t>(hasHoles ? entry->second.size() : 0);
        if (!visit(outer, innerCount)) return false;
        if (!hasHoles) continue;
        for (auto const& inner : entry->second) {
            if (!visit(inner, 0)) return false;
        }
    }
    return true;
}

}  // namespace

std::uint32_t ComputeSignature(FacetedBRep const& shape, std::size_t vertexCount) {
    FoldedRun innerRun;
    for (auto const& [face, loops] : shape.holes) {
        for (auto const& loop : loops) {
            for (std::uint32_t const index : loop) innerRun.Append(index);
        }
    }
    auto signature = static_cast<std::uint32_t>((shape.holes.size() * 256 + shape.faces.size()) * 256 + vertexCount);
    for (auto const& loop : shape.faces) {
        FoldedRun outerRun;  // of its own, so that faces are folded side by side
        for (std::uint32_t const index : loop) outerRun.Append(index);
        signature = innerRun.ApplyTo(outerRun.ApplyTo(signature));
    }
    return signature;
}

std::vector<std::uint32_t> FlattenLoops(FacetedBRep const& shape) {
    std::size_t length = 0;
    VisitLoops(shape, [&](auto const& loop, std::uint32_t) {
        length += 2 + loop.size();
        return true;
    });
    std::vector<std::uint32_t> flat;
    flat.reserve(length);
    VisitLoops(shape, [&](auto const& loop, std::uint32_t innerCount) {
        flat.push_back(static_cast<std::uint32_t>(loop.size()));
        flat.push_back(innerCount);
        flat.insert(flat.end(), loop.begin(), loop.end());
        return true;
    });
    return flat;
}

bool HasSameLoops(FacetedBRep const& shape, std::vector<std::uint32_t> const& flat) {
    std::size_t position = 0;
    bool const agree = VisitLoops(shape, [&](auto const& loop, std::uint32_t innerCount) {
        if (flat.size() - position < 2 + loop.size()) return false;
        if (flat[position] != loop.size() || flat[position + 1] != innerCount) return false;
        std::uint32_t const* const stored = flat.data() + position + 2;
        position += 2 + loop.size();
        std::uint32_t difference = 0;
        for (std::size_t i = 0; i < loop.size(); ++i) difference |= loop[i] ^ stored[i];
        return difference == 0;
    });
    return agree && position == flat.size();
}

}  // namespace Quorlan::Tools
