#include <Tools/ConnectIdentifierResolver.h>
#include <Tools/Identifiers.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace Quorlan;
using namespace Quorlan::Tools;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

constexpr std::uint32_t kGuidKind = 0;
constexpr std::uint32_t kStringKind = 1;
constexpr std::uint32_t kKeyKind = 2;
constexpr std::uint32_t kTextKind = 3;

/// A model of entities only. Each reference is the entity's own index.
struct FakeModel : IModelReader, IEntityReader {
    struct Entity {
        std::uint32_t kind;
        std::string text;
        GeometricKey key;
    };
    std::vector<Entity> all;

    FakeModel& Add(std::uint32_t kind, std::string const& text = std::string(), GeometricKey const& key = {}) {
        all.push_back({kind, text, key});
        return *this;
    }

    std::uint32_t GetCount() const override { return static_cast<std::uint32_t>(all.size()); }
    EntityIdentifier const& GetIdentifier(EntityIdentifier& out, std::uint32_t entity) const override {
        out.kind = all[entity].kind;
        out.reference = entity;
        return out;
    }
    void GetGuidText(std::string& out, std::uint32_t reference) const override { out = all[reference].text; }
    void GetGeometricKey(GeometricKey& out, std::uint32_t reference) const override { out = all[reference].key; }
    char const* GetIdentifierText(std::uint32_t reference) const override { return all[reference].text.c_str(); }
    void GetIdentifierString(std::string& out, std::uint32_t reference) const override { out = all[reference].text; }

    void GetText(std::wstring&, std::uint32_t) const override { Unexpected(); }
    void GetGuid(_GUID&, std::uint32_t) const override { Unexpected(); }
    void GetPlacementRecord(PlacementRecord&, std::uint32_t) const override { Unexpected(); }

    IEntityReader const& GetEntities() const override { return *this; }
    IGeometryReader const& GetGeometry() const override { throw std::logic_error("not asked for"); }
    IPropertyReader const& GetProperties() const override { throw std::logic_error("not asked for"); }
    IOwnerHistoryReader const& GetOwnerHistories() const override { throw std::logic_error("not asked for"); }

    static void Unexpected() { ADD_FAILURE() << "not asked for"; }
};

/// Box i of a row of unit cubes.
EntityBox_t BoxAt(double i) { return {10 * i, 0, 0, 10 * i + 1, 1, 1}; }

std::vector<EntityBox_t> BoxesFor(FakeModel const& model) {
    std::vector<EntityBox_t> boxes;
    for (std::size_t i = 0; i < model.all.size(); ++i) boxes.push_back(BoxAt(static_cast<double>(i)));
    return boxes;
}

std::shared_ptr<ConnectIdentifierResolver> MakeResolver(FakeModel const& model, double a = 0.001, double b = 1) {
    auto const result = CreateConnectIdentifierResolver(model, BoxesFor(model), a, b);
    EXPECT_EQ(result.error, "");
    return result.resolver;
}

std::vector<std::uint32_t> Resolve(ConnectIdentifierResolver const& resolver, std::string const& identifier) {
    std::vector<EntityIndex_t> entities;
    bool const isFound = resolver.Resolve(identifier, entities);
    EXPECT_EQ(isFound, !entities.empty());
    std::vector<std::uint32_t> indices;
    for (EntityIndex_t const entity : entities) indices.push_back(static_cast<std::uint32_t>(entity));
    return indices;
}

template <class Number, class Values>
std::string Encode(Values const& values) {
    std::vector<Number> const numbers(values.begin(), values.end());
    std::vector<char> bytes(numbers.size() * sizeof(Number));
    std::memcpy(bytes.data(), numbers.data(), bytes.size());
    return Base64Encode(bytes);
}

std::string MixedKey(GeometricKey const& key) { return Encode<double>(key.position) + Encode<float>(key.shape); }

std::string FloatKey(GeometricKey const& key) {
    std::vector<double> values(key.position.begin(), key.position.end());
    values.insert(values.end(), key.shape.begin(), key.shape.end());
    return Encode<float>(values);
}

GeometricKey KeyAt(double i) { return {{i, 2, 3}, {4, 5, 6, 7, 8, 9, 10, 11}}; }

// ---- factory ------------------------------------------------------------------------------------------------------

TEST(ConnectIdentifierResolver, NoBoxesIsAnErrorEvenWithoutEntities) {
    auto const result = CreateConnectIdentifierResolver(FakeModel(), {}, 1, 1);
    EXPECT_EQ(result.resolver, nullptr);
    EXPECT_EQ(result.error, "no entities");
    EXPECT_EQ(CreateConnectIdentifierResolver(FakeModel().Add(4), {}, 1, 1).error, "no entities");
}

