#include "support/RawModel.h"
#include "support/Shapes.h"

#include <Quorlan/ModelBuilder.h>
#include <Quorlan/ModelValidator.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Quorlan;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Testing::RawModel;

std::vector<std::string> FindProblems(std::vector<char> const& buffer) {
    ModelValidator validator;
    bool const isGood = validator.Build(buffer);
    EXPECT_EQ(isGood, validator.GetProblems().empty());
    return validator.GetProblems();
}

RawModel MakeModel() {
    RawModel model;
    model.facetedBReps.emplace();
    model.materials.emplace(4);
    model.layers = {"walls"};
    auto const entity = model.AddEntity();
    auto const box = model.AddBRep(Testing::RawBox({0, 0, 0}, {1, 1, 1}));
    model.AddInstance(entity, box, {}, 3, 0);
    return model;
}

TEST(ModelValidator, AGoodModelHasNoProblems) {
    EXPECT_THAT(FindProblems(MakeModel().Write()), ElementsAre());
    EXPECT_THAT(FindProblems(ModelBuilder().Create()), ElementsAre());
}

TEST(ModelValidator, WhatIsNoModelHasOneProblem) {
    EXPECT_THAT(FindProblems({}), ElementsAre(HasSubstr("no model buffer")));
    EXPECT_THAT(FindProblems(std::vector<char>(100, 'x')), ElementsAre(HasSubstr("no model buffer")));
    auto truncated = MakeModel().Write();
    truncated.resize(truncated.size() / 2);
    EXPECT_THAT(FindProblems(truncated), ElementsAre(HasSubstr("damaged or truncated")));
}

TEST(ModelValidator, EachIndexOfAnInstanceIsNamedWithItsRange) {
    auto model = MakeModel();
    (*model.instances)[0] = {1, 2, 3, 9, 5};
    EXPECT_THAT(FindProblems(model.Write()),
                ElementsAre("instance 0: placement index 1 of 1", "instance 0: entity index 2 of 1",
                            "instance 0: definition index 3 of 1", "instance 0: material index 9 of 4",
                            "instance 0: layer index 5 of 1"));
}

TEST(ModelValidator, NoMaterialAndNoLayerAreInRange) {
    auto model = MakeModel();
    (*model.instances)[0].materialIndex = kInvalidIndex;
    (*model.instances)[0].layerIndex = kInvalidIndex;
    EXPECT_THAT(FindProblems(model.Write()), ElementsAre());
}

TEST(ModelValidator, DefinitionsMustLeadToTheirShapes) {
    auto model = MakeModel();
    (*model.definitions)[0].kindIndex = 1;
    EXPECT_THAT(FindProblems(model.Write()), ElementsAre("definition 0: facetedBRep index 1 of 1"));
    (*model.definitions)[0].kind = 7;
    EXPECT_THAT(FindProblems(model.Write()), ElementsAre("definition 0: brepWithNormal index 1 of 0"));
    (*model.definitions)[0].kind = 17;
    EXPECT_THAT(FindProblems(model.Write()), ElementsAre("definition 0: kind 17 of 17"));
    (*model.definitions)[0].kind = 16;
    EXPECT_THAT(FindProblems(model.Write()), ElementsAre());
}

TEST(ModelValidator, LoopsMustBeWellFormed) {
    auto model = MakeModel();
    auto& brep = (*model.facetedBReps)[0];
    (*brep.faces)[1]->at(2) = 8;
    (*brep.faces)[2]->resize(2);
    (*brep.faces)[3].reset();
    brep.holes.emplace();
    brep.holes->push_back({6, std::vector<std::uint16_t>{0, 1, 2}});
    brep.holes->push_back({0, std::nullopt});
    EXPECT_THAT(FindProblems(model.Write()),
                ElementsAre("facetedBRep 0, face 1: vertex index 8 of 8", "facetedBRep 0, face 2: a loop of 2 vertices",
                            "facetedBRep 0, face 3: no loop", "facetedBRep 0, hole 0: face index 6 of 6",
                            "facetedBRep 0, hole 1: no loop"));
}

