#include <viewer/elements/StationItem.h>

#include <viewer/elements/LabelDrawer.h>
#include <viewer/elements/NameDrawer.h>
#include <viewer/elements/NameItem.h>
#include <viewer/elements/labelText.h>

#include <Viewer3dModule/drawables/GlBuffer.h>
#include <Viewer3dModule/drawables/IconTexture.h>
#include <Viewer3dModule/drawables/vertex_attributes.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/Item3dDrawer.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <Viewer3dModule/shaders/DrawMode.h>
#include <framework/model/StationElement.h>

#include <QtGui/QPainter>
#include <glm/gtc/matrix_transform.hpp>

namespace {

const QSize signSize(20, 15);    // pixels
const QPointF lens(10.5, 8.5);   // its middle, the middle of a pixel
const QColor body(40, 44, 60);   // which stands out from the ground, and its rim
const QColor rim(255, 255, 255); // from dark things
const QColor glass(120, 190, 255);

/// A camera seen from its front.
QImage paintSign()
{
    QImage image(signSize, QImage::Format_RGBA8888);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(rim, 1.0));
    painter.setBrush(body);
    painter.drawRoundedRect(QRectF(6.5, 0.5, 8.0, 5.0), 1.5, 1.5); // the finder
    painter.drawRoundedRect(QRectF(0.5, 2.5, 19.0, 12.0), 2.0, 2.0);
    painter.setBrush(glass);
    painter.drawEllipse(lens, 3.5, 3.5);
    return image;
}

} // namespace

/// The picture and the point that it is drawn at: the origin of every station's own coordinates.
class StationItem::Sign
{
public:
    Sign()
        : m_icon(paintSign())
    {
        m_icon.setOffset({lens.x(), signSize.height() - lens.y()});
        if (OpenGLFunctions* gl = currentGLFunctions())
            m_point.upload(*gl, std::vector<glm::vec3>{glm::vec3(0.0f)}, GL_STATIC_DRAW);
    }
    void draw(const PaintContext& context)
    {
        OpenGLFunctions* gl = currentGLFunctions();
        if (!gl) return;
        uniforms::set(*gl, Item3dDrawer::itemUniforms(context).itemColor, QColor(Qt::white));
        gl->glBindVertexArray(context.vertexArray);
        vertex_attributes::setFloats(*gl, 0, m_point, {3, 0, 0, 0});
        m_icon.draw(context, 1);
    }

private:
    IconTexture m_icon;
    GlBuffer m_point;
};

StationItem::StationItem(StationElement* element)
    : Graphics3dItem(element)
{
}

StationItem::~StationItem() = default;

std::shared_ptr<StationItem::Sign> StationItem::sharedSign()
{
    static std::weak_ptr<Sign> shared;
    std::shared_ptr<Sign> sign = shared.lock();
    if (!sign) {
        sign = std::make_shared<Sign>();
        shared = sign;
    }
    return sign;
}

void StationItem::updateDataImpl()
{
    const auto* element = static_cast<StationElement*>(getModelElement());
    if (!element || !scene()) return;
    if (!m_sign) m_sign = sharedSign();
    setTransform(glm::mat4(glm::translate(scene()->modelToSceneTransform(), element->getCenter())), false);
    renewName(*element);
}

void StationItem::renewName(const StationElement& element)
{
    LabelDrawer* labels = LabelDrawer::find(*scene());
    const QString text = labels ? labelText(element, {}, labels->property()) : QString();
    const float aboveSign = static_cast<float>(lens.y()) + 1.0f;
    if (text.isEmpty())
        m_name.reset();
    else if (m_name)
        m_name->setText(text, aboveSign);
    else
        m_name = std::make_unique<NameItem>(getModelElement(), labels->names(), text, aboveSign);
    if (!m_name) return;
    m_name->setPlace(scene()->mapFromModel(element.getCenter()));
    m_name->setVisible(Drawable3dItem::isVisible());
}

void StationItem::updateVisibility()
{
    Graphics3dItem::updateVisibility();
    if (m_name) m_name->setVisible(Drawable3dItem::isVisible());
}

int StationItem::getDefaultDrawerType() const
{
    return DrawerType::Caption;
}

gmx::BoundingBox StationItem::sceneBoundingBox() const
{
    gmx::BoundingBox box;
    const auto* element = static_cast<const StationElement*>(getModelElement());
    if (element && scene()) box.unite(scene()->mapFromModel(element->getCenter()));
    return box;
}

// Captions, of which this is one, do not glue; and nothing stands where a depth map would have it.
void StationItem::draw(const PaintContext& context)
{
    if (context.depthOnly || context.drawMode == DrawMode::GlueMaskDraw) return;
    if (m_sign && context.program) m_sign->draw(context);
}
