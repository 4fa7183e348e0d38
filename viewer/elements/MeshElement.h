#pragma once

#include <Viewer3dModule/drawables/IDrawableNode3d.h>
#include <framework/model/CModelElement.h>

#include <memory>

/// One part of a file of geometry: a mesh, a point set, a line set. A project stores which file and which
/// part of it; the geometry itself is read again from the file.
class MeshElement : public CModelElement
{
public:
    explicit MeshElement(CModelElement* owner = nullptr);
    ~MeshElement() override;

    int getType() const override;

    /// The file, as an absolute path, and the number of the part in it, from 0.
    const QString& getPath() const { return m_path; }
    int getPart() const { return m_part; }
    void setSource(const QString& path, int part);
    /// The file as seen from the project's folder: kept beside the absolute path, so that a project that was
    /// moved together with its files finds them. Empty when there is none.
    const QString& getRelativePath() const { return m_relativePath; }
    void setRelativePath(const QString& path) { m_relativePath = path; }

    /// The geometry until a scene's item has taken it; null without.
    const IDrawableNode3d* getNode() const { return m_node.get(); }
    /// Notifies the observers, one of which may take the node.
    void setNode(std::unique_ptr<IDrawableNode3d> node);
    std::unique_ptr<IDrawableNode3d> takeNode() { return std::move(m_node); }

    void serialize(CQtArchive& archive) override;

private:
    QString m_path;
    QString m_relativePath;
    int m_part = 0;
    std::unique_ptr<IDrawableNode3d> m_node;
};
