#pragma once

#include <framework/model/CModelElement.h>
#include <framework/model/CityGeometry.h>

#include <QtCore/QStringList>

/// An object of a city model: a building or a part of one, a road, a tree. Its geometry is in model
/// coordinates, its attributes are its properties.
class HOSTFRAMEWORK_EXPORT CityObjectElement : public CModelElement
{
public:
    static constexpr int Type = 0x36FFD300;

    explicit CityObjectElement(CModelElement* owner = nullptr);
    ~CityObjectElement() override;

    int getType() const override;

    /// What kind of object it is in its city model, "Building" for example.
    const QString& getObjectType() const { return m_objectType; }
    /// The identifier that it has in its city model, and those of the objects that it is a part or member of.
    const QString& getSourceId() const { return m_sourceId; }
    const QStringList& getParentIds() const { return m_parentIds; }
    /// Notifies the observers.
    void setSource(const QString& objectType, const QString& id, const QStringList& parentIds);

    const CityGeometry& getGeometry() const { return m_geometry; }
    /// The geometry must be sound. Notifies the observers.
    void setGeometry(CityGeometry geometry);

    void serialize(CQtArchive& archive) override;

private:
    void serializeFields(CQtArchive& archive);

    QString m_objectType;
    QString m_sourceId;
    QStringList m_parentIds;
    CityGeometry m_geometry;
};
