#pragma once

#include <framework/ksp/StagedProgress.h>
#include <framework/model/CityObjectElement.h>
#include <readers/cityjson/CityGeometryBuilder.h>
#include <readers/cityjson/CityObjectsReader.h>

#include <QtCore/QByteArray>

#include <memory>
#include <optional>
#include <vector>

namespace readers {

class JsonPlaces;

/// Reads CityJSON 1.0, 1.1 and 2.0, and sequences of it: a CityJSON object and one CityJSONFeature after the
/// other. Each city object becomes an element with the geometries of its finest level of detail; objects and
/// attributes of extensions are read as any other. A file that breaks a rule of the format is refused.
/// In memory are the text, the vertices and the elements.
class CityJsonParser
{
public:
    /// path: of the file, for messages and for finding its pictures. lod: the finest level of detail that is
    /// wanted, all of them without; "2" holds for 2.0 to 2.3.
    CityJsonParser(const QString& path, std::optional<double> lod, ksp::StagedProgress progress);
    ~CityJsonParser();

    using Elements = std::vector<std::unique_ptr<CityObjectElement>>;
    /// Throws ksp::CommonError. Once.
    Elements parse(const QByteArray& bytes);

private:
    /// A geometry that instances repeat.
    struct Template
    {
        CityGeometry geometry;
        double lod;
    };
    void parseText(const QByteArray& text, ksp::StagedProgress progress);
    void requireRules(const JsonPlaces& places) const;
    void readHeader(const JsonPlaces& places);
    void readTransform(const JsonPlaces& places);
    void readTables(const JsonPlaces& places, ksp::StagedProgress progress);
    void readVertices(const QByteArray& text, ksp::StagedProgress progress);
    void readTemplates(const JsonPlaces& places);
    void readObjects(const JsonPlaces& places, ksp::StagedProgress progress);
    void addInstance(const CityJsonGeometry& geometry, CityGeometryBuilder& builder);
    bool wants(double lod, CityGeometryBuilder& builder);
    void addElement(CityJsonObject& object, CityGeometry geometry);
    void requireRelatives(std::size_t first);

    QString m_path;
    std::optional<double> m_lod;
    ksp::StagedProgress m_progress;
    std::optional<MemoryBudget> m_budget;
    MemoryBudget m_instanceBudget; // a template unfolds to more than the text that names it
    glm::dvec3 m_scale{1.0};
    glm::dvec3 m_translation{0.0};
    CityJsonTables m_tables;
    std::vector<Template> m_templates;
    bool m_hasHeader = false;
    double m_finest = -1.0; // of the geometries of the object under way
    bool m_hasGeometry = false;
    bool m_isAnyWanted = false;                               // of all geometries
    std::optional<double> m_coarsestLeft;                     // the coarsest one that is finer than wanted
    std::vector<std::pair<std::size_t, QString>> m_relatives; // that elements name
    Elements m_elements;
};

} // namespace readers
