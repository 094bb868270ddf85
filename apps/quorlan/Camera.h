#pragma once

#include <GeometryObjectLib/AxisAlignedBox3.h>
#include <Tools/Picking/ViewProjection.h>
#include <CLI/CLI.hpp>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace QuorlanProgram {

/// The options that choose a camera, the same for every command that looks at a model:
/// `--size`, `--view` or `--eye` with `--target` and `--up`, `--fov` or `--ortho`.
class CameraOptions {
public:
    void Declare(CLI::App& app);

    std::uint32_t GetWidth() const { return static_cast<std::uint32_t>(size_[0]); }
    std::uint32_t GetHeight() const { return static_cast<std::uint32_t>(size_[1]); }

    /// The camera; a named view is fitted to `boxes`. THROWS CLI::ValidationError for a camera that sees nothing: its
    /// target is where it stands, or it looks along its up direction.
    Quorlan::Tools::Picking::ViewProjection MakeView(
        std::vector<GeometryObjectLib::AxisAlignedBox3> const& boxes) const;

private:
    bool IsPerspective() const;

    std::array<double, 2> size_{800, 600};  ///< [pixels]
    std::string view_ = "iso";
    std::array<double, 3> eye_{};
    std::array<double, 3> target_{};
    std::array<double, 3> up_{0, 0, 1};
    double fieldOfView_ = 0;    ///< [degrees] 0: not given
    double unitsPerPixel_ = 0;  ///< 0: not given
    bool hasEye_ = false;
};

}  // namespace QuorlanProgram
