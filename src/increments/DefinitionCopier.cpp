#include "increments/DefinitionCopier.h"

#include "model/ShapeReading.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Quorlan::Tools::Increments {
namespace {

// The tolerances within which `UniqueGeometryDefinitionBuilder` finds copies, by kind [model units].
constexpr double kPositionTolerance = 1e-5;
constexpr double kTexturedPositionTolerance = 1e-7;

/// [tolerances] Beyond this, rounding in the search for copies comes near its tolerance.
constexpr double kLargestCoordinate = 1e13;

constexpr double ToleranceOf(BRepKind kind) {
    return kind == BRepKind::kWithUV ? kTexturedPositionTolerance : kPositionTolerance;
}

/// [box diagonals] Below this a plain shape is certainly not re-centred.
constexpr double kNearDistance = 99.0;

std::optional<BRepKind> FindBRepKind(std::uint32_t definitionKind) {
    switch (definitionKind) {
        case kFacetedBRep: return BRepKind::kPlain;
        case kBRepWithUV: return BRepKind::kWithUV;
        case kBRepWithNormal: return BRepKind::kWithNormal;
        default: return std::nullopt;
    }
}

/// The table of a shape, or null. Nothing of it is read.
void const* FindTable(Schema::Geometry const& geometry, BRepKind kind, std::uint32_t index) {
    switch (kind) {
        case BRepKind::kWithUV: return FindElement(geometry.brepsWithUV(), index);
        case BRepKind::kWithNormal: return FindElement(geometry.brepsWithNormal(), index);
        default: return FindElement(geometry.facetedBReps(), index);
    }
}

/// REQUIRES: all positions are finite numbers.
float LargestCoordinate(ShapeScan const& scan) {
    Schema::Vector3 const& lo = scan.min;
    Schema::Vector3 const& hi = scan.max;
    return std::max(std::max({-lo.x(), -lo.y(), -lo.z()}), std::max({hi.x(), hi.y(), hi.z()}));
}

bool IsNearItsOrigin(ShapeScan const& scan) {
    using GeometryObjectLib::ToVertex;
    Vertex const lo = ToVertex(ToVector3f(scan.min));
    Vertex const hi = ToVertex(ToVector3f(scan.max));
    Vertex const twiceTheCenter = lo + hi;
    Vertex const size = hi - lo;
    return Dot(twiceTheCenter, twiceTheCenter) <= 4 * kNearDistance * kNearDistance * Dot(size, size);
}

}  // namespace

DefinitionCopier::DefinitionCopier(IGeometryDefinitionBuilder& target)
    : target_(target),
      writer_(dynamic_cast<DefinitionWriter*>(&target)),
      sieves_{ShapeSieve(ToleranceOf(BRepKind::kPlain)), ShapeSieve(ToleranceOf(BRepKind::kWithUV)),
              ShapeSieve(ToleranceOf(BRepKind::kWithNormal))} {}

void DefinitionCopier::BorrowShapes() {
    if (writer_ != nullptr) writer_->BorrowStored();
}

void DefinitionCopier::SetSource(IGeometryReader const& source, std::vector<bool> const& wanted) {
    source_ = &source;
    auto const* const stored = dynamic_cast<BufferGeometryReader const*>(&source);
    storedSource_ = stored == nullptr || writer_ == nullptr ? nullptr : &stored->GetGeometry();
    sourceScans_ = storedSource_ == nullptr ? nullptr : stored->GetScans();
    target_.known.reset();
    scanner_ = ShapeScanner();
    wanted_ = &wanted;
    scannedCount_ = nextScanned_ = scannedEnd_ = 0;
    if (storedSource_ == nullptr) return;
    std::array<std::size_t, 3> counts{};
    for (std::uint32_t i = 0; i < wanted.size(); ++i) {
        if (!wanted[i]) continue;
        auto const kind = FindBRepKind(storedSource_->definitions()->Get(i)->kind());
        if (kind) ++counts[static_cast<std::size_t>(*kind)];
    }
    for (BRepKind const kind : {BRepKind::kPlain, BRepKind::kWithUV, BRepKind::kWithNormal}) {
        SieveOf(kind).Reserve(counts[static_cast<std::size_t>(kind)]);
        writer_->Reserve(kind, counts[static_cast<std::size_t>(kind)]);
    }
}

std::uint32_t DefinitionCopier::Copy(std::uint32_t definition, std::optional<DefinitionMove>& move) {
    if (storedSource_ == nullptr) return CopyRead(definition, move);
    if (definition >= scannedEnd_) ScanAhead(definition);
    if (nextScanned_ < scannedCount_ && scanned_[nextScanned_].definition == definition) {
        return CopyStored(scanned_[nextScanned_++], move);
    }
    bool const isBRep = FindBRepKind(storedSource_->definitions()->Get(definition)->kind()).has_value();
    return isBRep ? kInvalidIndex : CopyRead(definition, move);
}

