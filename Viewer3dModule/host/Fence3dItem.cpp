#include <Viewer3dModule/host/Fence3dItem.h>

#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/enums/TypeIds.h>
#include <Viewer3dModule/fences/Frustum3D.h>
#include <Viewer3dModule/fences/PrismFence.h>
#include <Viewer3dModule/fences/SphereFence.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/Uniforms.h>

#include <framework/gmx/BoundingBox.h>
#include <framework/ksp/CFileException.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

#include <QtGui/QOpenGLShaderProgram>
#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

namespace {

constexpr unsigned int bufferBinding = 10;

/// What stands before the points in the storage block; see Fence3dItem::bindFrustumPrism.
struct FrustumRecord
{
    glm::vec4 boxMin;
    glm::vec4 boxMax;
    glm::mat4 sceneToFence;
    float zNear;
    float zFar;
    float tanHalfFovy;
    std::uint32_t pointCount;
};
static_assert(sizeof(FrustumRecord) == 112, "the shaders' storage block begins with 112 bytes");

/// More than the record and its points take.
std::uint64_t bufferSize(std::size_t points)
{
    return 144 + sizeof(glm::vec2) * points;
}

/// Of a Frustum3D or a Prism3D.
template <typename Fence>
std::vector<char> makeRecordOf(const Fence& fence, const glm::dmat4& worldToFence,
                               const glm::dmat4& modelToScene)
{
    const std::vector<glm::vec2>& points = fence.fence();
    gmx::BoundingBox box;
    for (const auto& outline : {fence.getNearFence(), fence.getFarFence()})
        for (const glm::dvec3& point : outline)
            box.unite(glm::dvec3(modelToScene * glm::dvec4(point, 1.0)));
    const FrustumRecord record = {glm::vec4(box.getMin(), 1.0),
                                  glm::vec4(box.getMax(), 1.0),
                                  glm::mat4(worldToFence * glm::inverse(modelToScene)),
                                  static_cast<float>(fence.zNear()),
                                  static_cast<float>(fence.zFar()),
                                  static_cast<float>(fence.tanHalfFovy()),
                                  static_cast<std::uint32_t>(points.size())};
    std::vector<char> bytes(bufferSize(points.size()));
    std::memcpy(bytes.data(), &record, sizeof record);
    if (!points.empty())
        std::memcpy(bytes.data() + sizeof record, points.data(), points.size() * sizeof points[0]);
    return bytes;
}

/// A new fence, empty; null for a number that is no type.
std::shared_ptr<Fence3DObject> makeFence(int type)
{
    if (type == Fence3DObject::Frustum3D) return std::make_shared<Frustum3D>();
    if (type == Fence3DObject::PrismFence) return std::make_shared<PrismFence>();
    if (type != Fence3DObject::SphereFence) return nullptr;
    const auto sphere = std::make_shared<SphereFence>();
    sphere->setFence(glm::dvec3(std::numeric_limits<double>::quiet_NaN()), 0.0);
    return sphere;
}

bool canAsk(const PaintContext& context)
{
    return context.program && currentGLFunctions();
}

} // namespace

Fence3dItem::Fence3dItem(CModelElement* owner)
    : CModelElement(owner)
    , m_buffer(bufferBinding, "prism_fence_buffer", bufferSize(0))
{
}

Fence3dItem::~Fence3dItem() = default;

Fence3dItem* Fence3dItem::find(const CProjectModel* model)
{
    const CProject* project = model ? model->getProject() : nullptr;
    return project ? dynamic_cast<Fence3dItem*>(project->getProjectSettings(TypeIds::Fence)) : nullptr;
}

int Fence3dItem::getType() const
{
    return TypeIds::Fence;
}

int Fence3dItem::getFenceType() const
{
    return m_fence ? m_fence->getType() : 0;
}

bool Fence3dItem::empty() const
{
    return !m_fence || m_fence->empty();
}

std::shared_ptr<Fence3DObject> Fence3dItem::getCreateFence(Fence3DObject::Type type)
{
    if (getFenceType() == type) return m_fence;
    const std::shared_ptr<Fence3DObject> fence = makeFence(type);
    if (fence) m_fence = fence;
    return fence;
}

void Fence3dItem::reset()
{
    if (!m_fence) return;
    m_fence.reset();
    notifyObservers();
}

std::shared_ptr<gmx::IFence3D> Fence3dItem::getIFence3D(const glm::dmat4& modelToScene) const
{
    return empty() ? nullptr : m_fence->getIFence3D(modelToScene);
}

void Fence3dItem::setInteractionMode(bool on)
{
    if (m_interactionMode == on) return;
    m_interactionMode = on;
    notifyObservers();
}

bool Fence3dItem::bind(const PaintContext& context)
{
    return canAsk(context) && bind(context, PassUniforms::of(*context.program));
}

bool Fence3dItem::bind(const PaintContext& context, const PassUniforms& locations)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || !context.program || locations.fenceToUse < 0) return false;
    const int kind = empty() ? 0 : getFenceType();
    uniforms::set(*gl, locations.fenceToUse, kind);
    // nobody sees the grey of a pass for depths, and what is measured in it would be taken for what is there
    uniforms::set(*gl, locations.fenceGrayPreview, m_interactionMode && !context.depthOnly);
    switch (kind) {
    case Fence3DObject::Frustum3D:
    case Fence3DObject::PrismFence:
        return bindFrustumPrism(context, locations);
    case Fence3DObject::SphereFence:
        return bindSphere(context, locations);
    default:
        return false;
    }
}

