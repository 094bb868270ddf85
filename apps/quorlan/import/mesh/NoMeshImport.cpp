#include "ImportSources.h"

namespace QuorlanProgram::Import {

std::string AddMeshFile(ModelParts&, std::string const&, ImportOptions const&, ImportReport&) {
    return "this program was built without the import of meshes";
}

}  // namespace QuorlanProgram::Import
