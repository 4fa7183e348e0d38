#include <benchmarks/works/addElements.h>

#include <benchmarks/scene/LineElement.h>
#include <benchmarks/scene/MeshElement.h>

#include <numeric>

namespace {

MeshData meshOf(const BoxSet::Box& box)
{
    const auto positions = BoxSet::positionsOf(box);
    const auto normals = BoxSet::normals();
    const auto indices = BoxSet::indices();
    MeshData data;
    data.positions.assign(positions.begin(), positions.end());
    data.normals.assign(normals.begin(), normals.end());
    data.indices.assign(indices.begin(), indices.end());
    MeshData::Part part;
    part.indexCount = BoxSet::IndexCount;
    part.color = box.color;
    data.parts.push_back(part);
    return data;
}

CModelElement* addOne(BenchScene& scene, MeshData data)
{
    std::vector<std::unique_ptr<CModelElement>> elements;
    elements.push_back(std::make_unique<MeshElement>(std::move(data)));
    return scene.add(std::move(elements)).front();
}

} // namespace

std::vector<CModelElement*> addLines(BenchScene& scene, const LineSet& set, float width)
{
    std::vector<std::unique_ptr<CModelElement>> elements;
    elements.reserve(set.lines.size());
    for (std::size_t i = 0; i < set.lines.size(); ++i)
        elements.push_back(std::make_unique<LineElement>(set, i, width));
    return scene.add(std::move(elements));
}

void addBoxes(BenchScene& scene, const BoxSet& set)
{
    std::vector<std::unique_ptr<CModelElement>> elements;
    elements.reserve(set.boxes.size());
    for (const BoxSet::Box& box : set.boxes)
        elements.push_back(std::make_unique<MeshElement>(meshOf(box), box.matrix));
    scene.add(std::move(elements));
}

CModelElement* addMesh(BenchScene& scene, const GroundMesh& mesh, const QColor& color)
{
    MeshData data;
    data.positions = mesh.positions;
    data.normals = mesh.normals;
    data.indices = mesh.indices;
    MeshData::Part part;
    part.indexCount = static_cast<std::uint32_t>(mesh.indices.size());
    part.color = color;
    data.parts.push_back(part);
    return addOne(scene, std::move(data));
}

CModelElement* addPoints(BenchScene& scene, const PointSet& set)
{
    MeshData data;
    data.positions = set.positions;
    data.colors = set.colors;
    data.indices.resize(set.positions.size());
    std::iota(data.indices.begin(), data.indices.end(), 0u);
    MeshData::Part part;
    part.kind = MeshData::Part::Points;
    part.indexCount = static_cast<std::uint32_t>(data.indices.size());
    part.pointSize = 2.0f;
    data.parts.push_back(part);
    return addOne(scene, std::move(data));
}
