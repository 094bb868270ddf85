#include "increments/SceneWriter.h"

#include "increments/ModelContent.h"
#include "support/Shapes.h"
#include "support/Transforms.h"

#include <GeometryObjectLib/GraphicsContainer.h>

namespace Quorlan::Testing {
namespace {

using GeometryObjectLib::LineSegment;
using TestSupport::Compose;
using TestSupport::MakeRotation;
using TestSupport::MakeTranslation;

/// A number below `count`.
std::uint32_t Pick(std::mt19937& random, std::uint32_t count) { return static_cast<std::uint32_t>(random() % count); }

double Uniform(std::mt19937& random, double lo, double hi) {
    return std::uniform_real_distribution<double>(lo, hi)(random);
}

AffineTransform MakeRigid(std::mt19937& random, double reach) {
    auto const along = [&] { return Uniform(random, -reach, reach); };
    Vertex const axis{Uniform(random, -1, 1), Uniform(random, -1, 1), Uniform(random, 0.1, 1)};
    AffineTransform const rotation = MakeRotation(axis, Uniform(random, 0, 6));
    double const x = along();
    double const y = along();
    return Compose(MakeTranslation(x, y, along()), rotation);
}

/// Bits that no writer would choose: axes of any length.
PlacementRecord MakeRawPlacement(std::mt19937& random) {
    AffineTransform const rigid = MakeRigid(random, 1000);
    Vertex const x = Uniform(random, 0.5, 2) * rigid.matrix.GetColumn(0);
    Vertex const y = Uniform(random, 0.5, 2) * rigid.matrix.GetColumn(1);
    Vertex const o = rigid.matrix.GetColumn(3);
    return {{o.x, o.y, o.z},
            {static_cast<float>(x.x), static_cast<float>(x.y), static_cast<float>(x.z)},
            {static_cast<float>(y.x), static_cast<float>(y.y), static_cast<float>(y.z)}};
}

/// One of a few shapes, so that copies occur.
FacetedBRep MakeBaseShape(std::mt19937& random) {
    switch (Pick(random, 4)) {
        case 0: return TestSupport::MakeBox({0, 0, 0}, {2, 1, 0.5});
        case 1: return TestSupport::MakePrism(5 + Pick(random, 3), 1.5, 3);
        case 2: return TestSupport::MakePlateWithHole();
        default: return TestSupport::MakeBox({-1, -1, 0}, {1, 1, 1.0 + Pick(random, 3)});
    }
}

void Move(FacetedBRep& shape, AffineTransform const& transform) {
    for (Vertex& vertex : shape.vertices) vertex = TransformPoint(transform.matrix, vertex);
}

GraphicsContainer MakeGraphics(std::mt19937& random) {
    double const length = 1.0 + Pick(random, 3);
    Vertex const o{Uniform(random, -5, 5), Uniform(random, -5, 5), 0};
    return {{LineSegment{o, o + Vertex{length, 0, 0}}, LineSegment{o, o + Vertex{0, 1, 0}}},
            {{o, {0, 0, 1}, {1, 0, 0}, length, 2.5}}};
}

}  // namespace

SceneWriter::SceneWriter(ModelBuilder& builder) : builder_(builder) {}

GeometryDefinitionIndex_t SceneWriter::AddShape(std::mt19937& random) {
    IGeometryDefinitionBuilder& definitions = builder_.GetGeometryDefinitionBuilder();
    FacetedBRep shape = MakeBaseShape(random);
    switch (Pick(random, 6)) {
        case 0: return definitions.AddGraphicsContainer(MakeGraphics(random));
        case 1: {
            Move(shape, MakeTranslation(Pick(random, 4), Pick(random, 100), 0));
            std::vector<Vertex> const normals(shape.vertices.size(), {0, 0, 1});
            return definitions.AddBRepWithNormals({&shape, &normals});
        }
        case 2: {
            std::vector<std::pair<float, float>> uvs;
            for (Vertex const& v : shape.vertices) uvs.emplace_back(static_cast<float>(v.x), static_cast<float>(v.y));
            Move(shape, MakeTranslation(Pick(random, 4), 0, 0));
            return definitions.AddBRepWithUVs({&shape, &uvs});
        }
        case 3: Move(shape, MakeRigid(random, 20)); break;
        case 4: Move(shape, MakeTranslation(100000, -200000 - Uniform(random, 0, 1000), 1000)); break;
        default: break;
    }
    return definitions.AddBRep(shape);
}

std::uint32_t SceneWriter::AddMaterial(std::mt19937& random) {
    if (Pick(random, 4) == 0) return kInvalidIndex;
    MaterialRecord material;
    material.color = {static_cast<std::uint8_t>(Pick(random, 3)), 20, 30, 255};
    material.twoSided = Pick(random, 2) == 0;
    if (Pick(random, 2) == 0) {
        std::vector<char> const image(1 + Pick(random, 3), 'i');
        material.textureIndex = static_cast<std::int32_t>(builder_.GetTextureWriter().AddTexture(
            Pick(random, 2) == 0 ? TextureType::PNG : static_cast<TextureType>(77), image));
    }
    return builder_.GetMaterialWriter().AddMaterial(material);
}

void SceneWriter::AddHistory(EntityIndex_t entity, std::uint32_t revision, OwnerHistoryChangeAction action) {
    IOwnerHistoryWriter& histories = builder_.GetOwnerHistoryWriter();
    std::uint32_t const part = histories.AddOwnerPart({"user" + std::to_string(revision % 2), "office", "editor"});
    std::uint32_t const record = histories.AddOwnerHistoryRecord({revision, action, 1000, 1000 + revision});
    histories.LinkOwnerHistory(entity, histories.AddOwnerHistory(part, record, {"reviewer", "viewer"}));
}

void SceneWriter::AddProperties(EntityIndex_t entity, std::uint32_t number, std::uint32_t revision) {
    IPropertyWriter& properties = builder_.GetPropertyWriter();
    properties.AddProperty(entity, {"Common", "Mark", "no. " + std::to_string(number)});
    properties.AddProperty(entity, {"Common", "Revision", static_cast<std::int64_t>(revision)});
    if (number % 2 == 0) properties.AddProperty(entity, {"Fire", "Rating", 0.5 * number});
    if (number % 3 == 0) properties.AddProperty(entity, {"Fire", "Safe", true});
}

EntityIndex_t SceneWriter::AddEntity(std::uint32_t number, std::uint32_t revision, OwnerHistoryChangeAction action) {
    std::mt19937 random(number * 1000 + revision);
    std::wstring const text = L"Entity \u00e4 " + std::to_wstring(number) + L'.' + std::to_wstring(revision);
    EntityIndex_t const entity =
        Pick(random, 2) == 0 ? builder_.GetEntityWriter().AddEntity(MakeGuid(number), text, MakeRigid(random, 1000))
                             : builder_.GetEntityWriter().AddEntityAt(MakeGuid(number), text, MakeRawPlacement(random));
    for (std::uint32_t i = Pick(random, 4); i > 0; --i) {
        GeometryDefinitionIndex_t const shape = AddShape(random);
        std::uint32_t const material = AddMaterial(random);
        std::uint32_t const layer =
            Pick(random, 3) == 0 ? kInvalidIndex
                                 : builder_.GetLayerWriter().AddLayer("Layer " + std::to_string(Pick(random, 2)));
        builder_.GetInstanceWriter().AddInstanceAt(entity, shape, material, layer, MakeRawPlacement(random));
    }
    AddHistory(entity, revision, action);
    AddProperties(entity, number, revision);
    return entity;
}

EntityIndex_t SceneWriter::AddBareEntity(std::uint32_t number, OwnerHistoryChangeAction action) {
    EntityIndex_t const entity = builder_.GetEntityWriter().AddEntity(MakeGuid(number), {}, {});
    AddHistory(entity, 0, action);
    return entity;
}

std::vector<char> WriteBareModel(std::vector<OwnerHistoryChangeAction> const& actions) {
    ModelBuilder builder;
    SceneWriter writer(builder);
    for (std::uint32_t number = 0; number < actions.size(); ++number) writer.AddBareEntity(number, actions[number]);
    return builder.Create();
}

}  // namespace Quorlan::Testing
