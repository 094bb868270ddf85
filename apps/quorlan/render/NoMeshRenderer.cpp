#include "Command.h"
#include "render/MeshRenderer.h"

namespace QuorlanProgram {

bool CanRenderMeshes() { return false; }

Picture RenderMeshes(ModelFile const&, PickScene const&, std::vector<Surface> const&,
                     Quorlan::Tools::Picking::ViewProjection const&, MeshPictureOptions const&) {
    throw Failure("this program was built without Embree");
}

}  // namespace QuorlanProgram
