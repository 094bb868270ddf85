#include "render/Renderer.h"

#include "Progress.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <limits>
#include <mutex>
#include <thread>

namespace QuorlanProgram {
namespace {

using GeometryObjectLib::Vector3f;
using GeometryObjectLib::Vertex;

constexpr unsigned kMaxSurfaces = 6;    ///< that one ray looks through
constexpr double kStep = 1e-4;          ///< [m] behind a surface the ray goes on
constexpr double kShadowStep = 1e-3;    ///< [m] above a surface the ray to the sun starts
constexpr float kDiffuse = 0.36f;       ///< light from all sides; the sun's is about 1
constexpr float kShadowed = 0.25f;      ///< of the sun's share that reaches a shadow
constexpr float kHazeShare = 0.30f;     ///< mixed in at the far end of the model
constexpr float kOutlineShare = 0.55f;  ///< of the colour that stays in an outline
constexpr float kClearOutlineShare = 0.08f;
constexpr float kNormalsAgree = 0.9f;  ///< cosine above which neighbouring faces have no outline between them
constexpr Light kSky{0.92f, 0.96f, 1.0f};
constexpr Light kEarth{0.62f, 0.58f, 0.54f};
constexpr Light kSun{0.90f, 0.87f, 0.83f};
constexpr Light kHaze{0.80f, 0.85f, 0.90f};

/// Where, within a pixel, the samples after the first are taken.
constexpr double kOffsets[][2] = {{-0.36, -0.14}, {0.14, -0.36}, {0.24, 0.30}};

unsigned CountThreads() { return std::max(1u, std::thread::hardware_concurrency()); }

}  // namespace

/// What one ray saw first, and the light it brought back.
struct Renderer::Sample {
    std::uint32_t instance = Quorlan::kInvalidIndex;
    float depth = std::numeric_limits<float>::infinity();  ///< [m] along the viewing direction
    Vector3f normal;
    Light light;  ///< premultiplied by alpha
    float alpha = 0;
};

namespace {

template <class Sample>
bool LooksAlike(Sample const& a, Sample const& b) {
    return a.instance == b.instance &&
           (a.instance == Quorlan::kInvalidIndex || Dot(a.normal, b.normal) > kNormalsAgree);
}

Light ColorOf(Vertex const& normal) {
    auto const channel = [](double v) { return static_cast<float>(0.5 + 0.45 * v); };
    return {channel(normal.x), channel(normal.y), channel(normal.z)};
}

}  // namespace

/// One thread's share of the work.
class Renderer::Worker {
public:
    explicit Worker(Renderer const& renderer) : renderer_(renderer), picker_(renderer.scene_, renderer.view_) {
        auto const& view = renderer.view_;
        auto const sun = 0.75 * view.GetUpVector() - 0.6 * view.GetDirection() - 0.5 * view.GetRightVector();
        sun_ = sun / Length(sun);
        if (auto const& bounds = renderer.scene_.GetBounds()) {
            auto const reach = Length(bounds->halfExtent);
            near_ = std::max(0.0, DepthOf(bounds->center) - reach);
            far_ = std::max(near_ + kStep, DepthOf(bounds->center) + reach);
        }
    }

    std::uint64_t GetRayCount() const { return rayCount_; }

    Sample Cast(double x, double y) {
        ++rayCount_;
        auto hit = picker_.Pick(x, y);
        Sample sample;
        if (!hit) return sample;
        sample.instance = hit->instance;
        sample.depth = static_cast<float>(DepthOf(hit->point));
        sample.normal = {static_cast<float>(hit->normal.x), static_cast<float>(hit->normal.y),
                         static_cast<float>(hit->normal.z)};
        Vertex origin, direction;
        Quorlan::Tools::Picking::ViewToWorld(renderer_.view_, x, y, origin, direction);
        for (unsigned i = 0; hit && i < kMaxSurfaces; ++i) {
            auto const& surface = renderer_.surfaces_[hit->instance];
            auto const share = (1 - sample.alpha) * surface.alpha;
            sample.light = sample.light + share * Shade(*hit, surface);
            sample.alpha += share;
            if (surface.alpha >= 1) break;
            ++rayCount_;
            hit = picker_.Cast(hit->point + kStep * direction, direction);
        }
        return sample;
    }

