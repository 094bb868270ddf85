/// The smallest program: makes a model of one slab, and measures it.

#include <Quorlan/ModelBuilder.h>
#include <Tools/BoundingBoxBuilder.h>

#include <cstdio>

int main() {
    GeometryObjectLib::FacetedBRep shape;
    shape.vertices = {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 0}};
    shape.faces = {{0, 1, 2, 3}};

    Quorlan::ModelBuilder builder;
    auto const entity = builder.GetEntityWriter().AddEntity({1, 2, 3, {}}, L"Slab", {});
    auto const definition = builder.GetGeometryDefinitionBuilder().AddBRep(shape);
    builder.GetInstanceWriter().AddInstance(entity, definition, Quorlan::kInvalidIndex, Quorlan::kInvalidIndex, {});
    std::vector<char> const model = builder.Create();

    Quorlan::Tools::BoundingBoxBuilder boxes;
    if (!boxes.Build(model.data())) return 1;
    std::printf("%g wide\n", 2 * boxes.getBoundingBoxes()[0].halfExtent.x);
}
