#pragma once

#include "model/ModelView.h"
#include "picking/LoopPlanes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace Quorlan::Tools::Picking {

/// The planes of the shapes that one pick meets, kept until its end: a ray often meets several instances of a shape.
/// Of small shapes and not too many of them; it allocates nothing.
class PlaneStore {
public:
    /// A shape and what is known of its planes.
    struct Shape {
        explicit Shape(BRepView const& brep) : access(brep) {}

        StoredBRepAccess access;
        PlaneGroup* groups = nullptr;  ///< those of the holes first; null: not to be kept
        std::size_t holeGroupCount = 0;
        std::size_t madeHoleGroups = 0;
        std::size_t madeFaceGroups = 0;
        PlaneMaker holes;
        PlaneMaker faces;
    };

    /// Goes through the planes of a shape that is kept, and makes those that were not asked for before.
    class Reader {
    public:
        explicit Reader(Shape& shape) : shape_(shape) {}

        PlaneGroup const* GetNextOfHoles() {
            PlaneGroup* const group = shape_.groups + nextHole_;
            if (nextHole_ == shape_.madeHoleGroups) {
                if (!shape_.holes.MakeOfHoles(*group, shape_.access)) return nullptr;
                ++shape_.madeHoleGroups;
            }
            ++nextHole_;
            return group;
        }

        PlaneGroup const* GetNextOfFaces() {
            PlaneGroup* const group = shape_.groups + shape_.holeGroupCount + nextFace_;
            if (nextFace_ == shape_.madeFaceGroups) {
                if (!shape_.faces.MakeOfFaces(*group, shape_.access)) return nullptr;
                ++shape_.madeFaceGroups;
            }
            ++nextFace_;
            return group;
        }

    private:
        Shape& shape_;
        std::size_t nextHole_ = 0;
        std::size_t nextFace_ = 0;
    };

    /// The shape of a definition that was added; null if there is none.
    Shape* Find(std::uint32_t definition) {
        for (std::size_t i = 0; i < shapeCount_; ++i) {
            if (definitions_[i] == definition) return &*shapes_[i];
        }
        return nullptr;
    }

    /// Null if there is no room for the shape.
    Shape* Add(std::uint32_t definition, BRepView const& brep) {
        if (shapeCount_ == kMostShapes) return nullptr;
        Shape shape(brep);
        shape.holeGroupCount = CountGroups(shape.access.GetHoleCount());
        std::size_t const needed = shape.holeGroupCount + CountGroups(shape.access.GetFaceCount());
        if (needed > kMostGroups - groupCount_) return nullptr;
        shape.groups = groups_.data() + groupCount_;
        groupCount_ += needed;
        definitions_[shapeCount_] = definition;
        return &shapes_[shapeCount_++].emplace(shape);
    }

private:
    static constexpr std::size_t kMostShapes = 8;
    static constexpr std::size_t kMostGroups = 96;

    /// With one more, for the attempt that finds the end.
    static std::size_t CountGroups(std::size_t loopCount) {
        return (loopCount + PlaneGroup::kCapacity - 1) / PlaneGroup::kCapacity + 1;
    }

    std::size_t shapeCount_ = 0;
    std::size_t groupCount_ = 0;
    std::array<std::uint32_t, kMostShapes> definitions_;
    std::array<std::optional<Shape>, kMostShapes> shapes_;
    std::array<PlaneGroup, kMostGroups> groups_;
};

}  // namespace Quorlan::Tools::Picking
