#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <framework/app/CSettings.h>

#include <QtGui/QColor>

/// Appearance of the 3D views, application-wide: colours, widths, the near plane and whether there is a 3D
/// view.
///
/// The plug-in makes the one object that the application keeps. It shows the values of the table below until
/// load() is called, which replaces every field: a key that the store lacks then gives an invalid colour, 0,
/// or false, and only the near plane keeps its 1. A host that does not want this calls writeDefaults() first.
///
/// | Key               | At first  |                                          |
/// |-------------------|-----------|------------------------------------------|
/// | useView3d         | 1         | whether there is a 3D view (not 0: yes)  |
/// | backgroundColor3d | lightGray |                                          |
/// | line3DTempColor   | magenta   | what the user is about to do             |
/// | node3DColor       | magenta   | nodes                                    |
/// | marker3DColor     | yellow    | what is selected                         |
/// | frozenItemsColor3d| blue      | what cannot be changed                   |
/// | photoOverlayColor | gray      | what lies over a photo                   |
/// | line3Dwidth       | 1         | pixels                                   |
/// | node3DSize        | 15        | pixels                                   |
/// | nearPlaneDist     | 1.0       | scene units from the eye                 |
class VIEWER3DMODULE_EXPORT View3dSettings : public CSettings
{
    Q_OBJECT
public:
    /// storage is not owned and outlives the settings; null serves until load() is called, which then does
    /// nothing.
    View3dSettings(ISettingsStorage* storage, QObject* parent);
    ~View3dSettings() override;

    /// The application's settings; null without an application, before the plug-in has registered them, or
    /// when something of another class is registered in their place.
    static View3dSettings* getInstance();
    /// Writes the values of the table above under the keys that the store lacks; the others stay.
    static void writeDefaults(ISettingsStorage& storage);

    void load() override;

    bool id3dEnabled() const { return m_enabled; }
    QColor getBackgroundColor() const { return m_backgroundColor; }
    QColor getInteractionColor() const { return m_interactionColor; }
    QColor getNodeColor() const { return m_nodeColor; }
    QColor getSelectedColor() const { return m_selectedColor; }
    QColor getFrozenItemColor() const { return m_frozenItemColor; }
    QColor getPhotoOverlayColor() const { return m_photoOverlayColor; }
    int getLineWidth() const { return m_lineWidth; }
    int getNodeSize() const { return m_nodeSize; }
    double getNearPlaneDist() const { return m_nearPlaneDist; }

private:
    bool m_enabled = true;
    QColor m_backgroundColor = Qt::lightGray;
    QColor m_interactionColor = Qt::magenta;
    QColor m_nodeColor = Qt::magenta;
    QColor m_selectedColor = Qt::yellow;
    QColor m_frozenItemColor = Qt::blue;
    QColor m_photoOverlayColor = Qt::gray;
    int m_lineWidth = 1;
    int m_nodeSize = 15;
    double m_nearPlaneDist = 1.0;
};
