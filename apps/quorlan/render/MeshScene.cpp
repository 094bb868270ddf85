#include "render/MeshScene.h"

#include "Command.h"
#include "render/Mesh.h"

#include <GeometryObjectLib/GraphicsContainer.h>
#include <Tools/PlacementBuilder.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

namespace QuorlanProgram {
namespace {

using GeometryObjectLib::GraphicsContainer;
using GeometryObjectLib::LineSegment;
using GeometryObjectLib::Matrix4;
using GeometryObjectLib::Vector3f;
using GeometryObjectLib::Vertex;
using Quorlan::Tools::Picking::ViewProjection;

constexpr double kLineWidth = 1.3;  ///< [pixels]
constexpr double kArcStep = 0.1;    ///< [rad] between the points of an arc
constexpr double kNearest = 0.05;   ///< [m] in front of the camera, where lines stop getting thinner
constexpr std::uint32_t kLineGraphics = 5;

Vector3f Narrow(Vertex const& v) { return {static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z)}; }

/// Column by column: three axes and the origin.
std::array<float, 12> ToColumns(Matrix4 const& m) {
    std::array<float, 12> columns{};
    for (std::size_t i = 0; i < 12; ++i) columns[i] = static_cast<float>(m(i % 3, i / 3));
    return columns;
}

Vector3f Turn(std::array<float, 12> const& c, Vector3f const& v) {
    return {c[0] * v.x + c[3] * v.y + c[6] * v.z, c[1] * v.x + c[4] * v.y + c[7] * v.z,
            c[2] * v.x + c[5] * v.y + c[8] * v.z};
}

Vector3f Unit(Vector3f const& v) {
    auto const length = Length(v);
    return length > 0 ? v / length : Vector3f{0, 0, 1};
}

/// All lines, and the arcs as chains of lines.
std::vector<LineSegment> LinesOf(GraphicsContainer const& graphics) {
    auto lines = graphics.lines;
    for (auto const& arc : graphics.arcs) {
        auto const side = Cross(arc.axis, arc.startDirection);
        auto const steps = std::clamp(static_cast<int>(std::abs(arc.sweepAngle) / kArcStep), 1, 1000);
        auto const at = [&](int i) {
            auto const angle = arc.sweepAngle * i / steps;
            return arc.center + arc.radius * (std::cos(angle) * arc.startDirection + std::sin(angle) * side);
        };
        for (int i = 0; i < steps; ++i) lines.push_back({at(i), at(i + 1)});
    }
    return lines;
}

/// [m] that a pixel covers at a point.
double PixelSizeAt(ViewProjection const& view, Vertex const& point) {
    if (!view.IsPerspective()) return view.GetScale();
    auto const depth = std::abs(Dot(point - view.GetLocation(), view.GetDirection()));
    return std::max(depth, kNearest) * 2 * std::tan(view.GetAngle() / 2) / std::max(view.GetSizeX(), view.GetSizeY());
}

template <class T>
T* NewBuffer(RTCGeometry geometry, RTCBufferType type, RTCFormat format, std::size_t count) {
    auto* const buffer = rtcSetNewGeometryBuffer(geometry, type, 0, format, sizeof(T), count);
    if (buffer == nullptr) throw Failure("Embree: not enough memory");
    return static_cast<T*>(buffer);
}

/// Hands a geometry over to a scene.
void Attach(RTCScene scene, RTCGeometry geometry, unsigned mask, std::uint32_t id) {
    rtcSetGeometryMask(geometry, mask);
    rtcCommitGeometry(geometry);
    rtcAttachGeometryByID(scene, geometry, id);
    rtcReleaseGeometry(geometry);
}

RTCRay MakeRay(MeshRay const& ray, unsigned mask) {
    auto const& o = ray.origin;
    auto const& d = ray.direction;
    return {o.x, o.y, o.z, ray.near, d.x, d.y, d.z, 0, ray.far, mask, 0, 0};
}

}  // namespace

struct MeshScene::Shape {
    Mesh mesh;
    Scene scene;
};

struct MeshScene::Placed {
    Shape const* shape = nullptr;
    std::array<float, 12> columns{};
};

