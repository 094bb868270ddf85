#pragma once

#include "model/ShapeScan.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quorlan {

namespace Schema {
struct Model;
}

/// A buffer whose structure is sound, and how much each of its shapes holds.
struct VerifiedModel {
    Schema::Model const* root = nullptr;  ///< null where the structure is not sound

    /// [bytes] The vertices and loops, or segments and arcs, of each shape: by kind, then by index within the kind.
    std::array<std::vector<std::uint64_t>, 8> shapeSizes;

    std::uint64_t longestOwnerPart = 0;     ///< [bytes] of the texts of one
    std::uint64_t longestOwnerHistory = 0;  ///< [bytes] of the texts of one
};

/// Runs the FlatBuffers verifier with limits that follow from the buffer's size, and asks for aligned vectors, entities
/// with records and a geometry. No index in the buffer has been looked at.
///
/// The walk over the shapes, which are most of a buffer, stands here rather than in the generated code, so that one
/// walk verifies and measures, and also scans runs where `scans` is not null. REQUIRES: the bytes are aligned to 8.
VerifiedModel VerifyBuffer(std::vector<char> const& buffer, ShapeScans* scans = nullptr);

/// Texts, textures and shapes may be named several times, and a copy of the model holds them each time. Without a
/// bound a few bytes could stand for any amount of content: the copy may be this many times as large as the buffer.
constexpr std::uint64_t kMaxContentFactor = 64;

/// [bytes] The content of a copy of the model: shapes, textures, layers, the texts of entities and owner histories,
/// each as often as it is named. Indices that lead nowhere count nothing. REQUIRES: `model.root` is not null.
std::uint64_t ComputeCopiedSize(VerifiedModel const& model);

/// [bytes] The texts of properties, each as often as it is named. A copy holds them once.
std::uint64_t ComputePropertySize(VerifiedModel const& model);

/// Whether a copy holds at most `kMaxContentFactor` times the buffer. Quick where no text is very long.
bool IsCopyBounded(VerifiedModel const& model, std::size_t bufferSize);

}  // namespace Quorlan
