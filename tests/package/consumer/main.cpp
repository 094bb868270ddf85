/// Uses a little of every part of the library: writes a model, opens it, computes a box, a volume and a mesh.

#include <Quorlan/ModelBuilder.h>
#include <Quorlan/ModelStorage.h>
#include <Quorlan/ModelValidator.h>
#include <Tools/BoundingBoxBuilder.h>
#include <Tools/Identifiers.h>
#include <Tools/Increments/Merge.h>
#include <Tools/QuantificationBuilder.h>
#include <Tools/VertexNormalBuilder.h>

#include <cstdio>

using namespace Quorlan::Tools;

namespace {

/// A box of 2 x 3 x 4.
GeometryObjectLib::FacetedBRep MakeBox() {
    GeometryObjectLib::FacetedBRep box;
    for (double const z : {0.0, 4.0}) {
        for (double const y : {0.0, 3.0}) {
            for (double const x : {0.0, 2.0}) box.vertices.push_back({x, y, z});
        }
    }
    box.faces = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {3, 2, 6, 7}, {2, 0, 4, 6}, {1, 3, 7, 5}};
    return box;
}

}  // namespace

int main() {
    _GUID guid{};
    if (!IfcGuidToGuid("0123456789ABCDEFGHIJKL", guid)) return 1;

    Quorlan::ModelBuilder builder;
    auto const entity = builder.GetEntityWriter().AddEntity(guid, L"Box", {});
    auto const shape = builder.GetGeometryDefinitionBuilder().AddBRep(MakeBox());
    builder.GetInstanceWriter().AddInstance(entity, shape, Quorlan::kInvalidIndex, Quorlan::kInvalidIndex, {});
    std::vector<char> const model = builder.Create();

    Increments::Merge merge;
    if (!Quorlan::ModelValidator().Build(model) || !merge.Build({}, model)) return 2;
    auto const storage = Quorlan::ModelStorage::FromBuffer(merge.GetResult());
    if (storage.HasError() || storage.GetModelReader().GetEntities().GetCount() != 1) return 3;

    BoundingBoxBuilder boxes;
    if (!boxes.Build(model.data()) || boxes.getBoundingBoxes()[0].halfExtent.z != 2.0) return 4;
    QuantificationBuilder quantities(model.data());
    if (!quantities.Build(0) || quantities.GetVolume() != 24.0) return 5;
    VertexNormalBuilder mesh;
    if (!mesh.Build(model, 0, 0.5f) || mesh.GetTriangles().size() != 12) return 6;
    std::puts("written, opened, measured");
}
