#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <framework/model/CModelElement.h>

#include <glm/glm.hpp>

#include <string>
#include <vector>

class CProjectModel;

/// Where the light of the 3D views comes from: one default light and, for named views, lights of their own. A
/// settings element of a project. Changes tell nobody by themselves; call notifyObservers() after them.
class VIEWER3DMODULE_EXPORT Scene3dViewLightingSettings : public CModelElement
{
public:
    /// The light of one view.
    struct VIEWER3DMODULE_EXPORT ViewData
    {
        /// Light from 45 degrees to the side and 45 degrees above, on.
        explicit ViewData(const std::string& viewName = {}, const std::wstring& viewCaption = {});

        /// The unit vector towards the light.
        glm::vec3 getLightDirection() const;

        std::string name;     ///< the view's key, compared byte for byte
        std::wstring caption; ///< the view's name for the user
        float azimuth;        ///< radians, horizontally from +y towards +x
        float elevation;      ///< radians above the horizontal
        bool flag = true;     ///< whether the light is on
    };

    /// An archive holds no more views; see serialize().
    static constexpr std::size_t MaxStoredViews = 16;

    /// owner is not owned and may be null.
    explicit Scene3dViewLightingSettings(CModelElement* owner = nullptr);
    /// Copies and moves take all fields; what the element is in its project is treated as by CModelElement.
    Scene3dViewLightingSettings(const Scene3dViewLightingSettings&) = default;
    Scene3dViewLightingSettings(Scene3dViewLightingSettings&&) = default;
    Scene3dViewLightingSettings& operator=(const Scene3dViewLightingSettings&) = default;
    Scene3dViewLightingSettings& operator=(Scene3dViewLightingSettings&&) = default;
    ~Scene3dViewLightingSettings() override;

    /// The lighting settings of the model's project; null when the model is, or its project has none. O(1).
    static const Scene3dViewLightingSettings* find(const CProjectModel* model);

    int getType() const override;

    /// Adds a view with a new light; a name that is there already keeps its view as it is.
    void addView(const std::string& name, const std::wstring& caption);
    /// The light that is kept under the name; the default light for an empty or unknown name. The reference
    /// is good until a view is added.
    ViewData& data(const std::string& name);
    /// The light that the view is to be drawn with: data(name), or the default light when all views share it.
    const ViewData& getView(const std::string& name) const;
    /// The views that have lights of their own, in the order in which they were added.
    const std::vector<ViewData>& getViews() const { return m_views; }
    /// Whether every view is drawn with the default light; false at first. Not stored.
    bool isAllView() const { return m_isAllView; }
    void setIsAllView(bool isAllView) { m_isAllView = isAllView; }

    /// Reads or writes the default light and the views. Read views are added to those that are there. More
    /// than MaxStoredViews views are refused with ksp::CFileException (Limit): on storing before anything is
    /// written, on loading when their number was read, the element keeping what was read until then.
    void serialize(CQtArchive& archive) override;

private:
    const ViewData& lookUp(const std::string& name) const;
    void storeViews(CQtArchive& archive);
    void loadViews(CQtArchive& archive);

    ViewData m_defaultView;
    std::vector<ViewData> m_views;
    bool m_isAllView = false;
};
