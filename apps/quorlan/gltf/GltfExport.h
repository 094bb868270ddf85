#pragma once

#include <Quorlan/IModelReader.h>

#include <cstdint>
#include <string>
#include <vector>

namespace QuorlanProgram {

struct GltfOptions {
    float creaseAngle = 0.5f;         ///< [rad]
    double chordTolerance = 0.001;    ///< [m] of arcs
    bool levelOfDetailLines = false;  ///< thin cylinders in place of the shapes
};

/// What was written, and what was not.
struct GltfReport {
    std::size_t meshes = 0;
    std::size_t nodes = 0;
    std::uint64_t emptyDefinitions = 0;  ///< shapes without a triangle or a line
    std::uint64_t lostTriangles = 0;
};

/// The model as binary glTF 2.0.
///
/// One mesh per definition and material, one node per instance below a root that turns Z up into Y up and has the
/// centre of the world bounds taken off, so that a model far from the origin keeps its precision; the root's extras say
/// what was taken off.
std::string ExportGltf(std::vector<char> const& model, Quorlan::IModelReader const& reader, GltfOptions const& options,
                       GltfReport& report);

}  // namespace QuorlanProgram
