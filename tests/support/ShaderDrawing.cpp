#include <tests/support/ShaderDrawing.h>

#include <Viewer3dModule/shaders/ShaderProgramBuilder.h>

#include <cstring>

void ShaderDrawing::SetUp()
{
    GlTest::SetUp();
    ASSERT_NE(gl, nullptr);
    mapShaderPrefix();
    target = std::make_unique<RenderTarget>(*gl, QSize(Size, Size), 4);
    gl->glEnable(GL_DEPTH_TEST);
    gl->glDepthFunc(GL_LEQUAL);
    gl->glEnable(GL_PROGRAM_POINT_SIZE);
    gl->glDisable(GL_DITHER);
    gl->glBindVertexArray(vao);
    gl->glGenBuffers(2, m_selection);
    beginSelection();
    prepare();
}

void ShaderDrawing::TearDown()
{
    if (!gl) return;
    makeCurrent();
    gl->glDeleteBuffers(2, m_selection);
    gl->glDeleteBuffers(static_cast<GLsizei>(m_buffers.size()), m_buffers.data());
    gl->glDeleteTextures(static_cast<GLsizei>(m_textures.size()), m_textures.data());
    program.reset();
    target.reset();
    GlTest::TearDown();
}

void ShaderDrawing::use(const ProgramRecipe& wanted, const std::vector<std::string>& varyings)
{
    std::vector<std::string> defines = wanted.defines;
    defines.insert(defines.end(), furtherDefines.begin(), furtherDefines.end());
    program.reset(buildShaderProgram(nullptr, wanted.files, defines, varyings));
    ASSERT_TRUE(program->isLinked()) << wanted.name;
    ASSERT_TRUE(program->bind());
    const float half = Size / 2.0f;
    glm::mat4 viewport(1.0f);
    viewport[0][0] = half;
    viewport[1][1] = -half;
    viewport[3] = glm::vec4(half, half, 0.0f, 1.0f);
    uniforms::set(*gl, program->uniformLocation("viewport"), viewport);
    uniforms::set(*gl, program->uniformLocation("viewport_inverted"), glm::inverse(viewport));
}

void ShaderDrawing::use(const std::string& name)
{
    for (const auto* programs : {&defaultPrograms(), &furtherPrograms()})
        for (const ProgramRecipe& candidate : *programs)
            if (candidate.name == name) return use(candidate);
    FAIL() << "no program " << name;
}

void ShaderDrawing::setColors(const glm::vec4& item, const glm::vec4& selection)
{
    set("item_color", item);
    set("selection_color", selection);
}

void ShaderDrawing::upload(const void* bytes, std::size_t size)
{
    unsigned buffer = 0;
    gl->glGenBuffers(1, &buffer);
    m_buffers.push_back(buffer);
    gl->glBindBuffer(GL_ARRAY_BUFFER, buffer);
    gl->glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(size), bytes, GL_STATIC_DRAW);
}

void ShaderDrawing::attribute(unsigned location, int components, const std::vector<float>& values)
{
    upload(values.data(), values.size() * sizeof(float));
    gl->glEnableVertexAttribArray(location);
    gl->glVertexAttribPointer(location, components, GL_FLOAT, GL_FALSE, 0, nullptr);
}

void ShaderDrawing::instanceFloats(unsigned location, int components, const std::vector<float>& values)
{
    attribute(location, components, values);
    gl->glVertexAttribDivisor(location, 1);
}

void ShaderDrawing::instanceMatrices(unsigned location, const std::vector<glm::mat4>& values)
{
    upload(values.data(), values.size() * sizeof(glm::mat4));
    for (unsigned column = 0; column < 4; ++column) {
        gl->glEnableVertexAttribArray(location + column);
        gl->glVertexAttribPointer(location + column, 4, GL_FLOAT, GL_FALSE, sizeof(glm::mat4),
                                  reinterpret_cast<const void*>(column * sizeof(glm::vec4)));
        gl->glVertexAttribDivisor(location + column, 1);
    }
}

void ShaderDrawing::instanceIntegers(unsigned location, int components, unsigned type,
                                     const std::vector<std::uint32_t>& values)
{
    upload(values.data(), values.size() * sizeof(std::uint32_t));
    gl->glEnableVertexAttribArray(location);
    gl->glVertexAttribIPointer(location, components, type, 0, nullptr);
    gl->glVertexAttribDivisor(location, 1);
}

void ShaderDrawing::rectangle(float left, float bottom, float right, float top, float z)
{
    attribute(0, 3, {left, bottom, z, right, bottom, z, left, top, z, right, top, z});
}

void ShaderDrawing::line(const glm::vec3& from, const glm::vec3& to)
{
    attribute(0, 3, {from.x, from.y, from.z, to.x, to.y, to.z});
}

void ShaderDrawing::texture(int width, int height, const std::vector<std::uint32_t>& pixels)
{
    unsigned name = 0;
    gl->glGenTextures(1, &name);
    m_textures.push_back(name);
    gl->glActiveTexture(GL_TEXTURE0);
    gl->glBindTexture(GL_TEXTURE_2D, name);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    gl->glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
}

