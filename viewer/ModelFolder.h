#pragma once

#include <QtCore/QStringList>

/// Models that lie in several files of a folder: COLMAP text models, which are cameras.txt, images.txt and
/// points3D.txt. They are opened by their folder or any of these files.
namespace ModelFolder {

/// The files of the model that the path is, or is one of: all that there are; none when it is no such model.
QStringList files(const QString& path);
/// What is read of these paths: each by itself, but instead of a model its stations and then its points, if
/// it has any. A model is read once, also where all its files are named.
QStringList inputs(const QStringList& paths);

} // namespace ModelFolder
