#include "step/IndexedCurve.h"

#include <GeometryObjectLib/Vertex.h>

#include <algorithm>
#include <charconv>
#include <cmath>

#include "step/StepText.h"

namespace QuorlanProgram::Import {

namespace {

using GeometryObjectLib::Cross;
using GeometryObjectLib::Dot;
using GeometryObjectLib::Length;
using GeometryObjectLib::Vertex;

constexpr double kPi = 3.14159265358979323846;
constexpr double kStraightSine = 1e-9;  ///< [-] a smaller sine between the chords of an arc makes it a line
constexpr double kStepSlack = 1e-6;     ///< [chords] rounding of an angle makes no further chord

Vertex ToVertex(CurvePoint const& p) { return {p[0], p[1], p[2]}; }

template <typename Number>
bool ParseNumber(std::string_view text, Number& out) {
    text = Trim(text);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    auto const result = std::from_chars(text.data(), text.data() + text.size(), out);
    return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

/// The inside of a bracketed list; empty if `text` is none.
std::string_view Unbracket(std::string_view text) {
    text = Trim(text);
    if (text.size() < 2 || text.front() != '(' || text.back() != ')') return {};
    return text.substr(1, text.size() - 2);
}

/// The 0-based indices of a segment, "IFCARCINDEX((2,3,4))"; empty if one of them is no index of `count` points.
std::vector<std::size_t> ReadIndices(std::string_view segment, std::size_t count) {
    auto const open = segment.find('(');
    if (open == std::string_view::npos) return {};
    std::vector<std::size_t> indices;
    for (auto const part : SplitArguments(Unbracket(Unbracket(segment.substr(open))))) {
        std::size_t index = 0;
        if (!ParseNumber(part, index) || index < 1 || index > count) return {};
        indices.push_back(index - 1);
    }
    return indices;
}

void AppendDistinct(std::vector<CurvePoint>& out, CurvePoint const& point) {
    if (out.empty() || out.back() != point) out.push_back(point);
}

}  // namespace

std::vector<CurvePoint> ReadPointList(std::string_view arguments) {
    auto const lists = SplitArguments(arguments);
    if (lists.empty()) return {};
    std::vector<CurvePoint> points;
    for (auto const entry : SplitArguments(Unbracket(lists.front()))) {
        auto const coordinates = SplitArguments(Unbracket(entry));
        if (coordinates.size() < 2 || coordinates.size() > 3) return {};
        CurvePoint point{};
        for (std::size_t i = 0; i < coordinates.size(); ++i) {
            if (!ParseNumber(coordinates[i], point[i])) return {};
        }
        points.push_back(point);
    }
    return points;
}

void AppendArc(std::vector<CurvePoint>& out, CurvePoint const& start, CurvePoint const& middle, CurvePoint const& end,
               Chords const& chords) {
    // The circle's centre seen from `start`, from the two chords a and b: the circumcentre of a triangle.
    auto const a = ToVertex(middle) - ToVertex(start);
    auto const b = ToVertex(end) - ToVertex(start);
    auto const normal = Cross(a, b);
    auto const sine = Length(normal);
    if (!(sine > kStraightSine * Length(a) * Length(b))) {
        AppendDistinct(out, end);
        return;
    }
    auto const toCentre = Cross(Dot(a, a) * b - Dot(b, b) * a, normal) * (0.5 / (sine * sine));
    auto const centre = ToVertex(start) + toCentre;
    auto const axis = normal / sine;
    auto const x = -1.0 * toCentre;
    auto const y = Cross(axis, x);
    auto const last = ToVertex(end) - centre;
    auto angle = std::atan2(Dot(last, y), Dot(last, x));
    if (angle <= 0) angle += 2 * kPi;

    auto const steps = std::max(2, static_cast<int>(std::ceil(angle / (2 * kPi) * chords.Get(Length(x)) - kStepSlack)));
    for (int i = 1; i < steps; ++i) {
        auto const t = angle * i / steps;
        auto const p = centre + std::cos(t) * x + std::sin(t) * y;
        AppendDistinct(out, {p.x, p.y, p.z});
    }
    AppendDistinct(out, end);
}

std::vector<CurveSegment> ReadSegments(std::vector<CurvePoint> const& points, std::string_view segments) {
    if (Trim(segments) == "$") return {{points, false}};
    std::vector<CurveSegment> read;
    for (auto const segment : SplitArguments(Unbracket(segments))) {
        auto const indices = ReadIndices(segment, points.size());
        if (indices.size() < 2 || segment.substr(0, 3) != "IFC") return {};
        auto& part = read.emplace_back();
        part.isArc = segment.substr(3, 3) == "ARC";
        if (part.isArc && indices.size() != 3) return {};
        for (auto const index : indices) part.points.push_back(points[index]);
    }
    return read;
}

std::vector<CurvePoint> ExpandSegments(std::vector<CurveSegment> const& segments, Chords const& chords) {
    std::vector<CurvePoint> curve;
    for (auto const& segment : segments) {
        auto const& points = segment.points;
        if (!points.empty()) AppendDistinct(curve, points.front());
        if (segment.isArc) {
            AppendArc(curve, points[0], points[1], points[2], chords);
        } else {
            for (auto const& point : points) AppendDistinct(curve, point);
        }
    }
    return curve;
}

std::vector<CurvePoint> ExpandIndexedCurve(std::vector<CurvePoint> const& points, std::string_view segments,
                                           Chords const& chords) {
    return ExpandSegments(ReadSegments(points, segments), chords);
}

}  // namespace QuorlanProgram::Import
