#pragma once

#include "SampleModel.h"

#include <cstdint>
#include <string>

/// The parts of the building, each written in one go. A storey's floor lies at storey * kStoreyHeight.
namespace QuorlanSample {

constexpr double kWidth = 24;          ///< [m] outer, along x
constexpr double kDepth = 15;          ///< [m] outer, along y
constexpr double kStoreyHeight = 3.2;  ///< [m] floor to floor
constexpr double kSlabThickness = 0.3;
constexpr double kClearHeight = kStoreyHeight - kSlabThickness;
constexpr double kFacadeThickness = 0.3;
constexpr double kBayWidth = 6;  ///< [m] of the long facades

/// Openings of every slab above the ground, for the stair and the lift.
constexpr Rectangle kStairShaft{9.8, 10.0, 12.2, 14.2};
constexpr Rectangle kLiftShaft{12.6, 11.4, 14.2, 13.2};

void AddStructure(SampleModel& model, std::uint32_t storey);
void AddFacade(SampleModel& model, std::uint32_t storey);
void AddInterior(SampleModel& model, std::uint32_t storey);
void AddFurniture(SampleModel& model, std::uint32_t storey);
void AddRoof(SampleModel& model);
void AddSite(SampleModel& model);

/// A window that fills `opening` of a panel standing at `placement`, with `mullions` upright bars and, if it has one,
/// a sill.
void AddWindow(SampleModel& model, std::string const& name, AffineTransform const& placement, Rectangle const& opening,
               std::uint32_t mullions, bool hasSill);

/// A door leaf with its frame and handles, and its swing as line graphics on the floor.
void AddDoor(SampleModel& model, std::string const& name, AffineTransform const& placement, Rectangle const& opening,
             double wallThickness);

/// A railing of upright bars along the x axis of `placement`.
void AddRailing(SampleModel& model, std::string const& name, AffineTransform const& placement, double length);

inline AffineTransform AtStorey(std::uint32_t storey) { return At({0, 0, kStoreyHeight * storey}); }
inline std::string StoreyName(std::uint32_t storey) { return "storey " + std::to_string(storey); }

}  // namespace QuorlanSample
