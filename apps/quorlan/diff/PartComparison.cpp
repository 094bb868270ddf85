#include "diff/PartComparison.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <map>

namespace QuorlanProgram {
namespace {

using GeometryObjectLib::Matrix4;
using GeometryObjectLib::Vertex;

/// What storing a shape once for all its rigid copies may cost, of its size, on either side.
constexpr double kCopyTolerance = 2e-5;
constexpr double kDegree = 3.141592653589793 / 180;

/// What is nowhere is where everything is that is nowhere.
bool AreNear(double a, double b, double tolerance) {
    return std::abs(a - b) <= tolerance || (!std::isfinite(a) && !std::isfinite(b));
}

bool AreNear(Vertex const& a, Vertex const& b, double tolerance) {
    return AreNear(a.x, b.x, tolerance) && AreNear(a.y, b.y, tolerance) && AreNear(a.z, b.z, tolerance);
}

/// What parts are looked up by: the x of their middle.
double KeyOf(Vertex const& middle) { return std::isfinite(middle.x) ? middle.x : 0; }

bool HaveSameStyle(ModelContent::part_s const& a, ModelContent::part_s const& b) {
    return a.material == b.material && (a.layer && b.layer ? *a.layer == *b.layer : a.layer == b.layer);
}

/// The middle of a part's points in the world.
Vertex MiddleOf(PlainShape const& shape, Matrix4 const& world) {
    Vertex sum;
    for (auto const& p : shape.points) sum = sum + p;
    return TransformPoint(world, sum / static_cast<double>(std::max<std::size_t>(shape.points.size(), 1)));
}

/// The middle of the world box around all points of the parts.
Vertex MiddleOfBox(ModelContent const& model, std::vector<ModelContent::part_s> const& parts) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    Vertex lo{kInfinity, kInfinity, kInfinity}, hi{-kInfinity, -kInfinity, -kInfinity};
    for (auto const& part : parts) {
        for (auto const& local : model.GetStore().GetShape(part.shape).points) {
            auto const p = TransformPoint(model.GetWorld(part), local);
            lo = {std::min(lo.x, p.x), std::min(lo.y, p.y), std::min(lo.z, p.z)};
            hi = {std::max(hi.x, p.x), std::max(hi.y, p.y), std::max(hi.z, p.z)};
        }
    }
    return (lo + hi) / 2;
}

/// An orthonormal frame at the first point, its axes led by far points; nothing for points on a line.
std::optional<Matrix4> FrameOf(std::vector<Vertex> const& points, std::size_t& first, std::size_t& second) {
    auto const farthest = [&](auto const& measure) {
        std::size_t best = 0;
        double most = -1;
        for (std::size_t i = 0; i < points.size(); ++i) {
            if (double const value = measure(points[i]); value > most) most = value, best = i;
        }
        return best;
    };
    auto const origin = points.front();
    if (first == 0) first = farthest([&](Vertex const& p) { return Length(p - origin); });
    auto const alongX = points[first] - origin;
    double const length = Length(alongX);
    if (!(length > 0)) return std::nullopt;
    auto const x = alongX / length;
    if (second == 0) second = farthest([&](Vertex const& p) { return Length(Cross(x, p - origin)); });
    auto const normal = Cross(x, points[second] - origin);
    double const height = Length(normal);
    if (!(height > 1e-6 * length)) return std::nullopt;
    auto const z = normal / height;
    auto const y = Cross(z, x);
    Matrix4 frame;
    frame.m = {x.x, y.x, z.x, origin.x, x.y, y.y, z.y, origin.y, x.z, y.z, z.z, origin.z, 0, 0, 0, 1};
    return frame;
}

Matrix4 InvertRigid(Matrix4 const& a) {
    Matrix4 out;
    for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 3; ++c) out(r, c) = a(c, r);
        out(r, 3) = -(a(0, r) * a(0, 3) + a(1, r) * a(1, 3) + a(2, r) * a(2, 3));
    }
    return out;
}

}  // namespace

PartComparison::PartComparison(ModelContent const& oldModel, std::vector<Part> const& oldParts,
                               ModelContent const& newModel, std::vector<Part> const& newParts,
                               Tolerances const& tolerances)
    : oldModel_(oldModel), oldParts_(oldParts), newModel_(newModel), newParts_(newParts), tolerances_(tolerances) {}

double PartComparison::GetTolerance(PlainShape const& a, PlainShape const& b) const {
    return tolerances_.position + kCopyTolerance * std::max(a.size, b.size);
}

bool PartComparison::HaveSameGeometry(Matrix4 const& motion, Part const& oldPart, Part const& newPart) const {
    auto const& a = oldModel_.GetStore().GetShape(oldPart.shape);
    auto const& b = newModel_.GetStore().GetShape(newPart.shape);
    bool const isMoved = motion.m != Matrix4().m;
    auto const from = isMoved ? motion * oldModel_.GetWorld(oldPart) : oldModel_.GetWorld(oldPart);
    auto const& to = newModel_.GetWorld(newPart);
    if (oldPart.shape == newPart.shape && std::memcmp(from.m.data(), to.m.data(), sizeof(to.m)) == 0) return true;
    if (a.kind != b.kind || a.points.size() != b.points.size() || a.directions.size() != b.directions.size() ||
        a.scalars.size() != b.scalars.size() || a.structure != b.structure) {
        return false;
    }
    double const tolerance = GetTolerance(a, b);
    for (std::size_t i = 0; i < a.points.size(); ++i) {
        if (!AreNear(TransformPoint(from, a.points[i]), TransformPoint(to, b.points[i]), tolerance)) return false;
    }
    for (std::size_t i = 0; i < a.directions.size(); ++i) {
        if (!AreNear(TransformDirection(from, a.directions[i]), TransformDirection(to, b.directions[i]),
                     tolerances_.direction)) {
            return false;
        }
    }
    for (std::size_t i = 0; i < a.scalars.size(); ++i) {
        if (!(std::abs(a.scalars[i] - b.scalars[i]) <= tolerances_.direction)) return false;
    }
    return true;
}

