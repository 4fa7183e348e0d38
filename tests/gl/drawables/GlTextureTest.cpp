#include "CaptureTest.h"

#include <tests/support/GlObjects.h>

#include <Viewer3dModule/drawables/GlTexture.h>
#include <Viewer3dModule/drawables/MeshNode3d.h>

namespace {

/// A context that shares with the test's, as those of views do, with a vertex array of its own.
class View
{
public:
    View(QOpenGLContext& shared, QOffscreenSurface& surface)
    {
        m_context.setFormat(shared.format());
        m_context.setShareContext(&shared);
        EXPECT_TRUE(m_context.create() && m_context.makeCurrent(&surface));
        currentGLFunctions()->glGenVertexArrays(1, &vertexArray);
    }
    unsigned vertexArray = 0;

private:
    QOpenGLContext m_context;
};

QImage image(int width, int height)
{
    QImage made(width, height, QImage::Format_RGB32);
    made.fill(Qt::red);
    return made;
}

MeshData texturedTriangle()
{
    MeshData data;
    data.positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    data.texCoords = {{0, 0}, {1, 0}, {0, 1}};
    data.indices = {0, 1, 2};
    MeshData::Part part;
    part.indexCount = 3;
    part.image = 0;
    data.parts = {part};
    data.images = {image(8, 8)};
    return data;
}

class GlTextureTest : public CaptureTest
{
protected:
    glm::ivec2 sizeOf(const GlTexture& texture, int level = 0)
    {
        glm::ivec2 size(0);
        gl->glBindTexture(GL_TEXTURE_2D, texture.name());
        gl->glGetTexLevelParameteriv(GL_TEXTURE_2D, level, GL_TEXTURE_WIDTH, &size.x);
        gl->glGetTexLevelParameteriv(GL_TEXTURE_2D, level, GL_TEXTURE_HEIGHT, &size.y);
        gl->glBindTexture(GL_TEXTURE_2D, 0);
        return size;
    }
    int textures() { return GlObjects::count(*gl).textures; }
};

} // namespace

// A view uploads what it draws first and may go before the scene, whose own context is current at the end.
TEST_F(GlTextureTest, ANodeOutlivesTheContextOfItsFirstDraw)
{
    const GlObjects before = GlObjects::count(*gl);
    auto node = std::make_unique<MeshNode3d>(texturedTriangle());
    {
        auto view = std::make_unique<View>(context, surface);
        currentGLFunctions()->glUseProgram(plain->programId());
        PaintContext paint;
        paint.vertexArray = view->vertexArray;
        node->draw(paint, 1);
        EXPECT_EQ(GlObjects::count(*currentGLFunctions()).textures, before.textures + 1);
        currentGLFunctions()->glUseProgram(0);
    }
    ASSERT_TRUE(makeCurrent());
    EXPECT_EQ(textures(), before.textures + 1) << "textures stay with the share group";
    // Memory of the view's context is likely to be used again by now.
    const std::vector<std::vector<char>> reuse(64, std::vector<char>(64, '\x7f'));
    node.reset();
    EXPECT_EQ(GlObjects::count(*gl), before);
}

TEST_F(GlTextureTest, HasNoNameBeforeAnUpload)
{
    GlTexture texture;
    EXPECT_EQ(texture.name(), 0u);
    texture.upload(*gl, QImage());
    EXPECT_EQ(texture.name(), 0u);
    const int before = textures();
    texture.upload(*gl, image(4, 2));
    EXPECT_NE(texture.name(), 0u);
    EXPECT_EQ(textures(), before + 1);
    texture.upload(*gl, image(2, 2));
    EXPECT_EQ(textures(), before + 1) << "the name is kept";
    EXPECT_EQ(sizeOf(texture), glm::ivec2(2, 2));
}

TEST_F(GlTextureTest, HasAllSmallerLevels)
{
    GlTexture texture;
    texture.upload(*gl, image(8, 2));
    EXPECT_EQ(sizeOf(texture, 0), glm::ivec2(8, 2));
    EXPECT_EQ(sizeOf(texture, 1), glm::ivec2(4, 1));
    EXPECT_EQ(sizeOf(texture, 3), glm::ivec2(1, 1));
}

TEST_F(GlTextureTest, RowsRunUpwards)
{
    QImage rows(2, 3, QImage::Format_RGB32);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 2; ++x)
            rows.setPixelColor(x, y, QColor(10 * x, 20 * y, 5));
    GlTexture texture;
    texture.upload(*gl, rows);
    std::vector<unsigned char> bytes(2 * 3 * 4);
    gl->glBindTexture(GL_TEXTURE_2D, texture.name());
    gl->glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    gl->glBindTexture(GL_TEXTURE_2D, 0);
    EXPECT_EQ(bytes, (std::vector<unsigned char>{0,  40, 5, 255, 10, 40, 5, 255, 0,  20, 5, 255,
                                                 10, 20, 5, 255, 0,  0,  5, 255, 10, 0,  5, 255}));
}

TEST_F(GlTextureTest, AnImageBeyondTheLimitIsScaledDown)
{
    GLint limit = 0;
    gl->glGetIntegerv(GL_MAX_TEXTURE_SIZE, &limit);
    GlTexture texture;
    texture.upload(*gl, image(2 * limit, 2));
    EXPECT_EQ(sizeOf(texture), glm::ivec2(limit, 1));
    texture.upload(*gl, image(1, limit + 1));
    EXPECT_EQ(sizeOf(texture), glm::ivec2(1, limit));
}

TEST_F(GlTextureTest, MovingTakesTheNameAlong)
{
    const int before = textures();
    {
        GlTexture first;
        first.upload(*gl, image(2, 2));
        const unsigned name = first.name();
        GlTexture second(std::move(first));
        EXPECT_EQ(second.name(), name);
        GlTexture third;
        third = std::move(second);
        EXPECT_EQ(third.name(), name);
        EXPECT_EQ(textures(), before + 1);
    }
    EXPECT_EQ(textures(), before);
}

TEST_F(GlTextureTest, WithoutAContextItIsLeftToItsContexts)
{
    const int before = textures();
    auto texture = std::make_unique<GlTexture>();
    texture->upload(*gl, image(2, 2));
    const unsigned name = texture->name();
    context.doneCurrent();
    texture.reset();
    makeCurrent();
    EXPECT_EQ(textures(), before + 1);
    gl->glDeleteTextures(1, &name);
}
