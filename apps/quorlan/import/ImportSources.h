#pragma once

#include <string>
#include <string_view>

#include "ImportOptions.h"
#include "ImportReport.h"

/// What an import reads. Each kind of file has a library behind it that a program may be built without.
namespace QuorlanProgram::Import {

class ModelParts;

/// What a model buffer says that cannot be made.
constexpr char const* kTooLarge = "the model is too large: a model buffer holds less than 2 GiB";

/// Adds the products of an IFC file (IFC2x3 and IFC4, and what of IFC4X3 is also IFC4) to a model, given its text.
///
/// Every product with a body is an entity with its GUID, name, placement, owner history and property sets; every item
/// of its body is an instance of a shape in the entity's own frame, in metres, with its material and layer.
///
/// RETURNS why nothing was added, in one line: `text` is no IFC file with a project, or the program is built without
/// IFC. Empty if all is well; what is missing or wrong then stands in `report`. Writes nothing to any stream. Not for
/// several threads at once: the geometry kernel behind it keeps a tolerance in a global variable.
std::string AddIfc(ModelParts& parts, std::string_view text, ImportOptions const& options, ImportReport& report);

/// True if the name of a file ends like that of a mesh file: .obj, .ply, .stl, .gltf, .glb.
bool IsMeshFile(std::string const& path);

/// Adds the meshes of a file to a model: an entity for every node with meshes, an instance for every mesh, with its
/// colour. Axes are turned so that Z is up where the format says that Y is.
/// RETURNS why nothing was added, as above.
std::string AddMeshFile(ModelParts& parts, std::string const& path, ImportOptions const& options, ImportReport& report);

}  // namespace QuorlanProgram::Import
