#include "support/TestData.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

namespace TestSupport {

std::optional<std::filesystem::path> FindTestData() {
    namespace fs = std::filesystem;
    char const* const named = std::getenv("QUORLAN_TEST_DATA");
    fs::path const source = QUORLAN_SOURCE_DIR;
    fs::path const folder = named != nullptr ? fs::path(named) : source / ".." / "shared" / "data";
    std::error_code error;
    if (!fs::is_directory(folder, error)) return std::nullopt;
    return folder;
}

std::string ReadText(std::filesystem::path const& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

}  // namespace TestSupport
