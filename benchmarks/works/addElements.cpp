#include <benchmarks/works/addElements.h>

#include <benchmarks/scene/LineElement.h>
#include <benchmarks/scene/MeshElement.h>

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