TEST(ConnectIdentifierResolver, AnotherNumberOfBoxesThanEntitiesIsAnError) {
    auto const result = CreateConnectIdentifierResolver(FakeModel().Add(4), {BoxAt(0), BoxAt(1)}, 1, 1);
    EXPECT_EQ(result.resolver, nullptr);
    EXPECT_EQ(result.error, "entity count mismatch");
    EXPECT_EQ(CreateConnectIdentifierResolver(FakeModel(), {BoxAt(0)}, 1, 1).error, "entity count mismatch");
}

TEST(ConnectIdentifierResolver, TheModelIsNotNeededAfterCreation) {
    std::shared_ptr<ConnectIdentifierResolver> resolver;
    {
        FakeModel model;
        model.Add(kStringKind, "name").Add(7);
        resolver = MakeResolver(model);
    }
    EXPECT_THAT(Resolve(*resolver, "name"), ElementsAre(0u));
    EXPECT_THAT(Resolve(*resolver, Encode<float>(BoxAt(1))), ElementsAre(1u));
}

// ---- GUIDs --------------------------------------------------------------------------------------------------------

constexpr _GUID kGuid{0x01234567, 0x89AB, 0xCDEF, {0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10}};

TEST(ConnectIdentifierResolver, BothTextFormsOfAGuidNameTheSameEntity) {
    FakeModel model;
    model.Add(4).Add(kGuidKind, GuidToIfcGuid(kGuid)).Add(kGuidKind, GuidToIfcGuid(_GUID{1, 0, 0, {}}));
    auto const resolver = MakeResolver(model);
    for (std::string const& text : {GuidToText(kGuid), GuidToIfcGuid(kGuid)}) {
        EntityIndex_t entity{99};
        EXPECT_TRUE(resolver->ResolveGuid(text, entity)) << text;
        EXPECT_EQ(entity, EntityIndex_t{1});
    }
}

TEST(ConnectIdentifierResolver, OfEqualGuidsTheFirstEntityWins) {
    FakeModel model;
    for (int i = 0; i < 3; ++i) model.Add(kGuidKind, GuidToIfcGuid(kGuid));
    EntityIndex_t entity{99};
    ASSERT_TRUE(MakeResolver(model)->ResolveGuid(GuidToText(kGuid), entity));
    EXPECT_EQ(entity, EntityIndex_t{0});
}

TEST(ConnectIdentifierResolver, AnUnknownGuidOrATextOfAnotherLengthLeavesTheOutputAlone) {
    FakeModel model;
    model.Add(kGuidKind, GuidToIfcGuid(kGuid));
    auto const resolver = MakeResolver(model);
    EntityIndex_t entity{99};
    EXPECT_FALSE(resolver->ResolveGuid(GuidToText(_GUID{}), entity));
    for (std::size_t length = 0; length < 80; ++length) {
        EXPECT_FALSE(resolver->ResolveGuid(std::string(length, '0'), entity)) << length;
    }
    EXPECT_EQ(entity, EntityIndex_t{99});
}

TEST(ConnectIdentifierResolver, AnIrregularTextOf36CharactersReadsAsZerosFromWhereItEnds) {
    FakeModel model;
    model.Add(kGuidKind, GuidToIfcGuid(_GUID{0xABC, 0, 0, {}}));
    EntityIndex_t entity{99};
    EXPECT_TRUE(MakeResolver(model)->ResolveGuid("00000abc, and no hyphen in its place", entity));
    EXPECT_EQ(entity, EntityIndex_t{0});
}

TEST(ConnectIdentifierResolver, ResolveDoesNotLookUpGuids) {
    FakeModel model;
    model.Add(kGuidKind, GuidToIfcGuid(kGuid));
    auto const resolver = MakeResolver(model);
    EXPECT_THAT(Resolve(*resolver, GuidToIfcGuid(kGuid)), IsEmpty());
    EXPECT_THAT(Resolve(*resolver, GuidToText(kGuid)), IsEmpty());
}

// ---- texts --------------------------------------------------------------------------------------------------------

TEST(ConnectIdentifierResolver, ATextNamesAllEntitiesOfBothKindsThatCarryIt) {
    FakeModel model;
    model.Add(kTextKind, "A").Add(kStringKind, "B").Add(kStringKind, "A").Add(kTextKind, "A").Add(kTextKind, "");
    auto const resolver = MakeResolver(model);
    EXPECT_THAT(Resolve(*resolver, "A"), ElementsAre(0u, 2u, 3u));
    EXPECT_THAT(Resolve(*resolver, "B"), ElementsAre(1u));
    EXPECT_THAT(Resolve(*resolver, ""), ElementsAre(4u));
    EXPECT_THAT(Resolve(*resolver, "C"), IsEmpty());
}

