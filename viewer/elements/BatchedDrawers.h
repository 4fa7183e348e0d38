#pragma once

class Scene3d;

namespace batched_drawers {

/// Draws meshes, city objects and the lines of features with few draw calls in scenes that are shown again
/// and again. Before the first element comes; drawers that are there for these types stay.
void addTo(Scene3d& scene);

} // namespace batched_drawers