TEST(ModelValidator, LoopsAndFacesHaveALimit) {
    auto model = MakeModel();
    auto& brep = (*model.facetedBReps)[0];
    (*brep.faces)[0]->assign(65536, 1);
    EXPECT_THAT(FindProblems(model.Write()), ElementsAre());
    (*brep.faces)[0]->assign(65537, 1);
    EXPECT_THAT(FindProblems(model.Write()), ElementsAre("facetedBRep 0, face 0: a loop of 65537 vertices"));
    brep.faces->assign(262145, std::vector<std::uint16_t>{0, 1, 2});
    EXPECT_THAT(FindProblems(model.Write()), ElementsAre("facetedBRep 0: more than 262144 faces"));
}

TEST(ModelValidator, AShapeMayBeNamedSeveralTimesButNotWithoutEnd) {
    auto model = MakeModel();
    (*model.facetedBReps)[0].vertices->assign(10000, {1, 2, 3});
    auto const definition = model.definitions->front();
    model.definitions->assign(10, definition);
    EXPECT_THAT(FindProblems(model.Write()), ElementsAre());
    model.definitions->assign(200, definition);
    EXPECT_THAT(FindProblems(model.Write()), ElementsAre(HasSubstr("named so often")));
}

TEST(ModelValidator, ATextMayBeNamedSeveralTimesButNotWithoutEnd) {
    auto const write = [](int count) {
        ModelBuilder builder;
        auto const entity = builder.GetEntityWriter().AddEntityWithoutIdentifier(L"", {});
        std::string const text(100000, 'x');
        for (int i = 0; i < count; ++i) builder.GetPropertyWriter().AddProperty(entity, {"set", "name", text});
        return builder.Create();
    };
    EXPECT_THAT(FindProblems(write(10)), ElementsAre());
    EXPECT_THAT(FindProblems(write(100)), ElementsAre(HasSubstr("named so often")));
}

TEST(ModelValidator, ABRepNeedsVertices) {
    auto model = MakeModel();
    (*model.facetedBReps)[0].vertices.reset();
    (*model.facetedBReps)[0].faces->clear();
    EXPECT_THAT(FindProblems(model.Write()), ElementsAre("facetedBRep 0: no vertices"));
}

TEST(ModelValidator, MaterialsMustLeadToTextures) {
    auto model = MakeModel();
    (*model.materials)[2].textureIndex = 0;
    (*model.materials)[3].textureIndex = -2;
    EXPECT_THAT(FindProblems(model.Write()),
                ElementsAre("material 2: texture index 0 of 0", "material 3: texture index -2 of 0"));
}

TEST(ModelValidator, OwnerHistoriesAndPropertiesMustLeadToEntities) {
    ModelBuilder builder;
    auto& histories = builder.GetOwnerHistoryWriter();
    histories.AddOwnerHistory(1, kInvalidIndex, {});
    histories.LinkOwnerHistory(EntityIndex_t{2}, 3);
    builder.GetPropertyWriter().AddProperty(EntityIndex_t{5}, {"set", "name", 1.0});
    EXPECT_THAT(FindProblems(builder.Create()),
                ElementsAre("owner history 0: part index 1 of 0", "owner history link 0: entity index 2 of 0",
                            "owner history link 0: owner history index 3 of 1", "property 0: entity index 5 of 0"));
}

TEST(ModelValidator, AtMostAHundredProblemsAreNamed) {
    auto model = MakeModel();
    model.instances->assign(150, InstanceRecord{0, 0, 0, 4, 0});
    EXPECT_EQ(FindProblems(model.Write()).size(), 100u);
}

TEST(ModelValidator, ANewBuildForgetsEarlierProblems) {
    ModelValidator validator;
    EXPECT_FALSE(validator.Build({}));
    EXPECT_TRUE(validator.Build(MakeModel().Write()));
    EXPECT_TRUE(validator.GetProblems().empty());
}

}  // namespace
