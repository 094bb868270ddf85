#pragma once

#include <cstddef>
#include <vector>

namespace Quorlan {

/// [bytes] Offsets in a buffer are signed 32-bit: 2 GiB and more cannot be addressed.
constexpr std::size_t kMaxBufferSize = 0x7FFFFFFF;

namespace Schema {
struct Model;
}

/// The root of a buffer whose structure is sound, or null: it has the identifier, passes the FlatBuffers verifier with
/// limits that follow from its size, holds its vectors at addresses that fit their elements, and has entities with
/// records and a geometry. No index in it has been looked at. REQUIRES: the buffer's bytes are aligned to 8.
Schema::Model const* VerifyUntrustedModel(std::vector<char> const& buffer);

/// The same, and the placement, entity and definition of every instance exist: safe to read.
Schema::Model const* OpenUntrustedModel(std::vector<char> const& buffer);

}  // namespace Quorlan
