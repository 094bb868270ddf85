#include "Camera.h"

#include "Options.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace QuorlanProgram {
namespace {

using GeometryObjectLib::AxisAlignedBox3;
using GeometryObjectLib::Vertex;
using Quorlan::Tools::Picking::ViewProjection;

constexpr double kMaxSize = 16384;  ///< [pixels] a side
constexpr double kFilled = 0.94;    ///< of the picture, by a fitted model
constexpr double kClearance = 1;    ///< [m] between a fitted camera and what it sees
constexpr double kFar = std::numeric_limits<double>::max();
constexpr double kDefaultIsoAngle = 35;  ///< [degrees]
constexpr double kDefaultEyeAngle = 60;  ///< [degrees]
constexpr double kSmallestSine = 1e-9;   ///< between viewing direction and up
constexpr double kRadiansPerDegree = 0.017453292519943295;

struct NamedView {
    char const* name;
    Vertex direction;
    Vertex up;
};

constexpr NamedView kViews[] = {
    {"iso", {-0.55, 0.68, -0.48}, {0, 0, 1}}, {"top", {0, 0, -1}, {0, 1, 0}},  {"bottom", {0, 0, 1}, {0, 1, 0}},
    {"front", {0, 1, 0}, {0, 0, 1}},          {"back", {0, -1, 0}, {0, 0, 1}}, {"left", {1, 0, 0}, {0, 0, 1}},
    {"right", {-1, 0, 0}, {0, 0, 1}},
};

Vertex ToVertex(std::array<double, 3> const& v) { return {v[0], v[1], v[2]}; }

/// What a fitted camera must see, in the camera's axes: right, up, forward. `view` gives the axes.
class Extent {
public:
    /// `slopeX` and `slopeY` are how much wider the picture gets, to each side, per unit of depth; 0 for a parallel
    /// view.
    Extent(ViewProjection const& view, double slopeX, double slopeY) : view_(view), slopeX_(slopeX), slopeY_(slopeY) {}

    void Add(AxisAlignedBox3 const& box) {
        for (unsigned i = 0; i < 8; ++i) {
            auto const& h = box.halfExtent;
            Add(box.center + Vertex{i & 1 ? h.x : -h.x, i & 2 ? h.y : -h.y, i & 4 ? h.z : -h.z});
        }
    }

    double GetWidth() const { return right_ + left_; }
    double GetHeight() const { return top_ + bottom_; }
    double GetNearest() const { return nearest_; }

    /// The point of depth 0 that the camera looks at from afar.
    Vertex GetMiddle() const {
        return (right_ - left_) / 2 * view_.GetRightVector() + (top_ - bottom_) / 2 * view_.GetUpVector();
    }

private:
    void Add(Vertex const& p) {
        auto const x = Dot(p, view_.GetRightVector()), y = Dot(p, view_.GetUpVector());
        auto const depth = Dot(p, view_.GetDirection());
        right_ = std::max(right_, x - slopeX_ * depth);
        left_ = std::max(left_, -x - slopeX_ * depth);
        top_ = std::max(top_, y - slopeY_ * depth);
        bottom_ = std::max(bottom_, -y - slopeY_ * depth);
        nearest_ = std::min(nearest_, depth);
    }

    ViewProjection const& view_;
    double slopeX_, slopeY_;
    double right_ = -kFar, left_ = -kFar, top_ = -kFar, bottom_ = -kFar, nearest_ = kFar;
};

/// The camera of `view`'s kind and axes that just sees all boxes.
ViewProjection FitTo(std::vector<AxisAlignedBox3> const& boxes, ViewProjection const& view, double unitsPerPixel) {
    auto const width = view.GetSizeX(), height = view.GetSizeY();
    auto const pixelSlope = view.IsPerspective() ? 2 * std::tan(view.GetAngle() / 2) / std::max(width, height) : 0.0;
    auto const slopeX = pixelSlope * width * kFilled / 2, slopeY = pixelSlope * height * kFilled / 2;
    Extent extent(view, slopeX, slopeY);
    for (auto const& box : boxes) extent.Add(box);
    auto const& direction = view.GetDirection();
    auto const up = view.GetUpVector();
    if (view.IsPerspective()) {
        auto const back = std::max(extent.GetWidth() / (2 * slopeX), extent.GetHeight() / (2 * slopeY));
        auto const distance = std::max(back, kClearance - extent.GetNearest());
        return ViewProjection::FromPerspective(extent.GetMiddle() - distance * direction, direction, up,
                                               view.GetAngle(), width, height);
    }
    auto const fitting = std::max(extent.GetWidth() / width, extent.GetHeight() / height) / kFilled;
    auto const scale = unitsPerPixel > 0 ? unitsPerPixel : fitting > 0 ? fitting : 1;
    return ViewProjection::FromOrthogonal(extent.GetMiddle() + (extent.GetNearest() - kClearance) * direction,
                                          direction, up, scale, width, height);
}

}  // namespace

