#include "ReaderTest.h"

#include <Viewer3dModule/drawables/DrawableNode3dFactory.h>
#include <framework/app/IAppExtension.h>
#include <framework/app/IModelReader.h>
#include <framework/app/PluginLoader.h>
#include <framework/ksp/CommonError.h>
#include <framework/model/FeatureElement.h>

#include <QtCore/QJsonArray>

namespace {

const std::vector<PluginLoader::Plugin>& plugins()
{
    static PluginLoader loader;
    if (loader.getPlugins().empty()) {
        loader.load({QStringLiteral(V3D_BINARY_DIR "/lib/viewer3d/plugins")});
        for (const PluginLoader::Plugin& plugin : loader.getPlugins()) {
            if (!plugin.iid.startsWith("org.photomodel.reader.")) continue;
            if (auto* extension = qobject_cast<IAppExtension*>(plugin.instance))
                extension->extendApplication(nullptr, {});
        }
    }
    return loader.getPlugins();
}

const PluginLoader::Plugin* find(const QString& name)
{
    for (const PluginLoader::Plugin& plugin : plugins()) {
        if (plugin.iid == "org.photomodel.reader." + name) return &plugin;
    }
    return nullptr;
}

class EveryPlugin : public ::testing::TestWithParam<const char*>
{
};

class PluginFiles : public ReaderTest
{
protected:
    void SetUp() override { plugins(); }
};

INSTANTIATE_TEST_SUITE_P(Readers, EveryPlugin,
                         ::testing::Values("obj", "ply", "stl", "off", "gltf", "geojson", "cityjson",
                                           "orthophoto", "colmap"),
                         [](const auto& name) { return std::string(name.param); });

} // namespace

TEST_P(EveryPlugin, AreFoundLoadedAndSayWhatTheyRead)
{
    const PluginLoader::Plugin* plugin = find(GetParam());
    ASSERT_NE(plugin, nullptr);
    EXPECT_EQ(plugin->error, "");
    EXPECT_NE(qobject_cast<IAppExtension*>(plugin->instance), nullptr);
    EXPECT_FALSE(plugin->metaData.value("extensions").toArray().isEmpty());
    EXPECT_FALSE(plugin->metaData.value("description").toString().isEmpty());
}

TEST_P(EveryPlugin, RegisterWhatTheirMetadataNames)
{
    const PluginLoader::Plugin* plugin = find(GetParam());
    ASSERT_NE(plugin, nullptr);
    const auto* reader = qobject_cast<IModelReader*>(plugin->instance);
    const QJsonArray extensions = plugin->metaData.value("extensions").toArray();
    for (const QJsonValue& extension : extensions) {
        const bool known = reader
                               ? reader->getExtensions().contains(extension.toString())
                               : DrawableNode3dFactory::instance().isExtensionSupported(extension.toString());
        EXPECT_TRUE(known) << extension.toString().toStdString();
    }
}

TEST_F(PluginFiles, FileOfOneMeshBecomesAMeshNode)
{
    const QString path = write("a.OBJ", "v 1 2 3\nv 4 2 3\nv 1 3 3\nf 1 2 3\nl 1 2\n");
    const auto node =
        DrawableNode3dFactory::instance().createDrawableNode3d(path, ksp::StagedProgress::dummy());
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->getGeometryInfo().triangleCount, 1u);
    EXPECT_EQ(node->getGeometryInfo().lineCount, 1u);
    EXPECT_EQ(node->getBounds().getMin(), glm::dvec3(1, 2, 3));
    EXPECT_EQ(node->getBounds().getMax(), glm::dvec3(4, 3, 3));
    EXPECT_TRUE(node->takeChildren().empty());
}

TEST_F(PluginFiles, FileOfSeveralMeshesBecomesAGroup)
{
    const QString path = write("a.obj", "v 1 2 3\nv 4 2 3\nv 1 3 3\no a\nf 1 2 3\no b\nl 1 2\n");
    const auto node =
        DrawableNode3dFactory::instance().createDrawableNode3d(path, ksp::StagedProgress::dummy());
    ASSERT_NE(node, nullptr);
    const auto children = node->takeChildren();
    ASSERT_EQ(children.size(), 2u);
    EXPECT_EQ(children[1]->getName(), "b");
    EXPECT_EQ(children[1]->getGeometryInfo().lineCount, 1u);
}

TEST_F(PluginFiles, BadFileLeavesTheFactoryAsAnError)
{
    const QString path = write("a.ply", "ply\n");
    try {
        DrawableNode3dFactory::instance().createDrawableNode3d(path, ksp::StagedProgress::dummy());
        FAIL();
    } catch (const ksp::CommonError& error) {
        EXPECT_EQ(error.text(), path + ": ends within its head");
    }
}

TEST_F(PluginFiles, FeaturesComeAsElements)
{
    const PluginLoader::Plugin* plugin = find("geojson");
    ASSERT_NE(plugin, nullptr);
    auto* reader = qobject_cast<IModelReader*>(plugin->instance);
    ASSERT_NE(reader, nullptr);
    const auto elements = reader->read(write("a.geojson", "{\"type\":\"Point\",\"coordinates\":[1,2]}"),
                                       ksp::StagedProgress::dummy());
    ASSERT_EQ(elements.size(), 1u);
    EXPECT_EQ(elements[0]->getType(), FeatureElement::Type);
}
