#pragma once

#include <readers/cityjson/IndexTree.h>

#include <QtCore/QString>

#include <map>
#include <string>
#include <vector>

namespace readers {

/// One geometry of a CityJSON object as the file gives it: lists of indices that mean something only
/// together.
struct CityJsonGeometry
{
    std::string type;
    double lod = -1.0; ///< -1 where there is none
    IndexTree boundaries;

    std::vector<QString> kinds; ///< of "semantics"."surfaces"
    IndexTree semantics;

    /// By theme. A material that all surfaces have is a tree without list.
    struct Theme
    {
        IndexTree values;
        int value = -1;
    };
    std::map<std::string, Theme> materials;
    std::map<std::string, Theme> textures;

    int templateIndex = -1;     ///< of an instance
    std::vector<double> matrix; ///< of an instance: rows, 16 numbers
};

} // namespace readers
