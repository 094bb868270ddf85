#include "render/MeshRenderer.h"

#include "render/MeshScene.h"
#include "render/Parallel.h"
#include "render/RayTracer.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>

namespace QuorlanProgram {
namespace {

using Quorlan::Tools::Picking::ViewProjection;

constexpr std::uint32_t kSkyRays = 4;       ///< per pixel
constexpr std::uint32_t kTile = 8;          ///< [pixels] within which no two pixels look at the same part of the sky
constexpr int kSmoothing = 4;               ///< [pixels] each way over which the light of the sky is shared
constexpr float kSameNormal = 0.96f;        ///< cosine above which two surfaces get the same light
constexpr float kSmoothNormal = 0.9f;       ///< cosine above which no crease shows
constexpr float kSameHeight = 0.004f;       ///< [m] off a surface that is still on it
constexpr float kRelativeHeight = 2.5e-4f;  ///< of the distance from the eye
constexpr float kSameLight = 0.06f;         ///< [-] difference of neighbours that needs no more samples
constexpr std::uint32_t kPenumbra = 2;      ///< [pixels] around which the sun's disc is looked at more closely
constexpr float kOutlineShare = 0.85f;      ///< of the light that stays in an outline
constexpr float kClearOutlineShare = 0.08f;

bool IsOn(SeenSurface const& a, SeenSurface const& b) {
    auto const height = std::abs(Dot(a.normal, b.point - a.point));
    return height < kSameHeight + kRelativeHeight * a.distance;
}

bool IsSameSurface(SeenSurface const& a, SeenSurface const& b, float cosine) {
    if (a.instance == Quorlan::kInvalidIndex || b.instance == Quorlan::kInvalidIndex) return a.instance == b.instance;
    return Dot(a.normal, b.normal) > cosine && IsOn(a, b) && IsOn(b, a);
}

/// Whether a line would be drawn between the two.
bool IsOutlined(SeenSurface const& a, SeenSurface const& b) {
    return a.instance != b.instance || !IsSameSurface(a, b, kSmoothNormal);
}

bool IsSameLight(Light const& a, Light const& b) {
    return std::abs(a.red - b.red) + std::abs(a.green - b.green) + std::abs(a.blue - b.blue) < kSameLight;
}

bool LooksAlike(TracedRay const& a, TracedRay const& b) {
    return !IsOutlined(a.first, b.first) && !IsOutlined(a.last, b.last) && IsSameLight(a.light, b.light) &&
           IsSameLight(a.reflected, b.reflected) && std::abs(a.alpha - b.alpha) < kSameLight;
}

/// The picture while it is made: one ray per pixel, then the light of the sky, then more rays where they are needed.
class Canvas {
public:
    Canvas(RayTracer const& tracer, ViewProjection const& view, MeshPictureOptions const& options)
        : tracer_(tracer),
          options_(options),
          width_(static_cast<std::uint32_t>(view.GetSizeX())),
          height_(static_cast<std::uint32_t>(view.GetSizeY())),
          rays_(std::size_t{width_} * height_),
          sky_(rays_.size()),
          smoothSky_(rays_.size()) {}

    Picture Make() {
        Picture picture;
        picture.width = width_;
        picture.height = height_;
        picture.pixels.resize(rays_.size());
        picture.instances.resize(rays_.size());
        ForEachRow(height_, [&](std::uint32_t y) { TraceRow(y); });
        ForEachRow(height_, [&](std::uint32_t y) { SmoothRow(y); });
        ForEachRow(height_, [&](std::uint32_t y) { ResolveRow(y, picture); });
        picture.rayCount = rayCount_;
        return picture;
    }

private:
    std::size_t IndexOf(std::uint32_t x, std::uint32_t y) const { return std::size_t{y} * width_ + x; }

    void TraceRow(std::uint32_t y) {
        auto tracer = tracer_;
        for (std::uint32_t x = 0; x < width_; ++x) {
            auto const index = IndexOf(x, y);
            rays_[index] = tracer.Trace(x + 0.5, y + 0.5, SampleAt(0, ShiftOf(x, y)));
            if (options_.mode == ColorMode::Entity || !rays_[index].HasEnd()) continue;
            auto const place = x % kTile + kTile * (y % kTile);
            sky_[index] = tracer.GatherSky(rays_[index].last, kSkyRays * place, kSkyRays, {0.5f, 0.5f});
        }
        rayCount_ += tracer.GetRayCount();
    }

    /// Gives each pixel the mean light of its neighbours on the same surface.
    void SmoothRow(std::uint32_t y) {
        if (options_.mode == ColorMode::Entity) return;
        auto const size = static_cast<std::int64_t>(width_), rows = static_cast<std::int64_t>(height_);
        for (std::uint32_t x = 0; x < width_; ++x) {
            auto const index = IndexOf(x, y);
            auto const& here = rays_[index].last;
            if (!rays_[index].HasEnd()) continue;
            Light sum;
            float count = 0;
            for (auto j = std::max<std::int64_t>(0, y - kSmoothing); j < std::min(rows, y + kSmoothing + 1L); ++j) {
                for (auto i = std::max<std::int64_t>(0, x - kSmoothing); i < std::min(size, x + kSmoothing + 1L); ++i) {
                    auto const there = static_cast<std::size_t>(j * size + i);
                    if (!rays_[there].HasEnd() || !IsSameSurface(here, rays_[there].last, kSameNormal)) continue;
                    sum = sum + sky_[there];
                    ++count;
                }
            }
            smoothSky_[index] = count > 0 ? (1 / count) * sum : sky_[index];
        }
    }

