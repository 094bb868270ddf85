// Every shape of the sample building beside the plain methods, to the bit.

#include "analysis/PlainMeter.h"
#include "mesh/ExpectPlainMesh.h"

#include <sample/SampleBuilding.h>

namespace {

using namespace Quorlan;
using namespace Quorlan::Testing;

std::vector<std::uint16_t> ToLoop(flatbuffers::Vector<std::uint16_t> const* loop) {
    return loop == nullptr ? std::vector<std::uint16_t>() : std::vector<std::uint16_t>(loop->begin(), loop->end());
}

/// What a buffer holds of a shape but its normals and texture coordinates.
RawBRep ToRawBRep(BRepView const& brep) {
    RawBRep shape;
    for (std::uint32_t v = 0; v < brep.vertexCount; ++v) shape.vertices->push_back(brep.GetPosition(v));
    for (auto const* const face : *brep.faces) shape.faces->push_back(ToLoop(face->outerLoop()));
    shape.holes.emplace();
    for (std::uint32_t h = 0; h < CountOf(brep.holes); ++h) {
        auto const* const hole = brep.holes->Get(h);
        shape.holes->push_back({hole->face(), ToLoop(hole->innerLoop())});
    }
    return shape;
}

std::vector<RawBRep> const& GetSampleShapes() {
    static std::vector<RawBRep> const shapes = [] {
        std::vector<RawBRep> result;
        auto const buffer = QuorlanSample::BuildSampleBuilding();
        auto const model = *ModelView::Open(buffer.data());
        for (auto const* const definition : *model.geometry->definitions()) {
            auto const brep = FindBRep(*model.geometry, definition->kind(), definition->kindIndex());
            if (brep) result.push_back(ToRawBRep(*brep));
        }
        return result;
    }();
    return shapes;
}

TEST(SampleShapes, AreOfManyForms) { EXPECT_GT(GetSampleShapes().size(), 100u); }

TEST(SampleShapes, QuantitiesHaveTheBitsOfPlainSums) {
    for (auto const& shape : GetSampleShapes()) ExpectPlainBits(shape);
}

TEST(SampleShapes, RenderMeshesHaveTheBitsOfPlainOnes) {
    Tools::VertexNormalBuilder builder;
    for (auto const& shape : GetSampleShapes()) ExpectPlainMesh(builder, shape, 0.5F);
}

}  // namespace
