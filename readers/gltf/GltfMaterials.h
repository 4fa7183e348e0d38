#pragma once

#include <readers/common/MeshAssembler.h>
#include <readers/common/textures.h>
#include <readers/gltf/GltfDocument.h>

#include <map>

namespace readers {

/// The base colours and base colour textures of a glTF document's materials.
class GltfMaterials
{
public:
    struct Entry
    {
        Material material;                   ///< the colour as a screen shows it
        glm::dvec4 factor = glm::dvec4(1.0); ///< the base colour in linear light, as colours of vertices are
        int texCoordSet = 0;
    };

    /// path: of the document's file; the document outlives this.
    GltfMaterials(GltfDocument& document, const QString& path)
        : m_document(document)
        , m_textures(path)
    {
    }

    /// The material, read at the first call; for an undefined index the default one. Lives as long as this.
    const Entry& get(const QJsonValue& index);

private:
    QImage readTexture(const QJsonObject& reference);

    GltfDocument& m_document;
    TextureLoader m_textures;
    std::map<int, Entry> m_entries;
    std::map<int, QImage> m_images;
};

/// A colour in linear light as bytes for the screen.
std::uint32_t packLinearColor(const glm::dvec4& color);

} // namespace readers