MeshScene::MeshScene(ModelFile const& model, PickScene const& visible, std::vector<Surface> const& surfaces,
                     ViewProjection const& view)
    : device_(rtcNewDevice(nullptr)), scene_(rtcNewScene(device_.get())) {
    if (auto const& bounds = visible.GetBounds()) {
        radius_ = static_cast<float>(GeometryObjectLib::Length(bounds->halfExtent));
        origin_ = {std::round(bounds->center.x), std::round(bounds->center.y), std::round(bounds->center.z)};
    }
    Quorlan::Tools::PlacementBuilder placements;
    placements.Build(model.GetBytes().data());
    auto const isVisible = visible.FindVisibleInstances();
    auto const& geometry = model.GetReader().GetGeometry();
    placed_.resize(isVisible.size());
    rtcSetSceneFlags(scene_.get(), RTC_SCENE_FLAG_ROBUST);
    MeshMaker maker(model.GetBytes());
    Quorlan::InstanceRecord instance;
    for (std::uint32_t i = 0; i < isVisible.size(); ++i) {
        auto placement = placements.getPlacements()[i];
        for (std::size_t row = 0; row < 3; ++row) placement(row, 3) -= (&origin_.x)[row];
        auto const columns = ToColumns(placement);
        auto const isFinite = std::all_of(columns.begin(), columns.end(), [](float v) { return std::isfinite(v); });
        if (!isVisible[i] || !isFinite) continue;
        geometry.GetInstance(instance, i);
        auto const kind = geometry.GetDefinitionKind(instance.definitionIndex);
        if (kind == kLineGraphics) {
            GraphicsContainer graphics;
            if (geometry.GetGraphicsContainer(graphics, instance.definitionIndex)) {
                AddLines(i, graphics, placement, view);
            }
            continue;
        }
        auto const isGlass = surfaces[i].alpha < 1;
        hasGlass_ = hasGlass_ || isGlass;
        AddInstance(i, ShapeOf(instance.definitionIndex, kind, maker), columns, isGlass ? kGlass : kOpaque);
    }
    rtcCommitScene(scene_.get());
    auto const error = rtcGetDeviceError(device_.get());
    if (error != RTC_ERROR_NONE) throw Failure("Embree: error " + std::to_string(error));
}

MeshScene::~MeshScene() = default;

MeshScene::Shape const& MeshScene::ShapeOf(std::uint32_t definition, std::uint32_t kind, MeshMaker& maker) {
    auto& shape = shapes_[definition];
    if (shape) return *shape;
    shape = std::make_unique<Shape>();
    shape->mesh = maker.Make(definition, kind);
    auto const& mesh = shape->mesh;
    if (mesh.triangles.empty()) return *shape;
    auto* const geometry = rtcNewGeometry(device_.get(), RTC_GEOMETRY_TYPE_TRIANGLE);
    auto* const vertices =
        NewBuffer<Vector3f>(geometry, RTC_BUFFER_TYPE_VERTEX, RTC_FORMAT_FLOAT3, mesh.positions.size());
    std::copy(mesh.positions.begin(), mesh.positions.end(), vertices);
    auto* const triangles = NewBuffer<std::array<std::uint32_t, 3>>(geometry, RTC_BUFFER_TYPE_INDEX, RTC_FORMAT_UINT3,
                                                                    mesh.triangles.size());
    std::copy(mesh.triangles.begin(), mesh.triangles.end(), triangles);
    shape->scene.reset(rtcNewScene(device_.get()));
    rtcSetSceneFlags(shape->scene.get(), RTC_SCENE_FLAG_ROBUST);
    Attach(shape->scene.get(), geometry, ~0u, 0);
    rtcCommitScene(shape->scene.get());
    return *shape;
}

void MeshScene::AddInstance(std::uint32_t instance, Shape const& shape, std::array<float, 12> const& columns,
                            unsigned mask) {
    if (!shape.scene) return;
    placed_[instance] = {&shape, columns};
    auto* const geometry = rtcNewGeometry(device_.get(), RTC_GEOMETRY_TYPE_INSTANCE);
    rtcSetGeometryInstancedScene(geometry, shape.scene.get());
    rtcSetGeometryTransform(geometry, 0, RTC_FORMAT_FLOAT3X4_COLUMN_MAJOR, columns.data());
    Attach(scene_.get(), geometry, mask, instance);
}