TEST(ConnectIdentifierResolver, ATextComesBeforeTheNumbersItMightEncode) {
    FakeModel model;
    std::string const box = Encode<float>(BoxAt(0));
    model.Add(4).Add(kStringKind, box);
    EXPECT_THAT(Resolve(*MakeResolver(model), box), ElementsAre(1u));
}

TEST(ConnectIdentifierResolver, ResolveAppendsAndIsTrueOnlyWhenThisCallAppended) {
    FakeModel model;
    model.Add(kStringKind, "A").Add(4);
    auto const resolver = MakeResolver(model);
    std::vector<EntityIndex_t> out{EntityIndex_t{77}};
    EXPECT_TRUE(resolver->Resolve("A", out));
    EXPECT_TRUE(resolver->Resolve(Encode<double>(BoxAt(1)), out));
    EXPECT_FALSE(resolver->Resolve("none", out));
    EXPECT_FALSE(resolver->Resolve(Encode<double>(BoxAt(5)), out));
    EXPECT_THAT(out, ElementsAre(EntityIndex_t{77}, EntityIndex_t{0}, EntityIndex_t{1}));
}

// ---- boxes and keys -----------------------------------------------------------------------------------------------

TEST(ConnectIdentifierResolver, BoxesAreNamedByTextsOf32And64Characters) {
    FakeModel model;
    model.Add(kGuidKind, "x").Add(4).Add(5).Add(0xFFFFFFFF).Add(kKeyKind);
    auto const resolver = MakeResolver(model);
    for (std::uint32_t const entity : {1u, 2u, 3u}) {
        ASSERT_EQ(Encode<float>(BoxAt(entity)).size(), 32u);
        ASSERT_EQ(Encode<double>(BoxAt(entity)).size(), 64u);
        EXPECT_THAT(Resolve(*resolver, Encode<float>(BoxAt(entity))), ElementsAre(entity));
        EXPECT_THAT(Resolve(*resolver, Encode<double>(BoxAt(entity))), ElementsAre(entity));
    }
    // Entities of other kinds are not found by their boxes.
    EXPECT_THAT(Resolve(*resolver, Encode<double>(BoxAt(0))), IsEmpty());
    EXPECT_THAT(Resolve(*resolver, Encode<double>(BoxAt(4))), IsEmpty());
}

TEST(ConnectIdentifierResolver, KeysAreNamedByTextsOf60And76Characters) {
    FakeModel model;
    model.Add(4).Add(kKeyKind, "", KeyAt(1)).Add(kKeyKind, "", KeyAt(2));
    auto const resolver = MakeResolver(model);
    ASSERT_EQ(FloatKey(KeyAt(1)).size(), 60u);
    ASSERT_EQ(MixedKey(KeyAt(1)).size(), 76u);
    EXPECT_THAT(Resolve(*resolver, FloatKey(KeyAt(1))), ElementsAre(1u));
    EXPECT_THAT(Resolve(*resolver, MixedKey(KeyAt(2))), ElementsAre(2u));
    EXPECT_THAT(Resolve(*resolver, MixedKey(KeyAt(3))), IsEmpty());
}

TEST(ConnectIdentifierResolver, TheToleranceIsTheQuotientAndInclusive) {
    FakeModel model;
    model.Add(4).Add(kKeyKind, "", KeyAt(1));
    auto const resolver = MakeResolver(model, 1, 8);
    for (std::size_t value = 0; value < 6; ++value) {
        for (auto const& [offset, isNamed] : {std::pair{0.125, true}, {-0.125, true}, {0.1251, false}}) {
            EntityBox_t box = BoxAt(0);
            box[value] += offset;
            EXPECT_EQ(Resolve(*resolver, Encode<double>(box)).size(), isNamed ? 1u : 0u) << value << " " << offset;
        }
    }
    for (std::size_t value = 0; value < 11; ++value) {
        for (auto const& [offset, isNamed] : {std::pair{0.125f, true}, {-0.125f, true}, {0.1251f, false}}) {
            GeometricKey key = KeyAt(1);
            if (value < 3) key.position[value] += static_cast<double>(offset);
            if (value >= 3) key.shape[value - 3] += offset;
            EXPECT_EQ(Resolve(*resolver, MixedKey(key)).size(), isNamed ? 1u : 0u) << value << " " << offset;
        }
    }
}

TEST(ConnectIdentifierResolver, MatchesComeInEntityOrder) {
    FakeModel model;
    for (int i = 0; i < 40; ++i) model.Add(kKeyKind, "", KeyAt((i * 17) % 40));
    auto const found = Resolve(*MakeResolver(model, 5, 1), MixedKey(KeyAt(20)));
    EXPECT_EQ(found.size(), 11u);
    EXPECT_TRUE(std::is_sorted(found.begin(), found.end()));
}

