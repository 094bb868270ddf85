#pragma once

#include "model/ShapeScan.h"

#include <cstddef>
#include <vector>

namespace Quorlan {

/// [bytes] Offsets in a buffer are signed 32-bit: 2 GiB and more cannot be addressed.
constexpr std::size_t kMaxBufferSize = 0x7FFFFFFF;

/// The root of a buffer that is safe to read, or null: its structure is sound (`VerifyBuffer`), the placement, entity
/// and definition of every instance exist, and a copy of it is bounded (`IsCopyBounded`). Its runs are scanned where
/// `scans` is not null. REQUIRES: the buffer's bytes are aligned to 8.
Schema::Model const* OpenUntrustedModel(std::vector<char> const& buffer, ShapeScans* scans = nullptr);

}  // namespace Quorlan
