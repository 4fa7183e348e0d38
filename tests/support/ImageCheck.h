#pragma once

#include <QtGui/QColor>
#include <QtGui/QImage>

#include <functional>

/// What two pictures may differ by: a pixel counts as different when a channel differs by more than
/// channelLimit, and at most pixelsAllowed may be different. Both start at zero; whoever raises them says
/// why.
struct ImageTolerance
{
    int channelLimit = 0;
    int pixelsAllowed = 0;
};

/// Fails the test when the pictures differ by more than the tolerance, and then writes NAME.actual.png,
/// NAME.expected.png and NAME.diff.png below the build folder's test-output.
void checkImage(const char* name, const QImage& actual, const QImage& expected,
                ImageTolerance tolerance = {});

/// Number of pixels whose every channel is within limit of the colour.
int countPixels(const QImage& image, const QColor& color, int limit = 0);
/// Number of pixels for which the condition holds.
int countPixels(const QImage& image, const std::function<bool(QRgb)>& condition);

/// Writes a picture below the build folder's test-output, for looking at.
void saveTestImage(const char* name, const QImage& image);