/// `placement` leads to scene coordinates.
void MeshScene::AddLines(std::uint32_t instance, GraphicsContainer const& graphics, Matrix4 const& placement,
                         ViewProjection const& view) {
    auto const lines = LinesOf(graphics);
    if (lines.empty()) return;
    auto* const geometry = rtcNewGeometry(device_.get(), RTC_GEOMETRY_TYPE_ROUND_LINEAR_CURVE);
    auto* const ends =
        NewBuffer<std::array<float, 4>>(geometry, RTC_BUFFER_TYPE_VERTEX, RTC_FORMAT_FLOAT4, 2 * lines.size());
    auto* const starts = NewBuffer<std::uint32_t>(geometry, RTC_BUFFER_TYPE_INDEX, RTC_FORMAT_UINT, lines.size());
    auto const place = [&](Vertex const& local) -> std::array<float, 4> {
        auto const point = TransformPoint(placement, local);
        auto const v = Narrow(point);
        return {v.x, v.y, v.z, static_cast<float>(kLineWidth / 2 * PixelSizeAt(view, point + origin_))};
    };
    for (std::size_t i = 0; i < lines.size(); ++i) {
        ends[2 * i] = place(lines[i].start);
        ends[2 * i + 1] = place(lines[i].end);
        starts[i] = static_cast<std::uint32_t>(2 * i);
    }
    Attach(scene_.get(), geometry, kLine, instance);
}

bool MeshScene::Intersect(MeshRay const& ray, MeshHit& hit, unsigned mask) const {
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    RTCRayHit found{};
    found.ray = MakeRay(ray, mask);
    found.hit.geomID = RTC_INVALID_GEOMETRY_ID;
    found.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
    rtcIntersect1(scene_.get(), &context, &found);
    if (found.hit.geomID == RTC_INVALID_GEOMETRY_ID) return false;
    hit.distance = found.ray.tfar;
    hit.point = ray.origin + hit.distance * ray.direction;
    hit.isLine = found.hit.instID[0] == RTC_INVALID_GEOMETRY_ID;
    hit.uvSlope = 0;
    if (hit.isLine) {
        hit.instance = found.hit.geomID;
        hit.facet = hit.normal = -1.0f * ray.direction;
        return true;
    }
    hit.instance = found.hit.instID[0];
    auto const& placed = placed_[hit.instance];
    auto const& mesh = placed.shape->mesh;
    auto const& t = mesh.triangles[found.hit.primID];
    auto const u = found.hit.u, v = found.hit.v, w = 1 - u - v;
    auto const& a = mesh.positions[t[0]];
    auto const cross = Cross(mesh.positions[t[1]] - a, mesh.positions[t[2]] - a);
    hit.facet = Unit(Turn(placed.columns, cross));
    hit.normal = Unit(Turn(placed.columns, w * mesh.normals[t[0]] + u * mesh.normals[t[1]] + v * mesh.normals[t[2]]));
    if (!mesh.uvs.empty()) {
        auto const &p = mesh.uvs[t[0]], &q = mesh.uvs[t[1]], &r = mesh.uvs[t[2]];
        hit.uv = {w * p[0] + u * q[0] + v * r[0], w * p[1] + u * q[1] + v * r[1]};
        auto const uvArea = std::abs((q[0] - p[0]) * (r[1] - p[1]) - (r[0] - p[0]) * (q[1] - p[1]));
        hit.uvSlope = std::sqrt(uvArea / Length(cross));
    }
    return true;
}

bool MeshScene::IsOccluded(MeshRay const& ray, unsigned mask) const {
    RTCIntersectContext context;
    rtcInitIntersectContext(&context);
    auto cast = MakeRay(ray, mask);
    rtcOccluded1(scene_.get(), &context, &cast);
    return cast.tfar < 0;
}

}  // namespace QuorlanProgram
