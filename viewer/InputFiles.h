#pragma once

#include <QtCore/QStringList>

/// The files that work reads, so that what it writes does not fall on one of them: the inputs, and what they
/// name, which are the material libraries of an OBJ file and their textures, the pictures and buffers of a
/// glTF file, the three files of a COLMAP model, the world file of a picture.
class InputFiles
{
public:
    explicit InputFiles(const QStringList& inputs);

    /// Whether the file is one of them. Links are followed. Looks into the inputs once, and only when it is
    /// asked for a file that exists.
    bool contain(const QString& path) const;

private:
    mutable QStringList m_files; // canonical
    mutable int m_searched = 0;  // how many of them were looked into
};
