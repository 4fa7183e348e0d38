#pragma once

#include <viewer/cli/CameraFields.h>

#include <QtCore/QJsonObject>

#include <vector>

/// The members of a JSON object; throws ksp::CommonError, whose text begins with where the object is.
class JsonFields : public CameraFields
{
public:
    /// place: how messages call the object.
    JsonFields(const QJsonObject& object, const QString& place);

    /// Throws when there is a member of another name.
    void requireKnown(const QStringList& names) const;

    bool has(const QString& name) const override;
    QString shown(const QString& name) const override;
    glm::dvec3 point(const QString& name) const override;
    QSize size(const QString& name) const override;
    double number(const QString& name) const override;
    int word(const QString& name, const QStringList& words) const override;
    QString text(const QString& name) const;
    /// The points of a list, each of so many numbers (2 or 3); z is 0 for 2.
    std::vector<glm::dvec3> points(const QString& name, int dimensions) const;
    [[noreturn]] void refuse(const QString& text) const override;

private:
    /// The numbers of the array that the member of the name, or a part of it, is; so many of them.
    std::vector<double> numbers(const QString& name, const QJsonValue& array, int count,
                                const QString& wanted) const;

    QJsonObject m_object;
    QString m_place;
};
