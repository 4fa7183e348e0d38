#pragma once

#include "Shapes.h"

#include <tests/support/ShaderDrawing.h>

#include <set>
#include <string>
#include <vector>

/// What one program draws in one mode, as a picture.
struct Cell
{
    std::string caption;
    QImage image;
};

/// A row of the contact sheet: one program in all of its modes.
struct Strip
{
    std::string program;
    std::vector<Cell> cells;
};

/// Draws the cells of the contact sheet, one program after the other, with a camera and a target of its own.
class CellDrawing : public ShaderDrawing
{
protected:
    static constexpr int CellSize = 128; ///< pixels
    enum class Mode { Ordinary, SelectionMask, GlueMask };

    /// What a pass put out.
    struct Output
    {
        QImage attachments[4];
        std::vector<float> depths; ///< top row first

        std::uint32_t word(int attachment, int x, int y) const;
        std::uint64_t id(int x, int y) const;
        /// The layer of the glue mask that the pixel bears, that of faces included; 0 where there is none.
        int layer(int x, int y) const;
        float depth(int x, int y) const;
        bool isCovered(int x, int y) const { return depth(x, y) < 1.0f; }
        int coveredCount() const;
        std::set<std::uint64_t> ids() const; ///< but 0
        std::set<int> layers() const;        ///< but 0
    };

    void prepare() override;

    static glm::mat4 cameraProjection();
    /// Builds the program and sets the camera; what attributes were fed before is forgotten.
    void select(const std::string& name);
    /// Clears and draws in this mode; `scene` draws the items. A program that it selects itself must have no
    /// modes.
    Output drawPass(Mode mode, const std::function<void()>& scene);

    /// Sets a uniform where the program has it.
    template <typename T>
    void give(const char* name, const T& value)
    {
        uniforms::set(*gl, program->uniformLocation(name), value);
    }
    /// The uniforms of the next item.
    void item(const glm::vec4& color, std::uint64_t id, int flags = -1);
    /// Where the next item stands.
    void place(const glm::mat4& model);
    /// Feeds all that the shape has to the locations of common.vertex.
    void feed(const Shape& shape);
    void feed(const std::vector<glm::vec3>& points);
    void drawFed(unsigned primitive, int instances = 1);
    int fedCount() const { return m_count; }
    /// A texture at unit 0, smooth where wanted.
    void loadTexture(const QImage& image, bool isSmooth = false);
    /// A texture of the checks that the sheet shows, with holes where wanted.
    static QImage checks(bool hasHoles = false);
    /// A text as Qt draws it, as large as it is; on a plate unless this is transparent.
    static QImage textImage(const QString& text, int height, const QColor& color, const QColor& plate);

    /// The picture of what a pass in this mode put out: colours, or false colours for ids and depths.
    static QImage picture(const Output& output, Mode mode);
    /// False colours for the layers of the glue mask; edges and surfaces in bands by their coordinates, faces
    /// shaded by their planes.
    static QImage layerPicture(const Output& output);
    static QColor layerColor(int layer);
    static QColor noLayerColor(); ///< of items that say nothing of layers
    static const std::vector<std::pair<int, const char*>>& layerNames();

    static constexpr QRgb Background = 0xFF22262Cu;

private:
    /// How much darker a pixel of this layer is shown for its coordinates, in hundredths.
    static int darkening(const Output& output, int layer, int x, int y);

    int m_count = 0;
};
