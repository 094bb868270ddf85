#include "ifc/CurveReader.h"

#include <ifcpp/IFC4/include/IfcAnnotationFillArea.h>
#include <ifcpp/IFC4/include/IfcAxis2Placement.h>
#include <ifcpp/IFC4/include/IfcBoolean.h>
#include <ifcpp/IFC4/include/IfcCartesianPoint.h>
#include <ifcpp/IFC4/include/IfcCircle.h>
#include <ifcpp/IFC4/include/IfcCompositeCurve.h>
#include <ifcpp/IFC4/include/IfcCompositeCurveSegment.h>
#include <ifcpp/IFC4/include/IfcDirection.h>
#include <ifcpp/IFC4/include/IfcEllipse.h>
#include <ifcpp/IFC4/include/IfcGeometricSet.h>
#include <ifcpp/IFC4/include/IfcLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcLine.h>
#include <ifcpp/IFC4/include/IfcParameterValue.h>
#include <ifcpp/IFC4/include/IfcPlacement.h>
#include <ifcpp/IFC4/include/IfcPolyline.h>
#include <ifcpp/IFC4/include/IfcPositiveLengthMeasure.h>
#include <ifcpp/IFC4/include/IfcReal.h>
#include <ifcpp/IFC4/include/IfcStyledItem.h>
#include <ifcpp/IFC4/include/IfcTrimmedCurve.h>
#include <ifcpp/IFC4/include/IfcTrimmingPreference.h>
#include <ifcpp/IFC4/include/IfcVector.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include "ifc/Placement.h"

namespace QuorlanProgram::Import {

namespace {

using GeometryObjectLib::Cross;
using GeometryObjectLib::Dot;
using GeometryObjectLib::Length;

constexpr double kTwoPi = 6.28318530717958647692;
constexpr double kStraightSine = 1e-9;  ///< [-] a smaller sine between the chords of an arc makes it a line
constexpr double kSameAngle = 1e-9;     ///< [rad] ends of an arc that are closer make it a full circle
constexpr double kUniform = 1e-9;       ///< [-] by which the axes of a scaled circle may differ
constexpr int kDeepestCurve = 64;       ///< curves within curves beyond this are not followed

Vertex Unit(Vertex const& v) { return v / Length(v); }

void AddLines(GraphicsContainer& out, Loop const& points) {
    for (std::size_t i = 1; i < points.size(); ++i) {
        if (Length(points[i] - points[i - 1]) > 0) out.lines.push_back({points[i - 1], points[i]});
    }
}

/// A circle or ellipse in space: centre + cos(t) x + sin(t) y.
struct Conic {
    Vertex center;
    Vertex x;
    Vertex y;

    Vertex At(double t) const { return center + std::cos(t) * x + std::sin(t) * y; }
    double GetParameter(Vertex const& p) const {
        return std::atan2(Dot(p - center, y) / Dot(y, y), Dot(p - center, x) / Dot(x, x));
    }
    bool IsCircle() const {
        auto const scale = Dot(x, x);
        return std::abs(Dot(y, y) - scale) <= kUniform * scale && std::abs(Dot(x, y)) <= kUniform * scale;
    }
};

void AddConic(GraphicsContainer& out, Conic const& conic, double start, double sweep, Chords const& chords) {
    auto const radius = Length(conic.x);
    if (conic.IsCircle()) {
        auto axis = Unit(Cross(conic.x, conic.y));
        if (sweep < 0) axis = -1.0 * axis;
        out.arcs.push_back({conic.center, axis, (conic.At(start) - conic.center) / radius, radius, std::abs(sweep)});
        return;
    }
    auto const whole = chords.Get(std::max(radius, Length(conic.y)));
    auto const steps = std::max(2, static_cast<int>(std::ceil(whole * std::abs(sweep) / kTwoPi)));
    Loop points;
    for (int i = 0; i <= steps; ++i) points.push_back(conic.At(start + sweep * i / steps));
    AddLines(out, points);
}

/// Reads one item and what it consists of.
class Reading {
public:
    Reading(GraphicsContainer& out, Matrix4 const& placement, double metresPerUnit, double radiansPerUnit,
            Chords const& chords, CurveReader::Arcs const& arcs, CurveReader::Fallback const& fallback)
        : out_(out),
          placement_(placement),
          metresPerUnit_(metresPerUnit),
          radiansPerUnit_(radiansPerUnit),
          chords_(chords),
          arcs_(arcs),
          fallback_(fallback) {}

