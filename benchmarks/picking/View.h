#pragma once

#include <Tools/Picking/ViewProjection.h>

namespace CampusBenchmark {

/// A pixel and the camera it belongs to.
struct View {
    Quorlan::Tools::Picking::ViewProjection camera;
    double x = 0;
    double y = 0;
};

/// A picker at the view's pixel.
template <class Picker>
Picker MakePicker(View const& view) {
    Picker picker;
    picker.SetViewProjection(view.camera);
    picker.SetPickPositionX(view.x);
    picker.SetPickPositionY(view.y);
    return picker;
}

}  // namespace CampusBenchmark
