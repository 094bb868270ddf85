#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace QuorlanProgram {

/// Writes `bytes` to the file `path`, whole or not at all: into a temporary beside it that takes its name at the end. A
/// file that is replaced keeps its permissions; a link is followed. What is no regular file (a device, a pipe) is
/// written to directly.
///
/// THROWS Failure if it cannot be written, or if it is one of `inputs`, by whatever name; nothing is left behind then.
void WriteOutputFile(std::string const& path, std::string_view bytes, std::vector<std::string> const& inputs = {});

/// Refuses, before any work is done, what `WriteOutputFile` would refuse without trying: an input, a directory, a
/// folder that is not there.
void CheckOutputFile(std::string const& path, std::vector<std::string> const& inputs);

inline std::string_view AsView(std::vector<char> const& bytes) { return {bytes.data(), bytes.size()}; }

}  // namespace QuorlanProgram
