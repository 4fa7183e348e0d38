#include "PluginFixture.h"

#include <Viewer3dModule/Viewer3dModule.h>

#include <QtCore/QPluginLoader>

namespace {

TEST_F(PluginTest, IsLoadedWithItsMetadata)
{
    EXPECT_EQ(plugin.error, QString());
    EXPECT_EQ(plugin.iid, "org.photomodel.Viewer3dModule");
    EXPECT_EQ(plugin.className, "Viewer3dModule");
    EXPECT_TRUE(plugin.metaData.isEmpty());
}

TEST_F(PluginTest, IdentifierEndsWithTheModulesName)
{
    EXPECT_EQ(plugin.iid.section('.', -1), "Viewer3dModule");
}

TEST_F(PluginTest, MetadataHasNoFurtherObject)
{
    const QJsonObject metaData = QPluginLoader(plugin.path).metaData();
    EXPECT_EQ(metaData.value("IID").toString(), "org.photomodel.Viewer3dModule");
    EXPECT_EQ(metaData.value("className").toString(), "Viewer3dModule");
    EXPECT_TRUE(metaData.value("MetaData").toObject().isEmpty());
}

TEST_F(PluginTest, GivesTheSameObjectEveryTime)
{
    QPluginLoader first(plugin.path);
    QPluginLoader second(plugin.path);
    EXPECT_EQ(first.instance(), plugin.instance);
    EXPECT_EQ(first.instance(), plugin.instance);
    EXPECT_EQ(second.instance(), plugin.instance);
    PluginLoader again;
    again.load({pluginFolder()});
    EXPECT_EQ(findModule(again.getPlugins()).instance, plugin.instance);
}

TEST_F(PluginTest, IsTheClassThatTheHostLinks)
{
    // The library in the plug-in folder and the linked one are one and the same.
    EXPECT_STREQ(plugin.instance->metaObject()->className(), "Viewer3dModule");
    EXPECT_NE(qobject_cast<Viewer3dModule*>(plugin.instance), nullptr);
    EXPECT_EQ(plugin.instance->metaObject()->superClass(), &QObject::staticMetaObject);
}

TEST_F(PluginTest, AnswersTheNamesOfItsTypes)
{
    auto* module = qobject_cast<Viewer3dModule*>(plugin.instance);
    ASSERT_NE(module, nullptr);
    QObject* object = module;
    EXPECT_EQ(object->qt_metacast("Viewer3dModule"), static_cast<void*>(module));
    EXPECT_EQ(object->qt_metacast("IModelExtension"),
              static_cast<void*>(static_cast<IModelExtension*>(module)));
    EXPECT_EQ(object->qt_metacast("ProjectGUI::IExtender"),
              static_cast<void*>(static_cast<ProjectGUI::IExtender*>(module)));
    EXPECT_EQ(object->qt_metacast("QObject"), static_cast<void*>(object));
}

TEST_F(PluginTest, AnswersTheIdentifiersOfItsInterfaces)
{
    auto* module = qobject_cast<Viewer3dModule*>(plugin.instance);
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(module->qt_metacast(qobject_interface_iid<IAppExtension*>()),
              static_cast<void*>(static_cast<IAppExtension*>(module)));
    EXPECT_EQ(module->qt_metacast(qobject_interface_iid<IModelExtension*>()),
              static_cast<void*>(static_cast<IModelExtension*>(module)));
    EXPECT_EQ(module->qt_metacast(qobject_interface_iid<ProjectGUI::IExtender*>()),
              static_cast<void*>(static_cast<ProjectGUI::IExtender*>(module)));
}

TEST_F(PluginTest, AnswersNoOtherName)
{
    EXPECT_EQ(plugin.instance->qt_metacast("Scene3d"), nullptr);
    EXPECT_EQ(plugin.instance->qt_metacast("ProjectGUI"), nullptr);
    EXPECT_EQ(plugin.instance->qt_metacast("viewer3dmodule"), nullptr);
    EXPECT_EQ(plugin.instance->qt_metacast(nullptr), nullptr);
}

TEST_F(PluginTest, BasesLieInTheirOrder)
{
    auto* module = qobject_cast<Viewer3dModule*>(plugin.instance);
    ASSERT_NE(module, nullptr);
    const auto address = [](const void* base) { return reinterpret_cast<std::uintptr_t>(base); };
    EXPECT_LT(address(static_cast<QObject*>(module)), address(static_cast<IModelExtension*>(module)));
    EXPECT_LT(address(static_cast<IModelExtension*>(module)),
              address(static_cast<ProjectGUI::IExtender*>(module)));
    EXPECT_LT(address(static_cast<ProjectGUI::IExtender*>(module)),
              address(static_cast<IAppExtension*>(module)));
}

} // namespace
