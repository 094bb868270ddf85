/// Opens a model of unknown origin: checks it whole, then lists its entities and their properties.

#include <Quorlan/ModelStorage.h>
#include <Quorlan/ModelValidator.h>

#include <cstdio>
#include <fstream>
#include <iterator>

int main(int argc, char** argv) {
    if (argc != 2) return std::fprintf(stderr, "usage: OpenModel IN.qln\n"), 2;
    std::ifstream file(argv[1], std::ios::binary);
    std::vector<char> const model(std::istreambuf_iterator<char>(file), {});

    // What the validator passes, no tool reads out of bounds.
    Quorlan::ModelValidator validator;
    if (!validator.Build(model)) {
        for (auto const& problem : validator.GetProblems()) std::fprintf(stderr, "%s: %s\n", argv[1], problem.c_str());
        return 1;
    }

    auto const storage = Quorlan::ModelStorage::FromBuffer(model);
    if (storage.HasError()) return std::fprintf(stderr, "%s is no model\n", argv[1]), 1;
    auto const& entities = storage.GetModelReader().GetEntities();
    auto const& properties = storage.GetModelReader().GetProperties();

    // Records are filled in place, so that a loop allocates nothing per entity.
    Quorlan::EntityIdentifier identifier;
    Quorlan::PropertyRecord property;
    std::string guid;
    std::wstring name;
    for (std::uint32_t i = 0; i < entities.GetCount(); ++i) {
        entities.GetIdentifier(identifier, i);
        entities.GetText(name, identifier.textReference);
        guid.clear();
        if (identifier.kind == 0) entities.GetGuidText(guid, identifier.reference);
        std::printf("%-22s  %ls\n", guid.c_str(), name.c_str());

        auto const entity = Quorlan::EntityIndex_t{i};
        for (std::uint32_t k = 0; k < properties.GetPropertyCount(entity); ++k) {
            properties.GetProperty(property, entity, k);
            std::printf("    %s.%s\n", property.set.c_str(), property.name.c_str());
        }
    }
    return entities.GetCount() == 0 ? 1 : 0;
}
