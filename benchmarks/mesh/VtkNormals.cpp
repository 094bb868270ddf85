#include "VtkNormals.h"

#include <vtkCellArray.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkPolyDataNormals.h>
#include <vtkTriangleFilter.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

using Quorlan::Testing::RawBRep;
using Quorlan::Testing::RawHole;

/// The peer has no faces with holes: each hole is joined to the loop by a bridge from the nearest vertex, there and
/// back, which is what its users do. Holes are taken in their order, so that each finds the one before it.
std::vector<std::uint16_t> KeyholeLoop(RawBRep const& shape, std::uint16_t face) {
    std::vector<std::uint16_t> loop = *(*shape.faces)[face];
    if (!shape.holes) return loop;
    auto const distance = [&](std::uint16_t a, std::uint16_t b) {
        return Length((*shape.vertices)[a] - (*shape.vertices)[b]);
    };
    for (auto const& hole : *shape.holes) {
        if (hole.face != face) continue;
        std::size_t from = 0;
        std::size_t to = 0;
        for (std::size_t i = 0; i < loop.size(); ++i) {
            for (std::size_t j = 0; j < hole.loop->size(); ++j) {
                if (distance(loop[i], (*hole.loop)[j]) < distance(loop[from], (*hole.loop)[to])) from = i, to = j;
            }
        }
        std::vector<std::uint16_t> detour;
        for (std::size_t j = 0; j <= hole.loop->size(); ++j)
            detour.push_back((*hole.loop)[(to + j) % hole.loop->size()]);
        detour.push_back(loop[from]);
        loop.insert(loop.begin() + static_cast<std::ptrdiff_t>(from) + 1, detour.begin(), detour.end());
    }
    return loop;
}

}  // namespace

struct VtkNormals::Pipeline {
    vtkNew<vtkPolyData> mesh;
    vtkNew<vtkPolyDataNormals> normals;
    vtkNew<vtkTriangleFilter> triangles;
};

VtkNormals::VtkNormals(Quorlan::Testing::RawBRep const& shape) : pipeline_(std::make_unique<Pipeline>()) {
    vtkNew<vtkPoints> points;
    for (auto const& v : *shape.vertices) points->InsertNextPoint(v.x, v.y, v.z);
    vtkNew<vtkCellArray> faces;
    for (std::uint16_t f = 0; f < shape.faces->size(); ++f) {
        auto const loop = KeyholeLoop(shape, f);
        faces->InsertNextCell(static_cast<int>(loop.size()));
        for (auto const index : loop) faces->InsertCellPoint(index);
    }
    auto& p = *pipeline_;
    p.mesh->SetPoints(points);
    p.mesh->SetPolys(faces);
    p.normals->SetInputData(p.mesh);
    p.normals->SplittingOn();
    p.normals->ConsistencyOff();
    p.triangles->SetInputConnection(p.normals->GetOutputPort());
}

VtkNormals::~VtkNormals() = default;

long long VtkNormals::Build(float angle) {
    auto& p = *pipeline_;
    p.normals->SetFeatureAngle(static_cast<double>(angle) * 180 / 3.141592653589793);
    p.normals->Modified();
    p.triangles->Update();
    return p.triangles->GetOutput()->GetNumberOfPolys();
}
