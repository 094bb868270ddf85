#include "mesh/VtkNormals.h"

#include <vtkCellArray.h>
#include <vtkNew.h>
#include <vtkPoints.h>
#include <vtkPolyData.h>
#include <vtkPolyDataNormals.h>
#include <vtkTriangleFilter.h>

#include <cstddef>
#include <cstdint>

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
        auto const& loop = *(*shape.faces)[f];
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
