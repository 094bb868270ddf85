#pragma once

#include "support/RawModel.h"

#include <memory>

/// The same work with VTK: vtkPolyDataNormals with a feature angle and splitting, then vtkTriangleFilter.
class VtkNormals {
public:
    /// REQUIRES: no face has holes.
    explicit VtkNormals(Quorlan::Testing::RawBRep const& shape);
    ~VtkNormals();

    /// Returns the number of triangles.
    long long Build(float angle);

private:
    struct Pipeline;
    std::unique_ptr<Pipeline> pipeline_;
};
