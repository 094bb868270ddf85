#include "render/Surfaces.h"

namespace QuorlanProgram {
namespace {

constexpr Surface kNoMaterial{{0.6f, 0.6f, 0.6f}};

Surface SurfaceOf(Quorlan::IGeometryReader const& geometry, std::uint32_t material) {
    if (material >= geometry.GetMaterialCount()) return kNoMaterial;
    Quorlan::MaterialRecord record;
    geometry.GetMaterial(record, material);
    return {ToLight(record.color), static_cast<float>(record.color[3]) / 255, record.textureIndex, record.twoSided};
}

}  // namespace

std::vector<Surface> SurfacesOf(Quorlan::IModelReader const& reader, ColorMode mode,
                                std::vector<Rgba> const& entityColors) {
    auto const& geometry = reader.GetGeometry();
    auto const layerColors = MakeDistinctColors(geometry.GetExtraContentCount());
    std::vector<Surface> surfaces(geometry.GetInstanceCount());
    Quorlan::InstanceRecord instance;
    for (std::uint32_t i = 0; i < surfaces.size(); ++i) {
        geometry.GetInstance(instance, i);
        auto const material = SurfaceOf(geometry, instance.materialIndex);
        auto const paint = [&](Light color) { surfaces[i] = {color, 1, -1, material.twoSided}; };
        switch (mode) {
            case ColorMode::Material: surfaces[i] = material; break;
            case ColorMode::Entity: paint(ToLight(entityColors[instance.entityIndex])); break;
            case ColorMode::Layer:
                paint(instance.layerIndex < layerColors.size() ? ToLight(layerColors[instance.layerIndex])
                                                               : kNoMaterial.color);
                break;
            case ColorMode::Normal: paint(kNoMaterial.color); break;
        }
    }
    return surfaces;
}

}  // namespace QuorlanProgram
