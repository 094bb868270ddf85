#include "CombinedEntity.h"
#include "Commands.h"
#include "EntityLabel.h"
#include "GuidText.h"
#include "ModelFile.h"
#include "OutputFile.h"

#include <Quorlan/ModelBuilder.h>
#include <Tools/EntityMerger.h>
#include <Tools/PlacementBuilder.h>
#include <fmt/core.h>
#include <CLI/CLI.hpp>

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace QuorlanProgram {
namespace {

using Quorlan::IGeometryReader;

struct Settings {
    std::vector<std::string> models;
    std::vector<std::string> guids;
    std::vector<std::string> names;
    std::string output;
};

void CopyLooks(Quorlan::ModelBuilder& builder, IGeometryReader const& geometry) {
    for (std::uint32_t i = 0; i < geometry.GetTextureCount(); ++i) {
        Quorlan::Texture texture;
        geometry.GetTexture(texture, i);
        builder.GetTextureWriter().AddTexture(texture.getType(), texture.getData());
    }
    for (std::uint32_t i = 0; i < geometry.GetMaterialCount(); ++i) {
        Quorlan::MaterialRecord material;
        geometry.GetMaterial(material, i);
        builder.GetMaterialWriter().AddMaterial(material);
    }
    for (std::uint32_t i = 0; i < geometry.GetExtraContentCount(); ++i) {
        std::string name;
        geometry.GetLayerName(name, i);
        builder.GetLayerWriter().AddLayer(name);
    }
}

/// Writes one shape as it is. RETURNS its index; none for a kind without a shape.
Quorlan::GeometryDefinitionIndex_t CopyShape(Quorlan::IGeometryDefinitionBuilder& target,
                                             IGeometryReader const& geometry, std::uint32_t definition) {
    Quorlan::GraphicsContainer graphics;
    if (geometry.GetGraphicsContainer(graphics, definition)) return target.AddGraphicsContainer(graphics);
    Quorlan::FacetedBRep shape;
    if (!geometry.GetFacetedBRep(shape, definition)) {
        return static_cast<Quorlan::GeometryDefinitionIndex_t>(Quorlan::kInvalidIndex);
    }
    std::vector<Quorlan::Vertex> normals;
    std::vector<std::pair<float, float>> uvs;
    geometry.GetVertexNormals(normals, definition);
    geometry.GetTextureCoordinates(uvs, definition);
    if (!normals.empty()) return target.AddBRepWithNormals({&shape, &normals});
    if (!uvs.empty()) return target.AddBRepWithUVs({&shape, &uvs});
    return target.AddBRep(shape);
}

/// The same shapes in the same world positions, with everything that an entity's placement did moved into the
/// placements of its instances: what becomes part of one entity must not depend on where its own entities stood.
std::vector<char> Flatten(ModelFile const& model) {
    auto const& geometry = model.GetReader().GetGeometry();
    Quorlan::ModelBuilder builder;
    CopyLooks(builder, geometry);
    std::vector<Quorlan::GeometryDefinitionIndex_t> definitions;
    for (std::uint32_t i = 0; i < geometry.GetDefinitionCount(); ++i) {
        definitions.push_back(CopyShape(builder.GetGeometryDefinitionBuilder(), geometry, i));
    }
    auto const entity = builder.GetEntityWriter().AddEntity({}, L"", {});
    Quorlan::Tools::PlacementBuilder placements;
    placements.Build(model.GetBytes().data());
    for (std::uint32_t i = 0; i < geometry.GetInstanceCount(); ++i) {
        Quorlan::InstanceRecord instance;
        geometry.GetInstance(instance, i);
        auto const placement = Quorlan::AffineTransform::FromMatrix(placements.getPlacements()[i]);
        builder.GetInstanceWriter().AddInstance(entity, definitions[instance.definitionIndex], instance.materialIndex,
                                                instance.layerIndex, placement);
    }
    return builder.Create();
}

/// A GUID of our own for a model that was given none: the same for the same place in the list.
_GUID NumberedGuid(std::size_t number) {
    return {0x51554F52, 0x4C41, 0x4E00, {0, 0, 0, 0, 0, 0, 0, static_cast<unsigned char>(number)}};
}

void Tell(std::string const& path, std::string const& loss) { fmt::print(stderr, "quorlan: {}: {}\n", path, loss); }

/// Says what the entity of a model cannot hold.
void TellLosses(std::string const& path, CombineLosses const& losses) {
    if (losses.entities > 1) {
        Tell(path, fmt::format("{} entities became one; which shape was whose is not kept", losses.entities));
    }
    if (losses.shapeless > 0) {
        Tell(path, fmt::format("{} entities have no shape; where they stood is not kept", losses.shapeless));
    }
    if (losses.olderHistories > 0) {
        Tell(path, fmt::format("{} older owner histories are not kept", losses.olderHistories));
    }
}

int RunCombine(Settings const& settings) {
    CheckOutputFile(settings.output, settings.models);
    if (settings.guids.size() > settings.models.size() || settings.names.size() > settings.models.size()) {
        throw CLI::ValidationError("there are more GUIDs or names than models");
    }
    if (settings.models.size() > 255) throw CLI::ValidationError("there are more than 255 models");
    Quorlan::Tools::EntityMerger merger;
    std::uint64_t instanceCount = 0;
    for (std::size_t i = 0; i < settings.models.size(); ++i) {
        auto const model = ModelFile::Load(settings.models[i]);
        auto const flat = Flatten(model);
        auto const storage = Quorlan::ModelStorage::FromBuffer(flat);
        auto const guid = i < settings.guids.size() ? RequireGuid(settings.guids[i]) : NumberedGuid(i + 1);
        auto const name =
            i < settings.names.size() ? settings.names[i] : std::filesystem::path(settings.models[i]).stem().string();
        merger.Add(storage.GetModelReader(), guid, {}, FromUtf8(name), Quorlan::OwnerHistoryChangeAction::ADDED);
        Quorlan::EntityIndex_t const entity{static_cast<std::uint32_t>(i)};
        TellLosses(model.GetPath(), KeepEntities(merger, entity, model.GetReader()));
        instanceCount += model.GetReader().GetGeometry().GetInstanceCount();
    }
    auto const result = merger.GetResult();
    auto const written = Quorlan::ModelStorage::FromBuffer(result);
    auto const writtenCount = written.GetModelReader().GetGeometry().GetInstanceCount();
    if (writtenCount < instanceCount) {
        Tell(settings.output,
             fmt::format("{} instances have no shape and were left out", instanceCount - writtenCount));
    }
    WriteOutputFile(settings.output, AsView(result), settings.models);
    fmt::print("{} entities\n", settings.models.size());
    return kSuccess;
}

}  // namespace

Run DeclareCombine(CLI::App& app) {
    auto const settings = std::make_shared<Settings>();
    app.add_option("models", settings->models, "The models to read (.qln)")->required()->type_name("IN...");
    app.add_option("--guid", settings->guids, "The GUID of the first model's entity, of the second's, ...")
        ->type_name("GUID")
        ->allow_extra_args(false);
    app.add_option("--name", settings->names, "The name of the first model's entity, of the second's, ...")
        ->type_name("NAME")
        ->allow_extra_args(false);
    app.add_option("-o,--output", settings->output, "The model to write (.qln)")->required()->type_name("OUT");
    return [settings] { return RunCombine(*settings); };
}

}  // namespace QuorlanProgram
