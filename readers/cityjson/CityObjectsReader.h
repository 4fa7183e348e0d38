#pragma once

#include <readers/cityjson/CityJsonGeometry.h>
#include <readers/common/JsonHandler.h>
#include <readers/common/MemoryBudget.h>
#include <readers/common/PropertyReader.h>

#include <framework/ksp/StagedProgress.h>

#include <QtCore/QByteArray>
#include <QtCore/QStringList>

#include <functional>
#include <memory>

namespace readers {

class JsonReader;

/// What a city object is beside its geometries.
struct CityJsonObject
{
    QString id;
    QString type;
    QStringList parents;
    QStringList children;
    PropertyReader::List properties;
};

/// Reads the member "CityObjects" of a CityJSON file, or a list of geometries, piece by piece: only the
/// object and the geometry under way are in memory.
class CityObjectsReader : private JsonHandler
{
public:
    /// Is called for each geometry, and after those of an object for the object. What it throws ends the
    /// reading.
    using GeometrySink = std::function<void(CityJsonGeometry& geometry)>;
    using ObjectSink = std::function<void(CityJsonObject& object)>;

    CityObjectsReader(const QByteArray& text, MemoryBudget& budget, GeometrySink geometrySink,
                      ObjectSink objectSink);
    ~CityObjectsReader() override;
    /// Throws ksp::CommonError, which names the object.
    void read(ksp::StagedProgress progress);

private:
    /// What a list or object under way is.
    enum class Place {
        Objects,
        Object,
        Relatives, ///< names of parents or children
        Geometries,
        Geometry,
        Semantics,
        Kinds,
        Kind,
        Themes,
        Theme,
        Matrix,
        Indices
    };

    void onNull() override;
    void onBoolean(bool value) override;
    void onInteger(std::int64_t value) override;
    void onNumber(double value) override;
    void onString(std::string& text) override;
    void onObject() override;
    void onKey(std::string& name) override;
    void onObjectEnd() override { end(); }
    void onArray() override;
    void onArrayEnd() override { end(); }

    bool isAt(Place place) const { return !m_places.empty() && m_places.back() == place; }
    bool isOpen() const { return m_ignored == 0 && !m_places.empty(); }
    void enter(Place place);
    void enterIndices(IndexTree& tree);
    void enterGeometryMember(bool isList);
    void addOther();
    void addScalar(const QVariant& value);
    void end();
    void endObject();
    void endGeometry();
    [[noreturn]] void fail(const QString& reason) const;

    QByteArray m_text;
    MemoryBudget& m_budget;
    GeometrySink m_geometrySink;
    ObjectSink m_objectSink;
    std::unique_ptr<JsonReader> m_reader;
    PropertyReader m_properties;

    std::vector<Place> m_places; // within each other, under way
    int m_ignored = 0;           // lists and objects under way within one that is of no interest
    std::string m_key;           // of the member under way of the innermost object
    CityJsonObject m_object;
    std::size_t m_geometryCount = 0; // of the object
    CityJsonGeometry m_geometry;
    std::map<std::string, CityJsonGeometry::Theme>* m_themes = nullptr;
    CityJsonGeometry::Theme* m_theme = nullptr;
    QStringList* m_relatives = nullptr;
    IndexTree* m_indices = nullptr;
};

} // namespace readers