TEST(ConnectIdentifierResolver, AToleranceThatIsNotANumberMatchesNothingButTextsStillDo) {
    FakeModel model;
    model.Add(4).Add(kKeyKind, "", KeyAt(1)).Add(kStringKind, "A");
    auto const resolver = MakeResolver(model, 0, 0);
    EXPECT_THAT(Resolve(*resolver, Encode<double>(BoxAt(0))), IsEmpty());
    EXPECT_THAT(Resolve(*resolver, MixedKey(KeyAt(1))), IsEmpty());
    EXPECT_THAT(Resolve(*resolver, "A"), ElementsAre(2u));
}

TEST(ConnectIdentifierResolver, AnInfiniteToleranceMatchesEverythingOfItsKind) {
    FakeModel model;
    model.Add(4).Add(kKeyKind, "", KeyAt(1)).Add(9);
    EXPECT_THAT(Resolve(*MakeResolver(model, 1, 0), Encode<double>(BoxAt(100))), ElementsAre(0u, 2u));
}

TEST(ConnectIdentifierResolver, AToleranceOfZeroMatchesEqualValues) {
    FakeModel model;
    model.Add(4);
    auto const resolver = MakeResolver(model, 0, 1);
    EXPECT_THAT(Resolve(*resolver, Encode<double>(BoxAt(0))), ElementsAre(0u));
    EXPECT_THAT(Resolve(*resolver, Encode<double>(BoxAt(1e-9))), IsEmpty());
}

TEST(ConnectIdentifierResolver, AValueThatIsNotANumberMatchesNothing) {
    FakeModel model;
    model.Add(4);
    EntityBox_t box = BoxAt(0);
    box[3] = kNaN;
    EXPECT_THAT(Resolve(*MakeResolver(model), Encode<double>(box)), IsEmpty());
}

TEST(ConnectIdentifierResolver, TextsOfEveryOtherLengthNameNothing) {
    FakeModel model;
    model.Add(4).Add(kKeyKind, "", KeyAt(1));
    auto const resolver = MakeResolver(model, 1, 0);  // whatever is compared at all, matches
    for (std::size_t length = 0; length < 130; ++length) {
        bool const isKnown = length == 32 || length == 60 || length == 64 || length == 76;
        std::string text(length, 'A');
        if (length == 60) text[59] = '=';
        EXPECT_EQ(Resolve(*resolver, text).size(), isKnown ? 1u : 0u) << length;
    }
}

TEST(ConnectIdentifierResolver, AWrongNumberOfValuesNamesNothing) {
    FakeModel model;
    model.Add(4).Add(kKeyKind, "", KeyAt(1));
    auto const resolver = MakeResolver(model, 1, 0);
    auto const cut = [](std::size_t length, std::size_t digits) {
        return std::string(digits, 'A') + std::string(length - digits, '=');
    };
    EXPECT_THAT(Resolve(*resolver, cut(32, 28)), IsEmpty());  // 21 bytes: 5 floats
    EXPECT_THAT(Resolve(*resolver, cut(32, 31)), IsEmpty());  // 23 bytes: 5 floats
    EXPECT_THAT(Resolve(*resolver, cut(64, 63)), IsEmpty());  // 47 bytes: 5 doubles
    EXPECT_THAT(Resolve(*resolver, cut(60, 58)), IsEmpty());  // 43 bytes: 10 floats
    EXPECT_THAT(Resolve(*resolver, cut(60, 59)), ElementsAre(1u));
    EXPECT_THAT(Resolve(*resolver, cut(60, 60)), ElementsAre(1u));  // 45 bytes: 11 floats and a rest
    std::string mixed(76, 'A');
    EXPECT_THAT(Resolve(*resolver, mixed), ElementsAre(1u));
    mixed[31] = '=';  // 2 doubles
    EXPECT_THAT(Resolve(*resolver, mixed), IsEmpty());
    mixed = std::string(74, 'A') + "==";  // 31 bytes: 7 floats
    EXPECT_THAT(Resolve(*resolver, mixed), IsEmpty());
    EXPECT_THAT(Resolve(*resolver, std::string(32, '=')), IsEmpty());
    EXPECT_THAT(Resolve(*resolver, std::string(76, '=')), IsEmpty());
}

TEST(ConnectIdentifierResolver, AModelWithoutKeysOrBoxesResolvesNumbersToNothing) {
    FakeModel model;
    model.Add(kGuidKind, GuidToIfcGuid(kGuid));
    auto const resolver = MakeResolver(model, 1, 0);
    EXPECT_THAT(Resolve(*resolver, Encode<double>(BoxAt(0))), IsEmpty());
    EXPECT_THAT(Resolve(*resolver, MixedKey(KeyAt(0))), IsEmpty());
}

}  // namespace