void CameraOptions::Declare(CLI::App& app) {
    auto const parseSize = [this](std::string const& text) {
        auto const isSide = [](double side) { return side >= 1 && side <= kMaxSize && side == std::floor(side); };
        if (!ParseNumbers(text, 'x', size_) || !isSide(size_[0]) || !isSide(size_[1])) {
            throw CLI::ValidationError("--size", "'" + text + "' is not WxH, whole numbers from 1 to 16384");
        }
    };
    std::string const group = "Camera";
    app.add_option_function<std::string>("--size", parseSize, "Width and height of the picture, 1 to 16384 [pixels]")
        ->type_name("WxH")
        ->default_str("800x600")
        ->group(group);
    std::vector<std::string> names;
    for (auto const& view : kViews) names.emplace_back(view.name);
    auto* const view = app.add_option("--view", view_, "A view fitted to the model")
                           ->check(CLI::IsMember(names).description(""))
                           ->type_name(CLI::detail::join(names, "|"))
                           ->default_str("iso")
                           ->group(group);
    auto* const eye =
        AddNumbers(app, "--eye", eye_, "X,Y,Z", "Where the camera stands; with --target, in place of --view")
            ->excludes(view)
            ->group(group);
    eye->each([this](std::string const&) { hasEye_ = true; });
    auto* const target =
        AddNumbers(app, "--target", target_, "X,Y,Z", "What the camera looks at")->needs(eye)->group(group);
    eye->needs(target);
    AddNumbers(app, "--up", up_, "X,Y,Z", "With --eye: the direction that is up in the picture")
        ->needs(eye)
        ->default_str("0,0,1")
        ->group(group);
    auto* const fov = app.add_option(
        "--fov", fieldOfView_, "A perspective camera: the angle across the larger side; 35 for iso, 60 with --eye");
    fov->type_name("DEGREES")->check(CLI::Range(0.01, 179.0).description(""))->group(group);
    app.add_option("--ortho", unitsPerPixel_, "A parallel camera: metres per pixel; fitted for all views but iso")
        ->type_name("SCALE")
        ->check(CLI::PositiveNumber.description(""))
        ->excludes(fov)
        ->group(group);
}

bool CameraOptions::IsPerspective() const {
    if (fieldOfView_ > 0 || unitsPerPixel_ > 0) return fieldOfView_ > 0;
    return hasEye_ || view_ == "iso";
}

ViewProjection CameraOptions::MakeView(std::vector<AxisAlignedBox3> const& boxes) const {
    auto const* named =
        std::find_if(std::begin(kViews), std::end(kViews), [this](auto const& v) { return v.name == view_; });
    auto const direction = hasEye_ ? ToVertex(target_) - ToVertex(eye_) : named->direction;
    auto const up = hasEye_ ? ToVertex(up_) : named->up;
    auto const unit = direction / Length(direction);
    if (!(Length(Cross(unit, up)) > kSmallestSine * Length(up))) {
        throw CLI::ValidationError("--target", "the camera looks nowhere, or along its up direction");
    }
    auto const degrees = fieldOfView_ > 0 ? fieldOfView_ : hasEye_ ? kDefaultEyeAngle : kDefaultIsoAngle;
    auto const location = ToVertex(eye_);
    auto const view =
        IsPerspective()
            ? ViewProjection::FromPerspective(location, unit, up, degrees * kRadiansPerDegree, size_[0], size_[1])
            : ViewProjection::FromOrthogonal(location, unit, up, unitsPerPixel_ > 0 ? unitsPerPixel_ : 1, size_[0],
                                             size_[1]);
    return hasEye_ || boxes.empty() ? view : FitTo(boxes, view, unitsPerPixel_);
}

}  // namespace QuorlanProgram
