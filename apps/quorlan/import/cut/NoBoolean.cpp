#include "cut/Boolean.h"

namespace QuorlanProgram::Import {

std::optional<FacetedBRep> CombineInKernel(FacetedBRep const&, FacetedBRep const&, BooleanOperation) {
    return std::nullopt;
}

}  // namespace QuorlanProgram::Import