PartMatch PartComparison::Match(Matrix4 const& motion) const {
    PartMatch match;
    match.oldCount = oldParts_.size();
    match.newCount = newParts_.size();
    std::vector<bool> isPaired(newParts_.size());
    std::multimap<double, std::uint32_t> rest;
    for (std::uint32_t i = 0; i < oldParts_.size(); ++i) {
        if (i < newParts_.size() && HaveSameStyle(oldParts_[i], newParts_[i]) &&
            HaveSameGeometry(motion, oldParts_[i], newParts_[i])) {
            match.pairs.emplace_back(i, i);
            isPaired[i] = true;
            continue;
        }
        auto const& shape = oldModel_.GetStore().GetShape(oldParts_[i].shape);
        rest.emplace(KeyOf(MiddleOf(shape, motion * oldModel_.GetWorld(oldParts_[i]))), i);
    }
    for (bool const needsStyle : {true, false}) {
        for (std::uint32_t i = 0; i < newParts_.size() && !rest.empty(); ++i) {
            if (isPaired[i]) continue;
            auto const old = FindPartner(motion, rest, newParts_[i], needsStyle);
            if (old == rest.end()) continue;
            match.pairs.emplace_back(old->second, i);
            isPaired[i] = true;
            rest.erase(old);
        }
    }
    return match;
}

PartComparison::PartIndex::iterator PartComparison::FindPartner(Matrix4 const& motion, PartIndex& rest,
                                                                Part const& newPart, bool needsStyle) const {
    auto const& shape = newModel_.GetStore().GetShape(newPart.shape);
    double const x = KeyOf(MiddleOf(shape, newModel_.GetWorld(newPart)));
    double const reach = 2 * GetTolerance(shape, shape);
    for (auto entry = rest.lower_bound(x - reach); entry != rest.end() && entry->first <= x + reach; ++entry) {
        auto const& oldPart = oldParts_[entry->second];
        if (needsStyle && !HaveSameStyle(oldPart, newPart)) continue;
        if (HaveSameGeometry(motion, oldPart, newPart)) return entry;
    }
    return rest.end();
}

std::optional<Matrix4> PartComparison::FindMotion() const {
    if (oldParts_.size() != newParts_.size() || oldParts_.empty()) return std::nullopt;
    std::vector<Vertex> from, to;
    for (std::size_t i = 0; i < oldParts_.size(); ++i) {
        auto const& a = oldModel_.GetStore().GetShape(oldParts_[i].shape);
        auto const& b = newModel_.GetStore().GetShape(newParts_[i].shape);
        if (a.kind != b.kind || a.points.size() != b.points.size() || a.structure != b.structure) return std::nullopt;
        for (auto const& p : a.points) from.push_back(TransformPoint(oldModel_.GetWorld(oldParts_[i]), p));
        for (auto const& p : b.points) to.push_back(TransformPoint(newModel_.GetWorld(newParts_[i]), p));
    }
    auto const carriesAll = [&](Matrix4 const& motion) {
        for (std::size_t i = 0; i < oldParts_.size(); ++i) {
            if (!HaveSameGeometry(motion, oldParts_[i], newParts_[i])) return false;
        }
        return true;
    };
    auto const step = to.front() - from.front();
    Matrix4 motion;
    motion(0, 3) = step.x;
    motion(1, 3) = step.y;
    motion(2, 3) = step.z;
    if (carriesAll(motion)) return motion;
    std::size_t first = 0, second = 0;
    auto const fromFrame = FrameOf(from, first, second);
    if (!fromFrame) return std::nullopt;
    auto const toFrame = FrameOf(to, first, second);
    if (!toFrame) return std::nullopt;
    motion = *toFrame * InvertRigid(*fromFrame);
    return carriesAll(motion) ? std::optional(motion) : std::nullopt;
}

double PartComparison::MeasureShift() const {
    auto const toMiddle = MiddleOfBox(newModel_, newParts_) - MiddleOfBox(oldModel_, oldParts_);
    return Length(toMiddle);
}

Motion PartComparison::Describe(Matrix4 const& motion, Vertex const& origin) const {
    Vertex middle = oldParts_.empty() ? origin : Vertex{};
    for (auto const& part : oldParts_) {
        middle = middle + MiddleOf(oldModel_.GetStore().GetShape(part.shape), oldModel_.GetWorld(part));
    }
    if (!oldParts_.empty()) middle = middle / static_cast<double>(oldParts_.size());
    // The antisymmetric part has length 2 sin, the trace is 1 + 2 cos: exact for small angles, too.
    Vertex const turn{motion(2, 1) - motion(1, 2), motion(0, 2) - motion(2, 0), motion(1, 0) - motion(0, 1)};
    double const angle = std::atan2(Length(turn), motion(0, 0) + motion(1, 1) + motion(2, 2) - 1);
    return {Length(TransformPoint(motion, middle) - middle), angle / kDegree};
}

}  // namespace QuorlanProgram
