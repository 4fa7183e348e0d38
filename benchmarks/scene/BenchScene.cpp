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
    , m_project(Application::instance()->createProject())
    , m_scene(std::make_unique<Scene3d>(m_project->getModel(), nullptr))
{
    if (!m_scene->makeCurrent() || !m_scene->getGLFunctions())
        throw std::runtime_error("there is no OpenGL 4.3 core profile here");
    m_target = std::make_unique<RenderTarget>(gl(), view.size);
    setUpDrawers(drawers);
}

BenchScene::~BenchScene()
{
    m_scene->makeCurrent();
    m_target.reset();
}

// The one place where the drawers of the workloads are chosen: a drawer that is added here under a type,
// before the types of elements, draws all items of it.
void BenchScene::setUpDrawers(Drawers drawers)
{
    if (drawers == Batched) {
        addBatched(LineElement::Type, DrawerType::Mono);
        addBatched(LineElement::Type, DrawerType::WideLines);
        addBatched(MeshElement::Type, DrawerType::Mesh);
    }
    m_scene->addDefaultDrawer(MarkItem::DrawerKind,
                              std::make_unique<InstancedViewerOrientedTextureDrawer>(m_scene.get()));
    m_scene->addDefaultDrawer(LabelItem::DrawerKind, std::make_unique<LabelItemDrawer>(m_scene.get()));

    CGraphics3dExtension::registerElementType<LineElement, LineItem>(LineElement::Type, m_scene.get());
    CGraphics3dExtension::registerElementType<MeshElement, MeshItem>(MeshElement::Type, m_scene.get());
    CGraphics3dExtension::registerElementType<MarkElement, MarkItem>(MarkElement::Type, m_scene.get());
    CGraphics3dExtension::registerElementType<LabelElement, LabelItem>(LabelElement::Type, m_scene.get());
}

// In place of the clone of the default drawer that the first item would make.
void BenchScene::addBatched(int visibilityType, int drawerType)
{
    const auto& sequential =
        dynamic_cast<const SequentialItem3dDrawer&>(*m_scene->getDefaultDrawer(drawerType));
    m_scene->addDrawer(visibilityType, drawerType,
                       std::make_unique<BatchedItem3dDrawer>(m_scene.get(), sequential.getDefaultProgram()));
}

// Likewise for what a view leaves out of its frames: what it does not show.
Scene3d::ItemFilter BenchScene::frameFilter(const PaintContext& context)
{
    return ViewCulling(*m_scene).filter(context);
}

std::vector<CModelElement*> BenchScene::add(std::vector<std::unique_ptr<CModelElement>> elements)
{
    CModelElementManager* manager = model().getCreateItemManager(elements.front()->getType());
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
