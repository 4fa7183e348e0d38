#pragma once

#include <framework/ksp/StagedProgress.h>
#include <framework/model/FeatureElement.h>
#include <readers/common/JsonHandler.h>
#include <readers/common/MemoryBudget.h>
#include <readers/geojson/Coordinates.h>
#include <readers/common/PropertyReader.h>

#include <memory>
#include <optional>
#include <vector>

namespace readers {

class JsonReader;

/// Reads GeoJSON: a collection of features, one feature or a bare geometry; all types of geometry, of two or
/// three coordinates, which stay the doubles that the file gives. Each feature becomes one element with its
/// parts, its properties in the order of the file and the name that the property "name" gives, otherwise its
/// id; features without geometry are kept too. Members may come in any order, of those given twice the last
/// holds. Besides the elements only the feature under way is in memory.
class GeoJsonParser : private JsonHandler
{
public:
    explicit GeoJsonParser(ksp::StagedProgress progress);
    ~GeoJsonParser() override;
    /// Throws ksp::CommonError, also when no feature has anything to draw. Once.
    std::vector<std::unique_ptr<FeatureElement>> parse(const QByteArray& bytes);

private:
    using Parts = std::vector<FeatureElement::Part>;

    /// What an object that is looked at stands for by its place.
    enum class Role { Root, Feature, Geometry };
    enum class Member { Other, Type, Features, Geometry, Properties, Id, Coordinates, Geometries };
    struct Object
    {
        Role role;
        Member member = Member::Other; ///< whose value is under way
        bool inList = false;           ///< under way is a list of features or geometries
        std::string type;
        bool hasFeatures = false;
        bool hasGeometries = false;
        Parts geometry;   ///< of the member "geometry"
        Parts geometries; ///< of all the member "geometries"
        std::optional<Coordinates> coordinates;
        PropertyReader::List properties;
        QString id;
    };

    void onNull() override;
    void onBoolean(bool value) override;
    void onInteger(std::int64_t value) override;
    void onNumber(double value) override;
    void onString(std::string& text) override;
    void onObject() override;
    void onKey(std::string& name) override;
    void onObjectEnd() override;
    void onArray() override;
    void onArrayEnd() override;

    static Member toMember(const std::string& name, Role role);
    void forget(Member member);
    bool isInCoordinates() const;
    void addScalar(const QVariant& value);
    void addToMember(const QVariant& value);
    void beginObject(Role role);
    [[noreturn]] void failInList() const;

    void endFeature(Object& feature);
    void endGeometry(Object& geometry);
    void endRoot(Object& root);
    void addFeature(Object& feature);
    Parts takeParts(Object& geometry);
    [[noreturn]] void fail(const QString& reason) const;

    ksp::StagedProgress m_progress;
    std::unique_ptr<JsonReader> m_reader;
    std::optional<MemoryBudget> m_budget;
    std::optional<PropertyReader> m_properties;
    std::vector<Object> m_objects; // within each other, under way
    int m_ignored = 0;             // lists and objects under way within one that is of no interest
    bool m_isObject = false;       // the root
    std::vector<std::unique_ptr<FeatureElement>> m_features;
};

} // namespace readers
