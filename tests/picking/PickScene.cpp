#include "picking/PickScene.h"

#include "picking/EdgeScenes.h"
#include "support/Shapes.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Quorlan::Testing {
namespace {

using Node = GeometryObjectLib::QuantizedAxisAlignedBoxTreeNode_s;

Vertex Min(Vertex const& a, Vertex const& b) { return {std::min(a.x, b.x), std::min(a.y, b.y), std::min(a.z, b.z)}; }
Vertex Max(Vertex const& a, Vertex const& b) { return {std::max(a.x, b.x), std::max(a.y, b.y), std::max(a.z, b.z)}; }

class TreeMaker {
public:
    explicit TreeMaker(std::vector<AxisAlignedBox3> const& boxes) : boxes_(boxes), items_(boxes.size()) {
        std::iota(items_.begin(), items_.end(), 0);
        Vertex top = boxes.front().GetMax();
        origin_ = boxes.front().GetMin();
        for (auto const& box : boxes) {
            origin_ = Min(origin_, box.GetMin());
            top = Max(top, box.GetMax());
        }
        Vertex const extent = top - origin_;
        cellsPerUnit_ = {65535 / extent.x, 65535 / extent.y, 65535 / extent.z};
    }

    QuantizedAxisAlignedBoxTree Make() {
        AddSubtree(0, items_.size());
        return {origin_, cellsPerUnit_, nodes_};
    }

private:
    static std::uint16_t Quantize(double value, double cellsPerUnit, bool isUpper) {
        if (std::isinf(cellsPerUnit)) return isUpper ? 65535 : 0;
        double const cells = value * cellsPerUnit;
        return static_cast<std::uint16_t>(std::clamp(isUpper ? std::ceil(cells) : std::floor(cells), 0.0, 65535.0));
    }

    Node MakeNode(AxisAlignedBox3 const& box) const {
        Vertex const lo = box.GetMin() - origin_;
        Vertex const hi = box.GetMax() - origin_;
        return {Quantize(lo.x, cellsPerUnit_.x, false),
                Quantize(hi.x, cellsPerUnit_.x, true),
                Quantize(lo.y, cellsPerUnit_.y, false),
                Quantize(hi.y, cellsPerUnit_.y, true),
                Quantize(lo.z, cellsPerUnit_.z, false),
                Quantize(hi.z, cellsPerUnit_.z, true),
                0};
    }

    void AddSubtree(std::size_t begin, std::size_t end) {
        AxisAlignedBox3 bounds = boxes_[items_[begin]];
        Vertex lo = bounds.center;
        Vertex hi = bounds.center;
        for (std::size_t i = begin; i < end; ++i) {
            auto const& box = boxes_[items_[i]];
            bounds =
                AxisAlignedBox3::FromCorners(Min(bounds.GetMin(), box.GetMin()), Max(bounds.GetMax(), box.GetMax()));
            lo = Min(lo, box.center);
            hi = Max(hi, box.center);
        }
        std::size_t const index = nodes_.size();
        nodes_.push_back(MakeNode(bounds));
        if (end - begin == 1) {
            nodes_[index].escapeOrItem = static_cast<std::int32_t>(items_[begin]);
            return;
        }
        Vertex const spread = hi - lo;
        double Vertex::*const axis = spread.x >= spread.y && spread.x >= spread.z ? &Vertex::x
                                     : spread.y >= spread.z                       ? &Vertex::y
                                                                                  : &Vertex::z;
        auto const first = items_.begin();
        std::stable_sort(first + static_cast<std::ptrdiff_t>(begin), first + static_cast<std::ptrdiff_t>(end),
                         [&](unsigned a, unsigned b) { return boxes_[a].center.*axis < boxes_[b].center.*axis; });
        std::size_t const middle = begin + (end - begin) / 2;
        AddSubtree(begin, middle);
        AddSubtree(middle, end);
        nodes_[index].escapeOrItem = -static_cast<std::int32_t>(nodes_.size() - index);
    }

    std::vector<AxisAlignedBox3> const& boxes_;
    std::vector<unsigned> items_;
    Vertex origin_;
    Vertex cellsPerUnit_;
    std::vector<Node> nodes_;
};

AxisAlignedBox3 GetInstanceBox(RawModel const& model, std::uint32_t instance) {
    Matrix4 const matrix = GetModelFromLocal(model, instance);
    auto const& definition = (*model.definitions)[(*model.instances)[instance].definitionIndex];
    Vertex lo{1e300, 1e300, 1e300};
    Vertex hi{-1e300, -1e300, -1e300};
    for (unsigned corner = 0; corner < 8; ++corner) {
        Vertex const p = TransformPoint(matrix, {(corner & 1) != 0 ? definition.hi.x : definition.lo.x,
                                                 (corner & 2) != 0 ? definition.hi.y : definition.lo.y,
                                                 (corner & 4) != 0 ? definition.hi.z : definition.lo.z});
        lo = Min(lo, p);
        hi = Max(hi, p);
    }
    return AxisAlignedBox3::FromCorners(lo, hi);
}

PlacementRecord RandomPlacement(RandomScene& random, double size) {
    Vector3f const x = random.Direction();
    Vector3f const z = Cross(x, random.Direction());
    Vector3f const y = Cross(z, x);
    Vector3f const origin = random.Point(static_cast<float>(size / 2));
    return {{origin.x, origin.y, origin.z}, {x.x, x.y, x.z}, {y.x, y.y, y.z}};
}

/// Segments and arcs within 0.6 of the origin.
RawGraphics MakeRandomGraphics(RandomScene& random) {
    RawGraphics graphics;
    for (int i = 0; i < 3; ++i) graphics.segments->push_back({random.Point(0.3f), random.Point(0.3f)});
    for (int i = 0; i < 2; ++i) {
        Vector3f const axis = random.Direction();
        Vector3f const across = Cross(axis, random.Direction());
        graphics.arcs->push_back(
            {random.Point(0.3f), axis, across / Length(across), random.Between(0.05f, 0.3f), random.Between(0.5f, 6)});
    }
    return graphics;
}

}  // namespace

