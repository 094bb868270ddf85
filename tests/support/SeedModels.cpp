#include "support/SeedModels.h"

#include "support/Shapes.h"

#include <Quorlan/ModelBuilder.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace TestSupport {
namespace {

using namespace Quorlan;

_GUID MakeGuid(std::uint32_t number) { return {number, 0x1234, 0x4321, {1, 2, 3, 4, 5, 6, 7, 8}}; }

AffineTransform MoveAndTurn(double x, double angle) {
    AffineTransform transform;
    transform.matrix(0, 0) = transform.matrix(1, 1) = std::cos(angle);
    transform.matrix(0, 1) = -std::sin(angle);
    transform.matrix(1, 0) = std::sin(angle);
    transform.matrix(0, 3) = x;
    transform.matrix(2, 3) = 1;
    return transform;
}

GeometryObjectLib::GraphicsContainer MakeGraphics() {
    return {{{{0, 0, 0}, {4, 0, 0}}, {{4, 0, 0}, {4, 2, 1}}}, {{{1, 1, 0}, {0, 0, 1}, {1, 0, 0}, 2, 1.5}}};
}

/// A prism over an L, whose ends have to be cut into ears.
FacetedBRep MakeLPrism() {
    FacetedBRep shape;
    for (double const z : {0.0, 3.0}) {
        for (auto const& [x, y] : {std::pair{0.0, 0.0}, {4.0, 0.0}, {4.0, 1.0}, {1.0, 1.0}, {1.0, 4.0}, {0.0, 4.0}}) {
            shape.vertices.push_back({x, y, z});
        }
    }
    shape.faces = {{5, 4, 3, 2, 1, 0}, {6, 7, 8, 9, 10, 11}};
    for (std::uint32_t i = 0; i < 6; ++i) shape.faces.push_back({i, (i + 1) % 6, (i + 1) % 6 + 6, i + 6});
    return shape;
}

void AddPlaced(ModelBuilder& builder, EntityIndex_t entity, GeometryDefinitionIndex_t shape, double x,
               std::uint32_t material = kInvalidIndex, std::uint32_t layer = kInvalidIndex) {
    builder.GetInstanceWriter().AddInstance(entity, shape, material, layer, MoveAndTurn(x, 0.3 * x));
}

void LinkChange(ModelBuilder& builder, EntityIndex_t entity, OwnerHistoryChangeAction action) {
    auto& histories = builder.GetOwnerHistoryWriter();
    auto const part = histories.AddOwnerPart({"user", "organization", "application"});
    auto const record = histories.AddOwnerHistoryRecord({0, action, 1000, 2000});
    histories.LinkOwnerHistory(entity, histories.AddOwnerHistory(part, record, {"last user", "last application"}));
}

std::vector<char> MakeBoxModel() {
    ModelBuilder builder;
    auto const wall = builder.GetEntityWriter().AddEntity(MakeGuid(1), L"Wall", MoveAndTurn(1, 0.5));
    AddPlaced(builder, wall, builder.GetGeometryDefinitionBuilder().AddBRep(MakeUnitCube()), 2);
    return builder.Create();
}

std::vector<char> MakeChange(OwnerHistoryChangeAction action, double x) {
    ModelBuilder builder;
    for (std::uint32_t i = 1; i <= 2; ++i) {
        auto const entity = builder.GetEntityWriter().AddEntity(MakeGuid(i), L"Wall", MoveAndTurn(x, 0));
        AddPlaced(builder, entity, builder.GetGeometryDefinitionBuilder().AddBRep(MakeLPrism()), x * i);
        LinkChange(builder, entity, action);
    }
    return builder.Create();
}

/// Shapes that are moved and turned copies of each other, with normals, with texture coordinates and of lines.
std::vector<char> MakeCopiesModel() {
    ModelBuilder builder;
    auto& shapes = builder.GetGeometryDefinitionBuilder();
    for (std::uint32_t i = 0; i < 3; ++i) {
        auto const entity = builder.GetEntityWriter().AddEntity(MakeGuid(i), L"Copy", {});
        FacetedBRep shape = MakeLPrism();
        auto const move = MoveAndTurn(10.0 * i, i);
        for (auto& vertex : shape.vertices) vertex = TransformPoint(move.matrix, vertex);
        std::vector<Vertex> const normals(shape.vertices.size(), {0, 0, 1});
        AddPlaced(builder, entity, shapes.AddBRep(shape), 1);
        AddPlaced(builder, entity, shapes.AddBRepWithNormals({&shape, &normals}), 2);
        auto graphics = MakeGraphics();
        for (auto& line : graphics.lines) line.start.x += i, line.end.x += i;
        AddPlaced(builder, entity, shapes.AddGraphicsContainer(graphics), 3);
    }
    return builder.Create();
}

std::vector<char> MakeOddNumbersModel() {
    ModelBuilder builder;
    auto const entity = builder.GetEntityWriter().AddEntity(MakeGuid(9), L"Odd", {});
    auto& shapes = builder.GetGeometryDefinitionBuilder();
    for (double const odd : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(), 1e38}) {
        FacetedBRep shape = MakePlateWithHole();
        shape.vertices[2].x = odd;
        shape.vertices[9].y = -odd;
        AddPlaced(builder, entity, shapes.AddBRep(shape), 1);
    }
    FacetedBRep flat = MakePrism(5, 0, 0);
    AddPlaced(builder, entity, shapes.AddBRep(flat), 1e30);
    return builder.Create();
}

}  // namespace

