#pragma once

#include <Viewer3dModule/Viewer3dModule_export.h>

#include <QtCore/QString>

#include <memory>
#include <unordered_map>

class IconTexture;

/// The textures that drawers of the whole process share, by text keys. Textures belong to the contexts that
/// share objects with each other (Qt::AA_ShareOpenGLContexts: all of the process). Used on the thread of the
/// scenes.
class VIEWER3DMODULE_EXPORT TextureFactory
{
public:
    static TextureFactory& instance();
    TextureFactory(const TextureFactory&) = delete;
    TextureFactory& operator=(const TextureFactory&) = delete;

    /// Null when there is none under the key.
    std::shared_ptr<IconTexture> find(const QString& key) const;
    /// Keeps the texture, in the place of one that is there.
    void insert(const QString& key, std::shared_ptr<IconTexture> texture);
    /// Forgets what nobody else holds any more. A context of the share group must be current: the textures
    /// are deleted.
    void removeUnused();
    std::size_t getSize() const { return m_textures.size(); }

private:
    TextureFactory();
    ~TextureFactory();

    struct KeyHash
    {
        std::size_t operator()(const QString& key) const;
    };
    std::unordered_map<QString, std::shared_ptr<IconTexture>, KeyHash> m_textures;
};
