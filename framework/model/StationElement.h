#pragma once

#include <framework/HostFramework_export.h>
#include <framework/model/CModelElement.h>

#include <QtCore/QVector>
#include <glm/glm.hpp>
#include <glm/gtc/quaternion.hpp>

/// Where a picture was taken from, how the camera was turned, and what camera it was. The element's name is
/// that of the picture.
class HOSTFRAMEWORK_EXPORT StationElement : public CModelElement
{
public:
    static constexpr int Type = 0x36FFD500;

    /// Camera coordinates (x right, y down, z the way it looks) of a model point p are rotation * p +
    /// translation.
    struct Pose
    {
        glm::dquat rotation{1.0, 0.0, 0.0, 0.0}; ///< of length 1
        glm::dvec3 translation{0.0};
    };

    struct Camera
    {
        QString model;              ///< the name of its projection: "PINHOLE" for example
        int width = 0;              ///< pixels, as the next one
        int height = 0;             ///< of its pictures
        QVector<double> parameters; ///< in the order that the model says: focal lengths first
    };

    explicit StationElement(CModelElement* owner = nullptr);
    ~StationElement() override;

    int getType() const override;

    const Pose& getPose() const { return m_pose; }
    /// Notifies the observers, as the other setters do.
    void setPose(const Pose& pose);
    /// Of projection, model coordinates.
    glm::dvec3 getCenter() const;
    const Camera& getCamera() const { return m_camera; }
    void setCamera(const Camera& camera);
    /// The identifier that the picture has in the file it came from, as text; may be empty.
    const QString& getSourceId() const { return m_sourceId; }
    void setSourceId(const QString& id);

    void serialize(CQtArchive& archive) override;

private:
    void serializeFields(CQtArchive& archive);

    QString m_sourceId;
    Pose m_pose;
    Camera m_camera;
};
