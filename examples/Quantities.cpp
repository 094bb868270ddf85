/// Lists volume, area and centre of gravity of every entity, as a schedule of quantities has them.

#include <Quorlan/ModelStorage.h>
#include <Quorlan/ModelValidator.h>
#include <Tools/QuantificationBuilder.h>

#include <cstdio>
#include <fstream>
#include <iterator>

int main(int argc, char** argv) {
    if (argc != 2) return std::fprintf(stderr, "usage: Quantities IN.qln\n"), 2;
    std::ifstream file(argv[1], std::ios::binary);
    std::vector<char> const model(std::istreambuf_iterator<char>(file), {});
    if (!Quorlan::ModelValidator().Build(model)) return std::fprintf(stderr, "%s is no sound model\n", argv[1]), 1;
    auto const storage = Quorlan::ModelStorage::FromBuffer(model);
    auto const& entities = storage.GetModelReader().GetEntities();

    // The tool is made once per model, and keeps what it has measured of a shape for the next entity that uses it.
    Quorlan::Tools::QuantificationBuilder quantities(model.data());
    double total = 0;
    Quorlan::EntityIdentifier identifier;
    std::wstring name;
    for (std::uint32_t i = 0; i < entities.GetCount(); ++i) {
        if (!quantities.Build(i)) return 1;
        entities.GetIdentifier(identifier, i);
        entities.GetText(name, identifier.textReference);
        auto const& center = quantities.GetCenterOfGravity();
        std::printf("%-20ls %8.4f m3 %8.3f m2  (%.3f, %.3f, %.3f)\n", name.c_str(), quantities.GetVolume(),
                    quantities.GetArea(), center.x, center.y, center.z);
        total += quantities.GetVolume();
    }
    std::printf("%.4f m3 in all\n", total);
    return total > 0 ? 0 : 1;
}
