#pragma once

#include <Viewer3dModule/drawables/IDrawableNode3d.h>
#include <framework/ksp/StagedProgress.h>

#include <functional>
#include <map>

/// Turns files into drawable nodes by readers that are registered under the extensions they handle. One
/// object a process.
class VIEWER3DMODULE_EXPORT DrawableNode3dFactory
{
public:
    /// Reads a file; null when it is not the reader's or cannot be read. A reader may throw ksp::CommonError
    /// (a reason for the user) or ksp::Canceled.
    using Creator =
        std::function<std::unique_ptr<IDrawableNode3d>(QString path, ksp::StagedProgress progress)>;

    static DrawableNode3dFactory& instance();

    /// Inserts the creator into each extension's list at the position: negative at the front, beyond the end
    /// at the end. Extensions are lower case without the dot.
    void registerNodeCreator(const std::vector<QString>& extensions, Creator creator, int position);
    /// Whatever the case of the letters.
    bool isExtensionSupported(const QString& extension) const;
    /// All extensions that have a creator, ascending.
    std::vector<QString> getExtensions() const;
    /// The first node that a creator of the file's extension makes; null when none does. An unknown extension
    /// is logged as "unknown file format". What a creator throws goes through to the caller, and no further
    /// creator is tried.
    std::unique_ptr<IDrawableNode3d> createDrawableNode3d(const QString& path, ksp::StagedProgress progress);

private:
    DrawableNode3dFactory() = default;
    std::map<QString, std::vector<Creator>> m_creators;
};
