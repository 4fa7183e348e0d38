#pragma once

#include <readers/common/MeshAssembler.h>
#include <readers/common/textures.h>

#include <map>
#include <set>
#include <string>
#include <string_view>

namespace readers {

/// The materials of the libraries that an OBJ file names: plain colours and diffuse textures.
class ObjMaterials
{
public:
    /// path: the OBJ file.
    explicit ObjMaterials(const QString& path);

    /// Reads a library, named relative to the OBJ file; the first that is missing gives a warning in the log.
    /// text: the rest of the statement, one name with blanks in it or several names.
    void addLibraries(std::string_view text);
    /// The material, its texture loaded at the first call, or null. The first definition of a name counts.
    /// Lives as long as this.
    const Material* find(std::string_view name);

private:
    struct Entry
    {
        Material material;
        QString texture; ///< its name, until it is loaded
        QString folder;  ///< the library's
    };
    bool addLibrary(const QString& name);

    QString m_path;
    QString m_folder;
    TextureLoader m_textures;
    bool m_hasWarned = false;
    std::set<QString> m_libraries;
    std::map<std::string, Entry, std::less<>> m_entries;
};

} // namespace readers
