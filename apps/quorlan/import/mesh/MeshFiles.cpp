#include <algorithm>
#include <array>
#include <string_view>

#include "ImportSources.h"

namespace QuorlanProgram::Import {

bool IsMeshFile(std::string const& path) {
    constexpr std::array<std::string_view, 5> kEndings{".obj", ".ply", ".stl", ".gltf", ".glb"};
    auto const dot = path.rfind('.');
    if (dot == std::string::npos) return false;
    auto ending = path.substr(dot);
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return std::find(kEndings.begin(), kEndings.end(), ending) != kEndings.end();
}

}  // namespace QuorlanProgram::Import
