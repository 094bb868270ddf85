/// Says which entity stands in the middle of a picture, and where the pointer snaps to an edge.

#include <Quorlan/ModelStorage.h>
#include <Quorlan/ModelValidator.h>
#include <Tools/BoundingBoxBuilder.h>
#include <Tools/Picking/ModelPicker.h>
#include <Tools/QaabBuilder.h>

#include <cstdio>
#include <fstream>
#include <iterator>

using GeometryObjectLib::QuantizedAxisAlignedBoxTree;
using GeometryObjectLib::Vertex;
using namespace Quorlan::Tools;

int main(int argc, char** argv) {
    if (argc != 2) return std::fprintf(stderr, "usage: PickUnderPixel IN.qln\n"), 2;
    std::ifstream file(argv[1], std::ios::binary);
    std::vector<char> const model(std::istreambuf_iterator<char>(file), {});
    if (!Quorlan::ModelValidator().Build(model)) return std::fprintf(stderr, "%s is no sound model\n", argv[1]), 1;

    // Once per model: the tree.
    QaabBuilder builder;
    BoundingBoxBuilder boxes;
    if (!builder.Build(model.data()) || !boxes.Build(model.data())) return 1;
    QuantizedAxisAlignedBoxTree const tree(builder.getOrigin(), builder.getBvhQuantization(), builder.getNodes());

    // Once per camera: it looks down at the first instance from the south-east, across an angle of 60 degrees.
    auto const target = boxes.getBoundingBoxes().front().center;
    Vertex const eye = target + Vertex{3, -4, 5};
    Vertex const direction = (target - eye) / Length(target - eye);
    auto const view = Picking::ViewProjection::FromPerspective(eye, direction, {0, 0, 1}, 1.0472, 640, 480);

    // Once per mouse event: the pixel.
    Picking::ModelPicker picker;
    picker.SetViewProjection(view);
    picker.SetPickPositionX(320);
    picker.SetPickPositionY(240);
    auto const nothingHidden = [](Quorlan::EntityIndex_t) { return false; };
    if (!picker.PickSurfaces(model, {}, nothingHidden, tree)) return std::puts("nothing there"), 1;

    auto const storage = Quorlan::ModelStorage::FromBuffer(model);
    auto const& reader = storage.GetModelReader();
    Quorlan::InstanceRecord instance;
    Quorlan::EntityIdentifier identifier;
    std::wstring name;
    reader.GetGeometry().GetInstance(instance, picker.GetGeometryInstanceId());
    reader.GetEntities().GetIdentifier(identifier, instance.entityIndex);
    reader.GetEntities().GetText(name, identifier.textReference);
    auto const& point = picker.GetPickedPoint();
    std::printf("%ls, face %u, at %.3f %.3f %.3f, %.3f away\n", name.c_str(), picker.GetGeometryInstancePrimitiveId(),
                point.x, point.y, point.z, picker.GetShortestDistance());

    // Snapping: the nearest edge within 40 pixels, if there is one.
    if (picker.PickEdges(model, {}, nothingHidden, tree, 40)) {
        auto const& edge = picker.GetPickedPoint();
        std::printf("snaps to the edge at %.3f %.3f %.3f\n", edge.x, edge.y, edge.z);
    }
}