Matrix4 ToMatrix(PlacementRecord const& p) {
    Vertex const x{p.xAxis[0], p.xAxis[1], p.xAxis[2]};
    Vertex const y{p.yAxis[0], p.yAxis[1], p.yAxis[2]};
    Vertex const z = Cross(x, y);
    Vertex const columns[] = {x / Length(x), y / Length(y), z / Length(z), {p.origin[0], p.origin[1], p.origin[2]}};
    Matrix4 matrix;
    for (std::size_t column = 0; column < 4; ++column) {
        matrix(0, column) = columns[column].x;
        matrix(1, column) = columns[column].y;
        matrix(2, column) = columns[column].z;
    }
    return matrix;
}

Matrix4 GetModelFromLocal(RawModel const& model, std::uint32_t instance) {
    auto const& record = (*model.instances)[instance];
    return ToMatrix((*model.entities)[record.entityIndex]) * ToMatrix((*model.placements)[record.placementIndex]);
}

QuantizedAxisAlignedBoxTree MakeTree(std::vector<AxisAlignedBox3> const& boxes) { return TreeMaker(boxes).Make(); }

QuantizedAxisAlignedBoxTree MakeTree(RawModel const& model) {
    std::vector<AxisAlignedBox3> boxes;
    for (std::uint32_t i = 0; i < model.instances->size(); ++i) boxes.push_back(GetInstanceBox(model, i));
    return MakeTree(boxes);
}

std::vector<unsigned> GetLeafOrder(QuantizedAxisAlignedBoxTree const& tree) {
    std::vector<unsigned> order;
    for (auto const& node : tree.getNodes()) {
        if (node.escapeOrItem >= 0) order.push_back(static_cast<unsigned>(node.escapeOrItem));
    }
    return order;
}

std::uint32_t PickScene::AddShape(FacetedBRep const& shape, std::uint8_t kind) {
    return model.AddBRep(ToRawBRep(shape), kind);
}

std::uint32_t PickScene::AddGraphics(RawGraphics const& graphics, Vector3f const& lo, Vector3f const& hi) {
    if (!model.graphicsContainers) model.graphicsContainers.emplace();
    model.graphicsContainers->push_back(graphics);
    return model.AddDefinition(lo, hi, 5, static_cast<std::uint32_t>(model.graphicsContainers->size() - 1));
}

RawModel MakeRandomModel(std::uint32_t seed, std::uint32_t instanceCount, double size) {
    RandomScene random(seed);
    PickScene scene;
    RawModel& model = scene.model;
    model.materials = {{0}, {1}, {2}};
    model.layers = {"a", "b", "c", "d"};
    for (int i = 0; i < 10; ++i) model.AddEntity(RandomPlacement(random, size / 4));

    std::vector<std::uint32_t> definitions;
    for (std::uint8_t const kind : {std::uint8_t{1}, std::uint8_t{6}, std::uint8_t{7}}) {
        definitions.push_back(scene.AddShape(TestSupport::MakeBox({-0.4, -0.2, -0.1}, {0.4, 0.2, 0.1}), kind));
        definitions.push_back(scene.AddShape(TestSupport::MakePrism(7, 0.3, 0.5), kind));
        FacetedBRep plate = TestSupport::MakePlateWithHole();
        for (Vertex& v : plate.vertices) v = (v - Vertex{2, 2, 0}) * 0.2;
        definitions.push_back(scene.AddShape(plate, kind));
    }
    for (int i = 0; i < 6; ++i) {
        definitions.push_back(scene.AddGraphics(MakeRandomGraphics(random), {-0.7f, -0.7f, -0.7f}, {0.7f, 0.7f, 0.7f}));
    }
    definitions.push_back(model.AddDefinition({-0.1f, -0.1f, -0.1f}, {0.1f, 0.1f, 0.1f}, 3, 0));

    for (std::uint32_t i = 0; i < instanceCount; ++i) {
        auto const definition = definitions[random.Below(static_cast<std::uint32_t>(definitions.size()))];
        std::uint32_t const material = random.Below(4);  // 3: none
        std::uint32_t const layer = random.Below(5);     // 4: none
        model.AddInstance(random.Below(11), definition, RandomPlacement(random, size),
                          material == 3 ? kInvalidIndex : material, layer == 4 ? kInvalidIndex : layer);
    }
    return model;
}

}  // namespace Quorlan::Testing
