#include <Tools/GraphicsContainerBuilder.h>

#include "support/RawModel.h"

#include <gtest/gtest.h>

namespace {

using namespace Quorlan::Testing;
using Quorlan::Tools::GraphicsContainer;
using Quorlan::Tools::GraphicsContainerBuilder;
using Triple = std::array<float, 3>;

RawLine Line(float at) { return {{at, 0, 0}, {at, 1, 2}}; }
RawArc Arc(float radius) { return {{1, 2, 3}, {0, 0, 1}, {1, 0, 0}, radius, 0.5f}; }

/// Container i has i + 1 lines and i arcs.
RawModel ThreeContainers() {
    RawModel model;
    model.graphicsContainers.emplace();
    for (int i = 0; i < 3; ++i) {
        RawGraphics graphics;
        for (int k = 0; k <= i; ++k) graphics.segments->push_back(Line(static_cast<float>(10 * i + k)));
        for (int k = 0; k < i; ++k) graphics.arcs->push_back(Arc(static_cast<float>(10 * i + k)));
        model.graphicsContainers->push_back(graphics);
    }
    return model;
}

GraphicsContainer Filled() { return {{{{7, 7, 7}, {8, 8, 8}}}, {{{9, 9, 9}, {0, 0, 1}, {1, 0, 0}, 9, 9}}}; }

void ExpectFilled(GraphicsContainer const& container) {
    ASSERT_EQ(container.lines.size(), 1u);
    EXPECT_EQ(container.lines[0].start, (Triple{7, 7, 7}));
    ASSERT_EQ(container.arcs.size(), 1u);
    EXPECT_EQ(container.arcs[0].radius, 9);
}

TEST(GraphicsContainerBuilder, HasNoContainersBeforeTheFirstBuild) {
    GraphicsContainerBuilder const builder;
    GraphicsContainer out = Filled();
    EXPECT_EQ(builder.GetCount(), 0u);
    EXPECT_FALSE(builder.GetGraphicsContainer(0, out));
    ExpectFilled(out);
}

TEST(GraphicsContainerBuilder, DecodesLinesAndArcsMemberForMember) {
    auto const buffer = ThreeContainers().Write();
    GraphicsContainerBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data()));
    EXPECT_EQ(builder.GetCount(), 3u);
    GraphicsContainer out;
    ASSERT_TRUE(builder.GetGraphicsContainer(2, out));
    ASSERT_EQ(out.lines.size(), 3u);
    EXPECT_EQ(out.lines[1].start, (Triple{21, 0, 0}));
    EXPECT_EQ(out.lines[1].end, (Triple{21, 1, 2}));
    ASSERT_EQ(out.arcs.size(), 2u);
    EXPECT_EQ(out.arcs[1].center, (Triple{1, 2, 3}));
    EXPECT_EQ(out.arcs[1].axis, (Triple{0, 0, 1}));
    EXPECT_EQ(out.arcs[1].startDirection, (Triple{1, 0, 0}));
    EXPECT_EQ(out.arcs[1].radius, 21);
    EXPECT_EQ(out.arcs[1].sweepAngle, 0.5f);
}

TEST(GraphicsContainerBuilder, IndexBehindTheLastLeavesTheRecordUnchanged) {
    auto const buffer = ThreeContainers().Write();
    GraphicsContainerBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data()));
    GraphicsContainer out = Filled();
    EXPECT_FALSE(builder.GetGraphicsContainer(3, out));
    EXPECT_FALSE(builder.GetGraphicsContainer(0xFFFFFFFF, out));
    ExpectFilled(out);
}

TEST(GraphicsContainerBuilder, EmptyVectorsGiveTrueAndNothing) {
    RawModel model;
    model.graphicsContainers.emplace(1);
    auto const buffer = model.Write();
    GraphicsContainerBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data()));
    GraphicsContainer out = Filled();
    EXPECT_TRUE(builder.GetGraphicsContainer(0, out));
    EXPECT_TRUE(out.lines.empty());
    EXPECT_TRUE(out.arcs.empty());
}

TEST(GraphicsContainerBuilder, AnotherContainerReplacesTheRecord) {
    auto const buffer = ThreeContainers().Write();
    GraphicsContainerBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data()));
    GraphicsContainer out;
    ASSERT_TRUE(builder.GetGraphicsContainer(2, out));
    auto const capacity = out.lines.capacity();
    ASSERT_TRUE(builder.GetGraphicsContainer(0, out));
    ASSERT_EQ(out.lines.size(), 1u);
    EXPECT_EQ(out.lines[0].start, (Triple{0, 0, 0}));
    EXPECT_TRUE(out.arcs.empty());
    EXPECT_EQ(out.lines.capacity(), capacity);
}

TEST(GraphicsContainerBuilder, ContainerWithoutLinesFailsAndLeavesTheRecordUnchanged) {
    RawModel model = ThreeContainers();
    (*model.graphicsContainers)[1].segments = std::nullopt;
    auto const buffer = model.Write();
    GraphicsContainerBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data()));
    GraphicsContainer out = Filled();
    EXPECT_FALSE(builder.GetGraphicsContainer(1, out));
    ExpectFilled(out);
}

TEST(GraphicsContainerBuilder, ContainerWithoutArcsFailsYetDeliversItsLinesAndKeepsTheArcsOfTheRecord) {
    RawModel model = ThreeContainers();
    (*model.graphicsContainers)[1].arcs = std::nullopt;
    auto const buffer = model.Write();
    GraphicsContainerBuilder builder;
    ASSERT_TRUE(builder.Build(buffer.data()));
    GraphicsContainer out = Filled();
    EXPECT_FALSE(builder.GetGraphicsContainer(1, out));
    ASSERT_EQ(out.lines.size(), 2u);
    EXPECT_EQ(out.lines[0].start, (Triple{10, 0, 0}));
    ASSERT_EQ(out.arcs.size(), 1u);
    EXPECT_EQ(out.arcs[0].radius, 9);
}

TEST(GraphicsContainerBuilder, FailedBuildKeepsTheEarlierContainersReachable) {
    auto const good = ThreeContainers().Write();
    GraphicsContainerBuilder builder;
    ASSERT_TRUE(builder.Build(good.data()));

    RawModel wrongIdentifier = ThreeContainers();
    wrongIdentifier.identifier = "qln8";
    RawModel withoutRecords = ThreeContainers();
    withoutRecords.entities = std::nullopt;
    RawModel withoutEntities = ThreeContainers();
    withoutEntities.hasEntities = false;
    RawModel withoutGeometry = ThreeContainers();
    withoutGeometry.hasGeometry = false;
    for (RawModel const& model : {RawModel(), wrongIdentifier, withoutRecords, withoutEntities, withoutGeometry}) {
        auto const bad = model.Write();
        EXPECT_FALSE(builder.Build(bad.data()));
        GraphicsContainer out;
        EXPECT_EQ(builder.GetCount(), 3u);
        EXPECT_TRUE(builder.GetGraphicsContainer(2, out));
        EXPECT_EQ(out.lines.size(), 3u);
    }
}

TEST(GraphicsContainerBuilder, EmptyVectorOfContainersIsFoundAndReplacesTheEarlierOne) {
    auto const good = ThreeContainers().Write();
    RawModel none;
    none.graphicsContainers.emplace();
    auto const empty = none.Write();
    GraphicsContainerBuilder builder;
    ASSERT_TRUE(builder.Build(good.data()));
    EXPECT_TRUE(builder.Build(empty.data()));
    EXPECT_EQ(builder.GetCount(), 0u);
}

}  // namespace
