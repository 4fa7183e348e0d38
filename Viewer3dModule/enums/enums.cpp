#include <Viewer3dModule/enums/enums.h>

#include <Viewer3dModule/enums/TypeIds.h>

#include <framework/app/EnumData.h>

void enums::initEnumData()
{
    static bool isDone = false;
    if (isDone) return;
    isDone = true;

    const EnumData elements[] = {
        {TypeIds::Fence, QStringLiteral("Fence3d"), QStringLiteral("ограничение видимости")},
        {TypeIds::LightingSettings, QStringLiteral("Scene3dViewLightingSettings"),
         QStringLiteral("Настройки освещения")},
    };
    for (const EnumData& element : elements)
        registerEnumData(element);
    registerEnumData({TypeIds::Module, QStringLiteral("Viewer3dModule"), {}});
    registerEnumData(
        {TypeIds::ViewSettings, QStringLiteral("View3dSettings"), QStringLiteral("настройки 3d окна")});
    registerEnumData({TypeIds::SceneFilter, QStringLiteral("View3dScene_filter"), {}});
}
