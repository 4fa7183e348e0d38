#pragma once

#include <framework/ksp/StagedProgress.h>
#include <framework/model/FeatureElement.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <memory>
#include <vector>

namespace readers {

/// Reads GeoJSON: a collection of features, one feature or a bare geometry; all types of geometry, of two or
/// three coordinates, which stay the doubles that the file gives. Each feature becomes one element with its
/// parts, its properties and the name that the property "name" gives, otherwise its id; features without
/// geometry are kept too.
class GeoJsonParser
{
public:
    explicit GeoJsonParser(ksp::StagedProgress progress);
    /// Throws ksp::CommonError, also when no feature has anything to draw.
    std::vector<std::unique_ptr<FeatureElement>> parse(const QByteArray& bytes);

private:
    using Parts = std::vector<FeatureElement::Part>;

    void addFeature(const QJsonObject& feature);
    void addGeometry(const QJsonObject& geometry, Parts& parts, int depth) const;
    void addPoints(const QJsonValue& positions, Parts& parts) const;
    void addLine(const QJsonValue& positions, Parts& parts) const;
    void addPolygon(const QJsonValue& rings, Parts& parts) const;
    std::vector<glm::dvec3> readPositions(const QJsonValue& positions) const;
    glm::dvec3 readPosition(const QJsonValue& position) const;
    QJsonArray toArray(const QJsonValue& value) const;
    [[noreturn]] void fail(const QString& reason) const;

    ksp::StagedProgress m_progress;
    std::vector<std::unique_ptr<FeatureElement>> m_features;
    bool m_hasParts = false;
};

} // namespace readers