void ShaderDrawing::draw(unsigned mode, int count, int instances)
{
    target->bind();
    for (std::size_t i = 0; i < Untouched.size(); ++i) {
        const float value = static_cast<float>(Untouched[i]) / 255.0f;
        const float values[4] = {value, value, value, value};
        gl->glClearBufferfv(GL_COLOR, static_cast<GLint>(i), values);
    }
    const float far = 1.0f;
    gl->glClearBufferfv(GL_DEPTH, 0, &far);
    gl->glDrawArraysInstanced(mode, 0, count, instances);
    images.clear();
    for (int i = 0; i < 4; ++i)
        images.push_back(target->image(i));
    depths = target->depth();
}

std::vector<float> ShaderDrawing::capture(unsigned mode, int count, unsigned primitive, int components,
                                          std::size_t room, int instances)
{
    return capture(primitive, components, room,
                   [&] { gl->glDrawArraysInstanced(mode, 0, count, instances); });
}

std::vector<float> ShaderDrawing::capture(unsigned primitive, int components, std::size_t room,
                                          const std::function<void()>& draws)
{
    const std::size_t floats = room * static_cast<std::size_t>(components);
    unsigned buffer = 0;
    unsigned queries[2] = {0, 0};
    gl->glGenBuffers(1, &buffer);
    gl->glGenQueries(2, queries);
    gl->glBindBufferBase(GL_TRANSFORM_FEEDBACK_BUFFER, 0, buffer);
    gl->glBufferData(GL_TRANSFORM_FEEDBACK_BUFFER, static_cast<GLsizeiptr>(floats * sizeof(float)), nullptr,
                     GL_STATIC_READ);
    gl->glEnable(GL_RASTERIZER_DISCARD);
    gl->glBeginQuery(GL_TRANSFORM_FEEDBACK_PRIMITIVES_WRITTEN, queries[0]);
    gl->glBeginQuery(GL_PRIMITIVES_GENERATED, queries[1]);
    gl->glBeginTransformFeedback(primitive);
    draws();
    gl->glEndTransformFeedback();
    gl->glEndQuery(GL_PRIMITIVES_GENERATED);
    gl->glEndQuery(GL_TRANSFORM_FEEDBACK_PRIMITIVES_WRITTEN);
    gl->glDisable(GL_RASTERIZER_DISCARD);
    unsigned written = 0;
    unsigned generated = 0;
    gl->glGetQueryObjectuiv(queries[0], GL_QUERY_RESULT, &written);
    gl->glGetQueryObjectuiv(queries[1], GL_QUERY_RESULT, &generated);
    EXPECT_EQ(written, generated) << "more than there is room for";
    const std::size_t corners = primitive == GL_TRIANGLES ? 3 : primitive == GL_LINES ? 2 : 1;
    std::vector<float> values(written * corners * static_cast<std::size_t>(components));
    gl->glGetBufferSubData(GL_TRANSFORM_FEEDBACK_BUFFER, 0,
                           static_cast<GLsizeiptr>(values.size() * sizeof(float)), values.data());
    gl->glDeleteBuffers(1, &buffer);
    gl->glDeleteQueries(2, queries);
    return values;
}

QColor ShaderDrawing::pixel(int x, int y, int attachment) const
{
    return images[static_cast<std::size_t>(attachment)].pixelColor(x, y);
}

std::uint32_t ShaderDrawing::word(int x, int y, int attachment) const
{
    std::uint32_t value = 0;
    std::memcpy(&value, images[static_cast<std::size_t>(attachment)].constScanLine(y) + 4 * x, 4);
    return value;
}

std::uint32_t ShaderDrawing::depthBits(int x, int y) const
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, &depths[static_cast<std::size_t>(y * Size + x)], 4);
    return bits;
}

bool ShaderDrawing::isUntouched(int x, int y) const
{
    for (int i = 0; i < 4; ++i)
        if (word(x, y, i) != 0x01010101u * static_cast<std::uint32_t>(Untouched[static_cast<std::size_t>(i)]))
            return false;
    return depths[static_cast<std::size_t>(y * Size + x)] == 1.0f;
}

int ShaderDrawing::touchedCount() const
{
    int count = 0;
    for (int y = 0; y < Size; ++y)
        for (int x = 0; x < Size; ++x)
            count += !isUntouched(x, y);
    return count;
}

void ShaderDrawing::beginSelection(const std::vector<std::int32_t>& mask)
{
    const std::vector<std::uint32_t> zeros(SelectionWords, 0);
    gl->glBindBufferBase(GL_SHADER_STORAGE_BUFFER, 8, m_selection[0]);
    gl->glBufferData(GL_SHADER_STORAGE_BUFFER, SelectionWords * 4, zeros.data(), GL_DYNAMIC_COPY);
    gl->glBindBufferBase(GL_SHADER_STORAGE_BUFFER, 9, m_selection[1]);
    gl->glBufferData(GL_SHADER_STORAGE_BUFFER, static_cast<GLsizeiptr>(mask.size() * 4), mask.data(),
                     GL_DYNAMIC_COPY);
}

std::vector<std::uint32_t> ShaderDrawing::selectedWords()
{
    std::vector<std::uint32_t> words(SelectionWords);
    gl->glMemoryBarrier(GL_BUFFER_UPDATE_BARRIER_BIT);
    gl->glBindBuffer(GL_SHADER_STORAGE_BUFFER, m_selection[0]);
    gl->glGetBufferSubData(GL_SHADER_STORAGE_BUFFER, 0, SelectionWords * 4, words.data());
    return words;
}
