#include <viewer/FenceShape.h>

#include <Viewer3dModule/host/Fence3dItem.h>
#include <framework/ksp/CommonError.h>
#include <framework/model/CProject.h>

namespace {

template <typename Fence>
bool copyTo(FenceShape& shape, const Fence3DObject* fence)
{
    const auto* own = dynamic_cast<const Fence*>(fence);
    if (own) shape = *own;
    return own != nullptr;
}

struct Give
{
    Fence3dItem& element;

    void operator()(std::monostate) const { element.reset(); }
    template <typename Fence>
    void operator()(const Fence& fence) const
    {
        *std::dynamic_pointer_cast<Fence>(element.getCreateFence(fence.getType())) = fence;
        element.notifyObservers();
    }
};

} // namespace

FenceShape shapeOf(const Fence3dItem& element)
{
    FenceShape shape;
    const Fence3DObject* fence = element.getFence().get();
    if (!copyTo<Frustum3D>(shape, fence) && !copyTo<SphereFence>(shape, fence))
        copyTo<PrismFence>(shape, fence);
    return shape;
}

void setShape(Fence3dItem& element, const FenceShape& shape)
{
    std::visit(Give{element}, shape);
}

Fence3dItem& fenceElement(const CProject& project)
{
    Fence3dItem* element = Fence3dItem::find(project.getModel());
    if (!element) throw ksp::CommonError(QStringLiteral("this project has no place for a fence"));
    return *element;
}
