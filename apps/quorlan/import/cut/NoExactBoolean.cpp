#include "cut/Boolean.h"

namespace QuorlanProgram::Import {

std::optional<FacetedBRep> CombineExactly(FacetedBRep const&, FacetedBRep const&, BooleanOperation) {
    return std::nullopt;
}

bool HasExactBooleans() { return false; }

}  // namespace QuorlanProgram::Import
