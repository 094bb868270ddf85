// What must come back as it went in, for inputs that the framework makes up and, where one fails, makes smaller. Each
// failure prints the seed that repeats it (RC_PARAMS="seed=...").

#include "increments/ModelContent.h"
#include "increments/SceneWriter.h"

#include <Quorlan/ModelBuilder.h>
#include <Quorlan/ModelStorage.h>
#include <Quorlan/ModelValidator.h>
#include <Tools/Identifiers.h>
#include <Tools/Increments/Merge.h>
#include <Tools/Increments/Squash.h>
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>

namespace rc {

template <>
struct Arbitrary<_GUID> {
    static Gen<_GUID> arbitrary() {
        return gen::map(gen::container<std::array<std::uint8_t, 16>>(gen::arbitrary<std::uint8_t>()),
                        [](std::array<std::uint8_t, 16> const& bytes) {
                            _GUID guid;
                            std::memcpy(&guid, bytes.data(), sizeof(guid));
                            return guid;
                        });
    }
};

}  // namespace rc

namespace Quorlan::Testing {
namespace {

using Action = OwnerHistoryChangeAction;
using Bytes = std::vector<char>;
using Tools::Increments::Merge;
using Tools::Increments::Squash;

// --- identifiers ---

RC_GTEST_PROP(RoundTrip, AGuidComesBackFromItsText, (_GUID const& guid)) {
    _GUID back{};
    Tools::TextToGuid(Tools::GuidToText(guid), back);
    RC_ASSERT(back == guid);
}

RC_GTEST_PROP(RoundTrip, AGuidComesBackFromItsCompressedText, (_GUID const& guid)) {
    _GUID back{};
    RC_ASSERT(Tools::IfcGuidToGuid(Tools::GuidToIfcGuid(guid), back));
    RC_ASSERT(back == guid);
}

RC_GTEST_PROP(RoundTrip, WordsComeBackFromBase64, (std::vector<std::uint32_t> const& words)) {
    Bytes bytes(words.size() * sizeof(std::uint32_t));
    std::copy_n(reinterpret_cast<char const*>(words.data()), bytes.size(), bytes.begin());
    RC_ASSERT(Tools::Base64Decode(Tools::Base64Encode(bytes)) == bytes);
}

RC_GTEST_PROP(RoundTrip, NumbersComeBackFromBase64BitForBit, (std::vector<std::uint64_t> const& bits)) {
    Bytes bytes(bits.size() * sizeof(double));
    std::copy_n(reinterpret_cast<char const*>(bits.data()), bytes.size(), bytes.begin());
    std::vector<double> back;
    RC_ASSERT(Tools::DecodeDoubles(Tools::Base64Encode(bytes), back) == !bits.empty());
    RC_ASSERT(back.size() == bits.size());
    bool const isSame = bits.empty() || std::memcmp(back.data(), bits.data(), bytes.size()) == 0;
    RC_ASSERT(isSame);
}

// --- buffers ---

using PropertyValue = std::variant<std::string, double, std::int64_t, bool>;

rc::Gen<PropertyValue> MakeValue() {
    return rc::gen::oneOf(rc::gen::map(rc::gen::arbitrary<std::string>(), [](auto v) { return PropertyValue(v); }),
                          rc::gen::map(rc::gen::arbitrary<double>(), [](auto v) { return PropertyValue(v); }),
                          rc::gen::map(rc::gen::arbitrary<std::int64_t>(), [](auto v) { return PropertyValue(v); }),
                          rc::gen::map(rc::gen::arbitrary<bool>(), [](auto v) { return PropertyValue(v); }));
}

RC_GTEST_PROP(RoundTrip, EntitiesComeBackFromABuffer, (std::vector<std::pair<_GUID, std::string>> const& written)) {
    ModelBuilder builder;
    for (auto const& [guid, text] : written) {
        builder.GetEntityWriter().AddEntity(guid, std::wstring(text.begin(), text.end()), {});
        builder.GetEntityWriter().AddEntityWithIdentifierText(text, {}, {});
    }
    auto const storage = ModelStorage::FromBuffer(builder.Create());
    RC_ASSERT(!storage.HasError());
    auto const& entities = storage.GetModelReader().GetEntities();
    RC_ASSERT(entities.GetCount() == 2 * written.size());
    for (std::uint32_t i = 0; i < written.size(); ++i) {
        auto const& [guid, text] = written[i];
        EntityIdentifier identifier;
        std::wstring wideText;
        _GUID back;
        std::string identifierText;
        entities.GetIdentifier(identifier, 2 * i);
        entities.GetText(wideText, identifier.textReference);
        entities.GetGuid(back, identifier.reference);
        RC_ASSERT(back == guid);
        RC_ASSERT(wideText == std::wstring(text.begin(), text.end()));
        entities.GetIdentifier(identifier, 2 * i + 1);
        entities.GetIdentifierString(identifierText, identifier.reference);
        RC_ASSERT(identifierText == text);
    }
}

RC_GTEST_PROP(RoundTrip, PropertiesComeBackFromABuffer, ()) {
    auto const written = *rc::gen::container<std::vector<std::pair<std::uint8_t, PropertyValue>>>(
        rc::gen::pair(rc::gen::inRange<std::uint8_t>(0, 4), MakeValue()));
    ModelBuilder builder;
    for (int i = 0; i < 4; ++i) builder.GetEntityWriter().AddEntityWithoutIdentifier({}, {});
    std::map<std::uint8_t, std::vector<PropertyValue>> expected;
    for (auto const& [entity, value] : written) {
        builder.GetPropertyWriter().AddProperty(EntityIndex_t{entity}, {"set", "name", value});
        expected[entity].push_back(value);
    }
    auto const storage = ModelStorage::FromBuffer(builder.Create());
    RC_ASSERT(!storage.HasError());
    auto const& properties = storage.GetModelReader().GetProperties();
    for (std::uint8_t entity = 0; entity < 4; ++entity) {
        RC_ASSERT(properties.GetPropertyCount(EntityIndex_t{entity}) == expected[entity].size());
        for (std::uint32_t i = 0; i < expected[entity].size(); ++i) {
            PropertyRecord record;
            properties.GetProperty(record, EntityIndex_t{entity}, i);
            RC_ASSERT(record.value == expected[entity][i]);
        }
    }
}

/// Any loops over any vertices, so far as a buffer can hold them.
RC_GTEST_PROP(RoundTrip, AShapeComesBackFromABuffer, ()) {
    auto const coordinates = *rc::gen::nonEmpty<std::vector<float>>();
    FacetedBRep shape;
    for (std::size_t i = 0; i < coordinates.size(); ++i) {
        shape.vertices.push_back({coordinates[i], coordinates[coordinates.size() - 1 - i], coordinates[i / 2]});
    }
    auto const loop = rc::gen::container<std::vector<std::uint32_t>>(
        rc::gen::inRange<std::uint32_t>(0, static_cast<std::uint32_t>(shape.vertices.size())));
    shape.faces = *rc::gen::container<std::vector<std::vector<std::uint32_t>>>(loop);
    if (!shape.faces.empty()) shape.holes[shape.faces.size() - 1] = {*loop, *loop};

    ModelBuilder builder;
    RC_ASSERT(builder.GetGeometryDefinitionBuilder().AddBRep(shape) == GeometryDefinitionIndex_t{0});
    auto const storage = ModelStorage::FromBuffer(builder.Create());
    RC_ASSERT(!storage.HasError());
    FacetedBRep back;
    RC_ASSERT(storage.GetModelReader().GetGeometry().GetFacetedBRep(back, 0));
    RC_ASSERT(back.faces == shape.faces);
    RC_ASSERT(back.holes == shape.holes);
    RC_ASSERT(back.vertices.size() == shape.vertices.size());
    for (std::size_t i = 0; i < back.vertices.size(); ++i) {
        RC_ASSERT(back.vertices[i].x == shape.vertices[i].x && back.vertices[i].y == shape.vertices[i].y &&
                  back.vertices[i].z == shape.vertices[i].z);
    }
}

// --- increments ---

/// The revision of each entity of a model, by its number.
using Revisions = std::map<std::uint8_t, std::uint8_t>;

/// What an increment says of an entity: its new revision, or none where it is deleted.
using Changes = std::map<std::uint8_t, std::optional<std::uint8_t>>;

rc::Gen<Revisions> MakeRevisions() {
    return rc::gen::scale(0.2, rc::gen::container<Revisions>(rc::gen::inRange<std::uint8_t>(0, 12),
                                                             rc::gen::inRange<std::uint8_t>(0, 3)));
}

Bytes WriteFull(Revisions const& revisions) {
    ModelBuilder builder;
    SceneWriter scene(builder);
    for (auto const& [number, revision] : revisions) scene.AddEntity(number, revision, Action::NOCHANGE);
    return builder.Create();
}

/// Changes that fit `before`, which becomes what they make of it.
Changes MakeChanges(Revisions& before) {
    Changes changes;
    for (auto const& [number, revision] : *MakeRevisions()) {
        bool const deletes = revision == 0 && before.count(number) != 0;
        changes[number] = deletes ? std::nullopt : std::optional<std::uint8_t>(revision + 3);
    }
    return changes;
}

Bytes WriteIncrement(Changes const& changes, Revisions& model) {
    ModelBuilder builder;
    SceneWriter scene(builder);
    for (auto const& [number, revision] : changes) {
        if (!revision) {
            scene.AddBareEntity(number, Action::DELETED);
            model.erase(number);
        } else {
            scene.AddEntity(number, *revision, model.count(number) != 0 ? Action::MODIFIED : Action::ADDED);
            model[number] = *revision;
        }
    }
    return builder.Create();
}

Bytes MergeOf(Bytes const& full, Bytes const& increment) {
    Merge merge;
    RC_ASSERT(merge.Build(full, increment));
    auto result = merge.GetResult();
    RC_ASSERT(ModelValidator().Build(result));
    return result;
}

void AssertSameContent(Bytes const& actual, Bytes const& expected) {
    auto const read = [](Bytes const& model) {
        auto content = ReadContent(model);
        std::sort(content.begin(), content.end(),
                  [](auto const& a, auto const& b) { return GuidLess()(a.guid, b.guid); });
        return content;
    };
    auto const a = read(actual);
    auto const b = read(expected);
    RC_ASSERT(a.size() == b.size());
    for (std::size_t i = 0; i < a.size(); ++i) RC_ASSERT(Compare(a[i], b[i]) == "");
}

RC_GTEST_PROP(RoundTrip, AMergedIncrementGivesTheModelThatWasMeant, ()) {
    Revisions model = *MakeRevisions();
    auto const full = WriteFull(model);
    auto const increment = WriteIncrement(MakeChanges(model), model);
    AssertSameContent(MergeOf(full, increment), WriteFull(model));
}

RC_GTEST_PROP(RoundTrip, TwoIncrementsMergeAsTheirSquashDoes, ()) {
    Revisions model = *MakeRevisions();
    auto const full = WriteFull(model);
    auto const first = WriteIncrement(MakeChanges(model), model);
    auto const second = WriteIncrement(MakeChanges(model), model);
    Squash squash;
    RC_ASSERT(squash.Build(first, second));
    AssertSameContent(MergeOf(full, squash.GetResult()), MergeOf(MergeOf(full, first), second));
}

}  // namespace
}  // namespace Quorlan::Testing
