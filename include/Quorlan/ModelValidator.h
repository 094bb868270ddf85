#pragma once

#include <Tools/Export.h>

#include <string>
#include <vector>

namespace Quorlan {

/// The full check of a model buffer, for callers that hand buffers of unknown origin to tools that trust theirs.
///
///     Quorlan::ModelValidator validator;
///     if (!validator.Build(bytes)) return Report(validator.GetProblems());
///
/// `ModelStorage::FromBuffer` asks only for what reading needs; this asks that every index and every reference is in
/// range and every loop well formed: 3 to 65,536 indices, at most 262,144 faces per shape, no loop or vertex array used
/// by two shapes, and texts, textures and shapes not named so often that they add up to more than 64 times the buffer.
class QUORLAN_TOOLS_API ModelValidator {
public:
    /// RETURNS true if no problem was found; then no tool of the library reads outside this buffer, loops for ever or
    /// allocates more than a multiple of its size, whatever numbers (NaN, infinities) it holds.
    /// COST: linear in the size of the buffer.
    bool Build(std::vector<char> const& buffer);

    /// The problems of the last build, each with its place ("instance 12: material index 9 of 4"), at most 100.
    std::vector<std::string> const& GetProblems() const { return problems_; }

private:
    std::vector<std::string> problems_;
};

}  // namespace Quorlan
