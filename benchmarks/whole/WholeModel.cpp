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
#include <stdexcept>
#include <utility>

namespace Quorlan::Benchmarks {
namespace {

constexpr int kViews = 64;

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
    std::vector<WholeModel::View> views;
    for (int i = 0; i < kViews; ++i) {
        double const angle = 6.283185307179586 * i / kViews;
        GeometryObjectLib::Vertex const outward{std::cos(angle), std::sin(angle), 0.4};
        auto const direction = outward * (-1 / Length(outward));
        views.push_back({Tools::Picking::ViewProjection::FromPerspective(center - direction * size, direction,
                                                                         {0, 0, 1}, 1, 1280, 720),
                         640.0 + 4 * (i * 7 % kViews - kViews / 2), 360.0 + 3 * (i * 11 % kViews - kViews / 2)});
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
