#include <Tools/VertexNormalBuilder.h>

#include "mesh/BRepLoops.h"
#include "mesh/CornerBuilder.h"
#include "mesh/FaceTriangulator.h"
#include "model/ModelView.h"

#include <cstring>
#include <type_traits>

namespace Quorlan::Tools {
namespace {

constexpr float kStoredNormalsAngle = 0.31415927F;  ///< [rad] crease angle of BReps with stored normals

static_assert(sizeof(glm::vec3) == sizeof(Vector3f) && std::is_trivially_copyable_v<glm::vec3>);

/// Entry `index` of a vector of tables; null where it or the vector is absent.
template <class Table>
Table const* FindTable(flatbuffers::Vector<flatbuffers::Offset<Table>> const* tables, unsigned int index) {
    return index < CountOf(tables) ? tables->Get(index) : nullptr;
}

/// A convex quadrilateral is split along the diagonal from its first vertex.
bool IsConvexQuad(Vector3f const& p0, Vector3f const& p1, Vector3f const& p2, Vector3f const& p3) {
    Vector3f const e2 = p2 - p0;
    return Dot(Cross(p1 - p0, e2), Cross(e2, p3 - p0)) > 0;
}

}  // namespace

/// The working memory of a build, and the steps over it.
class VertexNormalBuilder::Workspace {
public:
    void Build(BRepView const& brep, float angle, VertexNormalBuilder& out) {
        loops_.Read(brep);
        positions_.resize(brep.vertexCount);
        for (std::uint32_t v = 0; v < brep.vertexCount; ++v) positions_[v] = brep.GetPosition(v);
        corners_.Begin(loops_, positions_.data(), brep.vertexCount, angle, out.corners_);

        auto hole = loops_.GetHolesByFace().begin();
        auto const holesEnd = loops_.GetHolesByFace().end();
        for (std::uint32_t f = 0; f < loops_.GetFaceCount(); ++f) {
            auto const holesBegin = hole;
            while (hole != holesEnd && hole->face == f) ++hole;
            if (holesBegin == hole) {
                AddFace(f, out.triangles_);
            } else {
                AddFaceWithHoles(f, &*holesBegin, static_cast<std::size_t>(hole - holesBegin), out.triangles_);
            }
        }

        corners_.Finish();
        CopyVectors(positions_.data(), positions_.size(), out.positions_);
        out.normals_.resize(corners_.GetNormals().GetSize());
        for (std::uint32_t i = 0; i < out.normals_.size(); ++i) {
            Vector3f const& normal = corners_.GetNormals().Get(i);
            out.normals_[i] = {normal.x, normal.y, normal.z};
        }
    }

private:
    static void CopyVectors(Vector3f const* from, std::size_t count, std::vector<glm::vec3>& to) {
        to.resize(count);
        if (count != 0) std::memcpy(to.data(), from, count * sizeof(Vector3f));
    }

    void AddFace(std::uint32_t face, std::vector<triangle_s>& triangles) {
        LoopRange const loop = loops_.GetOuterLoop(face);
        std::uint32_t const size = loop.GetSize();
        if (size < 3) return;
        if (faceCorners_.size() < size) faceCorners_.resize(size);
        std::uint16_t* const c = faceCorners_.data();
        corners_.GetCorners(face, loop, c);
        if (size == 3) {
            triangles.push_back({c[0], c[1], c[2]});
            return;
        }
        std::uint16_t const* const v = loops_.GetIndices() + loop.begin;
        if (size == 4 && IsConvexQuad(positions_[v[0]], positions_[v[1]], positions_[v[2]], positions_[v[3]])) {
            triangles.push_back({c[0], c[1], c[2]});
            triangles.push_back({c[0], c[2], c[3]});
            return;
        }
        faceLoops_.assign(1, {v, size});
        Triangulate(face, triangles);
    }

    void AddFaceWithHoles(std::uint32_t face, BRepLoops::Hole const* holes, std::size_t holeCount,
                          std::vector<triangle_s>& triangles) {
        std::size_t size = 0;
        faceLoops_.clear();
        auto const addLoop = [&](LoopRange loop) {
            faceCorners_.resize(std::max(faceCorners_.size(), size + loop.GetSize()));
            corners_.GetCorners(face, loop, faceCorners_.data() + size);
            size += loop.GetSize();
            faceLoops_.push_back({loops_.GetIndices() + loop.begin, loop.GetSize()});
        };
        addLoop(loops_.GetOuterLoop(face));
        for (std::size_t h = 0; h < holeCount; ++h) addLoop(holes[h].range);
        Triangulate(face, triangles);
    }

