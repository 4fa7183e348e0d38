#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <QtCore/QPointF>
#include <QtCore/QString>

#include <memory>
#include <utility>
#include <vector>

class IconTexture;
class QFont;
class QGlyphRun;

/// Glyphs of texts as textures, shared through TextureFactory. A context of the share group must be current
/// for textures that are not there yet.
class VIEWER3DMODULE_EXPORT FontGlyphTextureFactory
{
public:
    /// A glyph's texture, and where the lower left corner of its image lies: in pixels from the beginning of
    /// the text's baseline, y down, as texts are laid out. (MultiGlyphItem3dDrawer takes offsets with y up.)
    using Glyph = std::pair<QPointF, std::shared_ptr<IconTexture>>;

    FontGlyphTextureFactory() = delete;

    /// The glyphs of one run, on whole pixels, in its order; those without ink, such as spaces, are left out.
    /// An image has one pixel a pixel of the font and shows the glyph by its alpha, in white.
    /// @param key     what tells the run's font from others; the texture's key is this and the glyph's index
    /// @param margin  transparent pixels around the ink, for the filtering of the texture
    static std::vector<Glyph> get(const QGlyphRun& run, const QString& key, int margin);
    /// The glyphs of a text on one line, laid out with the font: kerned, joined and ordered as its script
    /// wants, with glyphs of other fonts where this one lacks them. Fonts that prefer full hinting
    /// (QFont::PreferFullHinting) put glyphs on whole pixels by themselves: a text then looks as Qt paints
    /// it, otherwise each of its glyphs is up to half a pixel off.
    static std::vector<Glyph> get(const QString& text, const QFont& font, int margin);
    /// The same glyphs, widened by so many pixels each way: what is drawn beneath those of get in another
    /// colour, so that they can be read on anything.
    static std::vector<Glyph> getRims(const QString& text, const QFont& font, int margin, int rim);
};
