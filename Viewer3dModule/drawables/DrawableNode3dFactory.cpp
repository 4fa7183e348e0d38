#include <Viewer3dModule/drawables/DrawableNode3dFactory.h>

#include <framework/ksp/Log.h>

#include <QtCore/QFileInfo>

#include <algorithm>

DrawableNode3dFactory& DrawableNode3dFactory::instance()
{
    static DrawableNode3dFactory factory;
    return factory;
}

void DrawableNode3dFactory::registerNodeCreator(const std::vector<QString>& extensions, Creator creator,
                                                int position)
{
    for (const QString& extension : extensions) {
        std::vector<Creator>& creators = m_creators[extension];
        const int index = std::clamp(position, 0, static_cast<int>(creators.size()));
        creators.insert(creators.begin() + index, creator);
    }
}

bool DrawableNode3dFactory::isExtensionSupported(const QString& extension) const
{
    return m_creators.count(extension.toLower()) != 0;
}

std::vector<QString> DrawableNode3dFactory::getExtensions() const
{
    std::vector<QString> extensions;
    for (const auto& entry : m_creators)
        if (!entry.second.empty()) extensions.push_back(entry.first);
    return extensions;
}

std::unique_ptr<IDrawableNode3d> DrawableNode3dFactory::createDrawableNode3d(const QString& path,
                                                                             ksp::StagedProgress progress)
{
    const auto entry = m_creators.find(QFileInfo(path).suffix().toLower());
    if (entry == m_creators.end() || entry->second.empty()) {
        ksp::Log::message(ksp::Log::Error, QStringLiteral("unknown file format"));
        return nullptr;
    }
    // A copy, since a creator may register others.
    const std::vector<Creator> creators = entry->second;
    for (const Creator& creator : creators) {
        ksp::StagedProgress stage = progress.startStage(90.0 - 0.9 * progress.getPercentage());
        std::unique_ptr<IDrawableNode3d> node = creator(path, stage);
        stage.close();
        if (node) return node;
    }
    return nullptr;
}
