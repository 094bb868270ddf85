#include "ModelFile.h"

#include "Command.h"

#include <Quorlan/ModelValidator.h>
#include <Tools/BoundingBoxBuilder.h>
#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

namespace QuorlanProgram {
namespace {

using GeometryObjectLib::AxisAlignedBox3;

constexpr std::size_t kChunk = std::size_t{1} << 20;
constexpr std::size_t kMaxModelSize = std::size_t{1} << 31;

}  // namespace

std::vector<char> ReadFile(std::string const& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) throw Failure(fmt::format("{}: is a directory", path));
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> const file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (file == nullptr) throw Failure(fmt::format("{}: cannot be read: {}", path, std::strerror(errno)));

    std::vector<char> bytes;
    auto const size = std::filesystem::file_size(path, ignored);
    if (!ignored) bytes.reserve(static_cast<std::size_t>(size) + kChunk);
    for (std::size_t got = kChunk; got == kChunk;) {
        auto const filled = bytes.size();
        bytes.resize(filled + kChunk);
        got = std::fread(bytes.data() + filled, 1, kChunk, file.get());
        bytes.resize(filled + got);
    }
    if (std::ferror(file.get()) != 0) throw Failure(fmt::format("{}: cannot be read: {}", path, std::strerror(errno)));
    return bytes;
}

ModelFile::ModelFile(std::string path, std::vector<char> bytes, Quorlan::ModelStorage storage)
    : path_(std::move(path)), bytes_(std::move(bytes)), storage_(std::move(storage)) {}

ModelFile ModelFile::Load(std::string const& path) {
    auto bytes = ReadFile(path);
    if (bytes.empty()) throw Failure(fmt::format("{}: is empty", path));
    if (bytes.size() >= kMaxModelSize) throw Failure(fmt::format("{}: is too large for a model (2 GiB)", path));

    Quorlan::ModelValidator validator;
    if (!validator.Build(bytes)) {
        auto const& problems = validator.GetProblems();
        auto const more = problems.size() > 1 ? fmt::format(" (and {} more)", problems.size() - 1) : std::string();
        throw Failure(fmt::format("{}: {}{}", path, problems.empty() ? "is no model" : problems.front(), more));
    }
    auto storage = Quorlan::ModelStorage::FromBuffer(bytes);
    if (storage.HasError()) throw Failure(fmt::format("{}: is no model", path));
    return {path, std::move(bytes), std::move(storage)};
}

std::vector<AxisAlignedBox3> ComputeWorldBoxes(std::vector<char> const& model) {
    Quorlan::Tools::BoundingBoxBuilder builder;
    std::vector<AxisAlignedBox3> boxes;
    if (!builder.Build(model.data())) return boxes;
    for (auto const& box : builder.getBoundingBoxes()) {
        auto const min = box.GetMin(), max = box.GetMax();
        if (std::isfinite(min.x + min.y + min.z + max.x + max.y + max.z)) boxes.push_back(box);
    }
    return boxes;
}

std::optional<AxisAlignedBox3> Unite(std::vector<AxisAlignedBox3> const& boxes) {
    if (boxes.empty()) return std::nullopt;
    auto lo = boxes.front().GetMin(), hi = boxes.front().GetMax();
    for (auto const& box : boxes) {
        auto const min = box.GetMin(), max = box.GetMax();
        lo = {std::min(lo.x, min.x), std::min(lo.y, min.y), std::min(lo.z, min.z)};
        hi = {std::max(hi.x, max.x), std::max(hi.y, max.y), std::max(hi.z, max.z)};
    }
    return AxisAlignedBox3::FromCorners(lo, hi);
}

}  // namespace QuorlanProgram