    bool Read(std::shared_ptr<IfcRepresentationItem> const& item, int depth = 0) {
        if (!item || depth == kDeepestCurve) return false;
        if (std::dynamic_pointer_cast<IfcStyledItem>(item)) return true;
        if (auto const set = std::dynamic_pointer_cast<IfcGeometricSet>(item)) {
            return ReadAll(set->m_Elements, depth, [](auto const& element) { return element; });
        }
        if (auto const area = std::dynamic_pointer_cast<IfcAnnotationFillArea>(item)) {
            auto const isOuterRead = Read(area->m_OuterBoundary, depth + 1);
            return ReadAll(area->m_InnerBoundaries, depth, [](auto const& curve) { return curve; }) && isOuterRead;
        }
        if (auto const composite = std::dynamic_pointer_cast<IfcCompositeCurve>(item)) {
            return ReadAll(composite->m_Segments, depth, [](auto const& segment) { return segment->m_ParentCurve; });
        }
        if (auto const polyline = std::dynamic_pointer_cast<IfcPolyline>(item)) return ReadPolyline(*polyline);
        if (auto const trimmed = std::dynamic_pointer_cast<IfcTrimmedCurve>(item)) {
            if (ReadTrimmed(*trimmed)) return true;
        }
        if (auto const conic = ToConic(item.get())) {
            AddConic(out_, *conic, 0, kTwoPi, chords_);
            return true;
        }
        return ReadOther(item);
    }

private:
    template <typename Parts, typename ToItem>
    bool ReadAll(Parts const& parts, int depth, ToItem const& toItem) {
        bool isWhole = true;
        for (auto const& part : parts) {
            auto const item = part ? std::dynamic_pointer_cast<IfcRepresentationItem>(toItem(part)) : nullptr;
            isWhole = item && Read(item, depth + 1) && isWhole;
        }
        return isWhole;
    }

    bool ReadPolyline(IfcPolyline const& polyline) {
        auto const arcs = arcs_.find(static_cast<std::uint32_t>(polyline.m_entity_id));
        if (arcs != arcs_.end()) return ReadSegments(arcs->second);
        Loop points;
        for (auto const& point : polyline.m_Points) {
            auto const read = ToPoint(point.get());
            if (!read) return false;
            points.push_back(*read);
        }
        AddLines(out_, points);
        return points.size() > 1;
    }

    bool ReadSegments(std::vector<CurveSegment> const& segments) {
        for (auto const& segment : segments) {
            Loop points;
            for (auto const& p : segment.points) points.push_back(Place({p[0], p[1], p[2]}));
            if (segment.isArc) {
                AddArc(out_, points[0], points[1], points[2]);
            } else {
                AddLines(out_, points);
            }
        }
        return true;
    }

    bool ReadTrimmed(IfcTrimmedCurve const& curve) {
        auto const isForward = !curve.m_SenseAgreement || curve.m_SenseAgreement->m_value;
        auto const usesPoints = !curve.m_MasterRepresentation ||
                                curve.m_MasterRepresentation->m_enum != IfcTrimmingPreference::ENUM_PARAMETER;
        if (auto const* line = dynamic_cast<IfcLine const*>(curve.m_BasisCurve.get())) {
            auto const start = ToLinePoint(*line, curve.m_Trim1, usesPoints);
            auto const end = ToLinePoint(*line, curve.m_Trim2, usesPoints);
            if (!start || !end) return false;
            AddLines(out_, {*start, *end});
            return true;
        }
        auto const conic = ToConic(curve.m_BasisCurve.get());
        if (!conic) return false;
        auto const start = ToParameter(*conic, curve.m_Trim1, usesPoints);
        auto const end = ToParameter(*conic, curve.m_Trim2, usesPoints);
        if (!start || !end) return false;
        auto sweep = std::fmod(isForward ? *end - *start : *start - *end, kTwoPi);
        if (sweep <= kSameAngle) sweep += kTwoPi;
        AddConic(out_, *conic, *start, isForward ? sweep : -sweep, chords_);
        return true;
    }

    template <typename Found, typename Trims>
    static Found const* FindTrim(Trims const& trims) {
        for (auto const& trim : trims) {
            if (auto const* found = dynamic_cast<Found const*>(trim.get())) return found;
        }
        return nullptr;
    }

    template <typename Trims>
    std::optional<Vertex> ToLinePoint(IfcLine const& line, Trims const& trims, bool usesPoints) const {
        auto const* point = FindTrim<IfcCartesianPoint>(trims);
        auto const* parameter = FindTrim<IfcParameterValue>(trims);
        if (point && (usesPoints || !parameter)) return ToPoint(point);
        auto const origin = ToCoordinates(line.m_Pnt.get());
        if (!parameter || !origin || !line.m_Dir || !line.m_Dir->m_Orientation || !line.m_Dir->m_Magnitude) return {};
        auto const direction = ToVertex(line.m_Dir->m_Orientation->m_DirectionRatios);
        if (!(Length(direction) > 0)) return {};
        return Place(*origin + parameter->m_value * line.m_Dir->m_Magnitude->m_value * Unit(direction));
    }

