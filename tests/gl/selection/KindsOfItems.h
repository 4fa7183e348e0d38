#pragma once

#include "SelectionTest.h"

#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <Viewer3dModule/drawables/PolyPolyline3dItem.h>
#include <Viewer3dModule/drawables/Polyline3dForegroundItem.h>

#include <memory>
#include <random>
#include <vector>

/// Items of every kind that the module draws, one after the other, at random places around the origin:
/// polylines of one part and of two, points, meshes, textures, solids along lines, captions, spheres,
/// cylinders, round points, and an item of two drawers. Some are hidden, some highlighted, some faint;
/// identifiers lie below and above 2^32. All boxes and vertices are known.
class KindsOfItems
{
public:
    /// Types of elements, which are also visibility types.
    static constexpr int FirstType = TestElement::Type, TypeCount = 3;
    /// Types of drawers that scenes do not have by themselves, as hosts add them.
    static constexpr int RoundPointsType = 5001, TwoStagesType = 5002;
    enum Kind {
        Lines,
        TwoLines,
        ForegroundLine,
        Wide,
        Dashed,
        Solid,
        PlainPoints,
        RoundPoints,
        PlainMesh,
        ColoredMesh,
        Textured,
        Caption,
        LinesAndPoints,
        Sphere,
        Cylinder,
        KindCount
    };

    /// Items of all kinds in turns.
    KindsOfItems(Scene3d& scene, OpenGLFunctions& gl, std::vector<std::unique_ptr<TestElement>>& elements,
                 int count);
    /// Items of these kinds, others for another seed.
    KindsOfItems(Scene3d& scene, OpenGLFunctions& gl, std::vector<std::unique_ptr<TestElement>>& elements,
                 const std::vector<Kind>& kinds, unsigned seed);
    /// The scene's context must be current, and the scene still there: its items are emptied.
    ~KindsOfItems();

    const std::vector<DrawnItem*>& items() const { return m_items; }
    /// Takes an item out of the scene.
    void remove(DrawnItem& item);
    /// Of items of all kinds in turns.
    static Kind kindOf(std::size_t index) { return static_cast<Kind>(index % KindCount); }

private:
    void addDrawers();
    void make(Kind kind, DrawnItem& item);
    void makeLines(Kind kind, DrawnItem& item, int parts);
    void makePoints(Kind kind, DrawnItem& item);
    void makeMesh(Kind kind, DrawnItem& item);
    void makeTextured(DrawnItem& item);
    void makeCaption(DrawnItem& item);
    void makeSolidOfRevolution(Kind kind, DrawnItem& item);

    double real(double from, double to) { return std::uniform_real_distribution<double>(from, to)(m_random); }
    int whole(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_random); }
    glm::dvec3 near(const glm::dvec3& center, double distance);
    std::vector<glm::vec3> walk(DrawnItem& item, int count);
    QColor anyColor(DrawnItem& item);

    Scene3d& m_scene;
    OpenGLFunctions& m_gl;
    std::mt19937 m_random;
    glm::dvec3 m_center{0.0};
    std::vector<DrawnItem*> m_items;
    std::vector<std::unique_ptr<Drawable3dPrimitive>> m_parts;
    std::vector<std::unique_ptr<MeshNode3d>> m_nodes;
    GLuint m_texture = 0;
    GLuint m_quad = 0; // five floats a vertex: position, texture coordinates
};
