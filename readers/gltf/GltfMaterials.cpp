#include <readers/gltf/GltfMaterials.h>

#include <QtCore/QUrl>

#include <algorithm>
#include <cmath>

namespace readers {

namespace {

constexpr int noMaterial = -1;

// sRGB's curve.
double toScreen(double linear)
{
    return linear <= 0.0031308 ? linear * 12.92 : 1.055 * std::pow(linear, 1.0 / 2.4) - 0.055;
}

} // namespace

std::uint32_t packLinearColor(const glm::dvec4& color)
{
    return packColor(toScreen(color.r), toScreen(color.g), toScreen(color.b), color.a);
}

const GltfMaterials::Entry& GltfMaterials::get(const QJsonValue& index)
{
    const int number = index.isUndefined() ? noMaterial : index.toInt();
    const auto known = m_entries.find(number);
    if (known != m_entries.end()) return known->second;
    Entry entry;
    if (!index.isUndefined()) {
        const QJsonObject object = m_document.getMember("materials", index);
        const QJsonObject look = object.value(QLatin1String("pbrMetallicRoughness")).toObject();
        const QJsonArray factor = look.value(QLatin1String("baseColorFactor")).toArray();
        for (int i = 0; i < std::min(factor.size(), 4); ++i)
            entry.factor[i] = factor.at(i).toDouble(1.0);
        if (object.value(QLatin1String("alphaMode")).toString() != QLatin1String("BLEND"))
            entry.factor.a = 1.0;
        entry.material.color = toQColor(toScreen(entry.factor.r), toScreen(entry.factor.g),
                                        toScreen(entry.factor.b), entry.factor.a);
        const QJsonValue texture = look.value(QLatin1String("baseColorTexture"));
        if (texture.isObject()) {
            entry.material.image = readTexture(texture.toObject());
            entry.texCoordSet = texture.toObject().value(QLatin1String("texCoord")).toInt();
        }
    }
    return m_entries.emplace(number, std::move(entry)).first->second;
}

QImage GltfMaterials::readTexture(const QJsonObject& reference)
{
    const QJsonObject texture = m_document.getMember("textures", reference.value(QLatin1String("index")));
    const QJsonValue source = texture.value(QLatin1String("source"));
    if (source.isUndefined()) return {}; // in a format of an extension
    const QJsonObject image = m_document.getMember("images", source);
    const int number = source.toInt();
    const auto known = m_images.find(number);
    if (known != m_images.end()) return known->second;
    const QString address = image.value(QLatin1String("uri")).toString();
    QImage picture;
    if (address.startsWith(QLatin1String("data:")))
        picture =
            m_textures.decode(m_document.readAddress(address, 0), QStringLiteral("image %1").arg(number));
    else if (!address.isEmpty())
        picture = m_textures.load(QUrl::fromPercentEncoding(address.toUtf8()), {m_document.getFolder()});
    else
        picture = m_textures.decode(m_document.readView(image.value(QLatin1String("bufferView"))),
                                    QStringLiteral("image %1").arg(number));
    return m_images.emplace(number, picture).first->second;
}

} // namespace readers
