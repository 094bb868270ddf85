#include "render/Overlay.h"

#include <algorithm>
#include <cmath>

namespace QuorlanProgram {
namespace {

using GeometryObjectLib::Vertex;

constexpr double kNearest = 1e-3;  ///< [m] in front of a perspective camera that lines are drawn

struct Point {
    double x = 0, y = 0;
};

double DistanceToSegment(Point p, Point a, Point b) {
    auto const dx = b.x - a.x, dy = b.y - a.y;
    auto const squared = dx * dx + dy * dy;
    auto const s = squared > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / squared, 0.0, 1.0) : 0.0;
    return std::hypot(p.x - a.x - s * dx, p.y - a.y - s * dy);
}

void Blend(Rgba& below, Rgba const& color, double coverage) {
    auto const alpha = coverage * color[3] / 255, under = (1 - alpha) * below[3] / 255;
    if (alpha + under <= 0) return;
    for (std::size_t i = 0; i < 3; ++i) {
        auto const mixed = (alpha * color[i] + under * below[i]) / (alpha + under);
        below[i] = static_cast<std::uint8_t>(std::lround(mixed));
    }
    below[3] = static_cast<std::uint8_t>(std::lround(255 * (alpha + under)));
}

}  // namespace

struct Overlay::Box {
    double left, top, right, bottom;
};

/// Paints the pixels of `box` by their distance from a curve.
template <class Distance>
void Overlay::Fill(Box box, Rgba const& color, double halfWidth, Distance const& distance) {
    auto const margin = halfWidth + 1;
    auto const clamp = [](double v, std::uint32_t size) {
        return static_cast<std::uint32_t>(std::clamp(v, 0.0, static_cast<double>(size)));
    };
    auto const left = clamp(box.left - margin, picture_.width), right = clamp(box.right + margin + 1, picture_.width);
    auto const top = clamp(box.top - margin, picture_.height), end = clamp(box.bottom + margin + 1, picture_.height);
    for (auto y = top; y < end; ++y) {
        for (auto x = left; x < right; ++x) {
            auto const coverage = halfWidth + 0.5 - distance(Point{x + 0.5, y + 0.5});
            if (coverage <= 0) continue;
            Blend(picture_.pixels[std::size_t{y} * picture_.width + x], color, std::min(coverage, 1.0));
        }
    }
}

void Overlay::DrawPath(std::vector<Vertex> const& path, Rgba const& color, double width) {
    auto const depthOf = [&](Vertex const& v) { return Dot(v - view_.GetLocation(), view_.GetDirection()); };
    auto const project = [&](Vertex const& v) {
        Point p;
        Quorlan::Tools::Picking::WorldToView(view_, v, p.x, p.y);
        return p;
    };
    for (std::size_t i = 1; i < path.size(); ++i) {
        auto start = path[i - 1], end = path[i];
        if (view_.IsPerspective()) {
            auto const from = depthOf(start), to = depthOf(end);
            if (from < kNearest && to < kNearest) continue;
            if (from < kNearest) start = start + ((kNearest - from) / (to - from)) * (end - start);
            if (to < kNearest) end = end + ((kNearest - to) / (from - to)) * (start - end);
        }
        auto const a = project(start), b = project(end);
        Box const box{std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y)};
        Fill(box, color, width / 2, [&](Point p) { return DistanceToSegment(p, a, b); });
    }
}

void Overlay::DrawRing(Vertex const& center, double radius, Rgba const& color, double width) {
    Point c;
    Quorlan::Tools::Picking::WorldToView(view_, center, c.x, c.y);
    Box const box{c.x - radius, c.y - radius, c.x + radius, c.y + radius};
    Fill(box, color, width / 2, [&](Point p) { return std::abs(std::hypot(p.x - c.x, p.y - c.y) - radius); });
}

}  // namespace QuorlanProgram
