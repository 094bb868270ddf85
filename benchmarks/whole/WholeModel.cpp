#include "whole/WholeModel.h"

#include <Quorlan/ModelValidator.h>
#include <Tools/BoundingBoxBuilder.h>
#include <Tools/Increments/IncrementModelBuilder.h>
#include <Tools/QaabBuilder.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <utility>

namespace Quorlan::Benchmarks {
namespace {

constexpr int kViews = 512;

std::vector<char> ReadModelFile(std::string const& path) {
    std::ifstream file(path, std::ios::binary);
    std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    if (!ModelValidator().Build(bytes)) throw std::runtime_error(path + ": no sound model");
    return bytes;
}

std::vector<WholeModel::View> MakeViews(std::vector<GeometryObjectLib::AxisAlignedBox3> const& boxes) {
    auto lower = boxes.front().GetMin();
    auto upper = boxes.front().GetMax();
    for (auto const& box : boxes) {
        auto const lo = box.GetMin(), hi = box.GetMax();
        lower = {std::min(lower.x, lo.x), std::min(lower.y, lo.y), std::min(lower.z, lo.z)};
        upper = {std::max(upper.x, hi.x), std::max(upper.y, hi.y), std::max(upper.z, hi.z)};
    }
    auto const center = 0.5 * (lower + upper);
    double const size = Length(upper - lower);
    std::mt19937 random(1);
    auto const between = [&](double from, double to) {
        return std::uniform_real_distribution<double>(from, to)(random);
    };
    std::vector<WholeModel::View> views;
    for (int i = 0; i < kViews; ++i) {
        // From outside a little above the middle; from inside at the height of the eye before some instance.
        double const angle = between(0, 6.283185307179586);
        bool const isInside = i % 2 == 1;
        GeometryObjectLib::Vertex direction{std::cos(angle), std::sin(angle), isInside ? between(-0.3, 0.3) : -0.4};
        direction = direction / Length(direction);
        auto const location =
            isInside ? boxes[random() % boxes.size()].center + GeometryObjectLib::Vertex{0, 0, 1} - direction
                     : center - direction * size;
        views.push_back({Tools::Picking::ViewProjection::FromPerspective(location, direction, {0, 0, 1}, 1, 1280, 720),
                         between(320, 960), between(180, 540)});
    }
    return views;
}

std::vector<char> MakeIncrement(IModelReader const& reader) {
    std::vector<std::pair<OwnerHistoryChangeAction, EntityIndex_t>> list;
    for (std::uint32_t i = 0; i < reader.GetEntities().GetCount(); i += 100) {
        list.emplace_back(OwnerHistoryChangeAction::MODIFIED, EntityIndex_t{i});
    }
    Tools::Increments::IncrementModelBuilder builder;
    builder.Add(reader, list);
    return builder.GetResult();
}

}  // namespace

WholeModel::WholeModel(std::string const& path)
    : name(std::filesystem::path(path).stem().string()),
      buffer(ReadModelFile(path)),
      storage(ModelStorage::FromBuffer(buffer)) {
    auto const& reader = storage.GetModelReader();
    entityCount = reader.GetEntities().GetCount();
    Tools::BoundingBoxBuilder boxes;
    Tools::QaabBuilder nodes;
    if (!boxes.Build(buffer.data()) || !nodes.Build(buffer.data())) throw std::runtime_error(path + ": no instances");
    instanceCount = static_cast<std::uint32_t>(boxes.getBoundingBoxes().size());
    tree = {nodes.getOrigin(), nodes.getBvhQuantization(), nodes.getNodes()};
    views = MakeViews(boxes.getBoundingBoxes());
    increment = MakeIncrement(reader);
}

}  // namespace Quorlan::Benchmarks
