#pragma once

#include <tests/support/GlCalls.h>
#include <tests/support/GlObjects.h>
#include <tests/support/ImageCheck.h>
#include <tests/support/LogTrap.h>
#include <tests/support/SceneTest.h>

#include <Viewer3dModule/drawables/Drawable3dItem.h>
#include <Viewer3dModule/drawables/DrawableShaderCylinder.h>
#include <Viewer3dModule/drawables/DrawableShaderSphere.h>
#include <Viewer3dModule/drawers/DrawerType.h>
#include <Viewer3dModule/drawers/SequentialItem3dDrawer.h>
#include <Viewer3dModule/shaders/DrawMode.h>

#include <glm/gtc/matrix_transform.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <random>

/// An item that draws a shape in one colour, where its matrix says.
template <class Shape>
class ShapeItem : public Drawable3dItem
{
public:
    template <class... Arguments>
    explicit ShapeItem(Scene3d* scene, Arguments... arguments)
        : shape(arguments...)
    {
        setDrawer(shape.getDrawer(scene));
    }
    using Drawable3dItem::draw;

    Shape shape;
    int instances = 1;

protected:
    void draw(const PaintContext& context) override
    {
        uniforms::set(*currentGLFunctions(), context.program->uniformLocation("item_color"),
                      glm::vec4(1.0f, 0.5f, 0.0f, 1.0f));
        shape.draw(context, instances);
    }
};
using SphereItem = ShapeItem<DrawableShaderSphere>;
using CylinderItem = ShapeItem<DrawableShaderCylinder>;

/// Shapes in a view of 200 x 160 pixels from the point (0, 0, 10) along -z, central or parallel.
class ShapeTest : public SceneTest
{
protected:
    static constexpr int Width = 200;
    static constexpr int Height = 160;

    /// The tangent of half of the vertical angle of view is 0.4, or the height of the view 8 scene units.
    PaintContext shapeView(bool isParallel = false)
    {
        PaintContext context = paintContext(Width, Height);
        const float aspect = float(Width) / float(Height);
        context.projection = isParallel
                                 ? glm::ortho(-4.0f * aspect, 4.0f * aspect, -4.0f, 4.0f, 0.1f, 2000.0f)
                                 : glm::perspective(2.0f * std::atan(0.4f), aspect, 0.1f, 2000.0f);
        context.view = glm::translate(glm::mat4(1.0f), glm::vec3(0.0f, 0.0f, -10.0f));
        return context;
    }
    static bool isInked(QRgb pixel) { return (pixel & 0xFFFFFFu) != 0; }
    static int inked(const QImage& image) { return countPixels(image, &ShapeTest::isInked); }

    /// The triangles that the last stage before the fragments puts out in a frame.
    unsigned int trianglesOf(const PaintContext& context)
    {
        unsigned int query = 0, count = 0;
        gl->glGenQueries(1, &query);
        gl->glBeginQuery(GL_PRIMITIVES_GENERATED, query);
        drawFrame(context);
        gl->glEndQuery(GL_PRIMITIVES_GENERATED);
        gl->glGetQueryObjectuiv(query, GL_QUERY_RESULT, &count);
        gl->glDeleteQueries(1, &query);
        return count;
    }
    template <class Value>
    Value uniformOf(Item3dDrawer* drawer, const char* name)
    {
        QOpenGLShaderProgram& program = *dynamic_cast<SequentialItem3dDrawer&>(*drawer).getDefaultProgram();
        const int location = program.uniformLocation(name);
        EXPECT_GE(location, 0) << name;
        Value value{};
        if constexpr (std::is_same_v<Value, float> || std::is_same_v<Value, glm::vec4>)
            gl->glGetUniformfv(program.programId(), location, reinterpret_cast<float*>(&value));
        else
            gl->glGetUniformiv(program.programId(), location, &value);
        return value;
    }
};
