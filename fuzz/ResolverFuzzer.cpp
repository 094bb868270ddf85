// Indexes the identifiers of any buffer that opens, and looks for each of them.

#include "BufferMutator.h"
#include "Require.h"

#include <Quorlan/ModelStorage.h>
#include <Tools/ConnectIdentifierResolver.h>
#include <Tools/Identifiers.h>

QUORLAN_BUFFER_MUTATOR

using namespace Quorlan;

static std::vector<std::string> ReadIdentifiers(IEntityReader const& entities) {
    std::vector<std::string> identifiers;
    for (std::uint32_t i = 0; i < entities.GetCount(); ++i) {
        EntityIdentifier identifier;
        entities.GetIdentifier(identifier, i);
        std::string text;
        entities.GetGuidText(text, identifier.reference);
        identifiers.push_back(text);
        entities.GetIdentifierString(text, identifier.reference);
        identifiers.push_back(text);
    }
    return identifiers;
}

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const storage = ModelStorage::FromBuffer({data, data + size});
    if (storage.HasError()) return 0;
    auto const& reader = storage.GetModelReader();
    std::vector<Tools::EntityBox_t> const boxes(reader.GetEntities().GetCount());
    auto const made = Tools::CreateConnectIdentifierResolver(reader, boxes, 0.5, 1);
    Require((made.resolver != nullptr) == made.error.empty());
    if (made.resolver == nullptr) return 0;
    std::vector<EntityIndex_t> found;
    for (auto const& text : ReadIdentifiers(reader.GetEntities())) {
        auto const before = found.size();
        Require(made.resolver->Resolve(text, found) == (found.size() > before));
    }
    for (auto const entity : found) Require(static_cast<std::uint32_t>(entity) < boxes.size());
    return 0;
}