/// Scans the BReps among the next definitions, so that what the sieve holds of each is at hand once it is asked.
void DefinitionCopier::ScanAhead(std::uint32_t definition) {
    scannedCount_ = nextScanned_ = 0;
    scannedEnd_ = static_cast<std::uint32_t>(std::min<std::size_t>(wanted_->size(), definition + 4 * kScannedAhead));
    for (std::uint32_t i = definition; i < scannedEnd_; ++i) {
        if (!(*wanted_)[i]) continue;
        auto const& info = *storedSource_->definitions()->Get(i);
        auto const kind = FindBRepKind(info.kind());
        void const* const table = kind ? FindTable(*storedSource_, *kind, info.kindIndex()) : nullptr;
        if (table == nullptr) continue;
        auto const* scan = sourceScans_ == nullptr ? nullptr : &(*sourceScans_)[info.kind()][info.kindIndex()];
        if (scan == nullptr || !scan->isRun) {
            scans_[scannedCount_] = scanner_.Scan(MakeView(*kind, table));
            scan = &scans_[scannedCount_];
        }
        SieveOf(*kind).Prefetch(scan->sketch);
        scanned_[scannedCount_++] = {i, *kind, table, scan};
        if (scannedCount_ == kScannedAhead) scannedEnd_ = i + 1;
    }
}

/// Copies through the public operations of the source.
std::uint32_t DefinitionCopier::CopyRead(std::uint32_t definition, std::optional<DefinitionMove>& move) {
    std::uint32_t const kind = source_->GetDefinitionKind(definition);
    if (FindBRepKind(kind)) StopSieving();
    switch (kind) {
        case kFacetedBRep:
            if (!source_->GetFacetedBRep(shape_.first, definition)) break;
            return Add(shape_.first, shape_.first, move);
        case kGraphicsContainer:
            if (!source_->GetGraphicsContainer(graphics_, definition)) break;
            return Add(graphics_, graphics_, move);
        case kBRepWithUV:
            if (!source_->GetFacetedBRep(shapeWithUVs_.first, definition)) break;
            source_->GetTextureCoordinates(shapeWithUVs_.second, definition);
            return Add(shapeWithUVs_, shapeWithUVs_.first, move);
        case kBRepWithNormal:
            if (!source_->GetFacetedBRep(shape_.first, definition)) break;
            source_->GetVertexNormals(shape_.second, definition);
            return Add(shape_, shape_.first, move);
        default: break;
    }
    return kInvalidIndex;
}

template <class Content, class Shape>
std::uint32_t DefinitionCopier::Add(Content const& content, Shape const& shape, std::optional<DefinitionMove>& move) {
    AffineTransform writtenFromSource;
    target_.hasWritten = false;
    auto const index = static_cast<std::uint32_t>(unique_.Add(content, &writtenFromSource));
    if (index != kInvalidIndex) move = FindMove(writtenFromSource, shape);
    return index;
}

std::uint32_t DefinitionCopier::CopyStored(Scanned const& scanned, std::optional<DefinitionMove>& move) {
    auto const kind = scanned.kind;
    ShapeScan const& scan = *scanned.scan;
    if (!scan.isSound) return kInvalidIndex;

    // What is not a finite number agrees with nothing, so that such a shape is neither a copy nor has copies.
    auto const search = [&] { return CopySearching(kind, MakeView(kind, scanned.table), move); };
    if (!scan.isFinite) return search();
    if (LargestCoordinate(scan) > kLargestCoordinate * ToleranceOf(kind)) StopSieving();
    if (!isSieving_) return search();

    ShapeSieve& sieve = SieveOf(kind);
    waiting_.clear();
    bool const isAlone = !sieve.FindSimilar(scan.sketch, waiting_);
    if (isAlone && scan.isStorable && (kind != BRepKind::kPlain || IsNearItsOrigin(scan))) {
        auto const index = writer_->AddStored(kind, scanned.table, scan.counts, scan.isRun, scan.min, scan.max);
        sieve.Wait(scan.sketch, index);
        return static_cast<std::uint32_t>(index);
    }
    MakeKnown(kind, waiting_);
    std::uint32_t const index = search();
    if (target_.hasWritten) sieve.Remember(scan.sketch);
    return index;
}

std::uint32_t DefinitionCopier::CopySearching(BRepKind kind, BRepView const& shape,
                                              std::optional<DefinitionMove>& move) {
    if (kind == BRepKind::kWithUV) {
        if (!ReadShape(shapeWithUVs_.first, shape)) return kInvalidIndex;
        ReadTextureCoordinates(shapeWithUVs_.second, shape);
        return Add(shapeWithUVs_, shapeWithUVs_.first, move);
    }
    if (!ReadShape(shape_.first, shape)) return kInvalidIndex;
    if (kind == BRepKind::kPlain) return Add(shape_.first, shape_.first, move);
    ReadNormals(shape_.second, shape);
    return Add(shape_, shape_.first, move);
}

void DefinitionCopier::MakeKnown(BRepKind kind, std::vector<GeometryDefinitionIndex_t>& definitions) {
    std::optional<DefinitionMove> ignored;
    for (GeometryDefinitionIndex_t const definition : definitions) {
        target_.known = definition;
        CopySearching(kind, *writer_->FindShape(definition), ignored);
    }
    target_.known.reset();
    definitions.clear();
}

void DefinitionCopier::StopSieving() {
    if (!std::exchange(isSieving_, false)) return;
    for (BRepKind const kind : {BRepKind::kPlain, BRepKind::kWithUV, BRepKind::kWithNormal}) {
        waiting_.clear();
        SieveOf(kind).ReleaseAll(waiting_);
        MakeKnown(kind, waiting_);
    }
}

}  // namespace Quorlan::Tools::Increments