std::vector<char> MakeFullSeedModel() {
    ModelBuilder builder;
    auto& entities = builder.GetEntityWriter();
    auto const wall = entities.AddEntity(MakeGuid(1), L"Wall", MoveAndTurn(1, 0.5));
    auto const slab = entities.AddEntityWithIdentifierText("AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA", L"Sl\u00e4b", {});
    auto const door = entities.AddEntityWithGeometricKey({{1, 2, 3}, {4, 5, 6, 7, 8, 9, 10, 11}}, L"", {});
    auto const none = entities.AddEntityWithoutIdentifier(L"none", {});

    auto const texture = builder.GetTextureWriter().AddTexture(TextureType::PNG, {'\x89', 'P', 'N', 'G'});
    auto const red = builder.GetMaterialWriter().AddMaterial({{200, 30, 30, 255}, -1, true});
    auto const tiled = builder.GetMaterialWriter().AddMaterial({{9, 9, 9, 128}, static_cast<std::int32_t>(texture)});
    auto const walls = builder.GetLayerWriter().AddLayer("W\u00e4nde");
    auto const lines = builder.GetLayerWriter().AddLayer("lines");

    auto& shapes = builder.GetGeometryDefinitionBuilder();
    auto const plate = MakePlateWithHole();
    auto const prism = MakeLPrism();
    std::vector<Vertex> const normals(plate.vertices.size(), {0, 0, 1});
    std::vector<std::pair<float, float>> const uvs(prism.vertices.size(), {0.25f, 0.75f});
    auto const withNormals = shapes.AddBRepWithNormals({&plate, &normals});
    auto const withUVs = shapes.AddBRepWithUVs({&prism, &uvs});
    auto const graphics = shapes.AddGraphicsContainer(MakeGraphics());
    auto const plain = shapes.AddBRep(plate);
    AddPlaced(builder, wall, withNormals, 0, red, walls);
    AddPlaced(builder, slab, withUVs, 5, tiled, walls);
    AddPlaced(builder, door, graphics, -5, kInvalidIndex, lines);
    AddPlaced(builder, none, plain, 10, red);
    AddPlaced(builder, none, plain, 15);

    auto& properties = builder.GetPropertyWriter();
    properties.AddProperty(wall, {"Pset_Wall", "Name", "text"});
    properties.AddProperty(wall, {"Pset_Wall", "Width", 0.3});
    properties.AddProperty(slab, {"Pset_Slab", "Storey", std::int64_t{2}});
    properties.AddProperty(none, {"Pset_None", "External", true});
    LinkChange(builder, wall, OwnerHistoryChangeAction::MODIFIED);
    LinkChange(builder, slab, OwnerHistoryChangeAction::ADDED);
    return builder.Create();
}

std::vector<SeedModel> MakeSeedModels() {
    return {{"empty", ModelBuilder().Create()},
            {"box", MakeBoxModel()},
            {"full", MakeFullSeedModel()},
            {"modified", MakeChange(OwnerHistoryChangeAction::MODIFIED, 2)},
            {"added", MakeChange(OwnerHistoryChangeAction::ADDED, 4)},
            {"deleted", MakeChange(OwnerHistoryChangeAction::DELETED, 6)},
            {"copies", MakeCopiesModel()},
            {"odd-numbers", MakeOddNumbersModel()}};
}

}  // namespace TestSupport
