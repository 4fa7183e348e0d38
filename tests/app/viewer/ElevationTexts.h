#pragma once

#include <viewer/ElevationColors.h>

#include <QtCore/QBuffer>

/// The table of colours that a file of this text holds.
inline ElevationColors readText(const QByteArray& text, bool isDiscrete)
{
    QBuffer buffer;
    buffer.setData(text);
    buffer.open(QIODevice::ReadOnly);
    return ElevationColors::read(buffer, isDiscrete);
}
