#pragma once

#include <benchmarks/data/BoxSet.h>
#include <benchmarks/data/GroundMesh.h>
#include <benchmarks/data/LineSet.h>
#include <benchmarks/data/PointSet.h>
#include <benchmarks/scene/BenchScene.h>

/// Adds an element for each polyline, with a pen of this width (pixels). The set must outlive the scene.
std::vector<CModelElement*> addLines(BenchScene& scene, const LineSet& set, float width);
/// Adds a mesh for each box.
void addBoxes(BenchScene& scene, const BoxSet& set);
/// Adds one element for the whole mesh, or for all points, 2 pixels wide.
CModelElement* addMesh(BenchScene& scene, const GroundMesh& mesh, const QColor& color);
CModelElement* addPoints(BenchScene& scene, const PointSet& set);
