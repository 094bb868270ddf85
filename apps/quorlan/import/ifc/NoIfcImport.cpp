#include "ImportSources.h"

namespace QuorlanProgram::Import {

std::string AddIfc(ModelParts&, std::string_view, ImportOptions const&, ImportReport&) {
    return "this program was built without the import of IFC files";
}

}  // namespace QuorlanProgram::Import
