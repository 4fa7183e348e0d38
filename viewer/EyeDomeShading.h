#pragma once

#include <QtCore/QStringList>

/// What darkens a pixel of a frame in eye-dome lighting: nothing, what lies further than it, what lies
/// nearer. The numbers are those of the shader, and of files.
enum class EyeDomeShading { Off = 0, Positive = 1, Negative = 2 };

/// Their names in the order of their numbers: "off", "positive", "negative".
inline QStringList eyeDomeShadingNames()
{
    return {QStringLiteral("off"), QStringLiteral("positive"), QStringLiteral("negative")};
}
