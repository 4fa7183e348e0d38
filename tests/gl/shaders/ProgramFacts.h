#pragma once

#include <tests/support/GlTest.h>
#include <tests/support/ProgramVariants.h>
#include <tests/support/ShaderSources.h>

#include <Viewer3dModule/shaders/ShaderProgramBuilder.h>

#include <QtCore/QTemporaryDir>
#include <QtGui/QOpenGLShaderProgram>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

/// What programs are after linking, asked of the driver.
namespace program_facts {

struct Uniform
{
    QString name;
    GLenum type = 0;
    int size = 1; ///< elements of an array
    std::array<bool, 5> stages{};
    std::vector<double> values; ///< of the first element, as the program starts with
};

enum StageIndex { Vertex, TessellationControl, TessellationEvaluation, Geometry, Fragment };
const char* const stageNames[] = {"vertex", "tessellation control", "tessellation evaluation", "geometry",
                                  "fragment"};

/// A program after linking.
struct Facts
{
    ProgramRecipe recipe;
    bool isLinked = false;
    QVariant primitives;
    std::vector<Uniform> uniforms;
    std::array<int, 5> storageBlocks{};
    int outputs = 0;
    int geometryVertices = 0;
    int geometryInvocations = 0;
    int patchVertices = 0;
};

inline bool isSampler(GLenum type)
{
    return type == GL_SAMPLER_2D || type == GL_SAMPLER_2D_ARRAY || type == GL_SAMPLER_2D_SHADOW;
}

inline bool usesSelection(const Facts& program)
{
    return std::any_of(program.recipe.files.begin(), program.recipe.files.end(), [](const QString& file) {
        return file.contains("fragment") && preprocessShader(file, {}).contains("items_selection_buffer");
    });
}

/// Columns and rows of a type that no sampler has.
inline std::pair<int, int> shapeOf(GLenum type)
{
    switch (type) {
    case GL_FLOAT:
    case GL_INT:
    case GL_UNSIGNED_INT:
    case GL_BOOL:
        return {1, 1};
    case GL_FLOAT_VEC2:
    case GL_INT_VEC2:
    case GL_UNSIGNED_INT_VEC2:
        return {1, 2};
    case GL_FLOAT_VEC3:
        return {1, 3};
    case GL_FLOAT_VEC4:
    case GL_UNSIGNED_INT_VEC4:
        return {1, 4};
    case GL_FLOAT_MAT3:
        return {3, 3};
    case GL_FLOAT_MAT4:
        return {4, 4};
    }
    ADD_FAILURE() << "a type of uniforms that this test does not know: " << type;
    return {1, 4};
}

/// A test over all programs of the lists.
class AllProgramsFixture : public GlTest
{
protected:
    void SetUp() override
    {
        GlTest::SetUp();
        mapShaderPrefix();
    }
    /// All programs; they are built once for all tests.
    const std::vector<Facts>& programs()
    {
        static std::vector<Facts> all;
        if (!all.empty()) return all;
        for (const auto* list : {&defaultPrograms(), &furtherPrograms(), &programVariants()})
            for (const ProgramRecipe& recipe : *list)
                all.push_back(factsOf(recipe));
        for (const auto* list : {&defaultPrograms(), &furtherPrograms()})
            for (const ProgramRecipe& recipe : *list)
                all.push_back(factsOf(fenced(recipe, "RX_USE_SWEPT_FENCE")));
        all.push_back(factsOf(fenced(defaultPrograms().front(), "RX_USE_SPHERE_FENCE")));
        return all;
    }
    /// The program as it is while there is a fence.
    static ProgramRecipe fenced(ProgramRecipe recipe, const char* define)
    {
        recipe.name += " in a fence";
        recipe.defines.emplace_back(define);
        return recipe;
    }
    /// The include of colour levels, which programs of other modules use, with a fragment stage round it.
    Facts gradient()
    {
        QTemporaryDir folder;
        QFile file(folder.filePath("levels.fragment.glsl"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#version 430 core\n//#include \"shader:Viewer3dModule/gradient.fragment.glsl\"\n"
                   "out vec4 color;\nvoid main() { color = elevColor(gl_FragCoord.x); }\n");
        file.close();
        return factsOf({"levels", {shaderPath("common.vertex"), file.fileName()}, {}});
    }
    Facts factsOf(const ProgramRecipe& recipe)
    {
        const std::unique_ptr<QOpenGLShaderProgram> program(
            buildShaderProgram(nullptr, recipe.files, recipe.defines, {}));
        Facts facts;
        facts.recipe = recipe;
        facts.isLinked = program->isLinked();
        facts.primitives = program->property("primitives");
        if (!facts.isLinked) return facts;
        const unsigned id = program->programId();
        for (int i = 0; i < count(id, GL_UNIFORM); ++i)
            addUniform(facts, id, static_cast<unsigned>(i));
        for (int i = 0; i < count(id, GL_SHADER_STORAGE_BLOCK); ++i)
            for (std::size_t stage = 0; stage < 5; ++stage)
                facts.storageBlocks[stage] +=
                    property(id, GL_SHADER_STORAGE_BLOCK, static_cast<unsigned>(i), referencedBy(stage)) != 0;
        facts.outputs = count(id, GL_PROGRAM_OUTPUT);
        for (const auto& shader : program->shaders()) {
            if (shader->shaderType() == QOpenGLShader::Geometry) {
                gl->glGetProgramiv(id, GL_GEOMETRY_VERTICES_OUT, &facts.geometryVertices);
                gl->glGetProgramiv(id, GL_GEOMETRY_SHADER_INVOCATIONS, &facts.geometryInvocations);
            }
            if (shader->shaderType() == QOpenGLShader::TessellationControl)
                gl->glGetProgramiv(id, GL_TESS_CONTROL_OUTPUT_VERTICES, &facts.patchVertices);
        }
        return facts;
    }

private:
    static GLenum referencedBy(std::size_t stage)
    {
        const GLenum properties[] = {GL_REFERENCED_BY_VERTEX_SHADER, GL_REFERENCED_BY_TESS_CONTROL_SHADER,
                                     GL_REFERENCED_BY_TESS_EVALUATION_SHADER,
                                     GL_REFERENCED_BY_GEOMETRY_SHADER, GL_REFERENCED_BY_FRAGMENT_SHADER};
        return properties[stage];
    }
    int count(unsigned program, GLenum interface)
    {
        int number = 0;
        gl->glGetProgramInterfaceiv(program, interface, GL_ACTIVE_RESOURCES, &number);
        return number;
    }
    int property(unsigned program, GLenum interface, unsigned index, GLenum name)
    {
        int value = 0;
        gl->glGetProgramResourceiv(program, interface, index, 1, &name, 1, nullptr, &value);
        return value;
    }
    void addUniform(Facts& facts, unsigned program, unsigned index)
    {
        if (property(program, GL_UNIFORM, index, GL_BLOCK_INDEX) >= 0) return;
        char name[128] = "";
        gl->glGetProgramResourceName(program, GL_UNIFORM, index, sizeof name, nullptr, name);
        Uniform uniform;
        uniform.name = QString::fromLatin1(name).section('[', 0, 0);
        uniform.type = static_cast<GLenum>(property(program, GL_UNIFORM, index, GL_TYPE));
        uniform.size = property(program, GL_UNIFORM, index, GL_ARRAY_SIZE);
        for (std::size_t stage = 0; stage < 5; ++stage)
            uniform.stages[stage] = property(program, GL_UNIFORM, index, referencedBy(stage)) != 0;
        const int location = property(program, GL_UNIFORM, index, GL_LOCATION);
        const auto [columns, rows] = isSampler(uniform.type) ? std::pair{1, 1} : shapeOf(uniform.type);
        for (int i = 0; i < columns * rows; ++i)
            uniform.values.push_back(valueOf(program, location, uniform.type, i));
        facts.uniforms.push_back(uniform);
    }
    double valueOf(unsigned program, int location, GLenum type, int component)
    {
        const bool isUnsigned =
            type == GL_UNSIGNED_INT || type == GL_UNSIGNED_INT_VEC2 || type == GL_UNSIGNED_INT_VEC4;
        if (isUnsigned) {
            GLuint values[4] = {0, 0, 0, 0};
            gl->glGetUniformuiv(program, location, values);
            return values[component];
        }
        GLfloat values[16] = {};
        gl->glGetUniformfv(program, location, values);
        return double(values[component]);
    }
};

} // namespace program_facts
