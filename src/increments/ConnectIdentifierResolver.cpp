#include <Tools/ConnectIdentifierResolver.h>

#include "increments/ToleranceTree.h"

#include <Tools/Identifiers.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <utility>

namespace Quorlan::Tools {
namespace {

using Box_t = EntityBox_t;
using Key_t = std::array<double, 11>;

constexpr std::size_t kGuidTextLength = 36;
constexpr std::size_t kIfcGuidTextLength = 22;

constexpr std::size_t kFloatBoxLength = 32;
constexpr std::size_t kDoubleBoxLength = 64;
constexpr std::size_t kFloatKeyLength = 60;
constexpr std::size_t kMixedKeyLength = 76;
constexpr std::size_t kMixedKeyPositionLength = 32;  ///< the part of a mixed key that holds doubles

enum IdentifierKind : std::uint32_t { kGuid = 0, kString = 1, kGeometricKey = 2, kText = 3 };

Key_t Widen(GeometricKey const& key) {
    Key_t wide{};
    std::copy(key.position.begin(), key.position.end(), wide.begin());
    std::copy(key.shape.begin(), key.shape.end(), wide.begin() + 3);
    return wide;
}

bool DecodeWide(std::string const& text, std::vector<double>& out, bool isFloat) {
    if (!isFloat) return DecodeDoubles(text, out);
    std::vector<float> floats;
    bool const isDecoded = DecodeFloats(text, floats);
    out.assign(floats.begin(), floats.end());
    return isDecoded;
}

/// Empty unless the text holds exactly as many values as the array.
template <std::size_t Size>
std::optional<std::array<double, Size>> DecodeExactly(std::string const& text, bool isFloat) {
    std::vector<double> values;
    if (!DecodeWide(text, values, isFloat) || values.size() != Size) return std::nullopt;
    std::array<double, Size> result{};
    std::copy(values.begin(), values.end(), result.begin());
    return result;
}

std::optional<Key_t> DecodeMixedKey(std::string const& text) {
    auto const position = DecodeExactly<3>(text.substr(0, kMixedKeyPositionLength), false);
    auto const shape = DecodeExactly<8>(text.substr(kMixedKeyPositionLength), true);
    if (!position || !shape) return std::nullopt;
    Key_t key{};
    std::copy(shape->begin(), shape->end(), std::copy(position->begin(), position->end(), key.begin()));
    return key;
}

}  // namespace

struct ConnectIdentifierResolver::Data {
    QUORLAN_TOOLS_LOCAL Data(IModelReader const& model, std::vector<Box_t> const& boxes);

    std::unordered_map<std::string, EntityIndex_t> entityByGuid;
    std::unordered_map<std::string, std::vector<EntityIndex_t>> entitiesByText;
    std::vector<EntityIndex_t> keyEntities;  ///< by running number
    std::vector<EntityIndex_t> boxEntities;  ///< by running number
    std::optional<ToleranceTree<std::tuple_size_v<Key_t>>> keyTree;
    std::optional<ToleranceTree<std::tuple_size_v<Box_t>>> boxTree;
};

ConnectIdentifierResolver::Data::Data(IModelReader const& model, std::vector<Box_t> const& boxes) {
    IEntityReader const& entities = model.GetEntities();
    std::vector<Key_t> keys;
    std::vector<Box_t> unnamedBoxes;
    EntityIdentifier identifier;
    std::string text;
    GeometricKey key;
    for (std::uint32_t e = 0; e < boxes.size(); ++e) {
        EntityIndex_t const entity{e};
        entities.GetIdentifier(identifier, e);
        switch (identifier.kind) {
            case kGuid:
                entities.GetGuidText(text, identifier.reference);
                entityByGuid.try_emplace(text, entity);
                break;
            case kString:
                entities.GetIdentifierString(text, identifier.reference);
                entitiesByText[text].push_back(entity);
                break;
            case kGeometricKey:
                entities.GetGeometricKey(key, identifier.reference);
                keys.push_back(Widen(key));
                keyEntities.push_back(entity);
                break;
            case kText: entitiesByText[entities.GetIdentifierText(identifier.reference)].push_back(entity); break;
            default: unnamedBoxes.push_back(boxes[e]); boxEntities.push_back(entity);
        }
    }
    keyTree.emplace(keys);
    boxTree.emplace(unnamedBoxes);
}

ConnectIdentifierResolver::ConnectIdentifierResolver(double tolerance) : tolerance_(tolerance) {}

ConnectIdentifierResolver::~ConnectIdentifierResolver() = default;

bool ConnectIdentifierResolver::BuildData(IModelReader const& model, std::vector<EntityBox_t> const& boxes) {
    if (data_ != nullptr) return false;
    data_ = std::make_unique<Data const>(model, boxes);
    return true;
}

bool ConnectIdentifierResolver::Resolve(std::string const& identifier, std::vector<EntityIndex_t>& out) const {
    if (data_ == nullptr) return false;

    auto const named = data_->entitiesByText.find(identifier);
    if (named != data_->entitiesByText.end()) {
        out.insert(out.end(), named->second.begin(), named->second.end());
        return true;
    }
    auto const append = [&](auto const& tree, auto const& key, std::vector<EntityIndex_t> const& entities) {
        if (!key) return false;
        auto const numbers = tree->Find(*key, tolerance_);
        for (std::uint32_t const number : numbers) out.push_back(entities[number]);
        return !numbers.empty();
    };
    switch (identifier.size()) {
        case kFloatBoxLength: return append(data_->boxTree, DecodeExactly<6>(identifier, true), data_->boxEntities);
        case kDoubleBoxLength: return append(data_->boxTree, DecodeExactly<6>(identifier, false), data_->boxEntities);
        case kFloatKeyLength: return append(data_->keyTree, DecodeExactly<11>(identifier, true), data_->keyEntities);
        case kMixedKeyLength: return append(data_->keyTree, DecodeMixedKey(identifier), data_->keyEntities);
        default: return false;
    }
}

bool ConnectIdentifierResolver::ResolveGuid(std::string const& identifier, EntityIndex_t& out) const {
    if (data_ == nullptr) return false;
    std::string compressed;
    if (identifier.size() == kGuidTextLength) {
        _GUID guid{};
        TextToGuid(identifier, guid);
        compressed = GuidToIfcGuid(guid);
    } else if (identifier.size() == kIfcGuidTextLength) {
        compressed = identifier;
    } else {
        return false;
    }
    auto const entry = data_->entityByGuid.find(compressed);
    if (entry == data_->entityByGuid.end()) return false;
    out = entry->second;
    return true;
}

ConnectIdentifierResolverResult CreateConnectIdentifierResolver(IModelReader const& model,
                                                                std::vector<EntityBox_t> const& boxes, double a,
                                                                double b) {
    if (boxes.empty()) return {nullptr, "no entities"};
    if (model.GetEntities().GetCount() != boxes.size()) return {nullptr, "entity count mismatch"};

    std::shared_ptr<ConnectIdentifierResolver> resolver(new ConnectIdentifierResolver(a / b));
    if (!resolver->BuildData(model, boxes)) return {nullptr, "could not build resolver data"};
    return {std::move(resolver), std::string()};
}

}  // namespace Quorlan::Tools
