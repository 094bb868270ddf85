/// Builds a model from nothing: a table, whose four legs share one shape, and writes it to a file.

#include <GeometryObjectLib/FacetedBRep.h>
#include <Quorlan/ModelBuilder.h>

#include <cstdio>
#include <fstream>

using GeometryObjectLib::AffineTransform;
using GeometryObjectLib::FacetedBRep;
using GeometryObjectLib::Vertex;

namespace {

/// A box from the origin to `size`: outer loops run counter-clockwise seen from outside.
FacetedBRep MakeBox(Vertex const& size) {
    FacetedBRep box;
    for (double const z : {0.0, size.z}) {
        for (double const y : {0.0, size.y}) {
            for (double const x : {0.0, size.x}) box.vertices.push_back({x, y, z});
        }
    }
    box.faces = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {3, 2, 6, 7}, {2, 0, 4, 6}, {1, 3, 7, 5}};
    return box;
}

AffineTransform MoveTo(double x, double y, double z) {
    AffineTransform transform;
    transform.matrix(0, 3) = x;
    transform.matrix(1, 3) = y;
    transform.matrix(2, 3) = z;
    return transform;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return std::fprintf(stderr, "usage: BuildModel OUT.qln\n"), 2;

    Quorlan::ModelBuilder builder;
    auto const oak = builder.GetMaterialWriter().AddMaterial({{206, 172, 126, 255}, -1, false});
    auto const furniture = builder.GetLayerWriter().AddLayer("Furniture");
    auto const top = builder.GetGeometryDefinitionBuilder().AddBRep(MakeBox({1.6, 0.8, 0.04}));
    auto const leg = builder.GetGeometryDefinitionBuilder().AddBRep(MakeBox({0.06, 0.06, 0.71}));

    // An entity stands where its placement says; its instances are placed relative to it.
    _GUID const guid{0x6BA7B810, 0x9DAD, 0x11D1, {0x80, 0xB4, 0x00, 0xC0, 0x4F, 0xD4, 0x30, 0xC8}};
    auto const table = builder.GetEntityWriter().AddEntity(guid, L"Table", MoveTo(10, 5, 0));
    auto& instances = builder.GetInstanceWriter();
    instances.AddInstance(table, top, oak, furniture, MoveTo(0, 0, 0.71));
    for (double const x : {0.0, 1.54}) {
        for (double const y : {0.0, 0.74}) instances.AddInstance(table, leg, oak, furniture, MoveTo(x, y, 0));
    }
    builder.GetPropertyWriter().AddProperty(table, {"Table", "Seats", std::int64_t{6}});

    auto const model = builder.Create();
    std::ofstream file(argv[1], std::ios::binary);
    file.write(model.data(), static_cast<std::streamsize>(model.size()));
    if (!file.flush()) return std::fprintf(stderr, "%s cannot be written\n", argv[1]), 1;
    std::printf("%s: %zu bytes\n", argv[1], model.size());
}
