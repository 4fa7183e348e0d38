#include <viewer/elements/ElementTypes.h>

#include <viewer/elements/CityObjectItem.h>
#include <viewer/elements/FeatureDrawers.h>
#include <viewer/elements/FeatureItemCreator.h>
#include <viewer/elements/MeshElement.h>
#include <viewer/elements/MeshItem.h>
#include <viewer/elements/OrthophotoItem.h>
#include <viewer/elements/StationItem.h>
#include <viewer/elements/ViewpointElement.h>

#include <Viewer3dModule/host/CGraphics3dExtension.h>
#include <framework/model/COrdinaryItemCreator.h>
#include <framework/model/CProjectModel.h>
#include <framework/model/CityObjectElement.h>
#include <framework/model/FeatureElement.h>
#include <framework/model/OrthophotoElement.h>
#include <framework/model/StationElement.h>

namespace {

/// Makes items of a class that takes its element and the size of points.
template <typename Element, typename Item>
class ItemCreator : public Graphics3dItemCreator
{
public:
    explicit ItemCreator(std::optional<float> pointSize)
        : m_pointSize(pointSize)
    {
    }
    Graphics3dItem* create(CModelElement* element) override
    {
        auto* own = dynamic_cast<Element*>(element);
        return own ? new Item(own, m_pointSize) : nullptr;
    }

private:
    std::optional<float> m_pointSize;
};

} // namespace

namespace element_types {

static_assert(Feature == FeatureElement::Type && CityObject == CityObjectElement::Type &&
                  Orthophoto == OrthophotoElement::Type && Station == StationElement::Type,
              "one number for one type");

void registerCreators(CProjectModel& model)
{
    model.registerCreator(std::make_unique<COrdinaryItemCreator<MeshElement>>());
    model.registerCreator(std::make_unique<COrdinaryItemCreator<FeatureElement>>());
    model.registerCreator(std::make_unique<COrdinaryItemCreator<ViewpointElement>>());
    model.registerCreator(std::make_unique<COrdinaryItemCreator<CityObjectElement>>());
    model.registerCreator(std::make_unique<COrdinaryItemCreator<OrthophotoElement>>());
    model.registerCreator(std::make_unique<COrdinaryItemCreator<StationElement>>());
}

void registerItems(Scene3d& scene, std::optional<float> pointSize)
{
    feature_drawers::addTo(scene);
    CGraphics3dExtension::registerElementType(
        Mesh, &scene, std::make_unique<ItemCreator<MeshElement, MeshItem>>(pointSize));
    CGraphics3dExtension::registerElementType(Feature, &scene,
                                              std::make_unique<FeatureItemCreator>(scene, pointSize));
    CGraphics3dExtension::registerElementType(
        CityObject, &scene, std::make_unique<ItemCreator<CityObjectElement, CityObjectItem>>(pointSize));
    CGraphics3dExtension::registerElementType<OrthophotoElement, OrthophotoItem>(Orthophoto, &scene);
    CGraphics3dExtension::registerElementType<StationElement, StationItem>(Station, &scene);
}

QString name(int type)
{
    switch (type) {
    case Mesh:
        return QStringLiteral("mesh");
    case Feature:
        return QStringLiteral("feature");
    case Viewpoint:
        return QStringLiteral("viewpoint");
    case CityObject:
        return QStringLiteral("city object");
    case Orthophoto:
        return QStringLiteral("orthophoto");
    case Station:
        return QStringLiteral("station");
    default:
        return QStringLiteral("0x%1").arg(static_cast<unsigned>(type), 8, 16, QLatin1Char('0'));
    }
}

} // namespace element_types
