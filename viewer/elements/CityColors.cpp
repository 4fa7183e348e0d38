#include <viewer/elements/CityColors.h>

#include <QtCore/QHash>

namespace {

const QColor otherColor(200, 196, 188);

const QHash<QString, QColor>& surfaceColors()
{
    static const QHash<QString, QColor> colors = {
        {"RoofSurface", {168, 92, 76}},
        {"GroundSurface", {122, 106, 88}},
        {"WallSurface", {226, 216, 196}},
        {"ClosureSurface", {170, 190, 205}},
        {"OuterCeilingSurface", {214, 196, 170}},
        {"OuterFloorSurface", {176, 160, 140}},
        {"Window", {120, 170, 210}},
        {"Door", {120, 80, 50}},
        {"InteriorWallSurface", {240, 232, 214}},
        {"CeilingSurface", {236, 236, 230}},
        {"FloorSurface", {190, 168, 136}},
        {"WaterSurface", {86, 148, 206}},
        {"WaterGroundSurface", {120, 130, 120}},
        {"WaterClosureSurface", {110, 160, 200}},
        {"TrafficArea", {112, 114, 118}},
        {"AuxiliaryTrafficArea", {150, 160, 130}},
        {"TransportationMarking", {244, 244, 240}},
        {"TransportationHole", {60, 60, 64}},
    };
    return colors;
}

const QHash<QString, QColor>& objectColors()
{
    static const QHash<QString, QColor> colors = {
        {"Building", {222, 212, 192}},        {"Bridge", {176, 172, 166}},
        {"Tunnel", {140, 138, 140}},          {"Road", {120, 122, 126}},
        {"Railway", {134, 118, 108}},         {"Waterway", {96, 152, 200}},
        {"TransportSquare", {160, 158, 156}}, {"WaterBody", {86, 148, 206}},
        {"PlantCover", {104, 152, 84}},       {"SolitaryVegetationObject", {76, 134, 66}},
        {"LandUse", {178, 190, 140}},         {"TINRelief", {158, 172, 122}},
        {"CityFurniture", {196, 150, 74}},    {"OtherConstruction", {190, 186, 180}},
        {"CityObjectGroup", {190, 190, 200}},
    };
    return colors;
}

} // namespace

QColor CityColors::of(const QString& surfaceKind, const QString& objectType)
{
    const auto surface = surfaceColors().constFind(surfaceKind);
    if (surface != surfaceColors().constEnd()) return *surface;
    // parts have the colour of the whole: BuildingPart, BuildingRoom, BridgeFurniture
    for (const char* whole : {"Building", "Bridge", "Tunnel"})
        if (objectType.startsWith(QLatin1String(whole))) return objectColors().value(QLatin1String(whole));
    return objectColors().value(objectType, otherColor);
}
