#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace TestSupport {

/// The folder of real IFC files that some tests read where it is there; it is no part of the project. The environment
/// variable QUORLAN_TEST_DATA names it, otherwise it is looked for as ../shared/data beside the source tree.
std::optional<std::filesystem::path> FindTestData();

/// What a test says that skips because of it.
constexpr char kNoTestData[] = "no folder of IFC files: set QUORLAN_TEST_DATA to one";

/// All bytes of a file; empty if it cannot be read.
std::string ReadText(std::filesystem::path const& path);

}  // namespace TestSupport
