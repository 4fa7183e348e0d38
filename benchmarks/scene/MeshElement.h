#pragma once

#include <Viewer3dModule/drawables/MeshNode3d.h>
#include <framework/model/CModelElement.h>

#include <memory>

/// A mesh or a set of points of the model, with the matrix that brings it to model coordinates. Its node is
/// given away to the scene's item.
class MeshElement : public CModelElement
{
public:
    static constexpr int Type = 0x20000B02;

    explicit MeshElement(MeshData data, const glm::mat4& matrix = glm::mat4(1.0f))
        : m_node(std::make_unique<MeshNode3d>(std::move(data)))
        , m_matrix(matrix)
    {
    }
    int getType() const override { return Type; }

    std::unique_ptr<MeshNode3d> takeNode() { return std::move(m_node); }
    const glm::mat4& matrix() const { return m_matrix; }

private:
    std::unique_ptr<MeshNode3d> m_node;
    glm::mat4 m_matrix;
};
