#pragma once

#include <Quorlan/Guid.h>
#include <Quorlan/ModelBuilder.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

namespace Quorlan::Benchmarks {

inline _GUID GuidOf(std::uint32_t number) {
    std::uint32_t const mixed = number * 2654435761u;
    return {mixed, static_cast<std::uint16_t>(number), 0x4000, {1, 2, 3, 4, 5, 6, 7, 8}};
}

/// A right prism; a building model is full of them.
inline FacetedBRep MakePrism(std::uint32_t sides, double radius, double height) {
    FacetedBRep prism;
    for (std::uint32_t i = 0; i < 2 * sides; ++i) {
        double const angle = 6.283185307179586 * (i % sides) / sides;
        prism.vertices.push_back({radius * std::cos(angle), radius * std::sin(angle), i < sides ? 0 : height});
    }
    prism.faces.resize(2);
    for (std::uint32_t i = 0; i < sides; ++i) {
        std::uint32_t const next = (i + 1) % sides;
        prism.faces[0].push_back(sides - 1 - i);
        prism.faces[1].push_back(sides + i);
        prism.faces.push_back({i, next, sides + next, sides + i});
    }
    return prism;
}

/// A building: every second entity is a repeated part from a catalogue of a hundredth of their number, the others have
/// shapes of their own. All have a name, an owner history and three properties, most a material and a layer.
///
/// `revision` changes the shapes that are not of the catalogue.
class BuildingModel : public ModelBuilder {
public:
    BuildingModel(std::uint32_t entityCount, std::uint32_t revision) : entityCount_(entityCount), revision_(revision) {
        std::uint32_t const catalogueSize = entityCount / 100 + 1;
        for (std::uint32_t i = 0; i < catalogueSize; ++i) {
            catalogue_.push_back(GetGeometryDefinitionBuilder().AddBRep(MakePrism(4 + i % 20, 0.5, 1 + 0.001 * i)));
        }
        for (std::uint8_t i = 0; i < 20; ++i) GetMaterialWriter().AddMaterial({{i, 128, 128, 255}, -1, false});
        for (int i = 0; i < 10; ++i) GetLayerWriter().AddLayer("Layer " + std::to_string(i));
        part_ = GetOwnerHistoryWriter().AddOwnerPart({"user", "office", "editor"});
    }

    /// Adds entities `first`, `first + step` and so on below the model's number of entities.
    void AddEntities(std::uint32_t first, std::uint32_t step, OwnerHistoryChangeAction action) {
        for (std::uint32_t i = first; i < entityCount_; i += step) AddEntity(i, action);
    }

private:
    void AddEntity(std::uint32_t i, OwnerHistoryChangeAction action) {
        EntityIndex_t const entity = GetEntityWriter().AddEntityAt(GuidOf(i), L"Part " + std::to_wstring(i),
                                                                   PlacementRecord{{0.0, 0.0, i % 9 * 3.0}});
        auto const shape = i % 2 == 0
                               ? catalogue_[i / 2 % catalogue_.size()]
                               : GetGeometryDefinitionBuilder().AddBRep(MakePrism(
                                     4 + i / 2 % 8, 0.1 + 1e-4 * i, 0.3 + 0.01 * (i % 1000) + 0.001 * revision_));
        PlacementRecord placement{{i % 100 * 1.0, i / 100 % 100 * 1.0, 0}, {0.8f, 0.6f, 0}, {-0.6f, 0.8f, 0}};
        GetInstanceWriter().AddInstanceAt(entity, shape, i % 25, i % 12, placement);

        auto& histories = GetOwnerHistoryWriter();
        std::uint32_t const record = histories.AddOwnerHistoryRecord({0, action, 1000, 2000});
        histories.LinkOwnerHistory(entity, histories.AddOwnerHistory(part_, record, {}));
        GetPropertyWriter().AddProperty(entity, {"Common", "Mark", "M" + std::to_string(i % 500)});
        GetPropertyWriter().AddProperty(entity, {"Common", "Length", 0.25 * i});
        GetPropertyWriter().AddProperty(entity, {"Common", "IsExternal", i % 3 == 0});
    }

    std::uint32_t entityCount_;
    std::uint32_t revision_;
    std::uint32_t part_ = 0;
    std::vector<GeometryDefinitionIndex_t> catalogue_;
};

/// A full model of this many entities.
inline std::vector<char> WriteFullModel(std::uint32_t entityCount) {
    BuildingModel model(entityCount, 0);
    model.AddEntities(0, 1, OwnerHistoryChangeAction::NOCHANGE);
    return model.Create();
}

/// An increment that modifies every hundredth entity of such a model, from entity `first` on.
inline std::vector<char> WriteIncrement(std::uint32_t entityCount, std::uint32_t first) {
    BuildingModel model(entityCount, 1);
    model.AddEntities(first, 100, OwnerHistoryChangeAction::MODIFIED);
    return model.Create();
}

}  // namespace Quorlan::Benchmarks
