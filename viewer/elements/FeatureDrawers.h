#pragma once

#include <memory>

class Item3dDrawer;
class Scene3d;

/// Drawers for features that have points besides lines of a pen whose program draws lines only, and for those
/// that have areas. They draw such a feature in stages, so that it stays one item: with one identifier in
/// masks, one highlight, and wholly in or out of whatever picks items.
namespace feature_drawers {

// Drawer types.
constexpr int WideLinesAndPoints = 0x36FFD101;
constexpr int DashedLinesAndPoints = 0x36FFD102;
constexpr int AreasAndPlainLines = 0x36FFD103; ///< and points, as the next two
constexpr int AreasAndWideLines = 0x36FFD104;
constexpr int AreasAndDashedLines = 0x36FFD105;

/// Values of PaintContext::stage; 0, where there are no stages, draws everything.
enum Stage { LineStage = 1, PointStage = 2, AreaStage = 3 };

/// Registers the drawers with the scene; before the first feature comes, which would get another one.
void addTo(Scene3d& scene);
/// Such a drawer, of one for the lines, one for the points and, unless null, one for the areas.
std::unique_ptr<Item3dDrawer> make(Scene3d& scene, std::unique_ptr<Item3dDrawer> lines,
                                   std::unique_ptr<Item3dDrawer> points,
                                   std::unique_ptr<Item3dDrawer> areas = nullptr);
/// The drawer type for points besides lines that need this type for themselves.
int withPoints(int lineDrawerType);
/// The drawer type for areas, and points, besides such lines.
int withAreas(int lineDrawerType);

} // namespace feature_drawers
