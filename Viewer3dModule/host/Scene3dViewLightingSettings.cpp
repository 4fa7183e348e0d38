#include <Viewer3dModule/host/Scene3dViewLightingSettings.h>

#include <Viewer3dModule/enums/TypeIds.h>

#include <framework/gmx/math_utils.h>
#include <framework/ksp/CFileException.h>
#include <framework/model/CProject.h>
#include <framework/model/CProjectModel.h>

#include <algorithm>
#include <cmath>

namespace {

using ViewData = Scene3dViewLightingSettings::ViewData;

/// Version of the element that brought the lights of single views.
constexpr unsigned viewsVersion = 4;

void checkCount(std::size_t count)
{
    if (count <= Scene3dViewLightingSettings::MaxStoredViews) return;
    throw ksp::CFileException(ksp::CFileException::Limit,
                              QStringLiteral("lighting settings hold %1 views, %2 at most are allowed")
                                  .arg(count)
                                  .arg(Scene3dViewLightingSettings::MaxStoredViews));
}

void serializeLight(CQtArchive& archive, ViewData& view)
{
    archive.value(view.azimuth);
    archive.value(view.elevation);
    archive.value(view.flag);
}

void serializeView(CQtArchive& archive, ViewData& view)
{
    archive.value(view.name);
    archive.value(view.caption);
    serializeLight(archive, view);
}

} // namespace

Scene3dViewLightingSettings::ViewData::ViewData(const std::string& viewName, const std::wstring& viewCaption)
    : name(viewName)
    , caption(viewCaption)
    , azimuth(static_cast<float>(math_utils::toRadian(45.0)))
    , elevation(static_cast<float>(math_utils::toRadian(45.0)))
{
}

glm::vec3 Scene3dViewLightingSettings::ViewData::getLightDirection() const
{
    return glm::normalize(glm::vec3(std::sin(azimuth) * std::cos(elevation),
                                    std::cos(azimuth) * std::cos(elevation), std::sin(elevation)));
}

Scene3dViewLightingSettings::Scene3dViewLightingSettings(CModelElement* owner)
    : CModelElement(owner)
{
}

Scene3dViewLightingSettings::~Scene3dViewLightingSettings() = default;

const Scene3dViewLightingSettings* Scene3dViewLightingSettings::find(const CProjectModel* model)
{
    const CProject* project = model ? model->getProject() : nullptr;
    if (!project) return nullptr;
    return dynamic_cast<const Scene3dViewLightingSettings*>(
        project->getProjectSettings(TypeIds::LightingSettings));
}

int Scene3dViewLightingSettings::getType() const
{
    return TypeIds::LightingSettings;
}

void Scene3dViewLightingSettings::addView(const std::string& name, const std::wstring& caption)
{
    const auto hasName = [&name](const ViewData& view) { return view.name == name; };
    if (std::none_of(m_views.begin(), m_views.end(), hasName)) m_views.emplace_back(name, caption);
}

Scene3dViewLightingSettings::ViewData& Scene3dViewLightingSettings::data(const std::string& name)
{
    return const_cast<ViewData&>(lookUp(name)); // of this object, which is not const here
}

const Scene3dViewLightingSettings::ViewData&
Scene3dViewLightingSettings::getView(const std::string& name) const
{
    return m_isAllView ? m_defaultView : lookUp(name);
}

const Scene3dViewLightingSettings::ViewData&
Scene3dViewLightingSettings::lookUp(const std::string& name) const
{
    if (name.empty()) return m_defaultView;
    const auto hasName = [&name](const ViewData& view) { return view.name == name; };
    const auto found = std::find_if(m_views.begin(), m_views.end(), hasName);
    return found == m_views.end() ? m_defaultView : *found;
}

void Scene3dViewLightingSettings::serialize(CQtArchive& archive)
{
    if (!archive.isLoading()) checkCount(m_views.size());
    CModelElement::serialize(archive);
    archive.beginObject();
    serializeLight(archive, m_defaultView);
    archive.endObject(1);
    if (archive.checkVersion(viewsVersion)) {
        if (archive.isLoading()) {
            loadViews(archive);
        } else {
            storeViews(archive);
        }
    }
    archive.finish();
}

void Scene3dViewLightingSettings::storeViews(CQtArchive& archive)
{
    archive.writeUInt(static_cast<std::uint32_t>(m_views.size()));
    for (ViewData& view : m_views)
        serializeView(archive, view);
}

void Scene3dViewLightingSettings::loadViews(CQtArchive& archive)
{
    const std::uint32_t count = archive.readUInt();
    checkCount(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        ViewData view;
        serializeView(archive, view);
        m_views.push_back(view);
    }
}
