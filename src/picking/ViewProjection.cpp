#include "geometry/Frame.h"
#include "geometry/MatrixInverse.h"

#include <GeometryObjectLib/Ray3f.h>
#include <Tools/Picking/ViewProjection.h>

#include <cmath>
#include <limits>

namespace Quorlan::Tools::Picking {
namespace {

using GeometryObjectLib::Matrix4;
using GeometryObjectLib::Ray3f;
using GeometryObjectLib::ToVector3f;
using GeometryObjectLib::Vector3f;

constexpr double kNearestVisibleDepth = 1e-7;  // [model units], for a direction of unit length
constexpr double kNotVisible = std::numeric_limits<double>::max();

/// The angle spans the larger of the two sizes.
double GetLargerSize(ViewProjection const& view) {
    return view.GetSizeY() > view.GetSizeX() ? view.GetSizeY() : view.GetSizeX();
}

/// The ray through a pixel, carried into model space in double precision and narrowed last.
Ray3f CreateModelRay(ViewProjection const& view, Matrix4 const& modelFromWorld, double x, double y) {
    Vertex origin;
    Vertex direction;
    ViewToWorld(view, x, y, origin, direction);
    return {ToVector3f(TransformPoint(modelFromWorld, origin)),
            ToVector3f(TransformDirection(modelFromWorld, direction))};
}

/// The plane of two neighbouring corner rays. The rays of a parallel camera have equal directions, so that the second
/// direction of the plane is from origin to origin.
Plane3f CreatePlaneFromRays(Ray3f const& first, Ray3f const& second) {
    Vector3f const& a = first.direction;
    Vector3f const& b = second.direction;
    bool const isParallel = a.x == b.x && a.y == b.y && a.z == b.z;
    Vector3f const between = second.origin - first.origin;
    Vector3f const edge = isParallel ? between / Length(between) : b;
    Vector3f const normal = Cross(edge, a);
    Vector3f const unitNormal = normal / Length(normal);
    return {unitNormal, Dot(unitNormal, first.origin)};
}

}  // namespace

ViewProjection ViewProjection::FromOrthogonal(Vertex const& location, Vertex const& direction, Vertex const& up,
                                              double scale, double sizeX, double sizeY) {
    ViewProjection view;
    view.SetPlacement(location, direction, up);
    view.scale_ = scale;
    view.sizeX_ = sizeX;
    view.sizeY_ = sizeY;
    view.isPerspective_ = false;
    view.angle_ = 0;
    return view;
}

ViewProjection ViewProjection::FromPerspective(Vertex const& location, Vertex const& direction, Vertex const& up,
                                               double angle, double sizeX, double sizeY) {
    ViewProjection view;
    view.SetPlacement(location, direction, up);
    view.angle_ = angle;
    view.sizeX_ = sizeX;
    view.sizeY_ = sizeY;
    view.isPerspective_ = true;
    view.scale_ = 0;
    return view;
}

void ViewProjection::SetPlacement(Vertex const& location, Vertex const& direction, Vertex const& up) {
    Vertex const right = Cross(direction, up);
    Vertex const screenUp = Cross(right, direction);
    location_ = location;
    direction_ = direction;
    right_ = right / Length(right);
    up_ = screenUp / Length(screenUp);
}

void ViewToWorld(ViewProjection const& view, double x, double y, Vertex& origin, Vertex& direction) {
    double const right = x - view.GetSizeX() * 0.5;
    double const down = y - view.GetSizeY() * 0.5;
    if (!view.IsPerspective()) {
        double const scale = view.GetScale();
        origin = view.GetLocation() + (view.GetRightVector() * (scale * right) - view.GetUpVector() * (scale * down));
        direction = view.GetDirection();
        return;
    }
    double const focalDistance = GetLargerSize(view) * 0.5 / std::tan(view.GetAngle() * 0.5);  // [pixels]
    Vertex const toPixel =
        view.GetDirection() * focalDistance + view.GetRightVector() * right + view.GetUpVector() * -down;
    double const length = Length(toPixel);
    origin = view.GetLocation();
    direction = length == 0 ? view.GetDirection() : toPixel / length;
}

void WorldToView(ViewProjection const& view, Vertex const& point, double& x, double& y) {
    double const halfX = view.GetSizeX() * 0.5;
    double const halfY = view.GetSizeY() * 0.5;
    Vertex const toPoint = point - view.GetLocation();
    double const up = Dot(toPoint, view.GetUpVector());
    double const right = Dot(toPoint, view.GetRightVector());
    if (!view.IsPerspective()) {
        x = right / view.GetScale() + halfX;
        y = halfY - up / view.GetScale();
        return;
    }
    double const depth = Dot(toPoint, view.GetDirection());
    if (kNearestVisibleDepth > depth) {
        x = kNotVisible;
        y = kNotVisible;
        return;
    }
    double const pixelsPerUnit =
        (view.GetSizeY() > view.GetSizeX() ? halfY : halfX) / std::tan(view.GetAngle() * 0.5) / depth;
    x = pixelsPerUnit * right + halfX;
    y = halfY - pixelsPerUnit * up;
}

std::vector<Plane3f> CreateClippingPlanes(ViewProjection const& view, AffineTransform const& transform, double x,
                                          double y, double halfSize) {
    Matrix4 modelFromWorld;
    TryInverse(transform.matrix, modelFromWorld);

    Ray3f const topLeft = CreateModelRay(view, modelFromWorld, x - halfSize, y - halfSize);
    Ray3f const bottomRight = CreateModelRay(view, modelFromWorld, x + halfSize, y + halfSize);
    Ray3f const bottomLeft = CreateModelRay(view, modelFromWorld, x - halfSize, y + halfSize);
    Ray3f const topRight = CreateModelRay(view, modelFromWorld, x + halfSize, y - halfSize);

    Plane3f const left = CreatePlaneFromRays(bottomLeft, topLeft);
    Plane3f const right = CreatePlaneFromRays(topRight, bottomRight);
    Plane3f const bottom = CreatePlaneFromRays(bottomRight, bottomLeft);
    Plane3f const top = CreatePlaneFromRays(topLeft, topRight);
    return {left, top, right, bottom};
}

}  // namespace Quorlan::Tools::Picking