/// Empty for a fence of another kind.
std::vector<char> Fence3dItem::makeRecord(const glm::dmat4& modelToScene) const
{
    if (const auto* frustum = dynamic_cast<const Frustum3D*>(m_fence.get()))
        return makeRecordOf(*frustum, frustum->fromWorldMatrix(), modelToScene);
    if (const auto* prism = dynamic_cast<const PrismFence*>(m_fence.get()))
        return makeRecordOf(prism->prism(), prism->prism().matrix(), modelToScene);
    return {};
}

void Fence3dItem::updateBoxes(const std::vector<glm::vec2>& polygon)
{
    if (polygon == m_boxed) return;
    m_boxed = polygon;
    m_innerBox = fenceInnerBox(m_boxed);
    m_outerBox = fenceOuterBox(m_boxed);
}

std::optional<FenceSides> Fence3dItem::getSides(const glm::dmat4& sceneToModel)
{
    if (empty()) return std::nullopt;
    if (const std::optional<SweptFence> swept = sweptFence(*m_fence)) updateBoxes(*swept->polygon);
    return FenceSides(*m_fence, m_innerBox, m_outerBox, sceneToModel);
}

void Fence3dItem::setSweptUniforms(OpenGLFunctions& gl, const PassUniforms& locations,
                                   const SweptFence& swept, const glm::dmat4& sceneToModel)
{
    updateBoxes(*swept.polygon);
    const auto vectorOf = [](const FenceBox& box) { return glm::vec4(box.low, box.high); };
    uniforms::set(gl, locations.fenceInnerBox, vectorOf(m_innerBox));
    uniforms::set(gl, locations.fenceOuterBox, vectorOf(m_outerBox));
    uniforms::set(gl, locations.fenceEnds, glm::vec2(glm::dvec2(swept.zNear, swept.zFar)));
    uniforms::set(gl, locations.fenceCount, static_cast<int>(swept.polygon->size()));
    uniforms::set(gl, locations.fenceFromScene, glm::mat4(swept.fromModel * sceneToModel));
}

bool Fence3dItem::bindFrustumPrism(const PaintContext& context)
{
    return canAsk(context) && bindFrustumPrism(context, PassUniforms::of(*context.program));
}

bool Fence3dItem::bindSphere(const PaintContext& context)
{
    return canAsk(context) && bindSphere(context, PassUniforms::of(*context.program));
}

// Mapping a buffer that passes are still drawing with makes the driver wait for them. So what is there
// already is not written again: of all the passes of a frame the first one writes.
bool Fence3dItem::bindFrustumPrism(const PaintContext& context, const PassUniforms& locations)
{
    if (!context.scene) return false;
    std::vector<char> bytes = makeRecord(context.scene->modelToSceneTransform());
    OpenGLFunctions* gl = currentGLFunctions();
    if (bytes.empty() || !gl) return false;
    setSweptUniforms(*gl, locations, *sweptFence(*m_fence), context.scene->sceneToModelTransform());
    if (bytes != m_written) {
        m_written.clear();
        if (!m_buffer.resize(bytes.size())) return false;
        if (void* memory = m_buffer.map(false)) {
            std::memcpy(memory, bytes.data(), bytes.size());
            m_buffer.unmap();
            m_written = std::move(bytes);
        }
    }
    return m_buffer.bind(*context.program);
}

bool Fence3dItem::bindSphere(const PaintContext& context, const PassUniforms& locations)
{
    const auto* fence = dynamic_cast<const SphereFence*>(m_fence.get());
    OpenGLFunctions* gl = currentGLFunctions();
    if (!fence || !gl || !context.scene) return false;
    const glm::dmat4 modelToScene = context.scene->modelToSceneTransform();
    const double radius = glm::length(modelToScene * glm::dvec4(0.0, 0.0, fence->getRadius(), 0.0));
    const double signedRadius = std::copysign(radius, fence->getRadius()); // below 0 it contains nothing
    const glm::dvec3 center = context.scene->mapFromModel(fence->getCenter());
    uniforms::set(*gl, locations.sphereFenceRadius, static_cast<float>(signedRadius));
    uniforms::set(*gl, locations.sphereFenceCenter, glm::vec3(center));
    uniforms::set(*gl, locations.fenceFromScene, glm::mat4(1.0f));
    return true;
}

void Fence3dItem::serialize(CQtArchive& archive)
{
    if (!archive.isLoading()) {
        serializeFields(archive);
        return;
    }
    Fence3dItem loaded; // taken over as a whole or not at all
    loaded.serializeFields(archive);
    takeStored(loaded);
    m_fence = std::move(loaded.m_fence);
}

void Fence3dItem::serializeFields(CQtArchive& archive)
{
    CModelElement::serialize(archive);
    archive.beginObject();
    std::int32_t type = getFenceType();
    archive.value(type);
    if (archive.isLoading()) m_fence = makeFence(type);
    if (m_fence)
        m_fence->serialize(archive);
    else if (type != 0)
        throw ksp::CFileException(ksp::CFileException::Damaged,
                                  QStringLiteral("a fence is of the unknown kind %1").arg(type));
    archive.endObject(1);
    archive.finish();
}
