#pragma once

#include <framework/gmx/BoundingBox.h>
#include <framework/model/CModelElement.h>

#include <glm/glm.hpp>

/// A picture from straight above that lies in the model: a parallelogram that shows the whole picture. A
/// project stores where the picture is and where it lies; the picture itself stays in its file.
class HOSTFRAMEWORK_EXPORT OrthophotoElement : public CModelElement
{
public:
    static constexpr int Type = 0x36FFD400;

    /// Model coordinates.
    struct Frame
    {
        glm::dvec3 corner{0.0};          ///< of the picture's lower left pixel, its outermost corner
        glm::dvec3 right{1.0, 0.0, 0.0}; ///< along the whole lower edge
        glm::dvec3 up{0.0, 1.0, 0.0};    ///< along the whole left edge
    };

    explicit OrthophotoElement(CModelElement* owner = nullptr);
    ~OrthophotoElement() override;

    int getType() const override;

    /// The picture, as an absolute path.
    const QString& getPath() const { return m_path; }
    void setPath(const QString& path);
    /// The picture as seen from the project's folder, so that both can be moved together; may be empty.
    const QString& getRelativePath() const { return m_relativePath; }
    void setRelativePath(const QString& path) { m_relativePath = path; }

    const Frame& getFrame() const { return m_frame; }
    /// Notifies the observers, as setPath does.
    void setFrame(const Frame& frame);
    gmx::BoundingBox getBounds() const;

    void serialize(CQtArchive& archive) override;

private:
    QString m_path;
    QString m_relativePath;
    Frame m_frame;
};
