#pragma once

#include "increments/DefinitionMove.h"
#include "increments/ShapeSieve.h"
#include "model/BufferReaders.h"
#include "model/ModelWriters.h"

#include <Tools/UniqueGeometryDefinitionBuilder.h>

#include <array>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace Quorlan::Tools::Increments {

/// Writes geometry definitions of source models into one target, each distinct one once over the copier's whole life.
///
/// A shape of a model buffer that nothing before it resembles goes over as it is stored, without being taken apart; the
/// search for copies learns of it only when something comes that resembles it. The result is that of searching for
/// each.
class DefinitionCopier {
public:
    explicit DefinitionCopier(IGeometryDefinitionBuilder& target);

    /// From now on the bytes of sources outlive the target: shapes that go over as they are stored are not copied until
    /// the target writes its buffer.
    void BorrowShapes();

    /// Announces the definitions that are about to be copied, in ascending order, and where from. REQUIRES: both stay
    /// until they have been copied.
    void SetSource(IGeometryReader const& source, std::vector<bool> const& wanted);

    /// RETURNS the index of the definition, kInvalidIndex for none. `move` is set where its shape was moved.
    std::uint32_t Copy(std::uint32_t definition, std::optional<DefinitionMove>& move);

private:
    /// Passes shapes on to the target, but for one that it holds already.
    class KnowingTarget final : public IGeometryDefinitionBuilder {
    public:
        explicit KnowingTarget(IGeometryDefinitionBuilder& target) : target_(target) {}

        GeometryDefinitionIndex_t AddBRepWithNormals(
            std::pair<FacetedBRep const*, std::vector<Vertex> const*> shape) override {
            return Answer([&] { return target_.AddBRepWithNormals(shape); });
        }
        GeometryDefinitionIndex_t AddBRepWithUVs(
            std::pair<FacetedBRep const*, std::vector<std::pair<float, float>> const*> shape) override {
            return Answer([&] { return target_.AddBRepWithUVs(shape); });
        }
        GeometryDefinitionIndex_t AddGraphicsContainer(GraphicsContainer const& graphics) override {
            return Answer([&] { return target_.AddGraphicsContainer(graphics); });
        }
        GeometryDefinitionIndex_t AddBRep(FacetedBRep const& shape) override {
            return Answer([&] { return target_.AddBRep(shape); });
        }

        std::optional<GeometryDefinitionIndex_t> known;  ///< the answer, if the target holds the shape
        bool hasWritten = false;

    private:
        template <class Write>
        GeometryDefinitionIndex_t Answer(Write write) {
            hasWritten = true;
            return known ? *known : write();
        }

        IGeometryDefinitionBuilder& target_;
    };

    /// A stored BRep that is about to be copied.
    struct Scanned {
        std::uint32_t definition = 0;
        BRepKind kind = BRepKind::kPlain;
        void const* table = nullptr;
        ShapeScan const* scan = nullptr;
    };

    void ScanAhead(std::uint32_t definition);
    std::uint32_t CopyRead(std::uint32_t definition, std::optional<DefinitionMove>& move);
    std::uint32_t CopyStored(Scanned const& scanned, std::optional<DefinitionMove>& move);
    std::uint32_t CopySearching(BRepKind kind, BRepView const& shape, std::optional<DefinitionMove>& move);

    template <class Content, class Shape>
    std::uint32_t Add(Content const& content, Shape const& shape, std::optional<DefinitionMove>& move);

    /// Lets the search for copies know of shapes that are written.
    void MakeKnown(BRepKind kind, std::vector<GeometryDefinitionIndex_t>& definitions);
    void StopSieving();

    ShapeSieve& SieveOf(BRepKind kind) { return sieves_[static_cast<std::size_t>(kind)]; }

    KnowingTarget target_;
    DefinitionWriter* writer_;  ///< the target, if it is the library's own
    UniqueGeometryDefinitionBuilder unique_{target_};
    IGeometryReader const* source_ = nullptr;
    Schema::Geometry const* storedSource_ = nullptr;  ///< the source's tables, if it reads a buffer
    ShapeScans const* sourceScans_ = nullptr;         ///< of the source's BReps; null for none
    std::vector<bool> const* wanted_ = nullptr;
    ShapeScanner scanner_;  ///< of the source

    // The wanted BReps among the next definitions, and which of them is next.
    static constexpr std::size_t kScannedAhead = 16;
    std::array<Scanned, kScannedAhead> scanned_;
    std::array<ShapeScan, kScannedAhead> scans_;  ///< where nothing is known of the source's
    std::size_t scannedCount_ = 0;
    std::size_t nextScanned_ = 0;
    std::uint32_t scannedEnd_ = 0;  ///< one behind the last definition that was looked at

    bool isSieving_ = true;
    std::array<ShapeSieve, 3> sieves_;  ///< by BRepKind
    std::vector<GeometryDefinitionIndex_t> waiting_;

    // Read into again and again, so that a whole model is copied without an allocation per shape.
    std::pair<FacetedBRep, std::vector<Vertex>> shape_;
    std::pair<FacetedBRep, std::vector<std::pair<float, float>>> shapeWithUVs_;
    GraphicsContainer graphics_;
};

}  // namespace Quorlan::Tools::Increments