    /// The light of the sky on what an extra ray at pixel (x, y) has met: that of a neighbour on the same surface.
    Light SkyOn(RayTracer& tracer, SeenSurface const& surface, std::uint32_t x, std::uint32_t y,
                std::uint32_t n) const {
        for (auto j = y - std::min(y, 1u); j < std::min(height_, y + 2); ++j) {
            for (auto i = x - std::min(x, 1u); i < std::min(width_, x + 2); ++i) {
                auto const index = IndexOf(i, j);
                if (rays_[index].HasEnd() && IsSameSurface(surface, rays_[index].last, kSameNormal)) {
                    return smoothSky_[index];
                }
            }
        }
        return tracer.GatherSky(surface, 2 * kSkyRays * n, 2 * kSkyRays, ShiftOf(x, y));
    }

    void ResolveRow(std::uint32_t y, Picture& picture) {
        auto tracer = tracer_;
        for (std::uint32_t x = 0; x < width_; ++x) {
            auto const index = IndexOf(x, y);
            picture.pixels[index] = Resolve(tracer, x, y);
            picture.instances[index] = rays_[index].first.instance;
        }
        rayCount_ += tracer.GetRayCount();
    }

    /// Whether the edge of a shadow is near.
    bool IsPenumbra(std::uint32_t x, std::uint32_t y) const {
        auto const& here = rays_[IndexOf(x, y)];
        if (!here.HasEnd()) return false;
        for (auto j = y - std::min(y, kPenumbra); j < std::min(height_, y + kPenumbra + 1); ++j) {
            for (auto i = x - std::min(x, kPenumbra); i < std::min(width_, x + kPenumbra + 1); ++i) {
                auto const& there = rays_[IndexOf(i, j)];
                if (there.sunlight != here.sunlight && there.HasEnd()) return true;
            }
        }
        return false;
    }

    Rgba Resolve(RayTracer& tracer, std::uint32_t x, std::uint32_t y) const {
        auto const& here = rays_[IndexOf(x, y)];
        if (options_.mode == ColorMode::Entity) return here.alpha > 0 ? ToColor(here.light, 1) : Rgba{};
        bool isRough = false, isOutline = false;
        auto const compare = [&](TracedRay const& there) {
            isRough = isRough || !LooksAlike(here, there);
            auto const isNearer =
                here.first.instance != Quorlan::kInvalidIndex &&
                (there.first.instance == Quorlan::kInvalidIndex || here.first.distance <= there.first.distance);
            isOutline = isOutline || (isNearer && IsOutlined(here.first, there.first));
        };
        if (x > 0) compare(rays_[IndexOf(x - 1, y)]);
        if (x + 1 < width_) compare(rays_[IndexOf(x + 1, y)]);
        if (y > 0) compare(rays_[IndexOf(x, y - 1)]);
        if (y + 1 < height_) compare(rays_[IndexOf(x, y + 1)]);

        isRough = isRough || IsPenumbra(x, y);

        auto light = Expose(here.light + here.reflected * smoothSky_[IndexOf(x, y)]);
        auto alpha = here.alpha;
        auto const count = isRough ? options_.samples : 1;
        for (std::uint32_t n = 1; n < count; ++n) {
            auto const at = SampleAt(n), sun = SampleAt(n, ShiftOf(x, y));
            auto const more = tracer.Trace(x + static_cast<double>(at[0]), y + static_cast<double>(at[1]), sun);
            auto const sky = more.HasEnd() ? SkyOn(tracer, more.last, x, y, n) : Light{};
            light = light + Expose(more.light + more.reflected * sky);
            alpha += more.alpha;
        }
        if (alpha <= 0) return {};
        auto const outline = options_.hasEdges ? kClearOutlineShare : kOutlineShare;
        return ToColor(((isOutline ? outline : 1) / alpha) * light, alpha / static_cast<float>(count));
    }

    RayTracer const& tracer_;
    MeshPictureOptions const& options_;
    std::uint32_t width_, height_;
    std::vector<TracedRay> rays_;
    std::vector<Light> sky_;
    std::vector<Light> smoothSky_;
    std::atomic<std::uint64_t> rayCount_{0};
};

}  // namespace

bool CanRenderMeshes() { return true; }

Picture RenderMeshes(ModelFile const& model, PickScene const& scene, std::vector<Surface> const& surfaces,
                     ViewProjection const& view, MeshPictureOptions const& options) {
    auto const start = std::chrono::steady_clock::now();
    auto const textures = Texture::ReadAll(model.GetReader().GetGeometry());
    MeshScene const meshes(model, scene, surfaces, view);
    RayTracer const tracer(meshes, surfaces, textures, view, options);
    auto picture = Canvas(tracer, view, options).Make();
    picture.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return picture;
}

}  // namespace QuorlanProgram
