#include <ifcpp/geometry/Carve/CSG_Adapter.h>

#include "cut/Boolean.h"
#include "cut/FixedMemory.h"
#include "cut/KernelMesh.h"

namespace QuorlanProgram::Import {

namespace {

std::optional<FacetedBRep> Run(FacetedBRep const& a, FacetedBRep const& b, BooleanOperation operation) {
    try {
        auto first = ToMeshSet(a);
        auto second = ToMeshSet(b);
        StatusCallback silent;
        MeshSetPointer result;
        auto const code =
            operation == BooleanOperation::kDifference ? carve::csg::CSG::A_MINUS_B : carve::csg::CSG::INTERSECTION;
        CSG_Adapter::computeCSG(first, second, code, result, &silent, nullptr);
        return result ? ToPlainShape(*result) : FacetedBRep();
    } catch (std::bad_alloc const&) {
        throw;
    } catch (...) {  // the kernel throws much that has no common base
        return std::nullopt;
    }
}

FacetedBRep MakeBox(double size) {
    return Extrude({{{0, 0, 0}, {size, 0, 0}, {size, size, 0}, {0, size, 0}}}, {0, 0, size});
}

/// What the kernel and the standard library make once and keep must not lie in memory that is taken back.
void RunOnceOutside() {
    static bool const isDone = [] {
        Run(MakeBox(2), MakeBox(1), BooleanOperation::kDifference);
        Run(MakeBox(2), MakeBox(1), BooleanOperation::kIntersection);
        return true;
    }();
    (void)isDone;
}

}  // namespace

std::optional<FacetedBRep> CombineInKernel(FacetedBRep const& a, FacetedBRep const& b, BooleanOperation operation) {
    RunOnceOutside();
    std::optional<FacetedBRep> kept;
    {
        FixedMemory const memory;
        auto const result = Run(a, b, operation);
        FixedMemory::Pause const pause;
        kept = result;
    }
    return kept;
}

}  // namespace QuorlanProgram::Import
