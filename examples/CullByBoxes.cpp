/// Finds the instances near a point, once by looking at all boxes and once through the box tree.

#include <Quorlan/ModelValidator.h>
#include <Tools/BoundingBoxBuilder.h>
#include <Tools/QaabBuilder.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>

using GeometryObjectLib::AxisAlignedBox3;
using GeometryObjectLib::Vertex;

namespace {

bool Meet(AxisAlignedBox3 const& a, AxisAlignedBox3 const& b) {
    auto const gap = [](double from, double to, double reach) { return std::abs(to - from) > reach; };
    return !gap(a.center.x, b.center.x, a.halfExtent.x + b.halfExtent.x) &&
           !gap(a.center.y, b.center.y, a.halfExtent.y + b.halfExtent.y) &&
           !gap(a.center.z, b.center.z, a.halfExtent.z + b.halfExtent.z);
}

/// The box of a node in model space.
AxisAlignedBox3 BoxOf(GeometryObjectLib::QuantizedAxisAlignedBoxTreeNode_s const& node, Vertex const& origin,
                      Vertex const& cells) {
    return AxisAlignedBox3::FromCorners(origin + Vertex{node.minX / cells.x, node.minY / cells.y, node.minZ / cells.z},
                                        origin + Vertex{node.maxX / cells.x, node.maxY / cells.y, node.maxZ / cells.z});
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return std::fprintf(stderr, "usage: CullByBoxes IN.qln\n"), 2;
    std::ifstream file(argv[1], std::ios::binary);
    std::vector<char> const model(std::istreambuf_iterator<char>(file), {});
    Quorlan::ModelValidator validator;
    Quorlan::Tools::BoundingBoxBuilder boxes;
    Quorlan::Tools::QaabBuilder tree;
    if (!validator.Build(model) || !boxes.Build(model.data()) || !tree.Build(model.data())) return 1;

    auto const& all = boxes.getBoundingBoxes();
    AxisAlignedBox3 const region{all.front().center, {0.9, 0.1, 0.1}};

    // Box i belongs to instance i.
    std::size_t plain = 0;
    for (auto const& box : all) plain += Meet(box, region) ? 1 : 0;

    // Nodes stand depth first. A leaf names its instance; an inner node that is missed is jumped over with all below
    // it. Quantized boxes are a little larger than the real ones, so that leaves are tested once more.
    std::size_t found = 0, visited = 0;
    auto const& nodes = tree.getNodes();
    for (std::size_t i = 0; i < nodes.size(); ++visited) {
        auto const item = nodes[i].escapeOrItem;
        bool const meets = Meet(BoxOf(nodes[i], tree.getOrigin(), tree.getBvhQuantization()), region);
        if (item >= 0 && meets && Meet(all[static_cast<std::size_t>(item)], region)) ++found;
        i += item >= 0 || meets ? 1 : static_cast<std::size_t>(-item);
    }
    std::printf("%zu of %zu instances, %zu of %zu nodes visited\n", found, all.size(), visited, nodes.size());
    return found == plain ? 0 : 1;
}
