#include <viewer/elements/OrthophotoItem.h>

#include <viewer/printable.h>

#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/PaintContext.h>
#include <Viewer3dModule/scene/Scene3d.h>
#include <framework/ksp/Log.h>
#include <framework/model/OrthophotoElement.h>

#include <QtGui/QImageReader>

#include <cmath>

namespace {

constexpr int mostBytes = 1 << 30; // of a picture as it is kept on the graphics processor

/// The picture as large as the driver takes it; null when it cannot be read.
QImage read(const QString& path, int longestSide)
{
    QImageReader reader(path);
    const QSize size = reader.size();
    const QSize most = size.boundedTo({longestSide, longestSide});
    QSize wanted = most == size ? size : size.scaled(longestSide, longestSide, Qt::KeepAspectRatio);
    const double bytes = 4.0 * wanted.width() * wanted.height();
    if (bytes > mostBytes) wanted *= std::sqrt(mostBytes / bytes);
    if (wanted != size) {
        reader.setScaledSize(wanted);
        ksp::Log::warning(
            QStringLiteral(
                "%1: the picture of %2 x %3 pixels is too large for the driver and shown as %4 x %5")
                .arg(shownName(path))
                .arg(size.width())
                .arg(size.height())
                .arg(wanted.width())
                .arg(wanted.height()));
    }
    const QImage image = reader.read();
    if (image.isNull())
        ksp::Log::warning(
            QStringLiteral("%1: the picture cannot be read (%2)").arg(shownName(path), reader.errorString()));
    return image;
}

} // namespace

OrthophotoItem::OrthophotoItem(OrthophotoElement* element)
    : Graphics3dItem(element)
{
}

OrthophotoItem::~OrthophotoItem() = default;

void OrthophotoItem::updateData(ISubject* subject)
{
    m_isChanged = true;
    Graphics3dItem::updateData(subject);
}

void OrthophotoItem::updateDataImpl()
{
    const auto* element = static_cast<OrthophotoElement*>(getModelElement());
    if (!element || !scene()) return;
    if (!m_square) m_square = std::make_unique<Rect3dPrimitive>();
    if (m_isChanged && m_path != element->getPath()) loadPicture(element->getPath());
    m_isChanged = false;
    const OrthophotoElement::Frame& frame = element->getFrame();
    const glm::dmat4 place(glm::dvec4(frame.right, 0.0), glm::dvec4(frame.up, 0.0),
                           glm::dvec4(0.0, 0.0, 1.0, 0.0), glm::dvec4(frame.corner, 1.0));
    setTransform(glm::mat4(scene()->modelToSceneTransform() * place), false);
}

void OrthophotoItem::loadPicture(const QString& path)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl) return;
    m_path = path;
    m_texture = GlTexture();
    const QImage image = read(path, GlTexture::longestSide(*gl));
    if (!image.isNull()) m_texture.uploadTopDown(*gl, image);
}

int OrthophotoItem::getDefaultDrawerType() const
{
    return DrawerType::Texture;
}

Drawable3dPrimitive::GeometryInfo OrthophotoItem::getGeometryInfo()
{
    GeometryInfo info;
    info.triangleCount = 2;
    return info;
}

std::vector<glm::vec3> OrthophotoItem::getVertices()
{
    return {{0, 0, 0}, {0, 1, 0}, {1, 0, 0}, {1, 1, 0}};
}

gmx::BoundingBox OrthophotoItem::sceneBoundingBox() const
{
    const auto* element = static_cast<const OrthophotoElement*>(getModelElement());
    return element && scene() ? element->getBounds().transformed(scene()->modelToSceneTransform())
                              : gmx::BoundingBox();
}

void OrthophotoItem::draw(const PaintContext& context)
{
    OpenGLFunctions* gl = currentGLFunctions();
    if (!gl || !m_square || m_texture.name() == 0) return;
    gl->glActiveTexture(GL_TEXTURE0);
    gl->glBindTexture(GL_TEXTURE_2D, m_texture.name());
    // behind the areas of features, which have an offset of 1 and often lie at the same height
    gl->glPolygonOffset(2.0f, 4.0f);
    m_square->draw(context, 1);
    // as Scene3d::initializeGLCommon has it
    gl->glPolygonOffset(1.0f, 1.0f);
    gl->glBindTexture(GL_TEXTURE_2D, 0);
}
