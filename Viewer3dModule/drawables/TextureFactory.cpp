#include <Viewer3dModule/drawables/TextureFactory.h>

#include <Viewer3dModule/drawables/IconTexture.h>

#include <QtCore/QHash>

#include <utility>

namespace {

constexpr unsigned int hashSeed = 0x784FF0A;
constexpr std::size_t firstBuckets = 8;

} // namespace

std::size_t TextureFactory::KeyHash::operator()(const QString& key) const
{
    return qHash(key, hashSeed);
}

TextureFactory::TextureFactory()
    : m_textures(firstBuckets)
{
    m_textures.max_load_factor(1.0f);
}

TextureFactory::~TextureFactory() = default;

TextureFactory& TextureFactory::instance()
{
    static TextureFactory factory;
    return factory;
}

std::shared_ptr<IconTexture> TextureFactory::find(const QString& key) const
{
    const auto entry = m_textures.find(key);
    return entry == m_textures.end() ? nullptr : entry->second;
}

void TextureFactory::insert(const QString& key, std::shared_ptr<IconTexture> texture)
{
    m_textures[key] = std::move(texture);
}

void TextureFactory::removeUnused()
{
    for (auto entry = m_textures.begin(); entry != m_textures.end();)
        entry = entry->second.use_count() > 1 ? std::next(entry) : m_textures.erase(entry);
}
