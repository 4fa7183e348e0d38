#include <Viewer3dModule/host/View3dSettings.h>

#include <Viewer3dModule/enums/TypeIds.h>

#include <framework/app/Application.h>
#include <framework/app/ISettingsStorage.h>
#include <framework/app/XmlSerializer.h>

namespace {

const QString useView3d = QStringLiteral("useView3d");
const QString backgroundColor3d = QStringLiteral("backgroundColor3d");
const QString line3DTempColor = QStringLiteral("line3DTempColor");
const QString node3DColor = QStringLiteral("node3DColor");
const QString marker3DColor = QStringLiteral("marker3DColor");
const QString frozenItemsColor3d = QStringLiteral("frozenItemsColor3d");
const QString photoOverlayColor = QStringLiteral("photoOverlayColor");
const QString line3Dwidth = QStringLiteral("line3Dwidth");
const QString node3DSize = QStringLiteral("node3DSize");
const QString nearPlaneDist = QStringLiteral("nearPlaneDist");

/// Writes a value by one of the serializer's functions unless the key is there.
template <typename Value>
void writeMissing(ISettingsStorage& storage, const QString& key, void (*write)(QDomElement, Value),
                  const std::decay_t<Value>& value)
{
    if (storage.getElement(key).isNull()) write(storage.getCreateElement(key), value);
}

} // namespace

View3dSettings::View3dSettings(ISettingsStorage* storage, QObject* parent)
    : CSettings(storage, parent)
{
}

View3dSettings::~View3dSettings() = default;

View3dSettings* View3dSettings::getInstance()
{
    const Application* application = Application::instance();
    return application ? qobject_cast<View3dSettings*>(application->getSettings(TypeIds::ViewSettings))
                       : nullptr;
}

void View3dSettings::writeDefaults(ISettingsStorage& storage)
{
    const View3dSettings values(nullptr, nullptr);
    writeMissing(storage, backgroundColor3d, XmlSerializer::writeColor, values.m_backgroundColor);
    writeMissing(storage, line3DTempColor, XmlSerializer::writeColor, values.m_interactionColor);
    writeMissing(storage, node3DColor, XmlSerializer::writeColor, values.m_nodeColor);
    writeMissing(storage, marker3DColor, XmlSerializer::writeColor, values.m_selectedColor);
    writeMissing(storage, frozenItemsColor3d, XmlSerializer::writeColor, values.m_frozenItemColor);
    writeMissing(storage, photoOverlayColor, XmlSerializer::writeColor, values.m_photoOverlayColor);
    writeMissing(storage, line3Dwidth, XmlSerializer::writeInt, values.m_lineWidth);
    writeMissing(storage, node3DSize, XmlSerializer::writeInt, values.m_nodeSize);
    writeMissing(storage, nearPlaneDist, XmlSerializer::writeDouble, values.m_nearPlaneDist);
    writeMissing(storage, useView3d, XmlSerializer::writeInt, values.m_enabled ? 1 : 0);
}

void View3dSettings::load()
{
    const ISettingsStorage* storage = getStorage();
    if (!storage) return;
    const auto color = [storage](const QString& key) {
        return XmlSerializer::readColor(storage->getElement(key), QColor());
    };
    m_backgroundColor = color(backgroundColor3d);
    m_interactionColor = color(line3DTempColor);
    m_nodeColor = color(node3DColor);
    m_selectedColor = color(marker3DColor);
    m_frozenItemColor = color(frozenItemsColor3d);
    m_photoOverlayColor = color(photoOverlayColor);
    m_lineWidth = XmlSerializer::readInt(storage->getElement(line3Dwidth), 0);
    m_nodeSize = XmlSerializer::readInt(storage->getElement(node3DSize), 0);
    m_nearPlaneDist = XmlSerializer::readDouble(storage->getElement(nearPlaneDist), 1.0);
    m_enabled = XmlSerializer::readInt(storage->getElement(useView3d), 0) != 0;
}
