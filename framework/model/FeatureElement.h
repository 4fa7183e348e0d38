#pragma once

#include <framework/gmx/BoundingBox.h>
#include <framework/model/CModelElement.h>

#include <glm/glm.hpp>

#include <vector>

/// A feature of a map or plan: points, lines and rings in model coordinates, with a name and properties.
class HOSTFRAMEWORK_EXPORT FeatureElement : public CModelElement
{
public:
    static constexpr int Type = 0x36FFD100;

    /// One piece of the geometry.
    struct Part
    {
        enum Kind {
            Point, ///< each of the points by itself
            Line,  ///< two or more points, joined in order
            Ring   ///< three or more points, joined in order and the last one to the first, which is not
                   ///< repeated
        };
        Kind kind = Point;
        bool hole = false;              ///< a ring that is a hole in the nearest ring before it that is none
        std::vector<glm::dvec3> points; ///< model coordinates; z is 0 in plane data
    };

    explicit FeatureElement(CModelElement* owner = nullptr);
    ~FeatureElement() override;

    int getType() const override;

    const std::vector<Part>& getParts() const { return m_parts; }
    /// Replaces the geometry and notifies the observers.
    void setParts(std::vector<Part> parts);
    /// The identifier that the feature has in the file it came from, as text; may be empty.
    const QString& getSourceId() const { return m_sourceId; }
    void setSourceId(const QString& id);

    /// Box of all points, in model coordinates; null when there are none.
    gmx::BoundingBox getBounds() const;

    void serialize(CQtArchive& archive) override;

private:
    void serializeFields(CQtArchive& archive);
    void loadParts(CQtArchive& archive);
    void storeParts(CQtArchive& archive);

    QString m_sourceId;
    std::vector<Part> m_parts;
};
