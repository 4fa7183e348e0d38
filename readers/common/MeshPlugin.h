#pragma once

#include <framework/app/IAppExtension.h>
#include <readers/common/reading.h>

namespace readers {

/// What the plug-ins of mesh formats share: puts a parser into the factory of drawable nodes, behind the
/// readers that are there. A file of one mesh becomes a mesh node, one of several a group.
class MeshPlugin : public IAppExtension
{
public:
    MeshPlugin(std::vector<QString> extensions, MeshParser parse);
    bool extendApplication(Application* application, const std::vector<int>& ids) override;

private:
    std::vector<QString> m_extensions;
    MeshParser m_parse;
};

} // namespace readers
