#pragma once

#include <QtCore/QString>
#include <QtGui/QColor>
#include <QtGui/QFont>
#include <QtGui/QImage>

/// Text as the pictures of captions: QImage::Format_RGBA8888, the text in its colour, transparent around it.
/// What is wholly transparent has the colour of the text too, so that a filter that mixes neighbouring pixels
/// mixes in no other colour.
///
/// A text of more than longestText characters, and a picture of more than longestSide pixels a side or
/// mostPixels in all, is cut, with one line in the log. The picture is null where it would have no pixels, or
/// there is no memory for them. Needs a QGuiApplication.
namespace caption_images {

constexpr int longestText = 65536; ///< characters: more would take seconds to lay out, and nobody reads them
constexpr int mostPixels = 16 * 1024 * 1024;

/// One line of text, height pixels high. Its width is the text's advance at that height; both are truncated.
/// The text runs as its first letter of a direction says.
QImage ofLine(const QString& text, const QFont& font, const QColor& color, double height, int longestSide);
/// Text of several lines, which may have markup, laid out by CGraphicsTextItem and then scaled so that what
/// is as high as a line of the font becomes lineHeight pixels high.
QImage ofText(const QString& text, const QFont& font, const QColor& color, double lineHeight,
              int longestSide);

} // namespace caption_images
