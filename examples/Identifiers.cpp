/// Writes the identifiers of all entities in the forms that other systems use, and finds the entities by them again.

#include <Quorlan/ModelStorage.h>
#include <Quorlan/ModelValidator.h>
#include <Tools/BoundingBoxBuilder.h>
#include <Tools/ConnectIdentifierResolver.h>
#include <Tools/Identifiers.h>
#include <Tools/InstancesByEntitiesBuilder.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>

using namespace Quorlan::Tools;

namespace {

/// One box per entity, around those of its instances.
std::vector<EntityBox_t> BoxesOfEntities(void const* model) {
    BoundingBoxBuilder boxes;
    InstancesByEntitiesBuilder entities;
    if (!boxes.Build(model) || !entities.Build(model)) return {};
    std::vector<EntityBox_t> result;
    for (auto const& instances : entities.GetInstancesByEntities()) {
        EntityBox_t all{1e300, 1e300, 1e300, -1e300, -1e300, -1e300};
        for (auto const i : instances) {
            auto const lo = boxes.getBoundingBoxes()[i].GetMin();
            auto const hi = boxes.getBoundingBoxes()[i].GetMax();
            all = {std::min(all[0], lo.x), std::min(all[1], lo.y), std::min(all[2], lo.z),
                   std::max(all[3], hi.x), std::max(all[4], hi.y), std::max(all[5], hi.z)};
        }
        result.push_back(all);
    }
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return std::fprintf(stderr, "usage: Identifiers IN.qln\n"), 2;
    std::ifstream file(argv[1], std::ios::binary);
    std::vector<char> const model(std::istreambuf_iterator<char>(file), {});
    if (!Quorlan::ModelValidator().Build(model)) return std::fprintf(stderr, "%s is no sound model\n", argv[1]), 1;
    auto const storage = Quorlan::ModelStorage::FromBuffer(model);
    auto const& entities = storage.GetModelReader().GetEntities();

    // Entities without a GUID are found by their boxes, to a millimetre.
    auto const boxes = BoxesOfEntities(model.data());
    auto const [resolver, error] = CreateConnectIdentifierResolver(storage.GetModelReader(), boxes, 0.001, 1.0);
    if (!resolver) return std::fprintf(stderr, "%s\n", error.c_str()), 1;

    Quorlan::EntityIdentifier identifier;
    std::uint32_t foundCount = 0;
    for (std::uint32_t i = 0; i < entities.GetCount(); ++i) {
        entities.GetIdentifier(identifier, i);
        if (identifier.kind == 0) {
            _GUID guid;
            entities.GetGuid(guid, identifier.reference);
            std::printf("%s  %s\n", GuidToText(guid).c_str(), GuidToIfcGuid(guid).c_str());
            Quorlan::EntityIndex_t found{};
            if (resolver->ResolveGuid(GuidToIfcGuid(guid), found)) ++foundCount;
        } else {
            std::vector<char> bytes(sizeof(EntityBox_t));
            std::memcpy(bytes.data(), boxes[i].data(), bytes.size());
            std::vector<Quorlan::EntityIndex_t> found;
            if (resolver->Resolve(Base64Encode(bytes), found)) ++foundCount;
        }
    }
    std::printf("%u of %u entities found again\n", foundCount, entities.GetCount());
    return foundCount == entities.GetCount() ? 0 : 1;
}
