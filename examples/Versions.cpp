/// Carries a model from version to version by increments: two changes are written, combined and applied.

#include <Quorlan/ModelBuilder.h>
#include <Quorlan/ModelStorage.h>
#include <Tools/Identifiers.h>
#include <Tools/Increments/IncrementModelBuilder.h>
#include <Tools/Increments/Merge.h>
#include <Tools/Increments/Squash.h>

#include <cstdio>
#include <fstream>
#include <iterator>

using namespace Quorlan::Tools::Increments;
using Quorlan::ModelStorage;
using Quorlan::OwnerHistoryChangeAction;

namespace {

/// What a designer has just drawn: a panel that stands upright.
std::vector<char> MakePanel() {
    GeometryObjectLib::FacetedBRep shape;
    shape.vertices = {{0, 0, 0}, {1.6, 0, 0}, {1.6, 0, 0.4}, {0, 0, 0.4}};
    shape.faces = {{0, 1, 2, 3}};
    Quorlan::ModelBuilder builder;
    auto const entity = builder.GetEntityWriter().AddEntity({7, 0, 0, {}}, L"Panel", {});
    auto const definition = builder.GetGeometryDefinitionBuilder().AddBRep(shape);
    builder.GetInstanceWriter().AddInstance(entity, definition, Quorlan::kInvalidIndex, Quorlan::kInvalidIndex, {});
    return builder.Create();
}

/// RETURNS the next version of a model, empty where there is none.
std::vector<char> Apply(std::vector<char> const& model, std::vector<char> const& increment) {
    Merge merge;
    if (!merge.Build(model, increment)) std::fprintf(stderr, "%s\n", merge.GetError().c_str());
    return merge.GetResult();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return std::fprintf(stderr, "usage: Versions IN.qln\n"), 2;
    std::ifstream file(argv[1], std::ios::binary);
    std::vector<char> const model(std::istreambuf_iterator<char>(file), {});
    auto const storage = ModelStorage::FromBuffer(model);
    if (storage.HasError()) return std::fprintf(stderr, "%s is no model\n", argv[1]), 1;

    // Monday: a panel is drawn. The increment holds the panel and nothing else.
    auto const drawing = ModelStorage::FromBuffer(MakePanel());
    IncrementModelBuilder monday;
    monday.Add(drawing.GetModelReader(), {{OwnerHistoryChangeAction::ADDED, Quorlan::EntityIndex_t{0}}});

    // Tuesday: the first entity of the model is taken out.
    auto const& entities = storage.GetModelReader().GetEntities();
    Quorlan::EntityIdentifier first;
    _GUID removed;
    entities.GetGuid(removed, entities.GetIdentifier(first, 0).reference);
    IncrementModelBuilder tuesday;
    tuesday.AddAsDeleted({removed});

    // Both days in one increment, for those who were away.
    Squash squash;
    if (!squash.Build(monday.GetResult(), tuesday.GetResult())) return 1;
    auto const both = squash.GetResult();
    for (auto const& guid : squash.GetDeleted()) std::printf("deleted %s\n", Quorlan::Tools::GuidToText(guid).c_str());

    auto const stepByStep = ModelStorage::FromBuffer(Apply(Apply(model, monday.GetResult()), tuesday.GetResult()));
    auto const atOnce = ModelStorage::FromBuffer(Apply(model, both));
    if (stepByStep.HasError() || atOnce.HasError()) return 1;
    auto const count = atOnce.GetModelReader().GetEntities().GetCount();
    std::printf("%u entities now\n", count);
    return count == stepByStep.GetModelReader().GetEntities().GetCount() ? 0 : 1;
}
