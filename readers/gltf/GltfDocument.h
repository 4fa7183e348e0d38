#pragma once

#include <readers/gltf/GltfIndex.h>

#include <QtCore/QByteArray>
#include <QtCore/QIODevice>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <cstdint>
#include <map>
#include <vector>

namespace readers {

/// A glTF 2.0 document with its buffers: text or binary container, buffers inside, beside it or as data in
/// the text. Every index, offset, length and count is checked where it is used; what is wrong throws
/// ksp::CommonError.
class GltfDocument
{
public:
    /// path: for finding the files beside it. Refuses other versions and extensions that the file cannot do
    /// without and that change what its geometry is.
    GltfDocument(QIODevice& device, const QString& path, ksp::StagedProgress progress);

    /// The number of the scene to show; undefined when the document names none.
    QJsonValue getScene() const { return m_index.getValue("scene"); }
    const QString& getFolder() const { return m_folder; }
    /// Bytes of the file.
    std::uint64_t getSize() const { return static_cast<std::uint64_t>(m_bytes.size()); }
    /// The number of members that one of the root's lists has.
    int getCountOf(const char* list) const { return m_index.getCountOf(list); }
    /// The numbered member of one of the root's lists.
    QJsonObject getMember(const char* list, const QJsonValue& index);

    /// The number of entries that an accessor has.
    std::uint64_t getCount(const QJsonValue& accessor);
    /// All its numbers, entry by entry, normalised where it says so. Refuses one of another number of
    /// components.
    std::vector<double> readAccessor(const QJsonValue& accessor, int components);
    /// The bytes of a view of a buffer.
    QByteArray readView(const QJsonValue& view);
    /// The bytes of an address: data in the text, or a file beside the document of at most the given size.
    QByteArray readAddress(const QString& address, std::uint64_t most) const;

private:
    QByteArray readContainer();
    int toIndex(const char* list, const QJsonValue& index) const;
    void checkExtensions() const;
    const QByteArray& getBuffer(const QJsonValue& index);
    void readEntries(const QJsonObject& source, int componentType, int components, std::uint64_t count,
                     std::vector<double>& numbers);
    void readSparse(const QJsonObject& sparse, int componentType, int components, std::uint64_t count,
                    std::vector<double>& numbers);

    QString m_folder;
    QByteArray m_bytes; ///< the file
    QByteArray m_chunk; ///< the buffer in a binary container, a part of m_bytes
    GltfIndex m_index;
    std::map<int, QByteArray> m_buffers;
};

/// A number that is whole, not negative and exact in a double; the default where there is none. Throws
/// ksp::CommonError for another.
std::uint64_t toWhole(const QJsonValue& value, std::uint64_t defaultValue, const char* what);

} // namespace readers