    /// The final colour of pixel (x, y), smoothed and outlined where its neighbours see something else.
    Rgba Resolve(std::vector<Sample> const& samples, std::uint32_t x, std::uint32_t y) {
        auto const width = static_cast<std::uint32_t>(renderer_.view_.GetSizeX());
        auto const height = static_cast<std::uint32_t>(renderer_.view_.GetSizeY());
        auto const index = std::size_t{y} * width + x;
        auto const& here = samples[index];
        bool isEdge = false, isOutline = false;
        auto const compare = [&](Sample const& there) {
            if (LooksAlike(here, there)) return;
            isEdge = true;
            isOutline = isOutline || (here.alpha > 0 && here.depth <= there.depth);  // on the nearer side
        };
        if (renderer_.isShaded_) {
            if (x > 0) compare(samples[index - 1]);
            if (x + 1 < width) compare(samples[index + 1]);
            if (y > 0) compare(samples[index - width]);
            if (y + 1 < height) compare(samples[index + width]);
        }
        auto light = here.light;
        auto alpha = here.alpha;
        if (isEdge) {
            for (auto const& offset : kOffsets) {
                auto const more = Cast(x + 0.5 + offset[0], y + 0.5 + offset[1]);
                light = light + more.light;
                alpha += more.alpha;
            }
            auto const outline = renderer_.hasEdges_ ? kClearOutlineShare : kOutlineShare;
            light = (isOutline ? 0.25f * outline : 0.25f) * light;
            alpha *= 0.25f;
        }
        return alpha > 0 ? ToColor((1 / alpha) * light, alpha) : Rgba{};
    }

private:
    double DepthOf(Vertex const& point) const {
        return Dot(point - renderer_.view_.GetLocation(), renderer_.view_.GetDirection());
    }

    Light Shade(SurfaceHit const& hit, Surface const& surface) {
        auto const color = renderer_.hasNormalColors_ ? ColorOf(hit.normal) : surface.color;
        if (!renderer_.isShaded_) return color;
        auto const upward = static_cast<float>(0.5 + 0.5 * hit.normal.z);
        auto sunlight = std::max(0.0f, static_cast<float>(Dot(hit.normal, sun_)));
        if (renderer_.hasShadows_ && sunlight > 0) {
            ++rayCount_;
            if (picker_.Cast(hit.point + kShadowStep * hit.normal, sun_)) sunlight *= kShadowed;
        }
        auto const lit = color * (kDiffuse * Mix(kEarth, kSky, upward) + sunlight * kSun);
        auto const away = std::clamp((DepthOf(hit.point) - near_) / (far_ - near_), 0.0, 1.0);
        return Mix(lit, kHaze, kHazeShare * static_cast<float>(away * away));
    }

    Renderer const& renderer_;
    PickScene::Picker picker_;
    Vertex sun_;       ///< the unit direction towards it
    double near_ = 0;  ///< [m] depths between which the haze grows
    double far_ = 1;
    std::uint64_t rayCount_ = 0;
};

Renderer::Renderer(PickScene const& scene, Quorlan::Tools::Picking::ViewProjection const& view)
    : scene_(scene), view_(view) {}

/// Calls `work(worker, x, y)` for every pixel, on all processors. Returns the number of rays.
template <class Work>
std::uint64_t Renderer::ForEachPixel(Work const& work) const {
    auto const width = static_cast<std::uint32_t>(view_.GetSizeX()),
               height = static_cast<std::uint32_t>(view_.GetSizeY());
    std::atomic<std::uint32_t> next{0};
    std::atomic<std::uint64_t> rays{0};
    std::mutex reporting;
    Progress progress(height);
    auto const run = [&] {
        Worker worker(*this);
        for (auto y = next++; y < height; y = next++) {
            for (std::uint32_t x = 0; x < width; ++x) work(worker, x, y);
            std::lock_guard<std::mutex> const lock(reporting);
            progress.Report(y + 1);
        }
        rays += worker.GetRayCount();
    };
    std::vector<std::thread> threads;
    for (unsigned i = 1; i < CountThreads(); ++i) threads.emplace_back(run);
    run();
    for (auto& thread : threads) thread.join();
    return rays;
}

Picture Renderer::Render() const {
    Picture picture;
    picture.width = static_cast<std::uint32_t>(view_.GetSizeX());
    picture.height = static_cast<std::uint32_t>(view_.GetSizeY());
    std::vector<Sample> samples(std::size_t{picture.width} * picture.height);
    picture.pixels.resize(samples.size());
    picture.instances.resize(samples.size());

    auto const start = std::chrono::steady_clock::now();
    picture.rayCount = ForEachPixel([&](Worker& worker, std::uint32_t x, std::uint32_t y) {
        samples[std::size_t{y} * picture.width + x] = worker.Cast(x + 0.5, y + 0.5);
    });
    picture.rayCount += ForEachPixel([&](Worker& worker, std::uint32_t x, std::uint32_t y) {
        auto const index = std::size_t{y} * picture.width + x;
        picture.pixels[index] = worker.Resolve(samples, x, y);
        picture.instances[index] = samples[index].instance;
    });
    picture.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return picture;
}

}  // namespace QuorlanProgram