    template <typename Trims>
    std::optional<double> ToParameter(Conic const& conic, Trims const& trims, bool usesPoints) const {
        auto const* point = FindTrim<IfcCartesianPoint>(trims);
        auto const* parameter = FindTrim<IfcParameterValue>(trims);
        if (point && (usesPoints || !parameter)) {
            auto const read = ToPoint(point);
            if (!read) return {};
            return conic.GetParameter(*read);
        }
        if (!parameter) return {};
        return parameter->m_value * radiansPerUnit_;
    }

    std::optional<Conic> ToConic(BuildingObject const* item) const {
        auto const* conic = dynamic_cast<IfcConic const*>(item);
        if (!conic) return {};
        double radii[2] = {};
        if (auto const* circle = dynamic_cast<IfcCircle const*>(conic)) {
            if (circle->m_Radius) radii[0] = radii[1] = circle->m_Radius->m_value;
        } else if (auto const* ellipse = dynamic_cast<IfcEllipse const*>(conic)) {
            if (ellipse->m_SemiAxis1) radii[0] = ellipse->m_SemiAxis1->m_value;
            if (ellipse->m_SemiAxis2) radii[1] = ellipse->m_SemiAxis2->m_value;
        }
        if (!(radii[0] * metresPerUnit_ > 0 && radii[1] * metresPerUnit_ > 0)) return {};
        auto const* position = dynamic_cast<IfcPlacement const*>(conic->m_Position.get());
        auto const frame = placement_ * PlacementReader(metresPerUnit_).GetLocal(position);
        return Conic{frame.GetColumn(3), radii[0] * metresPerUnit_ * frame.GetColumn(0),
                     radii[1] * metresPerUnit_ * frame.GetColumn(1)};
    }

    bool ReadOther(std::shared_ptr<IfcRepresentationItem> const& item) {
        auto points = fallback_ ? fallback_(item) : Loop();
        for (auto& point : points) point = TransformPoint(placement_, point);
        AddLines(out_, points);
        return points.size() > 1;
    }

    template <typename Values>
    static Vertex ToVertex(Values const& values) {
        double v[3] = {};
        for (std::size_t i = 0; i < 3 && i < values.size(); ++i) v[i] = values[i] ? values[i]->m_value : 0;
        return {v[0], v[1], v[2]};
    }

    static std::optional<Vertex> ToCoordinates(IfcCartesianPoint const* point) {
        if (!point) return {};
        auto const v = ToVertex(point->m_Coordinates);
        auto const isUsable = [](double c) { return std::abs(c) <= kLargestCoordinate; };
        if (!isUsable(v.x) || !isUsable(v.y) || !isUsable(v.z)) return {};
        return v;
    }

    std::optional<Vertex> ToPoint(IfcCartesianPoint const* point) const {
        auto const v = ToCoordinates(point);
        if (!v) return {};
        return Place(*v);
    }

    Vertex Place(Vertex const& v) const { return TransformPoint(placement_, metresPerUnit_ * v); }

    GraphicsContainer& out_;
    Matrix4 const& placement_;
    double metresPerUnit_;
    double radiansPerUnit_;
    Chords const& chords_;
    CurveReader::Arcs const& arcs_;
    CurveReader::Fallback const& fallback_;
};

}  // namespace

bool CurveReader::Read(GraphicsContainer& out, std::shared_ptr<IfcRepresentationItem> const& item,
                       Matrix4 const& placement) const {
    return Reading(out, placement, metresPerUnit_, radiansPerUnit_, chords_, arcs_, fallback_).Read(item);
}

void AddArc(GraphicsContainer& out, Vertex const& start, Vertex const& middle, Vertex const& end) {
    // The circle's centre seen from `start`, from the two chords a and b: the circumcentre of a triangle.
    auto const a = middle - start;
    auto const b = end - start;
    auto const normal = Cross(a, b);
    auto const sine = Length(normal);
    if (!(sine > kStraightSine * Length(a) * Length(b))) {
        AddLines(out, {start, end});
        return;
    }
    auto const toCentre = Cross(Dot(a, a) * b - Dot(b, b) * a, normal) * (0.5 / (sine * sine));
    auto const centre = start + toCentre;
    auto const axis = normal / sine;
    auto const x = -1.0 * toCentre;
    auto const last = end - centre;
    auto angle = std::atan2(Dot(last, Cross(axis, x)), Dot(last, x));
    if (angle <= 0) angle += kTwoPi;
    out.arcs.push_back({centre, axis, Unit(x), Length(x), angle});
}

}  // namespace QuorlanProgram::Import