    void Triangulate(std::uint32_t face, std::vector<triangle_s>& triangles) {
        auto const& indices = triangulator_.Triangulate(faceLoops_, corners_.GetFaceNormal(face), positions_.data());
        std::uint16_t const* const c = faceCorners_.data();
        for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
            triangles.push_back({c[indices[i]], c[indices[i + 1]], c[indices[i + 2]]});
        }
    }

    BRepLoops loops_;
    std::vector<Vector3f> positions_;
    CornerBuilder corners_;
    FaceTriangulator triangulator_;
    std::vector<IndexLoop> faceLoops_;
    std::vector<std::uint16_t> faceCorners_;  ///< of the face at hand, loop after loop; never shrinks
};

VertexNormalBuilder::VertexNormalBuilder() = default;
VertexNormalBuilder::~VertexNormalBuilder() = default;
VertexNormalBuilder::VertexNormalBuilder(VertexNormalBuilder&& other) noexcept = default;
VertexNormalBuilder& VertexNormalBuilder::operator=(VertexNormalBuilder&& other) noexcept = default;

VertexNormalBuilder::VertexNormalBuilder(VertexNormalBuilder const& other)
    : triangles_(other.triangles_),
      corners_(other.corners_),
      positions_(other.positions_),
      normals_(other.normals_),
      texcoords_(other.texcoords_) {}

VertexNormalBuilder& VertexNormalBuilder::operator=(VertexNormalBuilder const& other) {
    return *this = VertexNormalBuilder(other);
}

void VertexNormalBuilder::Clear() {
    triangles_.clear();
    corners_.clear();
    positions_.clear();
    normals_.clear();
    texcoords_.clear();
}

template <class Table>
void VertexNormalBuilder::BuildMesh(Table const* brep, float angle) {
    if (brep == nullptr) return;
    if (workspace_ == nullptr) workspace_ = std::make_unique<Workspace>();
    workspace_->Build(BRepView(*brep), angle, *this);
}

bool VertexNormalBuilder::Build(std::vector<char> const& buffer, unsigned int geometryDefinition, float angle) {
    auto const* const geometry = FindGeometry(buffer);
    if (geometry == nullptr || geometryDefinition >= CountOf(geometry->definitions())) return false;
    auto const* const definition = geometry->definitions()->Get(geometryDefinition);
    switch (definition->kind()) {
        case kFacetedBRep: return BuildBRep(buffer, definition->kindIndex(), angle);
        case kBRepWithUV: return BuildBRepWithUV(buffer, definition->kindIndex(), angle);
        case kBRepWithNormal: return BuildBRepWithNormal(buffer, definition->kindIndex());
        default: return false;
    }
}

bool VertexNormalBuilder::BuildBRep(std::vector<char> const& buffer, unsigned int index, float angle) {
    Clear();
    auto const* const geometry = FindGeometry(buffer);
    if (geometry != nullptr) BuildMesh(FindTable(geometry->facetedBReps(), index), angle);
    return buffer.size() >= 8;
}

bool VertexNormalBuilder::BuildBRepWithNormal(std::vector<char> const& buffer, unsigned int index) {
    Clear();
    auto const* const geometry = FindGeometry(buffer);
    auto const* const brep = geometry == nullptr ? nullptr : FindTable(geometry->brepsWithNormal(), index);
    BuildMesh(brep, kStoredNormalsAngle);
    if (brep != nullptr) {
        normals_.clear();
        normals_.reserve(CountOf(brep->vertices()));
        for (std::uint32_t v = 0; v < CountOf(brep->vertices()); ++v) {
            auto const* const vertex = brep->vertices()->Get(v);
            normals_.emplace_back(vertex->nx(), vertex->ny(), vertex->nz());
        }
    }
    return buffer.size() >= 8;
}

bool VertexNormalBuilder::BuildBRepWithUV(std::vector<char> const& buffer, unsigned int index, float angle) {
    Clear();
    auto const* const geometry = FindGeometry(buffer);
    auto const* const brep = geometry == nullptr ? nullptr : FindTable(geometry->brepsWithUV(), index);
    BuildMesh(brep, angle);
    if (brep != nullptr) {
        texcoords_.reserve(CountOf(brep->vertices()));
        for (std::uint32_t v = 0; v < CountOf(brep->vertices()); ++v) {
            auto const* const vertex = brep->vertices()->Get(v);
            texcoords_.emplace_back(vertex->u(), vertex->v());
        }
    }
    return buffer.size() >= 8;
}

}  // namespace Quorlan::Tools
