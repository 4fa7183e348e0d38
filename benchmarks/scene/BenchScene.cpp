#include <benchmarks/scene/BenchScene.h>

#include <benchmarks/scene/LabelItem.h>
#include <benchmarks/scene/LineItem.h>
#include <benchmarks/scene/MarkItem.h>
#include <benchmarks/scene/MeshItem.h>

#include <Viewer3dModule/drawers/BatchedItem3dDrawer.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/InstancedViewerOrientedTextureDrawer.h>
#include <Viewer3dModule/host/CGraphics3dExtension.h>
#include <Viewer3dModule/scene/ViewCulling.h>
#include <framework/app/Application.h>
#include <framework/model/CModelElementManager.h>
#include <framework/model/CProjectModel.h>
#include <tests/support/RenderTarget.h>

#include <QtCore/QCoreApplication>

#include <stdexcept>

BenchScene::BenchScene(const View& view, Drawers drawers)
    : m_view(view)
    , m_drawers(drawers)
    , m_project(Application::instance()->createProject())
    , m_scene(std::make_unique<Scene3d>(m_project->getModel(), nullptr))
{
    if (!m_scene->makeCurrent() || !m_scene->getGLFunctions())
        throw std::runtime_error("there is no OpenGL 4.3 core profile here");
    m_target = std::make_unique<RenderTarget>(gl(), view.size);
}

BenchScene::~BenchScene()
{
    m_scene->makeCurrent();
    m_target.reset();
}

// The one place where the drawers of the workloads are chosen: a drawer that is added here under a type,
// before the type of elements, draws all items of it. Done when the first elements of the type come, because
// programs take time to build, and a host has those that it needs.
void BenchScene::registerType(int type)
{
    Scene3d* scene = m_scene.get();
    scene->makeCurrent();
    if (type == LineElement::Type) {
        if (m_drawers == Batched) {
            addBatched(type, DrawerType::Mono);
            addBatched(type, DrawerType::WideLines);
        }
        CGraphics3dExtension::registerElementType<LineElement, LineItem>(type, scene);
    } else if (type == MeshElement::Type) {
        if (m_drawers == Batched) addBatched(type, DrawerType::Mesh);
        CGraphics3dExtension::registerElementType<MeshElement, MeshItem>(type, scene);
    } else if (type == MarkElement::Type) {
        scene->addDefaultDrawer(MarkItem::DrawerKind,
                                std::make_unique<InstancedViewerOrientedTextureDrawer>(scene));
        CGraphics3dExtension::registerElementType<MarkElement, MarkItem>(type, scene);
    } else if (type == LabelElement::Type) {
        scene->addDefaultDrawer(LabelItem::DrawerKind, std::make_unique<LabelItemDrawer>(scene));
        CGraphics3dExtension::registerElementType<LabelElement, LabelItem>(type, scene);
    }
}

// In place of the clone of the default drawer that the first item would make.
void BenchScene::addBatched(int visibilityType, int drawerType)
{
    const auto& sequential =
        dynamic_cast<const SequentialItem3dDrawer&>(*m_scene->getDefaultDrawer(drawerType));
    m_scene->addDrawer(visibilityType, drawerType,
                       std::make_unique<BatchedItem3dDrawer>(m_scene.get(), sequential.getProgramToShare()));
}

// Likewise for what a view leaves out of its frames: what it does not show.
Scene3d::ItemFilter BenchScene::frameFilter(const PaintContext& context)
{
    return ViewCulling(*m_scene).filter(context);
}

std::vector<CModelElement*> BenchScene::add(std::vector<std::unique_ptr<CModelElement>> elements)
{
    const int type = elements.front()->getType();
    if (!CGraphics3dExtension::isItemTypeDrawable(type, &model())) registerType(type);
    CModelElementManager* manager = model().getCreateItemManager(type);
    std::vector<CModelElement*> added = manager->addItems(std::move(elements));
    m_scene->flushBounds();
    if (m_scene->modelToSceneTransform() != glm::dmat4(1.0))
        throw std::runtime_error("the scene has moved, and the plain programs have not");
    return added;
}

void BenchScene::removeAll(int type)
{
    model().getCreateItemManager(type)->removeAll();
    prepare();
}

void BenchScene::prepare()
{
    QCoreApplication::processEvents();
    m_scene->makeCurrent();
}

PaintContext BenchScene::context() const
{
    PaintContext context;
    context.setViewport(QRect(QPoint(0, 0), m_view.size));
    context.view = m_view.view;
    context.projection = m_view.projection;
    context.vertexArray = m_scene->getDefaultVao();
    context.scene = m_scene.get();
    context.blends = true;
    context.offsetsFills = true;
    return context;
}

void BenchScene::drawFrame()
{
    m_scene->flushBounds();
    m_target->bind();
    m_target->clear(Qt::black);
    const PaintContext pass = context();
    m_scene->drawFrame(pass, nullptr, frameFilter(pass));
    gl().glFinish();
}

QImage BenchScene::picture()
{
    m_scene->makeCurrent();
    return m_target->image();
}
